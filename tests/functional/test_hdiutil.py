"""Drives the disk-image helper; its path comes from the environment variable TOLVIX_HDIUTIL."""
import os
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from tests.tools.trees import decomposed, tree

from diskimage import damage
from diskimage.build import make_image
from diskimage.hfs_volume import Volume
from diskimage.tree import scan
from diskimage.udif import CHUNK_SECTORS, SECTOR_SIZE
from sample_product import make_sample_product

FLAGS = ("-noverify", "-nobrowse", "-noautoopen")
MARK = 0o1555
PRIVATE = "\0\0\0\0HFS+ Private Data".encode("utf-16-be")
CHUNK_SIZE = CHUNK_SECTORS * SECTOR_SIZE
# Long enough for a loaded machine; only a helper that hangs comes near it.
LIMIT = 60

FAKE_7ZIP = """\
#!/bin/sh
[ $# -eq 0 ] && echo '7-Zip (z) {version} (x64) : Copyright' && exit 0
{extract}
"""


def setUpModule():
    path = os.environ.get("TOLVIX_HDIUTIL")
    if not path or not os.access(path, os.X_OK):
        raise RuntimeError("TOLVIX_HDIUTIL must name the built helper program")


def mode_of(path):
    return stat.S_IMODE(os.lstat(path).st_mode)


def write_plain_volume(folder, path, rename=None, targets=None):
    """A volume without a wrapping; `rename` gives names in it that no folder could hold, `targets` gives links such."""
    entries = scan(str(folder), "Plain")
    for entry in entries:
        entry.target = (targets or {}).get(entry.name.decode("utf-16-be"), entry.target)
        entry.size = len(entry.target) if entry.is_link else entry.size
        entry.name = (rename or {}).get(entry.name.decode("utf-16-be"), entry.name)
    with open(path, "wb") as file:
        for block in Volume(entries).stream():
            file.write(block)


class HelperTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="hdiutil-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(subprocess.run, ["chmod", "-R", "u+rwX", self.folder], check=True)
        self.helper = os.environ["TOLVIX_HDIUTIL"]
        self.mount = self.folder / "mount point"
        self.mount.mkdir()

    def content(self):
        folder = self.folder / "content"
        folder.mkdir(exist_ok=True)
        return folder

    def image(self, file_name="small.dmg", **options):
        """An image of the content folder, with one file if that is empty."""
        if not any(self.content().iterdir()):
            (self.content() / "file").write_bytes(b"content\n")
        make_image(str(self.content()), str(self.folder / file_name), **options)
        return self.folder / file_name

    def run_helper(self, *words, **options):
        return subprocess.run([self.helper, *words], input=b"yes\n", capture_output=True, timeout=LIMIT,
                              check=False, **options)

    def attach(self, image, mount=None, **options):
        return self.run_helper("attach", image, "-mountpoint", mount or self.mount, *FLAGS, **options)

    def assert_refused(self, result, reason=""):
        self.assertEqual(result.returncode, 1, result)
        self.assertEqual(result.stdout, b"")
        self.assertRegex(result.stderr, rb"\Ahdiutil: [^\n]*" + reason.encode() + rb"[^\n]*\n\Z")

    def assert_attach_refused(self, image, reason, **options):
        before = mode_of(self.mount)
        self.assert_refused(self.attach(image, **options), reason)
        self.assertEqual((os.listdir(self.mount), mode_of(self.mount)), ([], before))

    def use_fake_7zip(self, extract, version="25.01", folder="helpers"):
        """From now on the helper is a copy beside this 7-Zip."""
        tool = self.folder / folder / "7zz"
        tool.parent.mkdir(exist_ok=True)
        tool.write_text(FAKE_7ZIP.format(version=version, extract=extract))
        tool.chmod(0o755)
        self.helper = shutil.copy(os.environ["TOLVIX_HDIUTIL"], tool.parent)

    def in_namespace(self, script, *words, **options):
        """Runs a shell script that may mount; skips the test where nobody lets it."""
        command = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-ec"]
        if not shutil.which("unshare") or subprocess.run(
                [*command, "mount -t tmpfs none /mnt"], capture_output=True, check=False).returncode:
            self.skipTest("needs a mount namespace")
        return subprocess.run([*command, script, *map(str, words)], capture_output=True, timeout=LIMIT,
                              check=False, **options)


