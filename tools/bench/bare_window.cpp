// A window of the installer's size with a label and a bar: what any program of its kind costs at least.

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(new QLabel("Downloading…"));
    layout->addWidget(new QProgressBar);
    window.setFixedSize(460, 132);
    window.show();
    return QApplication::exec();
}
