"""What can go wrong, a line each: see fault_rows."""
import os
import re
import shutil
import signal
import subprocess
import time
import unittest

from tests.functional.fault_rows import (FaultRows, Row, answer, both, environment, executable, faults, image_at,
                                         image_bytes, in_sandbox, old_product, settings, shell, small_disk, starter,
                                         volume)
from tests.functional.installer_case import INSTALLED, InstallerCase

NO_REASON = r"with error: \(null\)"
CLOSED_PORT = "https://127.0.0.1:1"


def content(url='"https://{host}/Tolvix.dmg"', version='"5"', code="200"):
    """A preparation: an answer with these members, as JSON texts."""
    def prepare(case, _):
        text = f'{{"code": {code}, "content": {{"download_url": {url}, "version": {version}}}}}'
        case.services.binaries.body = text.replace("{host}", case.services.image.host).encode()
    return prepare


def padded_answer(length):
    """A preparation: a good answer of that many bytes."""
    def prepare(case, start):
        content()(case, start)
        case.services.binaries.body = case.services.binaries.body.ljust(length)
    return prepare


def replace_with(make):
    """A change of a volume: in the product's place stands what `make` puts at the path."""
    def change(folder):
        shutil.rmtree(folder / "Tolvix.app")
        make(folder / "Tolvix.app")
    return change


def helper(script, mode=0o755):
    """A preparation: the disk-image helper is this shell script."""
    def change(trial):
        path = trial.installer / "Contents" / "Helpers" / "hdiutil"
        path.unlink()
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(mode)
    return in_sandbox(change)


def old_folder(mode=0o755):
    def make(path):
        (path / "Contents" / "deep").mkdir(parents=True)
        (path / "Contents" / "deep" / "file").write_text("old")
        (path / "Contents" / "deep").chmod(mode)
    return make


def arguments(*values):
    return lambda _, start: start.arguments.extend(values)


def expect_partner(name):
    return lambda case, _: case.assertEqual(case.services.log.events[0].content.get("partnerName"), name)


def expect_identifier(case, _):
    identifiers = {event.fields["anonymouscomputerid"] for event in case.services.log.events}
    case.assertEqual(identifiers, {"KEPT"})


def expect_old_product(case, _):
    case.assertEqual((case.trial.application / "Contents" / "deep" / "file").read_text(), "old")


def expect_short_lines(case, run):
    case.assertLess(max(map(len, run.stderr.splitlines())), 5000)
    case.assertNotIn("\x1b", run.stderr)


KEPT = b"TXDumpUsageLogs=true\nTXUniqInstallerId=KEPT\n"