class AttachTest(HelperTest):
    def make_traits(self):
        make_sample_product(self.content() / "product")
        folder = self.content() / "traits"
        (folder / ".journal").mkdir(parents=True)
        (folder / ".journal" / "kept").write_bytes(b"")
        for mode in (0o400, 0o444, 0o555, 0o600, 0o755, 0o777):
            (folder / f"{mode:o}").write_bytes(b"x")
            (folder / f"{mode:o}").chmod(mode)
        (folder / "long" / ("n" * 255)).mkdir(parents=True)
        for number, target in enumerate(("/Applications", "/a/", "/" + "x" * 900, "/proc/self/cwd/x",
                                         "../../etc/passwd", "..", ".", "self", "a/../b", "missing", "new\nline",
                                         "caf\u00e9", "/", "//", "/usr//lib", "/usr/./lib", "a//b", "./a/", "/../x",
                                         "/a/../../b", "../" * 300 + "x", "y/" * 2000)):
            (folder / f"link{number}").symlink_to(target)
        (folder / "self").symlink_to("self")
        # More than one chunk, with text, noise and zeros.
        (folder / "large").write_bytes(b"text " * CHUNK_SIZE + os.urandom(CHUNK_SIZE) + bytes(3 * CHUNK_SIZE) + b"!")
        (folder / "caf\u00e9 \u1e9b\u0323 \uac00").write_bytes(b"composed")
        os.utime(folder / "large", (1, 1))

    def test_everything_on_a_volume_comes_out_as_it_went_in(self):
        self.make_traits()
        expected = decomposed(tree(self.content()))
        for layout, compression in (("volume", "zlib"), ("disk", "zlib"), ("volume", "bzip2"), ("disk", "xz"),
                                    ("volume", "none")):
            with self.subTest(layout=layout, compression=compression):
                image = self.image(f"{layout}-{compression}.dmg", name="To: lvix", layout=layout,
                                   compression=compression)
                result = self.attach(image)
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                self.assertEqual(os.fsdecode(result.stdout), f"{image}\tApple_HFS\t{self.mount}\n")
                self.assertEqual(tree(self.mount), expected)
                self.assertEqual(mode_of(self.mount), MARK)
                self.assert_refused(self.attach(image), "in use")
                self.assertEqual(self.run_helper("detach", self.mount, "-force").returncode, 0)
                self.assertFalse(self.mount.exists())
                self.mount.mkdir()

    def test_thousands_of_files_come_out_although_they_need_index_levels(self):
        for number in range(6000):
            folder = self.content() / f"folder {number % 23}"
            folder.mkdir(exist_ok=True)
            (folder / f"{number} {'long name ' * (number % 20)}").write_bytes(b"%d" % number)
        self.assertEqual(self.attach(self.image()).returncode, 0)
        self.assertEqual(tree(self.mount), tree(self.content()))

    def test_names_on_the_command_line_are_taken_as_they_are(self):
        self.image("-*?[a] @list\n.dmg")
        mount = self.folder / os.fsdecode(b"-odd \xff\n-name")
        mount.mkdir()
        for image, place in ((self.folder / "-*?[a] @list\n.dmg", mount), ("./-*?[a] @list\n.dmg", "mount point")):
            result = self.run_helper("attach", image, "-noverify", "-mountpoint", place, cwd=self.folder)
            self.assertEqual((result.returncode, os.listdir(self.folder / place)), (0, ["file"]))

    def test_what_7zip_cannot_read_right_is_refused(self):
        (self.content() / "private" / "iNode17").mkdir(parents=True)
        write_plain_volume(self.content(), self.folder / "hard.dmg", {"private": PRIVATE})
        self.assert_attach_refused(self.folder / "hard.dmg", "hard links")
        shutil.rmtree(self.content())

        (self.content() / "link").symlink_to("placeholder")
        for target, reason in ((b"", "a link without a target"), (b"x/" * 2500, "too long"),
                               (b"before\0behind", "a link whose target")):
            write_plain_volume(self.content(), self.folder / "link.dmg", targets={"link": target})
            self.assert_attach_refused(self.folder / "link.dmg", reason)

    def test_the_bookkeeping_of_a_plain_volume_stays_out(self):
        for name in (".journal", ".journal_info_block"):
            (self.content() / name).write_bytes(b"x")
        (self.content() / "private" / "temp3").mkdir(parents=True)
        write_plain_volume(self.content(), self.folder / "plain.dmg", {"private": PRIVATE})
        self.assertEqual(self.attach(self.folder / "plain.dmg").returncode, 0)
        self.assertEqual((os.listdir(self.mount), mode_of(self.mount)), ([], MARK))


