"""Runs by a user who may not write to the applications folder: what sudo lets him do, and what it does not."""
import os
import pwd
import shutil
import signal
import subprocess
import unittest

from tests.functional.desktop import wait_until
from tests.functional.installer_case import DOWNLOADED, INSTALLED, InstallerCase

RULE = "nobody ALL=(root) NOPASSWD: /bin/rm, /usr/bin/rm, /bin/mv, /usr/bin/mv, /usr/bin/chown, /usr/sbin/chown\n"

# In a mount namespace of its own, so that the machine's own rules stay as they are; without a terminal to ask on.
WRAPPER = """set -e
mount -t tmpfs -o mode=755 tmpfs /etc/sudoers.d
[ -z "$SLOW_TOOL" ] || mount --bind "$SLOW_TOOL" "$(readlink -f /bin/rm)"
cp "$1" /etc/sudoers.d/tolvix-test
chmod 440 /etc/sudoers.d/tolvix-test
shift
exec setpriv --reuid nobody --regid nogroup --clear-groups "$@"
"""


@unittest.skipUnless(os.geteuid() == 0 and shutil.which("sudo"), "needs root, to make another user's surroundings")
class UnprivilegedUser(InstallerCase):
    def setUp(self):
        super().setUp()
        if subprocess.run(["unshare", "--mount", "true"], stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("needs mount namespaces")
        self.folder.chmod(0o755)
        self.user = pwd.getpwnam("nobody")

    def command_as_user(self, rule, owner="root:root"):
        """Starts the installer in a sandbox that is the user's own, all but the applications folder."""
        self.show_events()
        subprocess.run(["chown", "-R", "nobody:nogroup", str(self.trial.folder)], check=True)
        subprocess.run(["chown", "-R", owner, str(self.trial.application.parent)], check=True)
        os.chmod(self.services.certificate, 0o644)
        os.chmod(os.path.dirname(self.services.certificate), 0o755)
        rules = self.folder / "rules"
        rules.write_text(rule)
        return ["setsid", "--wait", "unshare", "--mount", "sh", "-c", WRAPPER, "sh", str(rules),
                *self.trial.command("--auto-start", "NO")]

    def run_as_user(self, rule, steps, owner="root:root"):
        run = subprocess.run(self.command_as_user(rule, owner), env=self.trial.environment(), stdin=subprocess.DEVNULL,
                             capture_output=True, text=True, timeout=120)
        self.assertEqual(self.posted_steps(run), steps, run.stderr)
        self.assert_nothing_left()
        return run

    def put_old_product(self):
        (self.trial.application / "Contents").mkdir(parents=True)
        (self.trial.application / "Contents" / "old").write_text("old")

    def owners(self):
        return {(path.lstat().st_uid, path.lstat().st_gid) for path in self.trial.application.rglob("*")}

    def test_rights_replace_the_product_and_keep_its_owner(self):
        self.put_old_product()
        self.run_as_user(RULE, INSTALLED)
        self.assertFalse((self.trial.application / "Contents" / "old").exists())
        self.assertTrue((self.trial.application / "Contents" / "MacOS" / "Tolvix").exists())
        self.assertEqual(self.owners(), {(0, 0)})

    def test_first_installation_belongs_to_the_user(self):
        self.run_as_user(RULE, INSTALLED)
        self.assertEqual(self.owners(), {(self.user.pw_uid, self.user.pw_gid)})

    def test_refused_rights_leave_the_old_product_alone(self):
        self.put_old_product()
        run = self.run_as_user("# no rule\n", [*DOWNLOADED, "23.33", "23.43"])
        self.assertRegex(run.stderr, r"Code=4001 \"Authenticated file copy from .* to .*/Applications/Tolvix.app failed")
        self.assertEqual((self.trial.application / "Contents" / "old").read_text(), "old")
        self.assertEqual(self.owners(), {(0, 0)})

    def test_tool_that_fails_after_the_first_leaves_no_half_product(self):
        self.put_old_product()
        rule = RULE.replace("/bin/mv, /usr/bin/mv, ", "")
        self.run_as_user(rule, [*DOWNLOADED, "23.33", "23.43"])
        self.assertFalse(self.trial.application.exists())

    def test_quit_between_the_tools_waits_for_the_new_product(self):
        self.put_old_product()
        removing, going_on = self.folder / "removing", self.folder / "going on"
        tool = self.folder / "rm"
        remove = shutil.copy(shutil.which("rm"), self.folder / "real-rm")
        tool.write_text(f"#!/bin/sh\n'{remove}' \"$@\"\n: >'{removing}'\n"
                        f"while [ ! -e '{going_on}' ]; do sleep 0.02; done\n")
        tool.chmod(0o755)
        process = subprocess.Popen(self.command_as_user(RULE), env=self.trial.environment(SLOW_TOOL=str(tool)),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(going_on.touch)
        wait_until(removing.exists, "the removal of the old product")
        self.assertFalse(self.trial.application.exists())
        process.send_signal(signal.SIGTERM)
        wait_until(lambda: "[2] Quit" in process.stdout.readline(), "the question")
        with self.assertRaises(subprocess.TimeoutExpired):
            process.wait(1)
        going_on.touch()
        process.communicate(timeout=60)
        self.assertTrue((self.trial.application / "Contents" / "MacOS" / "Tolvix").exists())
        self.assertEqual(self.owners(), {(0, 0)})
        self.assert_nothing_left()

    def test_folder_the_user_owns_needs_no_rights(self):
        self.run_as_user("# no rule\n", INSTALLED, owner="nobody:nogroup")
        self.assertTrue(self.trial.application.is_dir())
