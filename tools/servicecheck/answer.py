"""Judges the binaries service's answer by what the installer makes of it."""
from __future__ import annotations

import json
import re
from typing import Dict, Optional
from urllib.parse import unquote_to_bytes, urlsplit

from .findings import Findings

SUCCESS = 200
DEPTH = 512
_LEADING_INTEGER = re.compile(r"[ \t-\r]*([+-]?[0-9]+)")
# A "%" has to begin an escape; a blank, a quote or a letter beyond ASCII has to be one.
_URL = re.compile(r"(?:[A-Za-z0-9\-._~:/?@!$&'()*+,;=\[\]]|%[0-9A-Fa-f]{2})*"
                  r"(?:#(?:[A-Za-z0-9\-._~:/?@!$&'()*+,;=\[\]]|%[0-9A-Fa-f]{2})*)?")
_UNESCAPED = re.compile(rb"[A-Za-z0-9\-._~:/?@!$&'()*+,;=]*")


def judge_answer(body: bytes, findings: Findings) -> Optional[str]:
    """The address of the disk image, if the installer would go on with one."""
    if not body:
        findings.fail("the answer is empty")
        return None
    answer = _parsed(body, findings)
    if answer is None:
        return None
    if not isinstance(answer, dict):
        findings.fail("the answer is JSON, but not an object")
        return None
    if not _judge_code(answer, findings):
        return None
    return _judge_content(answer.get("content"), findings)


def _parsed(body: bytes, findings: Findings) -> Optional[object]:
    try:
        encoding = json.detect_encoding(body)
        answer = json.loads(body.decode(encoding), parse_constant=_no_constant)
        if _depth(body) > DEPTH:
            raise RecursionError
        return answer
    except RecursionError:
        findings.fail(f"the answer is nested deeper than {DEPTH} levels")
    except ValueError as error:
        findings.fail(f"the answer is not JSON: {error}")
    return None


def _no_constant(name: str):
    raise ValueError(f"{name} is no JSON")


def _depth(body: bytes) -> int:
    depth = deepest = 0
    for mark in re.sub(rb'"(?:[^"\\]|\\.)*"', b"", body):
        depth += (mark in b"[{") - (mark in b"]}")
        deepest = max(deepest, depth)
    return deepest


def integer_value(value: object) -> int:
    """The number that the installer reads: a text counts by its leading digits, what is no number as 0."""
    if isinstance(value, str):
        found = _LEADING_INTEGER.match(value)
        return int(found[1]) if found else 0
    return int(value) if isinstance(value, (int, float)) else 0


def _judge_code(answer: Dict, findings: Findings) -> bool:
    code = answer.get("code")
    number = integer_value(code)
    if number != SUCCESS:
        message = answer.get("message")
        told = f'message "{message}"' if isinstance(message, str) and message else "without a message"
        shown = f"code {number}" if "code" in answer else "no code"
        findings.fail(f"the service refuses: {shown}, {told}")
        return False
    if isinstance(code, int) and not isinstance(code, bool):
        findings.fine("code 200")
    else:
        findings.warn(f"the code {json.dumps(code)} counts as 200, but ought to be the number")
    return True


def _judge_content(content: object, findings: Findings) -> Optional[str]:
    if not isinstance(content, dict):
        findings.fail('there is no object "content"')
        return None
    version, address = content.get("version"), content.get("download_url")
    if not isinstance(version, str):
        findings.fail('"content" holds no text "version"')
    elif not version:
        findings.warn('"version" is empty')
    else:
        findings.fine(f'version "{version}"')
    if not isinstance(address, str):
        findings.fail('"content" holds no text "download_url"')
        return None
    if not judge_address(address, findings) or not isinstance(version, str):
        return None
    return address


def judge_address(address: str, findings: Findings) -> bool:
    """Whether the installer can download from there; the file takes its name from the address's end."""
    if not _URL.fullmatch(address):
        findings.fail(f'"download_url" is no URL: {address}')
        return False
    try:
        parts = urlsplit(address)
        host = parts.hostname
    except ValueError as error:
        findings.fail(f'"download_url" is no URL: {error}')
        return False
    scheme = parts.scheme.lower()
    if scheme not in ("https", "http", "file"):
        findings.fail(f'"download_url" has the scheme "{parts.scheme}"; the installer takes https, http and file')
        return False
    if scheme != "file" and not host:
        findings.fail(f'"download_url" names no host: {address}')
        return False
    name = unquote_to_bytes(parts.path.rstrip("/").rpartition("/")[2])
    if name in (b"", b".", b"..") or not _UNESCAPED.fullmatch(name) or b"/" in name:
        findings.fail(f'the last name in "download_url" makes no file name: "{name.decode(errors="replace")}"; '
                      "blanks, letters beyond ASCII and slashes cannot be in it")
        return False
    if scheme == "http":
        findings.warn('"download_url" is not encrypted: anyone on the way can put another image in its place')
    elif scheme == "file":
        findings.warn('"download_url" is a file of the person\'s machine')
    else:
        findings.fine(f"download_url {address}")
    return True
