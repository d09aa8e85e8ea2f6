#!/usr/bin/env python3
"""Asks a binaries service as the installer does, and judges its answer, its certificate and the image's address.

Ends with 0 if an installer would get its image, with 1 if it would not, and prints why; docs/service.md is the contract.
"""
import argparse
import json
import os
import sys
from pathlib import Path
from urllib.parse import quote

sys.path.insert(0, str(Path(__file__).resolve().parent))
from servicecheck.answer import judge_answer  # noqa: E402
from servicecheck.exchange import ANSWER_BYTES, Asker, Unreachable  # noqa: E402
from servicecheck.findings import Findings  # noqa: E402
from services.binaries import PATH as QUERY_PATH  # noqa: E402
from services.journal import visible  # noqa: E402
from services.log import PATH as LOG_PATH  # noqa: E402

_URL_CHARACTERS = "-._~:/?@!$&'()*,;="  # stand in a query as they are; a plus does not


def parse_arguments(words=None):
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("host", metavar="HOST", help="the binaries service, with a port if it has its own")
    parser.add_argument("--partner", default="", metavar="NAME", help="the partner to ask for; none when absent")
    parser.add_argument("--build", default="", metavar="VERSION", help="the installer's build version to ask with")
    parser.add_argument("--system", default="OS_X_10_15_7", metavar="VERSION", help="the system's version to ask with")
    parser.add_argument("--image", action="store_true", help="ask for the beginning of the disk image, too")
    parser.add_argument("--log", metavar="HOST", help="post one event, of the identifier CHECK-SERVICE, to this log service")
    parser.add_argument("--ca", default=os.environ.get("SSL_CERT_FILE"), metavar="FILE",
                        help="certificates to trust in addition to the system's; SSL_CERT_FILE when absent")
    parser.add_argument("--timeout", type=float, default=60, metavar="SECONDS", help="how long to wait; 60 when absent")
    parser.add_argument("--json", action="store_true", help="print the findings as JSON")
    return parser.parse_args(words)


def query_url(host, build, system, partner):
    """The address that the installer asks at."""
    values = {"platform": "launcher_macosx", "target": "archive", "format": "json", "currentSoftwareVersion": build,
              "os": system, "partner": partner}
    pairs = (f"{key}={quote(value, safe=_URL_CHARACTERS) if value.isascii() else '(null)'}"
             for key, value in values.items())
    return f"https://{host}{QUERY_PATH}?{'&'.join(pairs)}"


def check_binaries(asker, findings, options):
    """The image's address, if there is one."""
    answer = asker.ask(query_url(options.host, options.build, options.system, options.partner))
    if len(answer.body) > ANSWER_BYTES:
        findings.fail(f"the answer is longer than {ANSWER_BYTES} bytes")
        return None
    if answer.status != 200:
        findings.warn(f"the HTTP status is {answer.status}; the installer looks at the answer alone")
    return judge_answer(answer.body, findings)


def check_image(asker, findings, address):
    if not address.lower().startswith("http"):
        return
    answer = asker.ask(address, limit=1)
    if answer.status >= 400:
        findings.fail(f"the image: HTTP status {answer.status} from {answer.url}")
    elif answer.length == 0 or not answer.body:
        findings.fail(f"the image at {answer.url} is empty")
    elif answer.length is None:
        findings.warn("the image comes without its length, so the installer cannot show how far it is")
    else:
        findings.fine(f"the image: {answer.length} bytes from {answer.url}")


def check_log(asker, findings, host):
    """An installation goes on without its events, so nothing here is a failure."""
    body = b"anonymouscomputerid=CHECK-SERVICE&content={}&os=launcher_macosx&step=23.01&version="
    try:
        answer = asker.ask(f"https://{host}{LOG_PATH}", post=body)
    except Unreachable as error:
        findings.warn(f"the event is lost: {error}")
        return
    if answer.status >= 400:
        findings.warn(f"the log service answers with HTTP status {answer.status}, which the installer does not look at")
    else:
        findings.fine(f"the log service took an event: HTTP status {answer.status}")


def guarded(findings, prefix, check, *arguments):
    try:
        return check(*arguments)
    except Unreachable as error:
        findings.fail(f"{prefix}: {error}")
        return None


def run(options):
    findings = Findings()
    asker = Asker(findings, options.timeout, options.ca)
    address = guarded(findings, "no answer", check_binaries, asker, findings, options)
    if options.image and address:
        guarded(findings, "no image", check_image, asker, findings, address)
    if options.log:
        check_log(asker, findings, options.log)
    return findings


def main():
    options = parse_arguments()
    try:
        findings = run(options)
    except OSError as error:
        print(f"check_service: {options.ca}: {error.strerror or error}", file=sys.stderr)
        return 2
    if options.json:
        print(json.dumps([{"weight": weight, "text": text} for weight, text in findings.lines], indent=2))
    else:
        for weight, text in findings.lines:
            print(f"{weight:8} {visible(text)}")
    return 1 if findings.failed else 0


if __name__ == "__main__":
    sys.exit(main())
