"""Partners' installers: what is refused, what is changed, that nothing else is, and what the judge says of a bundle."""
import hashlib
import os
import plistlib
import shutil
import struct
import subprocess
import tarfile
import tempfile
import unittest
from pathlib import Path

from tests.functional.installer_case import INSTALLED, sample_image
from tests.packaging.build import BUILD, BUNDLE_NAME, INFORMATION, REPOSITORY

from services import LocalServices
from trial import Trial

BUNDLE = BUILD / BUNDLE_NAME
BRAND = REPOSITORY / "tools" / "brand"
ICON = REPOSITORY / "resources" / "icon.svg"
VERSION = INFORMATION["CFBundleVersion"]


def digest(folder):
    """Names, dates, modes and contents of everything below the folder."""
    seen = hashlib.sha256()
    for path in sorted(folder.rglob("*")):
        status = path.lstat()
        seen.update(f"{path.relative_to(folder)} {status.st_mode:o} {status.st_mtime_ns}".encode())
        seen.update(os.readlink(path).encode() if path.is_symlink() else path.read_bytes() if path.is_file() else b"")
    return seen.hexdigest()


class BrandCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tolvix-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.output = self.folder / "out"

    def brand(self, source, *words, output=None):
        return subprocess.run([str(BRAND), str(source), str(output or self.output), *map(str, words)],
                              capture_output=True, text=True, env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})

    def assert_refused(self, done, *parts):
        self.assertEqual((done.returncode, done.stdout), (1, ""), done.stderr)
        for part in parts:
            self.assertIn(part, done.stderr)


class Refusals(BrandCase):
    def test_values_that_would_break_something(self):
        rows = {"--partner": ("", "a&b", "a=b", "a b", "caf\u00e9", "a\nb", "a+b", "a%20", "x" * 65),
                "--name": ("", " a", "a/b", ".hidden", "-rf", "a\x07b", 'a"b', "a\\b", "\u00e9" * 101),
                "--binaries-host": ("", "https://a.example", "a.example/path", "a example", "a.example:0",
                                    "a.example:65536", "-a.example", "a..example", "a@b", "a.example:", "\u00e9.example"),
                "--identifier": ("", "acme", "com.acme inst", "com..acme", "com/acme.x", "../acme.x"),
                "--store-identifier": ("", "12a")}
        for option, values in rows.items():
            for value in values:
                with self.subTest(option, value=value):
                    self.assert_refused(self.brand(BUNDLE, f"{option}={value}"), option)
        self.assertFalse(self.output.exists())

    def test_files_that_are_not_what_they_should_be(self):
        wide = b"\x89PNG\r\n\x1a\n" + struct.pack(">I4sII", 13, b"IHDR", 300, 256)
        cases = {"text.svg": b"no markup", "page.svg": b"<html/>", "wide.png": wide, "cut.png": wide[:10]}
        for name, data in cases.items():
            with self.subTest(name):
                (self.folder / name).write_bytes(data)
                self.assert_refused(self.brand(BUNDLE, "--icon", self.folder / name), "--icon", name)
        self.assert_refused(self.brand(BUNDLE, "--image", ICON), "--image", "icon.svg")
        self.assert_refused(self.brand(self.folder / "missing"), "missing")
        (self.folder / "empty").mkdir()
        self.assert_refused(self.brand(self.folder / "empty"), "no bundle")
        self.assert_refused(self.brand(BUNDLE, output=BUNDLE / "Contents" / "out"), "into the source")
        (self.folder / "broken.deb").write_bytes(b"!<arch>\n")
        self.assert_refused(self.brand(self.folder / "broken.deb"), "dpkg-deb")

    def test_never_overwrites_and_leaves_the_source_alone(self):
        before = digest(BUNDLE)
        self.assertEqual(self.brand(BUNDLE, "--partner", "acme").returncode, 0)
        made = digest(self.output)
        self.assert_refused(self.brand(BUNDLE, "--partner", "other"), "is there already")
        self.assertEqual((digest(self.output), digest(BUNDLE)), (made, before))

    def test_archive_that_leads_elsewhere(self):
        with tarfile.open(self.folder / "evil.tar.xz", "w:xz") as archive:
            link = tarfile.TarInfo("top/link")
            link.type, link.linkname = tarfile.SYMTYPE, "../../elsewhere"
            archive.addfile(link)
        self.assert_refused(self.brand(self.folder / "evil.tar.xz"), "top/link")


