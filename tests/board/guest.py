"""An emulated board while it runs: commands, files, pointer and pictures of it."""

import pathlib
import shlex
import socket
import subprocess
import time
from dataclasses import dataclass, field

from boards import Board, CheckError
from qmp import Qmp

# QEMU's tablet reports positions of 0 to this along each side.
POINTER_RANGE = 0x7FFF

_ANSWER_SECONDS = 60
_CONTROL_MILLISECONDS = "30000"
_PROGRAMS = "/opt/app_gui/bin"


@dataclass
class Parts:
    """What a board is put together from."""

    board: Board
    kernel: pathlib.Path
    initramfs: pathlib.Path
    sysroot: pathlib.Path
    product: pathlib.Path  # bin, lib, share and fonts: the board's /opt/app_gui
    devices: list = field(default_factory=list)  # further arguments of the emulator
    overlay: pathlib.Path = None  # device-tree overlay, compiled


class Guest:
    """Runs from start() to the end of a `with` block, whatever happens in it."""

    def __init__(self, parts: Parts, work: pathlib.Path):
        self.parts = parts
        self.work = work
        self.console = work / "console.log"
        self.lines = work / "app_gui.log"
        self._process = None
        self._sockets = []
        self._answers = None
        self.qmp = None

    def __enter__(self):
        self.work.mkdir(parents=True, exist_ok=True)
        for log in (self.console, self.lines):
            log.write_bytes(b"")
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *unused):
        if self._process:
            self._process.kill()
            self._process.wait()
        for end in self._sockets:
            end.close()
        if self._answers:
            self._answers.close()

    def shell(self, line: str, check=True):
        """Runs a shell line beside the board's root; returns its exit status and its output."""
        if "\n" in line:
            raise ValueError(line)
        self._shell.sendall(line.encode() + b"\n")
        try:
            head = self._answers.readline().split()
            output = self._answers.read(int(head[1])) if len(head) == 2 else b""
        except OSError as error:
            raise CheckError(f"no answer from the board to: {line}\n{error}") from error
        if len(head) != 2:
            raise CheckError(f"the board has gone at: {line}")
        status, text = int(head[0]), output.decode(errors="replace")
        if check and status != 0:
            raise CheckError(f"on the board: {line}\nstatus {status}: {text}")
        return status, text

    def run(self, program, *arguments, check=True, **environment):
        """Runs one of the product's programs on the board to its end."""
        return self.shell(f"{self._inside(program, **environment)} {shlex.join(arguments)}", check)

    def control(self, *arguments, check=True):
        """One app_guictl command, with time for a loaded machine to answer."""
        return self.run("app_guictl", "--timeout", _CONTROL_MILLISECONDS, *arguments,
                        check=check)

    def start(self, program, **environment):
        """Starts one of the product's programs; what it writes goes to `lines`. Its process id."""
        line = f"{self._inside(program, **environment)} >&3 2>&3 & echo $!"
        return int(self.shell(line)[1])

    def stop(self, pid):
        self.shell(f"kill {pid}; while [ -e /proc/{pid} ]; do usleep 20000; done")

    def is_running(self, pid):
        return self.shell(f"grep -q '^State:.[^Z]' /proc/{pid}/status", check=False)[0] == 0

    def written(self, since=0) -> str:
        """What the processes on the board have written, from a byte on."""
        return self.lines.read_bytes()[since:].decode(errors="replace")

    def tablet(self):
        """The tablet's device; boards have further ones."""
        line = "cd /sys/class/input && grep -l Tablet event*/device/name"
        return "/dev/input/" + self.shell(line)[1].split("/")[0]

    def move_pointer(self, x, y, width, height):
        """Puts the tablet's pen above a pixel of a screen of that size."""
        axes = (("x", x, width), ("y", y, height))
        events = [{"type": "abs",
                   "data": {"axis": axis, "value": round(at * POINTER_RANGE / (size - 1))}}
                  for axis, at, size in axes]
        self.qmp.call("input-send-event", events=events)

    def press(self, button, down):
        events = [{"type": "btn", "data": {"button": button, "down": down}}]
        self.qmp.call("input-send-event", events=events)

    @staticmethod
    def _inside(program, **environment):
        values = {"PATH": f"{_PROGRAMS}:/usr/sbin:/usr/bin", "TZ": "UTC",
                  "LD_LIBRARY_PATH": "/opt/app_gui/lib", **environment}
        assignments = shlex.join(f"{name}={value}" for name, value in values.items())
        return f"env -i {assignments} chroot /board {_PROGRAMS}/{program}"

    def _start(self):
        ends = [socket.socketpair() for _ in range(2)]
        self._sockets = [end for pair in ends for end in pair]
        (ours, theirs), (shell, their_shell) = ends
        self._shell = shell
        command = self._command(theirs.fileno(), their_shell.fileno())
        with open(self.work / "emulator.log", "wb") as log:
            self._process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, cwd=self.work,
                pass_fds=(theirs.fileno(), their_shell.fileno()))
        theirs.close()
        their_shell.close()
        shell.settimeout(_ANSWER_SECONDS)
        self._answers = shell.makefile("rb")
        try:
            self.qmp = Qmp(ours, _ANSWER_SECONDS)
            self._wait_until_ready()
        except CheckError as error:
            log = (self.work / "emulator.log").read_text(errors="replace")
            raise CheckError(f"{error}\n{log}") from error

    def _wait_until_ready(self):
        deadline = time.monotonic() + self.parts.board.boot_seconds
        while b"board: ready" not in self.console.read_bytes():
            if self._process.poll() is not None:
                raise CheckError("the emulator has ended")
            if time.monotonic() > deadline:
                raise CheckError("the board does not start")
            time.sleep(0.1)

    def _command(self, qmp, shell):
        command = [
            "setpriv", "--pdeathsig", "KILL", "--", *self._machine(),
            "-chardev", f"socket,id=qmp,fd={qmp}", "-mon", "chardev=qmp,mode=control",
            "-device", "virtio-serial-pci",
            "-chardev", f"socket,id=shell,fd={shell}", "-device", "virtserialport,chardev=shell,nr=1",
            "-chardev", f"file,id=lines,path={self.lines}",
            "-device", "virtserialport,chardev=lines,nr=2",
        ]
        if self.parts.overlay:
            command += ["-dtb", self._device_tree()]
        return [str(word) for word in command]

    def _machine(self):
        parts = self.parts
        shares = []
        for tag, folder in (("sysroot", parts.sysroot), ("product", parts.product)):
            shares += ["-virtfs", f"local,path={folder},mount_tag={tag},security_model=none,"
                                  "readonly=on,multidevs=remap"]
        return [
            parts.board.emulator, "-M", parts.board.machine, "-cpu", parts.board.cpu,
            "-accel", "tcg", "-m", "512", "-nodefaults", "-display", "none",
            "-serial", f"file:{self.console}",
            "-kernel", parts.kernel, "-initrd", parts.initramfs,
            "-append", "console=ttyAMA0 quiet panic=-1", "-no-reboot",
            *shares, "-device", "virtio-tablet-pci", *parts.devices,
        ]

    def _device_tree(self):
        """The emulator's own device tree with the overlay on it."""
        plain, tree = self.work / "plain.dtb", self.work / "board.dtb"
        dump = [str(word) for word in self._machine()]
        dump[dump.index("-M") + 1] += f",dumpdtb={plain}"
        for command in (dump, ["fdtoverlay", "-i", plain, "-o", tree, self.parts.overlay]):
            done = subprocess.run(command, capture_output=True, text=True, check=False)
            if done.returncode != 0:
                raise CheckError(f"{command[0]}: {done.stderr}")
        return tree
