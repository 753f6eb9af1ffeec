"""A board whose second framebuffer is a display without alpha, behind a driver that draws it."""

import dataclasses

import layers
import reference
import scenes
from checks import Checks, boot
from guest import Guest
from probe import Probe

_SIZE = "1920x1080"
_DEVICES = [word for name in ("first", "second")
            for word in ("-device", f"virtio-gpu-pci,id={name},xres=1920,yres=1080")]


def _grab(guest):
    file = guest.work / "screen.ppm"
    guest.qmp.call("screendump", filename=str(file), device="second")
    return layers.from_ppm(file.read_bytes())


def _check_scenes(guest, checks):
    pid = guest.start("app_gui")
    checks.serves(pid)
    checks.writes("/dev/fb1 mode has no alpha bits, the layer hides the video", 0)
    for scene in scenes.SCENES:
        for command in scene.commands:
            guest.control(*command)
        checks.shows(scene.name)
    guest.stop(pid)


def _check_modes(guest, checks, probe):
    """The driver refuses what is larger than its memory; what is smaller it takes, but goes on
    showing all of its memory."""
    checks.shows("start", "start, with the probe")
    code, size = scenes.LARGER
    since = guest.lines.stat().st_size
    answer = probe.resolution(code)
    checks.expect(f"screen {_SIZE}, window {size}" in answer,
                  f"a refused mode of {size} leaves the screen as it is", answer)
    checks.writes(f"/dev/fb1 mode {size}-32 refused: FBIOPUT_VSCREENINFO fail! errno:22 "
                  "Invalid argument", since)
    probe.resolution(scenes.FULL_HD[0])
    checks.shows("start", "the old size after a refused one")
    probe.ask("arrow {} {}".format(*scenes.POINTER_PLACES[-1]), "arrow")
    checks.shows("arrow")
    probe.resolution(scenes.SMALLER[0])
    checks.shows("smaller window", "nothing old beyond a smaller mode")
    probe.resolution(scenes.FULL_HD[0])
    checks.shows("arrow", "the old size after a smaller one")


def check_plain_display(parts, work, pictures):
    """Returns the number of failures."""
    print(f" display without alpha ({parts.board.name})", flush=True)
    guest = Guest(dataclasses.replace(parts, devices=_DEVICES), work)
    opaque = {key: layer.opaque() for key, layer in pictures.items()}
    checks = Checks(guest, lambda: _grab(guest), opaque, reference.PLAIN)
    with boot(checks):
        _check_scenes(guest, checks)
        guest.shell("rm -r /board/mnt/usr/config/app_parameters/*")
        pid = guest.start("board_probe")
        checks.serves(pid)
        _check_modes(guest, checks, Probe(guest))
        checks.expect(guest.is_running(pid), "board_probe runs on")
    return checks.failures
