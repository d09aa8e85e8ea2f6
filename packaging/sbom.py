#!/usr/bin/env python3
"""Writes the bill of materials of built packages, as SPDX 2.3 in JSON, from the package manager's own data.

Listed are the packages themselves with their checksums, the Debian packages whose libraries the programs are linked to,
those that they run, and the tools that built them. The date is SOURCE_DATE_EPOCH, so the same input gives the same text.
"""
import argparse
import hashlib
import json
import os
import re
import subprocess
import sys
from datetime import datetime, timezone
from pathlib import Path
from urllib.parse import quote

NAME = "tolvix-installer"


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stdout


def linked_libraries(program):
    """The files of the libraries that a program names itself."""
    wanted = re.findall(r"\(NEEDED\).*\[(.+)\]", output_of("readelf", "-d", str(program)))
    places = dict(re.findall(r"(\S+) => (/\S+)", output_of("ldd", str(program))))
    return {os.path.realpath(places[name]) for name in wanted if name in places}


def owner(path):
    """The Debian package that a file belongs to; the file may be listed by its place before /usr was merged."""
    for candidate in (path, path.removeprefix("/usr")):
        found = subprocess.run(["dpkg-query", "-S", candidate], capture_output=True, text=True)
        if found.returncode == 0:
            return found.stdout.partition(":")[0]
    raise LookupError(f"{path} belongs to no package")


def reference(text):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", text)


def debian_package(name):
    wanted = "${Version}\t${Architecture}\t${Maintainer}\t${Homepage}\t${source:Package}\t${source:Version}"
    version, architecture, maintainer, homepage, source, source_version = output_of(
        "dpkg-query", "-W", "-f", wanted + "\n", name).splitlines()[0].split("\t")
    return {"SPDXID": reference(f"Debian-{name}"), "name": name, "versionInfo": version,
            "supplier": f"Organization: {maintainer.partition(' <')[0]}", "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "homepage": homepage or "NOASSERTION",
            "sourceInfo": f"built from the source package {source} {source_version}",
            "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION", "copyrightText": "NOASSERTION",
            "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": f"pkg:deb/debian/{quote(name, safe='')}@{quote(version, safe='')}"
                                                  f"?arch={architecture}"}]}


def own_package(path, version):
    return {"SPDXID": reference(path.name), "name": NAME, "versionInfo": version, "packageFileName": path.name,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False, "licenseConcluded": "NOASSERTION",
            "licenseDeclared": "NOASSERTION", "copyrightText": "NOASSERTION",
            "checksums": [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(path.read_bytes()).hexdigest()}]}


def bill(version, programs, run, tools, packages):
    linked = {owner(library) for program in programs for library in linked_libraries(program)}
    own = [own_package(path, version) for path in packages]
    foreign = [debian_package(name) for name in sorted({*linked, *run, *tools})]
    digest = hashlib.sha256("".join(one["checksums"][0]["checksumValue"] for one in own).encode()).hexdigest()
    moment = datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), timezone.utc)
    relationships = []
    for one in own:
        relationships.append(("SPDXRef-DOCUMENT", "DESCRIBES", one["SPDXID"]))
        for name in sorted({*linked, *run}):
            relationships.append((one["SPDXID"], "DEPENDS_ON", reference(f"Debian-{name}")))
        for name in sorted(tools):
            relationships.append((reference(f"Debian-{name}"), "BUILD_TOOL_OF", one["SPDXID"]))
    return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
            "name": f"{NAME}-{version}", "documentNamespace": f"https://tolvix.example/spdx/{NAME}-{version}-{digest}",
            "creationInfo": {"created": moment.strftime("%Y-%m-%dT%H:%M:%SZ"),
                             "creators": ["Organization: Tolvix Installer developers", "Tool: packaging/sbom.py"]},
            "packages": own + foreign,
            "relationships": [{"spdxElementId": subject, "relationshipType": kind, "relatedSpdxElement": other}
                              for subject, kind, other in relationships]}


def main():
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("--version", required=True)
    parser.add_argument("--program", action="append", required=True, type=Path, help="a built program; may come again")
    parser.add_argument("--runs", action="append", default=[], metavar="PACKAGE", help="a Debian package that is run")
    parser.add_argument("--tool", action="append", default=[], metavar="PACKAGE", help="a Debian package that built them")
    parser.add_argument("package", nargs="+", type=Path)
    options = parser.parse_args()
    try:
        text = json.dumps(bill(options.version, options.program, options.runs, options.tool, options.package), indent=1)
    except (OSError, LookupError, subprocess.CalledProcessError) as error:
        print(f"sbom: {getattr(error, 'stderr', None) or error}", file=sys.stderr)
        return 1
    print(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