class BadImageTest(HelperTest):
    def test_bad_images_leave_an_empty_mount_point(self):
        # Eight letters at random compress to three bits each, so every chunk is a compressed one.
        (self.content() / "text").write_bytes(os.urandom(2 << 20).translate(bytes(b"abcdefgh" * 32)))
        good = str(self.image("good.dmg"))
        last_chunk = len(damage.stored_chunks(good)) - 1
        rows = (
            (os.mkfifo, "not a file"),
            (os.mkdir, "not a file"),
            (lambda bad: None, "No such file"),
            (lambda bad: damage.cut(good, bad, 0), "is empty"),
            (lambda bad: Path(bad).write_bytes(b"just a text\n"), "not a disk image"),
            (lambda bad: damage.cut(good, bad, -512), "not a disk image"),
            (lambda bad: damage.cut(good, bad, 1 << 19), "not a disk image"),
            (lambda bad: Path(bad).write_bytes(Path(good).read_bytes()[-512:]), "could not be read"),
            (lambda bad: damage.with_trailer(good, bad, list_offset=1 << 50), "could not be read"),
            (lambda bad: damage.with_damaged_chunk(good, bad, 0), "could not be read"),
            (lambda bad: damage.with_damaged_chunk(good, bad, last_chunk), "could not be read"),
            (lambda bad: damage.holding(b"no volume", bad), "could not be read"),
            (lambda bad: damage.with_two_volumes(str(self.content()), str(self.content()), bad), "could not be read"),
            (lambda bad: damage.encrypted(good, bad), "is encrypted"))
        for number, (make_bad, reason) in enumerate(rows):
            with self.subTest(number):
                make_bad(str(self.folder / f"{number}.dmg"))
                self.assert_attach_refused(self.folder / f"{number}.dmg", reason)

    def test_unusable_mount_points_are_left_alone(self):
        image = self.image()
        (self.mount / "mine").write_bytes(b"mine")
        (self.folder / "empty").mkdir()
        (self.folder / "link").symlink_to("empty")
        before = tree(self.folder)
        for name in ("missing", "mount point", "small.dmg", "link", "link/", "empty/.", "empty/.."):
            with self.subTest(name):
                self.assert_refused(self.run_helper("attach", image, "-mountpoint", f"{self.folder}/{name}"))
        self.assertEqual(tree(self.folder), before)