class Branding(BrandCase):
    def test_says_what_it_changed_and_makes_the_same_bytes_again(self):
        words = ("--partner", "acme", "--name", "Acme \u00dcber Installer", "--log-host", "log.acme.example:8443")
        done = self.brand(BUNDLE, *words)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("TXPartnerName: (none) -> acme", done.stdout)
        made = self.output / "Acme \u00dcber Installer.app"
        self.assertIn(f"made {made}", done.stdout)
        information = plistlib.loads((made / "Contents" / "Info.plist").read_bytes())
        expected = {**INFORMATION, "TXPartnerName": "acme", "CFBundleName": "Acme \u00dcber Installer",
                    "TXInstallerLogHost": "log.acme.example:8443"}
        self.assertEqual(information, expected)
        self.brand(BUNDLE, *words, output=self.folder / "again")
        self.assertEqual(digest(self.output), digest(self.folder / "again"))

    @unittest.skipUnless(shutil.which("rsvg-convert"), "needs rsvg-convert")
    def test_icon_from_either_form(self):
        for icon in (ICON, REPOSITORY / "platform" / "qt" / "icons" / "icon-256.png"):
            with self.subTest(icon.name):
                output = self.folder / icon.suffix
                self.assertEqual(self.brand(BUNDLE, "--icon", icon, output=output).stderr, "")
                for extent in (16, 256):
                    data = (output / BUNDLE_NAME / "Contents" / "Resources" / "icons" / f"icon-{extent}.png").read_bytes()
                    self.assertEqual(struct.unpack(">II", data[16:24]), (extent, extent))

    @unittest.skipUnless(shutil.which("dpkg-deb"), "needs dpkg-deb")
    def test_packages_become_the_partners(self):
        environment = {**os.environ, "SOURCE_DATE_EPOCH": "1700000000"}
        subprocess.run(["cpack", "--config", str(BUILD / "CPackConfig.cmake"), "-B", str(self.folder / "deb")], check=True,
                       stdout=subprocess.DEVNULL, env=environment)
        subprocess.run(["cmake", "--install", str(BUILD), "--prefix", str(self.folder / "tolvix-installer-1")], check=True,
                       stdout=subprocess.DEVNULL)
        with tarfile.open(self.folder / "tolvix-installer-1.tar.xz", "w:xz") as archive:
            archive.add(self.folder / "tolvix-installer-1", "tolvix-installer-1")
        (self.folder / "Tolvix.dmg").write_bytes(sample_image())
        words = ("--partner", "Acme_1", "--name", "Acme", "--identifier", "com.acme.inst", "--image",
                 self.folder / "Tolvix.dmg")
        for source, prefix in ((next((self.folder / "deb").glob("*.deb")), "usr"),
                               (self.folder / "tolvix-installer-1.tar.xz", "tolvix-installer-acme-1-1")):
            with self.subTest(source.suffix):
                self.assertEqual(self.brand(source, *words).stderr, "")
                self.brand(source, *words, output=self.folder / "again")
                (made,) = self.output.glob("*" + source.suffix)
                self.assertEqual(made.read_bytes(), (self.folder / "again" / made.name).read_bytes())
                tree = self.folder / f"tree{source.suffix}"
                self.unpack(made, tree)
                self.assert_branded(tree / prefix)

    def unpack(self, made, tree):
        if made.suffix == ".deb":
            subprocess.run(["dpkg-deb", "-x", str(made), str(tree)], check=True)
            fields = subprocess.run(["dpkg-deb", "-f", str(made), "Package", "Conflicts"], check=True,
                                    capture_output=True, text=True).stdout
            self.assertEqual(fields, "Package: tolvix-installer-acme-1\nConflicts: tolvix-installer\n")
        else:
            with tarfile.open(made) as archive:
                archive.extractall(tree)

    def assert_branded(self, prefix):
        bundle = prefix / "lib" / "tolvix-installer" / VERSION / "Acme.app"
        self.assertTrue((bundle.parent / "Tolvix.dmg").is_file())
        self.assertEqual((prefix / "bin" / "tolvix-installer").resolve(),
                         (bundle / "Contents" / "MacOS" / "TolvixInstaller").resolve())
        usage = subprocess.run([str(prefix / "bin" / "tolvix-installer"), "--help"], capture_output=True, text=True,
                               env={"HOME": str(self.folder)}).stderr
        self.assertIn("- PartnerName: Acme_1", usage)
        entry = (prefix / "share" / "applications" / "com.acme.inst.desktop").read_text()
        self.assertIn("\nName=Acme\n", entry)
        self.assertIn("\nIcon=com.acme.inst\n", entry)
        icons = {path.name for path in (prefix / "share" / "icons").rglob("*.*g")}
        self.assertEqual(icons, {"com.acme.inst.png", "com.acme.inst.svg"})


