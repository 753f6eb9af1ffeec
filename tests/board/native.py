"""The virtual device on this machine: the same scenes, to compare the board with."""

import pathlib
import signal
import struct
import subprocess
import sys
import time

import layers
from boards import CheckError

# tools/vdevice/fbemu/fbemu_layout.h: a page of header, then the pixels.
_HEADER = struct.Struct("=12I")
_MAGIC = 0x4D454246
_PIXELS_OFFSET = 4096
_BEHAVIOUR_OFFSET = 20 * 4
_PRETEND_MODE = 2

_START_SECONDS = 30
_SETTLE_SECONDS = 20
# A picture that stands still so long is finished; more than a period of the display's refresh.
_QUIET_SECONDS = 2.5


class VirtualDevice:
    """Runs from the beginning to the end of a `with` block."""

    def __init__(self, build: pathlib.Path, log: pathlib.Path, program, fonts, pixel_format):
        self._build = build
        self._log = log
        self._command = [build / "bin/vdevice", "stay", "--program", build / "bin" / program,
                         "--format", pixel_format, "--mode", "1920x1080"]
        for font in fonts:
            self._command += ["--font", font]
        self._process = None
        self.root = None

    def __enter__(self):
        with open(self._log, "wb") as log:
            self._process = subprocess.Popen(
                [str(word) for word in self._command], stdin=subprocess.DEVNULL,
                stdout=log, stderr=log)
        try:
            self.root = pathlib.Path(self._wait_for_root())
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *unused):
        self._process.send_signal(signal.SIGTERM)
        try:
            self._process.wait(10)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()

    def control(self, *arguments):
        """One app_guictl command."""
        socket = f"ipc://{self.root}/tmp/ipc/app_gui.command"
        done = subprocess.run([self._build / "bin/app_guictl", "--socket", socket,
                               "--timeout", "30000", *arguments],
                              capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise CheckError(f"virtual device: {' '.join(arguments)}\n{done.stdout}{done.stderr}")

    def tell_probe(self, line):
        with open(self.root / "tmp/board_probe", "w", encoding="ascii") as fifo:
            fifo.write(line + "\n")

    def pretend_modes(self):
        """From now on the framebuffer says yes to a change of mode and changes nothing."""
        with open(self.root / "fb1", "r+b") as file:
            file.seek(_BEHAVIOUR_OFFSET)
            file.write(_PRETEND_MODE.to_bytes(4, sys.byteorder))

    def settled_layer(self):
        """The layer once it has stood still."""
        seen, since = self._layer(), time.monotonic()
        deadline = since + _SETTLE_SECONDS
        while time.monotonic() < deadline:
            time.sleep(0.1)
            layer = self._layer()
            if layer != seen:
                seen, since = layer, time.monotonic()
            elif time.monotonic() - since > _QUIET_SECONDS:
                return seen
        raise CheckError("the virtual device's picture does not come to rest")

    def _layer(self):
        with open(self.root / "fb1", "rb") as file:
            (magic, _, _, width, height, _, _, _, _, _, stride, _) = _HEADER.unpack(
                file.read(_HEADER.size))
            if magic != _MAGIC:
                raise CheckError("the virtual device's framebuffer has another layout")
            file.seek(_PIXELS_OFFSET)
            return layers.from_memory(file.read(stride * height), width, height, stride)

    def _wait_for_root(self):
        deadline = time.monotonic() + _START_SECONDS
        while time.monotonic() < deadline:
            text = self._log.read_text(errors="replace")
            for line in text.splitlines():
                if line.startswith("root folder:"):
                    return line.split(":", 1)[1].strip()
            if self._process.poll() is not None:
                raise CheckError(f"the virtual device does not start\n{text}")
            time.sleep(0.05)
        raise CheckError(f"the virtual device does not start\n{text}")
