"""The emulated boards: one row per architecture, and what the check needs on this machine."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Board:
    name: str  # as Debian and the cross presets call the architecture
    emulator: str
    machine: str
    cpu: str
    kernel_package: str  # Debian's meta-package; the cloud kernels have no framebuffers
    boot_seconds: int  # longest wait for the guest to be ready, on a loaded machine
    # Largest difference along the edges of texts, in steps of a channel.
    edge_step: int


BOARDS = {
    "arm64": Board("arm64", "qemu-system-aarch64", "virt", "cortex-a57", "linux-image-arm64", 180, 0),
    # What the 32-bit kernel is to reach lies below 4 GiB. FreeType divides curves otherwise on 32-bit
    # machines, so that edges of characters are covered a step more or less than on this machine.
    "armhf": Board("armhf", "qemu-system-arm", "virt,highmem=off", "cortex-a15",
                   "linux-image-armmp", 240, 1),
}

# Programs that the check runs, and the Debian package of each.
TOOLS = {
    "qemu-system-aarch64": "qemu-system-arm",
    "qemu-system-arm": "qemu-system-arm",
    "dtc": "device-tree-compiler",
    "fdtoverlay": "device-tree-compiler",
    "apt-get": "apt",
    "apt-cache": "apt",
    "dpkg-deb": "dpkg",
    "setpriv": "util-linux",
}


class CheckError(Exception):
    """The check cannot go on; the text is for whoever started it."""
