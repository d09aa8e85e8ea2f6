"""Unpacks and packs what installers come in: a bundle's folder, a Debian package, a relocatable archive."""
from __future__ import annotations

import hashlib
import os
import re
import shutil
import subprocess
import tarfile
from pathlib import Path
from typing import Optional

from .tree import Bundle, InstalledTree
from .values import BrandError


def source_date(path: Path) -> int:
    """The date of everything that is made: SOURCE_DATE_EPOCH, or the date of the newest file of the source."""
    try:
        return int(os.environ["SOURCE_DATE_EPOCH"])
    except (KeyError, ValueError):
        files = [path, *path.rglob("*")] if path.is_dir() else [path]
        return int(max(file.lstat().st_mtime for file in files))


def run(*words: str, **options) -> str:
    try:
        done = subprocess.run(words, capture_output=True, text=True, stdin=subprocess.DEVNULL, **options)
    except FileNotFoundError:
        raise BrandError(f"{words[0]} is missing") from None
    if done.returncode != 0:
        raise BrandError(f"{words[0]}: {done.stderr.strip()}")
    return done.stdout


def set_dates(folder: Path, date: int) -> None:
    for path in [*folder.rglob("*"), folder]:
        os.utime(path, (date, date), follow_symlinks=False)


class BundleSource:
    """A bundle's folder. The result is such a folder, or one named after the build version with an image in it."""

    def __init__(self, source: Path, work: Path):
        Bundle(source)  # before anything else is copied
        self.tree: Optional[InstalledTree] = None
        self._work = work / "out"
        self._work.mkdir()
        self.bundle = Bundle(Path(shutil.copytree(source, self._work / source.name, symlinks=True)))

    def pack(self, target: Path, date: int) -> Path:
        (made,) = self._work.iterdir()
        set_dates(made, date)
        return _put(made, target / made.name)


class ArchiveSource:
    """A relocatable archive with one folder at its top."""

    def __init__(self, source: Path, work: Path):
        self._work = work / "out"
        try:
            with tarfile.open(source) as archive:
                self._refuse_strange(archive, source)
                archive.extractall(self._work)
        except tarfile.TarError as error:
            raise BrandError(f"{source}: {error}") from None
        tops = list(self._work.iterdir())
        if len(tops) != 1:
            raise BrandError(f"{source} does not hold one folder")
        self._top = tops[0]
        self.tree = InstalledTree(self._top)
        self.bundle = self.tree.bundle

    @staticmethod
    def _refuse_strange(archive: tarfile.TarFile, source: Path) -> None:
        for member in archive:
            inside = os.path.normpath(os.path.join(os.path.dirname(member.name), member.linkname))
            if member.name.startswith("/") or ".." in member.name.split("/") or inside.startswith(("..", "/")) or not (
                    member.isfile() or member.isdir() or member.issym()):
                raise BrandError(f"{source} is no package of an installer: it holds {member.name}")

    def pack(self, target: Path, date: int) -> Path:
        name = _branded(self._top.name, self.bundle)
        made = self._work.parent / f"{name}.tar.xz"
        with tarfile.open(made, "w:xz", format=tarfile.GNU_FORMAT, preset=9) as archive:
            for path in sorted([self._top, *self._top.rglob("*")]):
                member = archive.gettarinfo(str(path), str(Path(name, path.relative_to(self._top))))
                member.uid = member.gid = 0
                member.uname = member.gname = ""
                member.mtime = date
                if member.isfile():
                    with path.open("rb") as file:
                        archive.addfile(member, file)
                else:
                    archive.addfile(member)
        return _put(made, target / made.name)


class DebianSource:
    """A Debian package; the partner's one is another package in its place."""

    def __init__(self, source: Path, work: Path):
        self._root = work / "root"
        run("dpkg-deb", "--raw-extract", str(source), str(self._root))
        self.tree = InstalledTree(self._root / "usr")
        self.bundle = self.tree.bundle

    def pack(self, target: Path, date: int) -> Path:
        control = self._root / "DEBIAN" / "control"
        text = control.read_text()
        old = re.search(r"(?m)^Package: (.*)$", text)[1]
        name = _branded(old, self.bundle)
        if name != old:
            relations = "".join(f"{field}: {old}\n" for field in ("Conflicts", "Replaces", "Provides"))
            text = re.sub(r"(?m)^Package: .*\n", f"Package: {name}\n{relations}", text)
            control.write_text(text)
            self._rename_documents(old, name)
        self._write_sums()
        set_dates(self._root, date)
        fields = dict(re.findall(r"(?m)^(Version|Architecture): (.*)$", text))
        made = self._root.parent / f"{name}_{fields['Version']}_{fields['Architecture']}.deb"
        run("dpkg-deb", "--root-owner-group", "-Zxz", "--build", str(self._root), str(made),
            env={**os.environ, "SOURCE_DATE_EPOCH": str(date)})
        return _put(made, target / made.name)

    def _rename_documents(self, old: str, name: str) -> None:
        shared = self._root / "usr" / "share"
        (shared / "doc" / old).rename(shared / "doc" / name)
        overrides = shared / "lintian" / "overrides" / old
        overrides.write_text(overrides.read_text().replace(f"\n{old}:", f"\n{name}:"))
        overrides.rename(overrides.with_name(name))

    def _write_sums(self) -> None:
        lines = []
        for path in sorted(self._root.rglob("*")):
            place = path.relative_to(self._root)
            if path.is_file() and not path.is_symlink() and place.parts[0] != "DEBIAN":
                lines.append(f"{hashlib.md5(path.read_bytes()).hexdigest()}  {place}\n")
        (self._root / "DEBIAN" / "md5sums").write_text("".join(lines))


def _branded(name: str, bundle: Bundle) -> str:
    """A package's name with the partner in it, in letters that every package manager takes."""
    partner = re.sub(r"[^a-z0-9.-]", "-", str(bundle.information.get("TXPartnerName", "")).lower())
    return re.sub("^tolvix-installer", f"tolvix-installer-{partner}", name) if partner else name


def _put(made: Path, target: Path) -> Path:
    """Puts the finished thing in place in one step, where nothing may be yet."""
    if os.path.lexists(target):
        raise BrandError(f"{target} is there already")
    target.parent.mkdir(parents=True, exist_ok=True)
    try:
        made.rename(target)
    except OSError as error:
        raise BrandError(f"{target}: {error.strerror}") from None
    return target


def open_source(source: Path, work: Path):
    """The source of any of the three kinds, unpacked in the folder `work`. Raises BrandError."""
    if source.is_dir():
        return BundleSource(source.resolve(), work)
    if not source.is_file():
        raise BrandError(f"{source}: there is no such bundle or package")
    if source.suffix == ".deb":
        return DebianSource(source, work)
    if source.name.endswith((".tar.xz", ".tar")):
        return ArchiveSource(source, work)
    raise BrandError(f"{source} is neither a bundle's folder nor a .deb nor a .tar.xz")
