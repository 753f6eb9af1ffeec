"""Makes the guest's initial file system: a static shell, kernel modules, /init.

The format is cpio's "newc" (Documentation/driver-api/early-userspace/buffer-format.rst of the
kernel), written here so that neither root nor device files are needed.
"""

import pathlib
import re

from boards import CheckError
from kernel import Kernel

# What the kernel packages have as modules: the bus, the root's file system, the talk with the
# host, the pointer, the second kind of display.
MODULES = ("virtio_pci", "9p", "9pnet_virtio", "virtio_console", "virtio_input", "evdev",
           "virtio_gpu")

_FILE = 0o100000
_FOLDER = 0o040000
_ALIGNMENT = 4


class Archive:
    """A newc archive that grows entry by entry."""

    def __init__(self):
        self._bytes = bytearray()
        self._entries = 0

    def folder(self, name):
        self._add(name, _FOLDER | 0o755, b"")

    def file(self, name, content, mode=0o644):
        self._add(name, _FILE | mode, content)

    def finished(self):
        self._add("TRAILER!!!", 0, b"")
        return bytes(self._bytes)

    def _add(self, name, mode, content):
        self._entries += 1
        name_bytes = name.encode() + b"\0"
        fields = (self._entries, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(name_bytes), 0)
        self._bytes += b"070701" + b"".join(b"%08X" % field for field in fields)
        self._padded(name_bytes)
        self._padded(content)

    def _padded(self, content):
        self._bytes += content
        self._bytes += bytes(-len(self._bytes) % _ALIGNMENT)


def module_order(folder: pathlib.Path, wanted):
    """The modules and what they depend on, in the order of loading."""
    files = {file.stem.replace("-", "_"): file for file in folder.rglob("*.ko")}
    order = {}

    def visit(name):
        if name in order:
            return
        if name not in files:
            raise CheckError(f"the kernel package has no module {name}")
        content = files[name].read_bytes()
        depends = re.search(rb"\0depends=([^\0]*)\0", content)
        for other in (depends.group(1).decode() if depends else "").split(","):
            if other:
                visit(other.replace("-", "_"))
        order[name] = content

    for name in wanted:
        visit(name)
    return order


def initramfs(kernel: Kernel, init: pathlib.Path) -> bytes:
    archive = Archive()
    for name in ("bin", "dev", "proc", "sys", "modules", "board"):
        archive.folder(name)
    archive.file("bin/busybox", kernel.busybox.read_bytes(), 0o755)
    archive.file("init", init.read_bytes(), 0o755)
    modules = module_order(kernel.modules, MODULES)
    for name, content in modules.items():
        archive.file(f"modules/{name}", content)
    archive.file("modules/order", "".join(f"{name}\n" for name in modules).encode())
    return archive.finished()