class SevenZipTest(HelperTest):
    def test_only_a_volume_that_was_read_counts(self):
        image = self.image()
        for extract, reason in (
                ("exit 2", "could not be read"),
                ("echo x >partial; kill -9 $$", "could not be read"),
                ("mkdir V; printf 'Type = Dmg\\nFiles: 0\\n'", "no volume"),
                ("mkdir V; printf 'Type = Dmg\\nType = zip\\nFiles: 0\\n'", "no volume"),
                ("mkdir V; printf 'Type = zip\\nType = HFS\\nFiles: 0\\n'", "no volume"),
                ("mkdir V W; printf 'Type = HFS\\nFiles: 0\\n'", "exactly one volume"),
                ("mkdir V; >V/a; printf 'Type = HFS\\nFiles: 2\\n'", "files that cannot be read"),
                ("mkdir -p V/.attach.$PPID; touch V/1 V/2 V/3 V/4; printf 'Type = HFS\\nFiles: 4\\n'", "File exists"),
                ("mkfifo pipe; printf 'Type = APFS\\n'", "device, pipe or socket")):
            with self.subTest(extract):
                self.use_fake_7zip(extract)
                self.assert_attach_refused(image, reason)

    def test_set_id_bits_do_not_come_out(self):
        self.use_fake_7zip("mkdir -p V/d; >V/f; chmod 3755 V/d; chmod 6755 V/f; printf 'Type = HFS\\nFiles: 1\\n'")
        self.assertEqual(self.attach(self.image()).returncode, 0)
        self.assertEqual([mode_of(self.mount / name) for name in ("d", "f")], [0o755, 0o755])

    def test_it_gets_nothing_it_does_not_need(self):
        log = self.folder / "log"
        self.use_fake_7zip(f"(env; umask; ls /proc/$$/fd) >'{log}'; exit 2")
        with open(log, "w") as inherited:
            environment = {**os.environ, "SECRET": "x", "TMPDIR": str(self.folder)}
            self.assert_attach_refused(self.image(), "", pass_fds=[inherited.fileno()], env=environment)
        lines = log.read_text().split("\n")
        self.assertLessEqual({f"TMPDIR={self.folder}", "LC_ALL=C", "0000", "0", "1", "2"}, set(lines))
        self.assertFalse([line for line in lines if "SECRET" in line or line in ("3", "4", "5", "6", "7")], lines)

    def test_a_newer_one_elsewhere_takes_the_place_of_an_old_one(self):
        self.use_fake_7zip("touch old; exit 2", version="16.02")
        self.assertEqual(self.attach(self.image()).returncode, 0)

    def test_without_a_new_one_the_message_names_what_is_needed(self):
        image = self.image()
        script = ('for tool in /usr/bin/7zz /usr/bin/7z /usr/local/bin/7zz /usr/local/bin/7z; do '
                  'test ! -e $tool || mount --bind /dev/null $tool; done; "$0" attach "$1" -mountpoint "$2"')
        self.use_fake_7zip("", "26.00", "relative")
        self.helper = os.environ["TOLVIX_HDIUTIL"]
        for prepare, reason in ((lambda: None, r"could not find 7-Zip 25 or newer\n"),
                                (lambda: self.use_fake_7zip("", "24.09"), r"25 or newer \(.*is version 24.09\)")):
            prepare()
            result = self.in_namespace(script, self.helper, image, self.mount, cwd=self.folder,
                                       env={"PATH": "/usr/bin:/bin:relative"})
            self.assertEqual((result.returncode, os.listdir(self.mount)), (1, []))
            self.assertRegex(result.stderr.decode(), reason)