class CheckRows(FaultRows):
    def test_answers(self):
        self.run_rows([
            *(Row(f"body {name}", answer(name), "check", console) for name, console in (
                ("not-json", "Code=3840"), ("array", "not an object"), ("wrong-types", ""), ("wrong-content", NO_REASON),
                ("deep", "Code=3840"), ("empty", NO_REASON), ("huge", NO_REASON), ("no-content", NO_REASON),
                ("code-404", "Code=404"))),
            Row("null", answer(b"null"), "check"),
            Row("text", answer(b'"text"'), "check"),
            Row("trailing garbage", answer(b'{"code": 200} x'), "check", "Code=3840"),
            Row("invalid UTF-8", answer(b'{"code": 200, "message": "\xff\xfe"}'), "check", "Code=3840"),
            Row("lone surrogate", answer(b'{"code": 5, "message": "\\ud800"}'), "check"),
            Row("endless number", answer(b'{"code": 1e999, "message": "m"}'), "check"),
            Row("code is a flag", content(code="true"), "check"),
            Row("code with a fraction", content(code="200.9"), "installed"),
            Row("code is a text", content(code='"200"'), "installed"),
            Row("code is a text with more", content(code='"200 OK"'), "installed"),
            Row("no message", answer(b'{"code": 503}'), "check", "Code=503"),
            Row("no code", answer(b'{"content": {}}'), "check", "Code=0"),
            Row("content is null", answer(b'{"code": 200, "content": null}'), "check", NO_REASON),
            Row("version is a number", content(version="5"), "check", NO_REASON),
            Row("version is null", content(version="null"), "check", NO_REASON),
            Row("address is empty", content(url='""'), "download"),
            Row("address with a blank", content(url='"https://{host}/a b.dmg"'), "check", NO_REASON),
            Row("address beyond ASCII", content(url='"https://{host}/ü.dmg"'), "check", NO_REASON),
            Row("a message that would drive the terminal",
                answer(b'{"code": 5, "message": "red \\u001b[31m\\nsecond line"}'), "check",
                r"Domain=red \\x1b\[31m\\nsecond line Code=5", after=expect_short_lines),
            *(Row(f"a long answer {text[:8]}", answer(b'{"code":404,' + text + b"}"), "check", ".*…",
                  after=expect_short_lines) for text in (
                      b'"a":' + b"[" * 500 + b"]" * 500, b'"a":"' + b"x" * 200_000 + b'"',
                      b'"message":"' + b"x" * 200_000 + b'"')),
            Row("a message that nests deeply",
                answer(b'{"code": 5, "message": "m", "more": ' + b'{"a":' * 400 + b"1" + b"}" * 400 + b"}"), "check",
                after=lambda case, run: case.assertLess(len(run.stderr), 60_000)),
        ])

    def test_transport(self):
        self.run_rows([
            *(Row(f"status {status}", faults("binaries", status=status), "installed") for status in (201, 404, 500)),
            *(Row(f"framing {kind}", faults("binaries", framing=kind), "installed") for kind in ("chunked", "close")),
            *(Row(f"certificate {kind}", faults("binaries", certificate=kind), "check", NO_REASON)
              for kind in ("wrong-host", "expired")),
            Row("refused", lambda case, _: case.services.binaries.refuse_connections(), "check", NO_REASON),
            Row("cut at once", faults("binaries", cut_after=0), "check", NO_REASON),
            Row("cut", faults("binaries", cut_after=20), "check", NO_REASON),
            Row("announced more", faults("binaries", announce=50), "check", NO_REASON),
            Row("announced less", faults("binaries", announce=-5), "check", "Code=3840"),
            Row("some redirects", faults("binaries", redirects=5), "installed"),
            Row("too many redirects", faults("binaries", redirects=25), "check", NO_REASON),
            Row("redirect to http", faults("binaries", redirects=1, redirect_to="http"), "check", NO_REASON),
            Row("redirect to a file", faults("binaries", redirects=1, redirect_to="file:///etc/hostname"), "check",
                NO_REASON),
            Row("redirect without a host", faults("binaries", redirects=1, redirect_to="https:///x"), "check", NO_REASON),
            Row("slow start", faults("binaries", delay=0.3), "installed"),
            Row("as long as an answer may be", padded_answer(4 << 20), "installed"),
            Row("a byte longer", padded_answer((4 << 20) + 1), "check", NO_REASON),
            Row("no host", in_sandbox(lambda trial: trial.set_information(TXBinariesHost="")), "check", NO_REASON),
            Row("host missing", in_sandbox(lambda trial: trial.set_information(TXBinariesHost=None)), "check", NO_REASON),
            Row("host with a blank", in_sandbox(lambda trial: trial.set_information(TXBinariesHost="a b")), "check",
                NO_REASON),
        ])


