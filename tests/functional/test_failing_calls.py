"""One call of the system after the other fails over a whole run: no crash, no hang, no wrong success, nothing left."""
import array
import os
import subprocess
import unittest
from pathlib import Path

from tests.functional.fault_rows import FaultRows, Start, executable
from tests.functional.installer_case import DOWNLOADED, INSTALLED
from tests.tools.trees import tree, without_times

KINDS = ["open", "read", "write", "mkdir", "unlink", "rename", "fork", "pipe", "socket", "thread"]
LIBRARY = os.environ.get("TOLVIX_FAILING_CALLS", "")
# How many calls of each kind are tried, spread over the run.
SAMPLES = int(os.environ.get("TOLVIX_FAILING_SAMPLES", "4"))


def spread(count: int, samples: int) -> list:
    """Numbers from 1 to count, the first and the last among them."""
    if count <= samples:
        return list(range(1, count + 1))
    return sorted({1 + round(step * (count - 1) / (samples - 1)) for step in range(samples)})


@unittest.skipUnless(LIBRARY and Path(LIBRARY).exists(), "needs the library that lets calls fail")
class FailingCalls(FaultRows):
    def run_with(self, program: str, call: str, start: Start) -> subprocess.CompletedProcess:
        counts = self.folder / "counts"
        counts.write_bytes(bytes(4 * len(KINDS)))
        environment = self.trial.environment(LD_PRELOAD=LIBRARY, FAILING_PROGRAM=program, FAILING_CALL=call,
                                             FAILING_COUNTS=str(counts), **start.environment,
                                             ASAN_OPTIONS="verify_asan_link_order=0")
        run = subprocess.run(self.trial.command(*start.arguments), env=environment, stdin=subprocess.DEVNULL,
                             capture_output=True, text=True, errors="replace", timeout=90)
        self.counts = dict(zip(KINDS, array.array("I", counts.read_bytes())))
        return run

    def try_calls(self, program: str, prepare=lambda case, start: None, steps=INSTALLED, kinds=KINDS) -> None:
        self.original_image = self.image.read_bytes()
        product = self.product_tree()
        self.begin_row(0)
        with self.trial:
            start = Start()
            prepare(self, start)
            self.assertEqual(self.posted_steps(self.run_with(program, "open:0", start)), steps)
        number = 0
        for kind, count in [(kind, self.counts[kind]) for kind in kinds]:
            for call in spread(count, SAMPLES):
                number += 1
                with self.subTest(program=program, kind=kind, call=call):
                    self.begin_row(number)
                    with self.trial:
                        start = Start()
                        prepare(self, start)
                        run = self.run_with(program, f"{kind}:{call}", start)
                        said = f"{run.stderr}\n{run.stdout}"
                        self.assertGreaterEqual(run.returncode, 0, said)
                        self.assertTrue(run.returncode == 0 or run.stderr.strip(), "ended without a word")
                        self.assertNotIn("terminate called", said)
                        self.assertNotIn("Sanitizer", said)
                        if "23.32" in self.posted_steps(run):
                            self.assertEqual(without_times(tree(self.trial.application)), product, said)
                        self.assertEqual(self.trial.leftovers(), [], said)
                        self.assertEqual([path.name for path in self.settings_file().parent.iterdir()],
                                         [self.settings_file().name])

    def test_installer(self):
        self.try_calls("TolvixInstaller")

    def test_product_that_cannot_be_started(self):
        self.try_calls("TolvixInstaller", executable(lambda path: path.unlink()), [*DOWNLOADED, "23.34"],
                       ["fork", "pipe", "socket", "thread"])

    def test_disk_image_helper(self):
        self.try_calls("hdiutil")


if __name__ == "__main__":
    unittest.main()