class Judging(BrandCase):
    """The judge and the installer itself, on the same bundles."""

    def setUp(self):
        super().setUp()
        self.image = self.folder / "Tolvix.dmg"
        self.image.write_bytes(sample_image())
        self.services = LocalServices(str(self.image))
        self.services.__enter__()
        self.addCleanup(self.services.__exit__)
        self.words = ("--partner", "acme", "--binaries-host", self.services.binaries.host, "--log-host",
                      self.services.log.host, "--support-host", self.services.log.host)

    def judge(self, folder):
        done = subprocess.run([str(BRAND), "--check", str(folder), "--ca", self.services.certificate], capture_output=True,
                              text=True)
        return done.returncode, done.stdout

    def test_branded_bundle_installs_its_own_image(self):
        self.assertEqual(self.brand(BUNDLE, *self.words, "--image", self.image).stderr, "")
        status, text = self.judge(self.output / VERSION)
        self.assertEqual(status, 0, text)
        self.assertIn("is installed without a download", text)
        self.services.binaries.requests.clear()
        with Trial(self.folder / "trial", self.output / VERSION / BUNDLE_NAME, VERSION) as trial:
            shutil.copy(self.output / VERSION / "Tolvix.dmg", trial.installer.parent)
            trial.use_services(self.services)
            run = trial.run("--auto-start", "NO")
        self.assertEqual(sorted(self.services.log.steps), INSTALLED, run.stderr)
        self.assertEqual(self.services.binaries.requests, [])
        self.assertEqual(self.services.log.events[-1].content["partnerName"], "acme")

    def test_what_would_go_wrong(self):
        self.assertEqual(self.brand(BUNDLE, *self.words).stderr, "")
        made = self.output / BUNDLE_NAME
        self.assertEqual(self.judge(self.output)[0], 0)

        shutil.copy(self.image, self.output)
        self.assertRegex(self.judge(self.output)[1], "warning .*Tolvix.dmg is ignored: its folder is named 'out'")
        self.services.log.faults.certificate = "expired"
        self.assertRegex(self.judge(made)[1], "warning .*events are lost: .*expired")
        self.services.binaries.faults.certificate = "wrong-host"
        self.assertRegex(self.judge(made)[1], "FAILURE .*the binaries service: .*certificate is refused")
        (made / "Contents" / "Helpers" / "hdiutil").unlink()
        shutil.rmtree(made / "Contents" / "Resources" / "en.lproj")
        file = made / "Contents" / "Info.plist"
        file.write_bytes(plistlib.dumps({**plistlib.loads(file.read_bytes()), "TXPartnerName": "a&b"}))
        status, text = self.judge(made)
        self.assertEqual(status, 1)
        for pattern in ("FAILURE .*hdiutil is missing", "FAILURE .*English texts", "FAILURE .*TXPartnerName: 'a&b'"):
            self.assertRegex(text, pattern)
