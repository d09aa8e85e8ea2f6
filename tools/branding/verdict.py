"""Tells of a bundle what a person who starts it would get."""
from __future__ import annotations

import os
from pathlib import Path
from typing import Optional

import check_service
from servicecheck.exchange import Asker, Unreachable
from servicecheck.findings import Findings

from .tree import IMAGE_NAME, Bundle, check_image
from .values import KINDS, BrandError


def find_bundle(folder: Path) -> Path:
    """The bundle itself, or the one bundle in the folder. Raises BrandError."""
    if (folder / "Contents").is_dir():
        return folder
    found = sorted(folder.glob("*.app"))
    if len(found) != 1:
        raise BrandError(f"{folder} holds {len(found)} bundles instead of one")
    return found[0]


def judge(bundle: Bundle, timeout: float, trusted: Optional[str]) -> Findings:
    """What is fine, what is doubtful, and what keeps the product from being installed. Raises OSError for `trusted`."""
    findings = Findings()
    asker = Asker(findings, timeout, trusted)
    for kind in KINDS:
        value = bundle.information.get(kind.key)
        if value is None:
            findings.fine(f"{kind.key}: none")
            continue
        reason = kind.fault(value) if isinstance(value, str) else "is no text"
        if reason is None:
            findings.fine(f"{kind.key}: {value}")
        else:
            findings.fail(f"{kind.key}: {value!r} {reason}")
    _judge_content(bundle, findings)
    has_image = _judge_image(bundle, findings)
    _judge_services(bundle, asker, findings, has_image)
    return findings


def _judge_content(bundle: Bundle, findings: Findings) -> None:
    contents = bundle.folder / "Contents"
    programs = [Path("MacOS", str(bundle.information.get("CFBundleExecutable", "")))]
    if not bundle.is_for_macos:
        programs.append(Path("Helpers", "hdiutil"))
    for program in programs:
        if not ((contents / program).is_file() and os.access(contents / program, os.X_OK)):
            findings.fail(f"{program} is missing or cannot be run")
    tables = list((contents / "Resources").glob("*.lproj/Localizable.strings"))
    if not (contents / "Resources" / "en.lproj" / "Localizable.strings").is_file():
        findings.fail("the English texts are missing, which stand in for those of any other language")
    else:
        findings.fine(f"texts in {len(tables)} languages")


def _judge_image(bundle: Bundle, findings: Findings) -> bool:
    folder = bundle.folder.resolve().parent
    image = folder / IMAGE_NAME
    if not image.exists():
        findings.fine("no image lies beside it: the binaries service is asked, and the image is downloaded")
        return False
    if folder.name != bundle.build_version:
        findings.warn(f"{image} is ignored: its folder is named {folder.name!r}, not {bundle.build_version!r}")
        return False
    try:
        check_image(image)
        findings.fine(f"{image} is installed without a download, as version {bundle.build_version}")
    except BrandError as error:
        findings.fail(f"{image} is taken without a download, but cannot be installed: {error}")
    return True


def _judge_services(bundle: Bundle, asker: Asker, findings: Findings, has_image: bool) -> None:
    information = bundle.information
    words = [str(information["TXBinariesHost"]), "--partner", str(information.get("TXPartnerName", "")),
             "--build", bundle.build_version]
    complain = findings.warn if has_image else findings.fail
    try:
        check_service.check_binaries(asker, findings, check_service.parse_arguments(words))
    except Unreachable as error:
        complain(f"the binaries service: {error}")
    for key, what in (("TXInstallerLogHost", "events are lost"), ("TXSupportHost", "the help page does not open")):
        try:
            asker.greet(str(information[key]))
        except Unreachable as error:
            findings.warn(f"{key}: {what}: {error}")
