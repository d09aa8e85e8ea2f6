#!/usr/bin/env python3
"""Runs the binaries, image and log services on this machine, for trials of the installer.

Every service takes faults, given as SERVICE:NAME or SERVICE:NAME=VALUE, where SERVICE is binaries,
image or log, and NAME=VALUE one of: status=N, delay=SECONDS, hang, redirects=N,
redirect-to=http|PATH|URL, framing=length|chunked|close, announce=BYTES (more or fewer than sent),
cut-after=BYTES, bytes-per-second=N, certificate=valid|wrong-host|expired, refuse (the port is closed).
Ends on SIGTERM and SIGINT.
"""
import argparse
import signal
import sys
from pathlib import Path

from services import LocalServices
from services.binaries import BODIES, STRING_CODE

ENDINGS = (signal.SIGTERM, signal.SIGINT)


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--image", metavar="FILE", help="what the image service hands out")
    parser.add_argument("--image-path", default="/Tolvix.dmg", metavar="PATH", help="where the check says it is")
    parser.add_argument("--version", default="5.1.0", help="what the check says it is")
    parser.add_argument("--download-url", metavar="URL", help="instead of the image service's")
    parser.add_argument("--check-body", metavar="NAME|FILE",
                        help=f"the answer to the check: a file, or {', '.join([*BODIES, STRING_CODE])}")
    parser.add_argument("--fault", action="append", default=[], metavar="SERVICE:NAME[=VALUE]")
    parser.add_argument("--events", metavar="FILE", help="append every event to this journal, a line of JSON each")
    parser.add_argument("--ready-file", metavar="FILE", help="made when all services listen, removed at the end")
    parser.add_argument("--quiet", action="store_true", help="print nothing")
    return parser.parse_args()


def check_body(name):
    """A name the binaries service knows, or the bytes of a file."""
    if name is None or name in BODIES or name == STRING_CODE:
        return name
    return Path(name).read_bytes()


def set_fault(services, text):
    """Sets one fault from its text on the command line. Raises ValueError."""
    service_name, _, fault = text.partition(":")
    name, _, value = fault.partition("=")
    if service_name not in ("binaries", "image", "log"):
        raise ValueError(f"--fault {text}: no such service")
    service = getattr(services, service_name)
    try:
        if fault == "refuse":
            service.refuse_connections()
        else:
            service.faults.set_text(name, value)
    except (AttributeError, ValueError) as error:
        raise ValueError(f"--fault {text}: {error}") from None


def run(options):
    """Runs the services until a signal ends the program."""
    output = None if options.quiet else sys.stdout
    with LocalServices(options.image, image_path=options.image_path, version=options.version,
                       download_url=options.download_url, check_body=check_body(options.check_body),
                       events_file=options.events, output=output) as services:
        for fault in options.fault:
            set_fault(services, fault)
        if options.ready_file:
            services.write_ready_file(options.ready_file)
        if output:
            print(f"binaries {services.binaries.host}\nimage    {services.image.host}\nlog      {services.log.host}\n"
                  f"trust    {services.certificate}", file=output, flush=True)
        signal.sigwait(ENDINGS)


def main():
    options = parse_arguments()
    sys.stdout.reconfigure(errors="backslashreplace")
    # Held back until they are waited for: one that came just before a pause would be slept through.
    signal.pthread_sigmask(signal.SIG_BLOCK, ENDINGS)
    try:
        run(options)
    except (OSError, RuntimeError, ValueError) as error:
        print(f"local_services: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