class DownloadRows(FaultRows):
    def test_transport(self):
        self.run_rows([
            *(Row(f"status {status}", faults("image", status=status), "download", "Code=-1100")
              for status in (403, 404, 500)),
            *(Row(f"framing {kind}", faults("image", framing=kind), "installed") for kind in ("chunked", "close")),
            *(Row(f"certificate {kind}", faults("image", certificate=kind), "download", "Code=-1200")
              for kind in ("wrong-host", "expired")),
            Row("refused", lambda case, _: case.services.image.refuse_connections(), "download", "Code=-1004"),
            *(Row(f"cut after {size}", faults("image", cut_after=size), "download", "Code=-1005")
              for size in (0, 1, 1000)),
            Row("announced more", faults("image", announce=100), "download", "Code=-1005"),
            Row("announced less", faults("image", announce=-100), "install", NO_REASON),
            Row("some redirects", faults("image", redirects=5), "installed"),
            Row("too many redirects", faults("image", redirects=25), "download", "Code=-1007"),
            Row("redirect to http", faults("image", redirects=1, redirect_to="http"), "download", "Code=-1002"),
            Row("redirect to a file", faults("image", redirects=1, redirect_to="file:///etc/hostname"), "download",
                "Code=-1002"),
            Row("redirect without a host", faults("image", redirects=1, redirect_to="https:///x"), "download",
                "Code=-1000"),
        ])

    def test_addresses(self):
        self.run_rows([
            *(Row(f"name {path}", image_at("https://{host}" + path), "download") for path in (
                "/", "/..", "/%2e%2e", "/%2F", "/..%2F..%2FTolvix.dmg", "/a%2Fb.dmg", "/.", "/My%20App.dmg")),
            Row("a name of 300 letters", image_at("https://{host}/" + "a" * 300 + ".dmg"), "download", "Code=-3000"),
            Row("no authority", image_at("https:///Tolvix.dmg"), "download", "Code=-1000"),
            Row("unknown scheme", image_at("gopher://{host}/Tolvix.dmg"), "download", "Code=-1002"),
            Row("mail", image_at("mailto:Tolvix.dmg"), "download"),
            Row("a host that does not exist", image_at("https://tolvix.invalid/Tolvix.dmg"), "download", "Code=-1003"),
            Row("a closed port", image_at(CLOSED_PORT + "/Tolvix.dmg"), "download", "Code=-1004"),
            Row("a file that is not there", image_at("file:///nonexistent/Tolvix.dmg"), "download", "Code=-1100"),
            Row("a folder", image_at("file:///etc"), "download", "Code=-1101"),
            Row("a query behind the name", image_at("https://{host}/Tolvix.dmg?x=1"), "installed"),
        ])

    def test_full_disk(self):
        self.run_rows([
            Row("full", both(image_bytes(lambda _: bytes(200_000)), small_disk("64k")), "download", "Code=-3003"),
            Row("no folder can be made", small_disk("64k,nr_inodes=1"), "download", "No space left on device"),
            Row("full while attaching", small_disk("64k"), "install", r"attach failed - .*No space left on device"),
        ])


