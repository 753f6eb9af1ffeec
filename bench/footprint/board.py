#!/usr/bin/env -S python3 -B
"""Runs start_probe on an emulated ARM board, for measure-board.sh.

    board.py ARCH BUILD SYSROOT KERNELS ROUNDS OUT

BUILD is a cross build with the benchmarks, SYSROOT the board's root, KERNELS the board check's work
folder, where the kernel is kept. For each mode of the plane, files in OUT get what start_probe
prints: MODE.PROGRAM.memory a line, MODE.PROGRAM.starts a line for each start, in turn.
"""

import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "tests/board"))

# pylint: disable=wrong-import-position
from board_check import FONTS, PROJECT, compile_overlay, require_tools
from boards import BOARDS, CheckError
from guest import Guest, Parts
from initramfs import initramfs
from kernel import kernel_for

MODES = ((1920, 1080), (3840, 2160))
BENCH_PROGRAMS = ("minimal_widget",)
MEASURED = ("app_gui", *BENCH_PROGRAMS)

# /dev/fb0 comes first, small and of no interest, so that the plane becomes /dev/fb1: fdtoverlay puts
# every node before those it has put already.
_PLANES = """/dts-v1/;
/plugin/;
/ {{ fragment@0 {{ target-path = "/"; __overlay__ {{
    #address-cells = <2>; #size-cells = <2>;
    reserved-memory {{
        #address-cells = <2>; #size-cells = <2>; ranges;
        planes@5d000000 {{ reg = <0x0 0x5d000000 0x0 0x03000000>; no-map; }};
    }};
    framebuffer@5d800000 {{
        compatible = "simple-framebuffer"; reg = <0x0 0x5d800000 0x0 {bytes:#x}>;
        width = <{width}>; height = <{height}>; stride = <{stride}>; format = "a8r8g8b8";
    }};
    framebuffer@5d000000 {{
        compatible = "simple-framebuffer"; reg = <0x0 0x5d000000 0x0 0x4b000>;
        width = <320>; height = <240>; stride = <1280>; format = "a8r8g8b8";
    }};
}}; }}; }};
"""


def stage(build, product):
    """Puts together what the board has in /opt/app_gui: installed, for a build's own programs look
    for each library in the build's folders first."""
    subprocess.run(["cmake", "--install", build, "--component", "runtime", "--prefix", product],
                   check=True, stdout=subprocess.DEVNULL)
    for program in (*BENCH_PROGRAMS, "start_probe"):
        shutil.copy2(build / "bin" / program, product / "bin")
    (product / "fonts").mkdir()
    shutil.copytree(PROJECT / "config", product / "share/app_gui/config", dirs_exist_ok=True)
    for font in FONTS:
        shutil.copy2(font, product / "fonts")


def overlay_of(width, height, folder):
    source, overlay = folder / "planes.dtso", folder / "planes.dtbo"
    stride = width * 4
    source.write_text(_PLANES.format(width=width, height=height, stride=stride,
                                     bytes=stride * height))
    compile_overlay(source, overlay)
    return overlay


def probe(guest, task, program):
    """The line of figures; what the program itself writes comes before it. What is installed finds
    its libraries by itself."""
    written = guest.run("start_probe", task, f"/tmp/picture.{program}",
                        f"/opt/app_gui/bin/{program}", LD_LIBRARY_PATH="")[1]
    return written.splitlines()[-1] + "\n"


def measure(guest, rounds, out, mode):
    for program in MEASURED:
        (out / f"{mode}.{program}.memory").write_text(probe(guest, "learn", program))
    for _ in range(rounds):
        for program in MEASURED:
            with open(out / f"{mode}.{program}.starts", "a", encoding="ascii") as starts:
                starts.write(probe(guest, "time", program))


def main():
    name, build, sysroot, kernels, rounds, out = sys.argv[1:]
    out = pathlib.Path(out).resolve()
    require_tools()
    board = BOARDS[name]
    (pathlib.Path(kernels) / name).mkdir(parents=True, exist_ok=True)
    kernel = kernel_for(board, pathlib.Path(kernels).resolve() / name)
    archive = out / "initramfs.cpio"
    archive.write_bytes(initramfs(kernel, PROJECT / "tests/board/init"))
    stage(pathlib.Path(build), out / "product")
    for width, height in MODES:
        parts = Parts(board, kernel.image, archive, pathlib.Path(sysroot).resolve(),
                      out / "product", overlay=overlay_of(width, height, out))
        with Guest(parts, out / "guest") as guest:
            measure(guest, int(rounds), out, f"{width}x{height}")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (CheckError, OSError) as error:
        sys.exit(f"board: {error}")