class InterruptionTest(HelperTest):
    def start_slow_attach(self, wrapper=()):
        """Starts an attach that is in the middle of the extraction when this returns."""
        ready = self.folder / "ready"
        ready.unlink(missing_ok=True)
        self.use_fake_7zip(f"mkdir V; >V/file; echo $$ >ready; mv ready '{ready}'; exec sleep {LIMIT * 2}")
        process = subprocess.Popen([*wrapper, self.helper, "attach", self.image(), "-mountpoint", self.mount],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   # Tests that run in the background have it ignored.
                                   preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        while not ready.exists() and process.poll() is None:
            time.sleep(0.005)
        self.assertIsNone(process.poll())
        return process, int(ready.read_text())

    def assert_gone(self, pid):
        with self.assertRaises(ProcessLookupError):
            os.kill(pid, 0)

    def test_a_signal_empties_the_mount_point(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                process, extractor = self.start_slow_attach()
                process.send_signal(number)
                _, errors = process.communicate(timeout=LIMIT)
                self.assertEqual((process.returncode, os.listdir(self.mount)), (1, []))
                self.assertIn(b"interrupted", errors)
                self.assert_gone(extractor)

    def test_nothing_stays_when_the_starter_ends(self):
        starter = "import subprocess, sys; subprocess.call(sys.argv[1:])"
        process, extractor = self.start_slow_attach([sys.executable, "-c", starter])
        process.kill()
        # The end of output is the end of the helper, which holds the other end.
        _, errors = process.communicate(timeout=LIMIT)
        self.assertIn(b"interrupted", errors)
        self.assertFalse(self.mount.exists())
        self.assert_gone(extractor)


class CommandLineTest(HelperTest):
    def test_senseless_command_lines_show_the_usage(self):
        image, mount = str(self.image()), str(self.mount)
        for words in ((), ("info",), ("attach", image), ("attach", "-mountpoint", mount),
                      ("attach", image, "-mountpoint"), ("attach", image, image, "-mountpoint", mount),
                      ("attach", image, "-mountpoint", mount, "-readonly"), ("attach", image, "-mountpoint", ""),
                      ("detach",), ("detach", mount, mount)):
            with self.subTest(words):
                result = self.run_helper(*words)
                self.assertEqual((result.returncode, result.stdout), (1, b""))
                self.assertRegex(result.stderr, rb"\Ahdiutil: [^\n]+\nUsage: hdiutil attach ")
        self.assertEqual(os.listdir(self.mount), [])


class DetachTest(HelperTest):
    def test_what_attach_did_not_fill_is_left_alone(self):
        (self.mount / "mine").write_bytes(b"mine")
        marked = self.folder / "marked"
        marked.mkdir()
        (marked / "file").write_bytes(b"")
        (self.folder / "link").symlink_to("marked")
        (self.folder / "file").write_bytes(b"")
        (self.folder / "file").chmod(MARK)
        for mode in (0o555, 0o1755, 0o1777, 0o3555):
            (self.folder / f"{mode:o}").mkdir()
            (self.folder / f"{mode:o}").chmod(mode)
        marked.chmod(MARK)
        before = tree(self.folder)
        # All within the test's folder: a helper that fails this test would remove what it is aimed at.
        for name in ("mount point", "link", "link/", "marked/.", "marked/..", "file", "missing", "555", "1755", "1777",
                     "3555"):
            with self.subTest(name):
                self.assert_refused(self.run_helper("detach", f"{self.folder}/{name}", "-force"))
        self.assertEqual(tree(self.folder), before)

    def test_links_are_removed_and_not_followed(self):
        outside = self.folder / "outside"
        outside.mkdir()
        (outside / "mine").write_bytes(b"mine")
        (self.mount / "closed" / "deep").mkdir(parents=True)
        for place in (self.mount, self.mount / "closed"):
            (place / "folder link").symlink_to(outside)
            (place / "file link").symlink_to(outside / "mine")
        (self.mount / "closed").chmod(0)
        self.mount.chmod(MARK)
        self.assertEqual(self.run_helper("detach", "-force", f"{self.mount}/").returncode, 0)
        self.assertFalse(self.mount.exists())
        self.assertEqual((outside / "mine").read_bytes(), b"mine")

    def test_another_file_system_inside_is_left_alone(self):
        script = ('mkdir "$1/inner" "$1/other"; mount --bind "$2" "$1/inner"; chmod 1555 "$1"; '
                  '! "$0" detach "$1"; umount "$1/inner"; ls "$1"; stat -c %a "$1"; "$0" detach "$1"')
        self.content().joinpath("mine").write_bytes(b"mine")
        result = self.in_namespace(script, self.helper, self.mount, self.content())
        self.assertEqual(result.stdout.split(b"\n")[:2], [b"inner", b"1555"], result.stderr)
        self.assertTrue((self.content() / "mine").exists())
        self.assertFalse(self.mount.exists())