class InstallRows(FaultRows):
    def test_images(self):
        self.run_rows([
            Row("no image", image_bytes(lambda _: b"no image at all"), "install", NO_REASON),
            Row("empty", image_bytes(lambda _: b""), "install", NO_REASON),
            Row("first half", image_bytes(lambda data: data[:len(data) // 2]), "install", NO_REASON),
            Row("no trailer", image_bytes(lambda data: data[:-512]), "install", NO_REASON),
            Row("trailer alone", image_bytes(lambda data: data[-512:]), "install", NO_REASON),
            Row("blocks of zeros", image_bytes(lambda data: bytes(len(data) - 512) + data[-512:]), "install", NO_REASON),
            Row("no product", volume(replace_with(lambda path: path.with_name("Other.app").mkdir())), "install",
                "Code=4002 \"Couldn't find file at path"),
            Row("product is a dangling link", volume(replace_with(lambda path: path.symlink_to("nowhere"))), "install"),
            Row("much beside the product", volume(lambda folder: (folder / "Read me.txt").write_text("x")), "installed"),
        ])

    def test_helper(self):
        self.run_rows([
            Row("missing", in_sandbox(lambda trial: (trial.installer / "Contents/Helpers/hdiutil").unlink()), "install",
                NO_REASON),
            Row("not executable", helper("exit 0", 0o644), "install", NO_REASON),
            Row("fails", helper("exit 1"), "install", NO_REASON),
            Row("fails after output", helper("echo attached; exit 3"), "install", NO_REASON),
            Row("killed", helper("kill -9 $$"), "install", NO_REASON),
            Row("does nothing", helper("cat >/dev/null"), "install", "Code=4002"),
            Row("is gone before its input comes", helper("exit 0"), "install"),
            Row("no interpreter", in_sandbox(
                lambda trial: (trial.installer / "Contents/Helpers/hdiutil").write_text("#!/nonexistent\n")), "install",
                NO_REASON),
        ])

    def test_destination(self):
        self.run_rows([
            Row("no applications folder", in_sandbox(lambda trial: trial.application.parent.rmdir()), "install",
                "Code=4001", after=lambda case, _: case.assertFalse(case.trial.application.parent.exists())),
            Row("an old product and no image", both(old_product(old_folder()), image_bytes(lambda _: b"no image")),
                "install", NO_REASON, after=expect_old_product),
            Row("applications folder is a link", in_sandbox(lambda trial: (
                trial.application.parent.rename(trial.root / "elsewhere"),
                trial.application.parent.symlink_to("elsewhere"))), "installed"),
            Row("an old product", old_product(old_folder()), "installed"),
            Row("an old product with closed folders", old_product(old_folder(0)), "installed"),
            Row("an old product that is a file", old_product(lambda path: path.write_text("old")), "installed"),
            Row("an old product that is a dangling link", old_product(lambda path: path.symlink_to("nowhere")),
                "installed"),
            Row("an old product that is a pipe", old_product(os.mkfifo), "installed"),
        ])

    def test_launch(self):
        self.run_rows([
            Row("missing", executable(lambda path: path.unlink()), "launch", "Code=4002 \"Couldn't open application"),
            Row("not executable", executable(lambda path: path.chmod(0o644)), "launch"),
            Row("no interpreter", executable(lambda path: path.write_text("#!/nonexistent\n")), "launch"),
            Row("off by a word", arguments("--auto-start", "off"), "installed",
                after=lambda case, run: case.assertNotIn("Launching", run.stderr)),
        ])


class LogRows(FaultRows):
    def test_transport(self):
        quiet = {"after": lambda case, run: case.assertNotIn("Request did fail", run.stderr)}
        failed = "Request did fail with error: .*Code="
        self.run_rows([
            *(Row(f"status {status}", faults("log", status=status), "installed", **quiet) for status in (204, 404, 500)),
            *(Row(f"framing {kind}", faults("log", framing=kind), "installed", **quiet) for kind in ("chunked", "close")),
            Row("slow", faults("log", delay=0.2), "installed", **quiet),
            Row("refused", lambda case, _: case.services.log.refuse_connections(), "installed", failed + "-1004"),
            *(Row(f"certificate {kind}", faults("log", certificate=kind), "installed", failed + "-1200")
              for kind in ("wrong-host", "expired")),
            Row("no host", in_sandbox(lambda trial: trial.set_information(TXInstallerLogHost="")), "installed",
                failed + "-1000"),
            Row("host with a blank", in_sandbox(lambda trial: trial.set_information(TXInstallerLogHost="a b")),
                "installed", failed + "-1000",
                after=lambda case, run: case.assertEqual(run.stderr.count("Request did fail"), len(INSTALLED))),
            Row("too many redirects", faults("log", redirects=25), "installed", failed),
        ])


class SettingsRows(FaultRows):
    def test_file(self):
        kept = {"after": expect_identifier}
        self.run_rows([
            Row("as written", settings(b"[General]\n" + KEPT), "installed", **kept),
            Row("a comment", settings(b"; hello\n# there\n[General]\n" + KEPT), "installed", **kept),
            Row("a line without a value", settings(b"[General]\nnonsense\n" + KEPT), "installed", **kept),
            Row("a byte order mark", settings(b"\xef\xbb\xbf[General]\n" + KEPT), "installed", **kept),
            Row("another program's Latin-1", settings(b"[General]\nname=M\xfcller\n" + KEPT), "installed", **kept),
            Row("line ends of another system", settings(b"[General]\r\n" + KEPT.replace(b"\n", b"\r\n")), "installed",
                **kept),
            Row("first partner stays", both(settings(b"[General]\nTXPartnerName=first\n" + KEPT),
                                            arguments("--partnerName", "second")), "installed",
                after=expect_partner("first")),
            Row("a partner beyond ASCII", arguments("--partnerName", "Größe"), "installed", after=expect_partner("Größe")),
        ])

    def test_information_list(self):
        def without(key):
            return in_sandbox(lambda trial: trial.set_information(**{key: None}))
        self.run_rows([
            Row("no build version", without("CFBundleVersion"), "installed"),
            Row("no version", without("CFBundleShortVersionString"), "installed"),
            Row("no product identifier", without("TXProductBundleIdentifier"), "installed"),
            Row("a version of another kind", in_sandbox(lambda trial: trial.set_information(CFBundleVersion=["1", "2"])),
                "installed", after=lambda case, _: case.assertIn("currentSoftwareVersion=&",
                                                                 case.services.binaries.requests[0].target)),
        ])


class EnvironmentRows(FaultRows):
    def test_variables(self):
        self.run_rows([
            Row("no certificates", environment(SSL_CERT_FILE="/nonexistent"), "check", NO_REASON),
            Row("a proxy that is down", environment(https_proxy="http://127.0.0.1:1"), "check", NO_REASON),
            Row("a proxy that is not for this host",
                environment(https_proxy="http://127.0.0.1:1", no_proxy="127.0.0.1"), "installed"),
            Row("a locale that does not exist", environment(LC_ALL="xx_YY.UTF-8"), "installed"),
            Row("a list of languages", environment(LANGUAGE="xx:de:fr"), "installed"),
            Row("a dumb terminal", environment(TERM="dumb"), "installed"),
            Row("no runtime folder", environment(XDG_RUNTIME_DIR=""), "installed"),
            Row("a session bus that is not there", environment(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent"),
                "installed"),
            Row("a display that cannot be reached", environment(DISPLAY=":7654"), "installed"),
            Row("a compositor that cannot be reached", environment(WAYLAND_DISPLAY="wayland-7654"), "installed"),
            Row("relative settings folder", environment(XDG_CONFIG_HOME="relative"), "installed"),
            Row("a blank in the temporary folder", both(
                in_sandbox(lambda trial: (trial.folder / "two words").mkdir(mode=0o700)),
                environment(TMPDIR="{folder}/two words")), "download", "Code=-3000"),
            Row("a temporary folder with dots", environment(TMPDIR="{folder}/./tmp/../tmp/"), "installed"),
        ])

    def test_what_the_parent_left(self):
        ignored = "trap '' CHLD PIPE TERM INT HUP XFSZ; exec \"$@\""
        blocked = ("import os, signal, sys\nsignal.pthread_sigmask(signal.SIG_BLOCK, signal.valid_signals())\n"
                   "os.execv(sys.argv[1], sys.argv[1:])")
        self.run_rows([
            Row("signals ignored", shell(ignored), "installed"),
            Row("signals blocked", starter(blocked), "installed"),
            Row("input closed", shell('exec "$@" <&-'), "installed"),
            Row("output closed", shell('exec "$@" >&-'), "installed"),
            Row("input and output closed", shell('exec "$@" <&- >&-'), "installed"),
            Row("a folder that is gone", shell('d=$(mktemp -d); cd "$d"; rmdir "$d"; exec "$@"'), "installed"),
            Row("a limit on the length of files", shell('ulimit -f 8; exec "$@"'), "download", "Code=-3003"),
            Row("few descriptors", shell('ulimit -n 64; exec "$@"'), "installed"),
        ])


class KilledRuns(InstallerCase):
    """A run that is killed at some point, and the one after it."""

    def kill_at(self, step):
        self.show_events()
        process = subprocess.Popen(self.trial.command("--auto-start", "NO"), env=self.trial.environment(),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        try:
            # As soon as the event has been printed.
            said = ""
            for line in process.stderr:
                said += line
                if f"[INSTALLER_LOG] {step}" in said and line == "}\n":
                    break
            process.kill()
            process.communicate(timeout=30)
        finally:
            process.kill()
            process.wait()
        self.assertEqual(process.returncode, -signal.SIGKILL)
        return self.identifier(said)

    @staticmethod
    def identifier(printed):
        """The one in printed events; there is no other."""
        identifier, = set(re.findall(r"anonymouscomputerid = \"?([0-9A-F-]+)", printed))
        return identifier

    def test_next_run_finds_nothing_in_its_way_and_tidies_up(self):
        for step in ("23.01", "23.12", "23.21", "23.22", "23.31"):
            with self.subTest(step):
                identifier = self.kill_at(step)
                settings_folder = self.trial.home / ".config"
                self.assertEqual([path.name for path in settings_folder.iterdir()],
                                 [f"{self.trial.information()['TXAgentPreferencesDomain']}.conf"])
                # The helper that attaches for the killed run ends by itself, and folders made just now are left alone.
                time.sleep(3.1)
                run = self.trial.run("--auto-start", "NO")
                self.assertEqual(self.posted_steps(run), INSTALLED, run.stderr)
                self.assertEqual(self.identifier(run.stderr), identifier)
                self.assert_nothing_left()


if __name__ == "__main__":
    unittest.main()
