"""A copy of the built installer in a sandbox of its own, for trials and tests."""
from __future__ import annotations

import os
import plistlib
import re
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path
from typing import Dict, Iterator, List, Optional, Tuple

REPOSITORY = Path(__file__).resolve().parent.parent
BUNDLE = REPOSITORY / "build" / "release" / "Tolvix Installer.app"

# What a path may hold if it is to stand in a URL as it is, as the installer's temporary folder must.
_URL_PATH = re.compile(r"[A-Za-z0-9!$&'()*+,./:=@_~-]+")
_FOREIGN_VARIABLES = ("http_proxy", "https_proxy", "all_proxy", "no_proxy", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG",
                      "SSL_CERT_FILE", "TMPDIR", "HOME", "XDG_CONFIG_HOME", "DISPLAY", "WAYLAND_DISPLAY")


def _command_lines() -> Iterator[Tuple[int, List[str]]]:
    """Each other process and its words; a Mac tells them apart by blanks only."""
    if not Path("/proc/self").exists():
        for line in subprocess.run(["ps", "-axo", "pid=,args="], capture_output=True, text=True).stdout.splitlines():
            yield int(line.split()[0]), line.split()[1:]
        return
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit() and int(entry.name) != os.getpid():
            try:
                yield int(entry.name), os.fsdecode((entry / "cmdline").read_bytes()).split("\0")
            except OSError:
                continue  # it has ended


class Trial:
    """An installer with its own home, temporary folder and system root below `folder`, which must be missing or empty.

    `installer`: the copied bundle; `home`, `temporary`, `root`: its surroundings; `application`: where the product goes.
    As a context manager it ends the products that were started from it, and removes a temporary folder that could not
    lie in `folder`. Raises OSError.
    """

    def __init__(self, folder: os.PathLike, bundle: os.PathLike = BUNDLE, installer_folder: str = "installer"):
        self.folder = Path(folder).resolve()
        self.folder.mkdir(parents=True, exist_ok=True)
        if any(self.folder.iterdir()):
            raise FileExistsError(f"{self.folder} is not empty")
        self.home = self.folder / "home"
        self.root = self.folder / "root"
        self.installer = self.folder / installer_folder / "Tolvix Installer.app"
        self.application = self.root / "Applications" / "Tolvix.app"
        self.application.parent.mkdir(parents=True)
        self.home.mkdir()
        self.runtime = self.folder / "runtime"
        self.runtime.mkdir(mode=0o700)
        self.temporary = self._make_temporary_folder()
        shutil.copytree(bundle, self.installer, symlinks=True)
        self.set_information(TXPlatformRoot=str(self.root))

    def _make_temporary_folder(self) -> Path:
        folder = self.folder / "tmp"
        if _URL_PATH.fullmatch(str(folder)):
            folder.mkdir(mode=0o700)
            return folder
        return Path(tempfile.mkdtemp(prefix="tolvix-trial-"))

    def __enter__(self) -> "Trial":
        return self

    def __exit__(self, *_) -> None:
        for process in self.products():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        if self.temporary.parent != self.folder:
            shutil.rmtree(self.temporary, ignore_errors=True)

    def information(self) -> Dict[str, object]:
        """The bundle's information dictionary."""
        return plistlib.loads((self.installer / "Contents" / "Info.plist").read_bytes())

    def set_information(self, **values: Optional[str]) -> None:
        """Changes keys of the bundle's information dictionary; None removes one."""
        information = {**self.information(), **values}
        information = {key: value for key, value in information.items() if value is not None}
        (self.installer / "Contents" / "Info.plist").write_bytes(plistlib.dumps(information))

    def use_services(self, services) -> None:
        """Points the installer to running local services."""
        self.set_information(TXBinariesHost=services.binaries.host, TXInstallerLogHost=services.log.host)
        self._certificate = services.certificate

    def environment(self, **changes: Optional[str]) -> Dict[str, str]:
        """This process's environment with the sandbox's folders, an English locale and no display."""
        environment = {name: value for name, value in os.environ.items()
                       if name not in _FOREIGN_VARIABLES and name.lower() not in _FOREIGN_VARIABLES}
        values = {"HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"),
                  "XDG_RUNTIME_DIR": os.environ.get("XDG_RUNTIME_DIR", str(self.runtime)),
                  "TMPDIR": str(self.temporary), "LC_ALL": "en_US.UTF-8",
                  "SSL_CERT_FILE": getattr(self, "_certificate", None), **changes}
        environment.update({name: value for name, value in values.items() if value is not None})
        return environment

    def command(self, *arguments: str) -> List[str]:
        """The installer's command line."""
        return [str(self.installer / "Contents" / "MacOS" / "TolvixInstaller"), *arguments]

    def run(self, *arguments: str, environment: Optional[Dict[str, str]] = None, timeout: float = 120,
            standard_input: int = subprocess.DEVNULL) -> subprocess.CompletedProcess:
        """Runs the installer to its end without a display; its output as text. Raises TimeoutExpired."""
        return subprocess.run(self.command(*arguments), env=environment or self.environment(), stdin=standard_input,
                              capture_output=True, text=True, errors="replace", timeout=timeout)

    def products(self) -> List[int]:
        """The processes that run the installed product's executable or script."""
        mark = str(self.root) + "/"
        return [process for process, words in _command_lines() if any(word.startswith(mark) for word in words[:2])]

    def leftovers(self) -> List[str]:
        """What lies in the temporary folder."""
        return sorted(str(path.relative_to(self.temporary)) for path in self.temporary.rglob("*"))
