#!/usr/bin/env python3
"""Measures the built installer side by side with what does the same work without it.

Each pair of commands runs in turn, several times, and the ratio is taken round by round, so that a machine whose speed
drifts does not decide. Works in build/bench. Times are wall-clock seconds; memory is the largest resident size.
"""
import argparse
import os
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from bench_window import bench_answers, bench_window, bench_windowed_run  # noqa: E402
from diskimage.build import make_image  # noqa: E402
from measuring import BENCH, TOOLS, measure, side_by_side  # noqa: E402
from sample_product import make_sample_product  # noqa: E402
from services import LocalServices  # noqa: E402
from trial import BUNDLE, Trial  # noqa: E402

HDIUTIL = BUNDLE / "Contents" / "Helpers" / "hdiutil"
IDENTIFIER = "example.tolvix.desktop"


def figures(name):
    """What `measure` returns."""
    return {name: "s", "  memory": "MB"}


def fresh(path):
    shutil.rmtree(path, ignore_errors=True)
    return path


def make_images(megabytes):
    """An image of a product of that size, as 64 KB to 1 MB files, and the folder that it was made from."""
    volume, image = BENCH / f"volume-{megabytes}", BENCH / f"image-{megabytes}.dmg"
    make_sample_product(volume, identifier=IDENTIFIER, payload_files=megabytes * 8, payload_bytes=1 << 17)
    make_image(str(volume), str(image), "Tolvix", level=1)
    return volume, image


def bench_download(services, rounds):
    url = f"https://{services.image.host}/Tolvix.dmg"
    target = str(BENCH / "downloaded")
    environment = {**os.environ, "SSL_CERT_FILE": services.certificate}
    side_by_side(figures("download | curl"),
                 lambda: measure([str(TOOLS / "bench_tool"), "download", url, target], environment),
                 lambda: measure(["curl", "-sS", "--fail", "--cacert", services.certificate, "-o", target, url]), rounds)


def bench_attach(image, rounds):
    mount, plain = BENCH / "mount", BENCH / "plain"

    def attach():
        mount.mkdir()
        try:
            return measure([str(HDIUTIL), "attach", str(image), "-mountpoint", str(mount), "-noverify", "-nobrowse",
                            "-noautoopen"])
        finally:
            subprocess.run([str(HDIUTIL), "detach", str(mount), "-force"], check=True, stdout=subprocess.DEVNULL)

    side_by_side(figures("attach | 7-Zip"), attach,
                 lambda: measure(["7zz", "x", "-y", "-bd", "-snld20", "-sns-", f"-o{fresh(plain)}", str(image)]), rounds)


def bench_copy(volume, rounds):
    source, target = volume / "Tolvix.app", BENCH / "copied"
    side_by_side(figures("copy | cp -a"),
                 lambda: measure([str(TOOLS / "bench_tool"), "copy", str(source), str(fresh(target))]),
                 lambda: measure(["cp", "-a", str(source), str(fresh(target))]), rounds)


SCRIPT = """set -e
curl -sS --fail --cacert "$1" "https://$2/5/binaries/query?platform=launcher_macosx&target=archive&format=json\
&currentSoftwareVersion=1&os=x&partner=" >/dev/null
curl -sS --fail --cacert "$1" -o "$4/Tolvix.dmg" "https://$3/Tolvix.dmg"
7zz x -y -bd -snld20 -sns- "-o$4/volume" "$4/Tolvix.dmg" >/dev/null
rm -rf "$5/Tolvix.app"
cp -a "$4"/volume/*/Tolvix.app "$5/Tolvix.app"
rm -rf "$4/Tolvix.dmg" "$4/volume"
"""


def bench_whole_run(services, trial, rounds):
    work, target = BENCH / "script", BENCH / "script-applications"
    work.mkdir()
    target.mkdir()
    script = ["sh", "-c", SCRIPT, "sh", services.certificate, services.binaries.host, services.image.host, str(work),
              str(target)]
    side_by_side(figures("whole run | script"),
                 lambda: measure(trial.command("--auto-start", "NO"), trial.environment()),
                 lambda: measure(script), rounds)


def bench_memory(services, trial, images):
    for megabytes, image in images.items():
        services.image.image = str(image)
        _, peak = measure(trial.command("--auto-start", "NO"), trial.environment())
        print(f"peak memory, {megabytes:3} MB product           {peak:10.1f} MB")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--sizes", type=int, nargs=2, default=[100, 300], metavar="MB", help="of the product")
    options = parser.parse_args()
    fresh(BENCH).mkdir(parents=True)
    made = {size: make_images(size) for size in options.sizes}
    volume, image = made[options.sizes[-1]]
    print(f"{'':34}  {'installer':>12}  {'beside it':>12}   ({options.sizes[-1]} MB product, {options.rounds} rounds)")
    with LocalServices(str(image)) as services, Trial(BENCH / "trial") as trial:
        trial.use_services(services)
        bench_download(services, options.rounds)
        bench_attach(image, options.rounds)
        bench_copy(volume, options.rounds)
        bench_whole_run(services, trial, options.rounds)
        bench_memory(services, trial, {size: pair[1] for size, pair in made.items()})
        bench_window(services, trial, options.rounds)
        services.image.image = str(made[options.sizes[0]][1])
        bench_windowed_run(trial, options.rounds)
        bench_answers(trial, options.rounds)
    shutil.rmtree(BENCH)
    return 0


if __name__ == "__main__":
    sys.exit(main())
