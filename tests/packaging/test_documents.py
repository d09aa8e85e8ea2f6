"""What goes with the program says the same as the program: one version, one set of options, one identifier."""
import re
import shutil
import subprocess
import unittest

from tests.packaging.build import BUILD, BUNDLE_NAME, IDENTIFIER, INFORMATION, PACKAGED, REPOSITORY

OPTIONS = {"--partnerName", "--partnerID", "--campaignID", "--auto-start", "--help"}


def needs(program):
    return unittest.skipUnless(shutil.which(program), f"needs {program}")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, cwd=REPOSITORY).stdout


class Versions(unittest.TestCase):
    def test_one_version_everywhere(self):
        project = re.search(r"project\(TolvixInstaller VERSION ([\d.]+) ", (REPOSITORY / "CMakeLists.txt").read_text())[1]
        major, minor, patch = map(int, project.split("."))
        self.assertEqual(INFORMATION["CFBundleShortVersionString"], project)
        self.assertEqual(INFORMATION["CFBundleVersion"], str(major * 1000 + minor * 100 + patch))
        head = re.search(r"^## \[([^\]]+)\] - \d{4}-\d{2}-\d{2}$", (REPOSITORY / "CHANGELOG.md").read_text(), re.MULTILINE)
        self.assertEqual(head[1], project)
        self.assertIn(f'"Tolvix Installer {project}"', (PACKAGED / "tolvix-installer.1").read_text())
        package = (BUILD / "CPackConfig.cmake").read_text()
        self.assertIn(f'set(CPACK_PACKAGE_VERSION "{project}")', package)


class ManualPage(unittest.TestCase):
    PAGE = PACKAGED / "tolvix-installer.1"

    @needs("man")
    def test_formats_without_a_warning_and_names_all_options(self):
        done = subprocess.run(["man", "--warnings", "-l", str(self.PAGE)], capture_output=True, text=True,
                              env={"LC_ALL": "C.UTF-8", "PATH": "/usr/bin:/bin"})
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(set(re.findall(r"--[a-zA-Z-]*[a-zA-Z]", done.stdout)), OPTIONS)
        self.assertIn(INFORMATION["TXAgentPreferencesDomain"], done.stdout)

    def test_program_knows_the_options(self):
        program = BUILD / BUNDLE_NAME / "Contents" / "MacOS" / "TolvixInstaller"
        usage = subprocess.run([str(program), "--help"], capture_output=True, text=True, check=True,
                               env={"HOME": "/nonexistent"}).stderr
        self.assertEqual(set(re.findall(r"--\w+(?:-\w+)*", usage)), OPTIONS - {"--help"})


class Completions(unittest.TestCase):
    def bash(self, *words):
        script = ('source completions/tolvix-installer.bash; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '$(complete -p tolvix-installer | sed "s/.*-F \\([^ ]*\\) .*/\\1/"); printf "%s\\n" "${COMPREPLY[@]}"')
        return set(output_of("bash", "-euc", script, "bash", "tolvix-installer", *words).split())

    def test_bash(self):
        for words, expected in (([""], OPTIONS), (["--p"], {"--partnerName", "--partnerID"}), (["--partnerName", ""], set()),
                                (["--auto-start", ""], OPTIONS | {"YES", "NO"}), (["--auto-start", "Y"], {"YES"}),
                                (["--partnerName", "--help", "--c"], {"--campaignID"})):
            with self.subTest(words):
                self.assertEqual(self.bash(*words), expected)

    @needs("zsh")
    def test_zsh(self):
        found = output_of("zsh", "-fc", "fpath=($PWD/completions $fpath); autoload -Uz compinit; compinit -u -D; "
                                        "print ${_comps[tolvix-installer]}")
        self.assertEqual(found.strip(), "_tolvix-installer")
        offered = output_of("zsh", "-fc", "fpath=($PWD/completions); autoload -Uz _tolvix-installer; "
                                          "_arguments() { print -rl -- $@ }; _tolvix-installer")
        self.assertEqual({line.partition("[")[0] for line in offered.split("\n") if line}, OPTIONS)


class DesktopEntry(unittest.TestCase):
    @needs("desktop-file-validate")
    def test_is_valid(self):
        self.assertEqual(output_of("desktop-file-validate", str(PACKAGED / f"{IDENTIFIER}.desktop")), "")

    def test_names_what_is_installed(self):
        text = (PACKAGED / f"{IDENTIFIER}.desktop").read_text()
        self.assertRegex(text, rf"(?m)^Icon={re.escape(IDENTIFIER)}$")
        self.assertRegex(text, r"(?m)^Exec=tolvix-installer$")
        self.assertRegex(text, rf"(?m)^Name={re.escape(INFORMATION['CFBundleName'])}$")
