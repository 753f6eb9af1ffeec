"""Fetches a Debian kernel and a static shell of another architecture, and unpacks them.

An apt root of the check's own, below its work folder, keeps this machine's package lists as they
are; nothing is installed.
"""

import pathlib
import re
import shutil
import subprocess

from boards import Board, CheckError

SHELL_PACKAGE = "busybox-static"


def _run(command, **options):
    result = subprocess.run(command, capture_output=True, text=True, **options)
    if result.returncode != 0:
        raise CheckError(f"{' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def _debian_sources():
    """This machine's Debian archives as lines of a sources.list; other vendors' are left
    out, and that of security updates, whose lists do not always fit its files."""
    targets = _run(["apt-get", "indextargets",
                    "--format", "deb $(REPO_URI) $(RELEASE) $(COMPONENT)",
                    "Created-By: Packages", "Origin: Debian", "Label: Debian",
                    "Component: main"])
    lines = sorted(set(targets.splitlines()))
    if not lines:
        raise CheckError("no Debian archive among the sources of apt: run apt-get update")
    return "\n".join(lines) + "\n"


class AptRoot:
    """Package lists of one foreign architecture."""

    def __init__(self, folder: pathlib.Path, architecture: str):
        self.folder = folder
        for part in ("lists/partial", "cache/archives/partial", "etc/sources.list.d"):
            (folder / part).mkdir(parents=True, exist_ok=True)
        (folder / "status").touch()
        (folder / "etc/sources.list").write_text(_debian_sources())
        settings = {
            "APT::Architecture": architecture,
            "APT::Architectures::": architecture,
            "APT::Sandbox::User": "",
            "Dir::State": folder,
            "Dir::State::status": folder / "status",
            "Dir::Cache": folder / "cache",
            "Dir::Etc::sourcelist": folder / "etc/sources.list",
            "Dir::Etc::sourceparts": folder / "etc/sources.list.d",
        }
        self.options = [f"-o{name}={value}" for name, value in settings.items()]

    def update(self):
        _run(["apt-get", *self.options, "update", "-q"])

    def dependency(self, meta_package: str, pattern: str):
        """The package matching `pattern` that a meta-package depends on."""
        text = _run(["apt-cache", *self.options, "depends", meta_package])
        found = re.search(rf"Depends: ({pattern})", text)
        if not found:
            raise CheckError(f"{meta_package} depends on no {pattern}")
        return found.group(1)

    def download(self, packages, into: pathlib.Path):
        """Fetches packages, their checksums checked by apt; returns the files."""
        into.mkdir(parents=True, exist_ok=True)
        _run(["apt-get", *self.options, "download", *packages], cwd=into)
        return sorted(into.glob("*.deb"))


class Kernel:
    """An unpacked kernel package and a static busybox beside it."""

    def __init__(self, folder: pathlib.Path):
        self.image = self._only(folder, "boot/vmlinuz-*")
        self.modules = self._only(folder, "lib/modules/*/kernel")
        self.busybox = self._only(folder, "bin/busybox")

    @staticmethod
    def _only(folder, pattern):
        found = list(folder.glob(pattern))
        if len(found) != 1:
            raise CheckError(f"{folder}: {len(found)} of {pattern} in place of one")
        return found[0]


def kernel_for(board: Board, work: pathlib.Path) -> Kernel:
    """The board's kernel, fetched at the first call and kept in `work`."""
    unpacked = work / "kernel"
    if not unpacked.exists():
        unfinished = work / "kernel.unfinished"
        shutil.rmtree(unfinished, ignore_errors=True)
        shutil.rmtree(work / "packages", ignore_errors=True)
        apt = AptRoot(work / "apt", board.name)
        apt.update()
        package = apt.dependency(board.kernel_package, r"linux-image-\d\S+")
        print(f"Fetching {package}:{board.name}", flush=True)
        for file in apt.download([package, SHELL_PACKAGE], work / "packages"):
            _run(["dpkg-deb", "--extract", file, unfinished])
        unfinished.rename(unpacked)
        shutil.rmtree(work / "packages")
    return Kernel(unpacked)
