#!/usr/bin/env -S python3 -B
"""Runs the cross-built app_gui on emulated ARM boards with the kernel's own framebuffers.

    tests/board/board_check.py [--work FOLDER] [--build FOLDER] ARCH...

For each architecture <build>/ARCH holds the cross build, <build>/sysroot-ARCH the unpacked Debian
packages it was built with, <build>/release the native build. What the boards show is compared,
pixel by pixel, with what the virtual device shows. Everything fetched, and the logs and pictures of
a failure, are in the work folder. Ends with status 0 when all is as expected.
"""

import argparse
import pathlib
import shutil
import signal
import subprocess
import sys
import time

import boards
import reference
from alpha_plane import check_alpha_plane
from boards import BOARDS, CheckError
from guest import Parts
from initramfs import initramfs
from kernel import kernel_for
from plain_display import check_plain_display

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
FONT_FOLDER = pathlib.Path("/usr/share/fonts/truetype")
# Font files, and the Debian package of each.
FONTS = {
    FONT_FOLDER / "dejavu/DejaVuSans.ttf": "fonts-dejavu-core",
    FONT_FOLDER / "dejavu/DejaVuSans-Bold.ttf": "fonts-dejavu-core",
    FONT_FOLDER / "droid/DroidSansFallbackFull.ttf": "fonts-droid-fallback",
}
PROGRAMS = ("app_gui", "app_guictl", "board_probe")


def require_tools():
    missing = {tool: package for tool, package in boards.TOOLS.items() if not shutil.which(tool)}
    missing |= {font: package for font, package in FONTS.items() if not font.exists()}
    if missing:
        raise CheckError("missing: " + ", ".join(
            f"{tool} (Debian package {package})" for tool, package in missing.items()))


def stage(build, product):
    """Puts together what the board has in /opt/app_gui."""
    shutil.rmtree(product, ignore_errors=True)
    for folder in ("bin", "lib", "fonts"):
        (product / folder).mkdir(parents=True)
    for program in PROGRAMS:
        shutil.copy2(build / "bin" / program, product / "bin")
    for library in (build / "lib").glob("lib*.so*"):
        shutil.copy2(library, product / "lib", follow_symlinks=False)
    shutil.copytree(PROJECT / "config", product / "share/app_gui/config")
    for font in FONTS:
        shutil.copy2(font, product / "fonts")


def compile_overlay(source, target):
    done = subprocess.run(["dtc", "-I", "dts", "-O", "dtb", "-o", target, source],
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise CheckError(f"dtc: {done.stderr}")


def check_board(board, build, work, pictures):
    folder = work / board.name
    folder.mkdir(parents=True, exist_ok=True)
    kernel = kernel_for(board, folder)
    archive = folder / "initramfs.cpio"
    archive.write_bytes(initramfs(kernel, HERE / "init"))
    overlay = folder / "framebuffers.dtbo"
    compile_overlay(HERE / "framebuffers.dtso", overlay)
    product = folder / "product"
    stage(build / board.name, product)
    parts = Parts(board, kernel.image, archive, build / f"sysroot-{board.name}", product)
    return (check_alpha_plane(parts, overlay, folder / "alpha_plane", pictures) +
            check_plain_display(parts, folder / "plain_display", pictures))


def run(arguments):
    require_tools()
    work = arguments.work.resolve()
    build = arguments.build.resolve()
    pictures = reference.take(build / "release", work / "reference", FONTS)
    failures = 0
    for name in arguments.boards:
        begun = time.monotonic()
        print(f"Board {name}", flush=True)
        failures += check_board(BOARDS[name], build, work, pictures)
        print(f"Board {name}: {time.monotonic() - begun:.0f} s", flush=True)
    return failures


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--work", type=pathlib.Path, default=PROJECT / "build/board")
    parser.add_argument("--build", type=pathlib.Path, default=PROJECT / "build")
    parser.add_argument("boards", nargs="+", choices=BOARDS, metavar="ARCH")
    arguments = parser.parse_args()
    # So that the emulator and the virtual device end with us.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    try:
        failures = run(arguments)
    except (CheckError, OSError) as error:
        print(f"board check: {error}", file=sys.stderr)
        return 1
    print(f"board check: {failures} failures" if failures else "board check: all as expected")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
