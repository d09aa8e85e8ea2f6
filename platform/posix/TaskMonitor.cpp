#include "platform/posix/TaskMonitor.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

// What a child counts as that somebody else has waited for: not as a success.
constexpr int unknownStatus = -1;

template <class Entry>
void append(std::vector<Entry>& entries, std::vector<Entry>& added) {
    entries.insert(entries.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
    added.clear();
}

} // namespace

TaskMonitor::TaskMonitor() : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!wakeUp_.isOpen())
        throw std::system_error(errno, std::generic_category(), "eventfd");
    thread_ = std::thread([this] { run(); });
}

TaskMonitor::~TaskMonitor() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    wake();
    thread_.join();
}

void TaskMonitor::addReader(std::shared_ptr<FileDescriptor> readEnd, std::shared_ptr<RunLoop> loop,
                            std::function<void(std::string)> done) {
    // This end is not shared with the child, so its writes still wait.
    ::fcntl(readEnd->get(), F_SETFL, O_NONBLOCK);
    {
        const std::lock_guard lock(mutex_);
        addedReaders_.push_back({std::move(readEnd), std::move(loop), std::move(done), {}});
    }
    wake();
}

void TaskMonitor::addChild(FileDescriptor process, std::shared_ptr<RunLoop> loop,
                           std::function<void(int)> didTerminate) {
    {
        const std::lock_guard lock(mutex_);
        addedChildren_.push_back({std::move(process), std::move(loop), std::move(didTerminate)});
    }
    wake();
}

void TaskMonitor::wake() const {
    ::eventfd_write(wakeUp_.get(), 1);
}

bool TaskMonitor::takeAdded() {
    eventfd_t count = 0;
    ::eventfd_read(wakeUp_.get(), &count);
    const std::lock_guard lock(mutex_);
    append(children_, addedChildren_);
    append(readers_, addedReaders_);
    return !stopped_;
}

std::vector<pollfd> TaskMonitor::watched() const {
    std::vector<pollfd> descriptors{{wakeUp_.get(), POLLIN, 0}};
    for (const Child& child : children_)
        descriptors.push_back({child.process.get(), POLLIN, 0});
    for (const Reader& reader : readers_)
        descriptors.push_back({reader.readEnd->get(), POLLIN, 0});
    return descriptors;
}

void TaskMonitor::run() {
    while (takeAdded()) {
        std::vector<pollfd> descriptors = watched();
        if (::poll(descriptors.data(), descriptors.size(), -1) < 0)
            continue;
        // The ends of children are looked for after the reading and posted before the outputs: who gets an output may
        // then know the status already, although the kernel closes it a moment before the status can be had.
        for (Reader& reader : readers_)
            read(reader);
        std::erase_if(children_, [](Child& child) { return postEnd(child); });
        std::erase_if(readers_, [](Reader& reader) { return postEnd(reader); });
    }
}

void TaskMonitor::read(Reader& reader) {
    std::array<char, 65536> buffer;
    const ssize_t count = ::read(reader.readEnd->get(), buffer.data(), buffer.size());
    if (count > 0)
        reader.bytes.append(buffer.data(), static_cast<std::size_t>(count));
    else
        reader.ended = count == 0 || (errno != EAGAIN && errno != EINTR);
}

bool TaskMonitor::postEnd(Child& child) {
    siginfo_t info{};
    const auto descriptor = static_cast<id_t>(child.process.get());
    const int result = ::waitid(P_PIDFD, descriptor, &info, WEXITED | WNOHANG);
    if (result == 0 && info.si_pid == 0)
        return false;
    // An exit code and a signal number are in the same place.
    const int status = result == 0 ? info.si_status : unknownStatus;
    child.loop->post([didTerminate = std::move(child.didTerminate), status] { didTerminate(status); });
    return true;
}

bool TaskMonitor::postEnd(Reader& reader) {
    if (!reader.ended)
        return false;
    reader.loop->post(
        [done = std::move(reader.done), text = std::move(reader.bytes)]() mutable { done(std::move(text)); });
    return true;
}

} // namespace platform
