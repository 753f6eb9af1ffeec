"""The board as the device is: a plane with alpha in memory, whose driver keeps its one mode.

The kernel's simple-framebuffer driver says yes to every change of mode and changes nothing.
"""

import dataclasses

import layers
import reference
import scenes
from checks import Checks, boot, wait_for
from guest import Guest
from probe import Probe

# framebuffers.dtso
_PLANE_ADDRESS = 0x5F000000
_WIDTH, _HEIGHT, _STRIDE = 1920, 1080, 7744

# More than two periods of the display's refresh.
_STANDING_SECONDS = 5


def _grab(guest):
    """The plane out of the board's memory; the ends of its padded rows have to be untouched."""
    file = guest.work / "plane"
    guest.qmp.call("pmemsave", val=_PLANE_ADDRESS, size=_STRIDE * _HEIGHT, filename=str(file))
    memory = file.read_bytes()
    padding = memory[_WIDTH * 4:]
    for y in range(_HEIGHT):
        if any(padding[y * _STRIDE:y * _STRIDE + _STRIDE - _WIDTH * 4]):
            return layers.Layer(_STRIDE // 4, _HEIGHT, memory)
    return layers.from_memory(memory, _WIDTH, _HEIGHT, _STRIDE)


def _check_scenes(guest, checks):
    pid = guest.start("app_gui")
    checks.serves(pid)
    for scene in scenes.SCENES:
        for command in scene.commands:
            guest.control(*command)
        checks.shows(scene.name)
    devices = guest.shell(f"ls -l /proc/{pid}/fd")[1]
    checks.expect(f"{guest.tablet()}\n" in devices, "app_gui finds the tablet by itself", devices)
    for place in scenes.POINTER_PLACES:
        guest.move_pointer(*place, _WIDTH, _HEIGHT)
    checks.keeps_showing(scenes.SCENES[-1].name, "a moved pointer leaves the layer alone",
                         _STANDING_SECONDS)
    checks.expect(guest.is_running(pid), "app_gui runs on")
    guest.stop(pid)


def _check_pointer(guest, checks, probe):
    checks.shows("start", "start, with the tablet named")
    probe.ask("arrow", "arrow")
    for x, y in scenes.POINTER_PLACES:
        guest.move_pointer(x, y, _WIDTH, _HEIGHT)
        expected = f"pointer {x},{y} buttons 0 "
        found = wait_for(lambda: probe.state().startswith(expected))
        checks.expect(found, f"pointer at {x},{y}", probe.state())
    checks.shows("arrow", "the arrow at {},{}".format(*scenes.POINTER_PLACES[-1]))
    for down in (True, False):
        guest.press("right", down)
        found = wait_for(lambda: f"buttons {2 if down else 0} " in probe.state())
        checks.expect(found, f"right button {'pressed' if down else 'released'}", probe.state())


def _check_pretended_modes(guest, checks, probe):
    for code, size in (scenes.SMALLER, scenes.LARGER):
        since = guest.lines.stat().st_size
        answer = probe.resolution(code)
        checks.expect(f"screen {_WIDTH}x{_HEIGHT}, window {size}" in answer,
                      f"a mode of {size} is not taken for real", answer)
        checks.writes(f"/dev/fb1 mode {size}-32 refused: driver stays at {_WIDTH}x{_HEIGHT}", since)
        if size == scenes.SMALLER[1]:
            checks.shows("smaller window", "a smaller window on the old mode")
    probe.resolution(scenes.FULL_HD[0])
    checks.shows("arrow", "the old size again")


def check_alpha_plane(parts, overlay, work, pictures):
    """Returns the number of failures."""
    print(f" plane with alpha, driver that pretends ({parts.board.name})", flush=True)
    guest = Guest(dataclasses.replace(parts, overlay=overlay), work)
    checks = Checks(guest, lambda: _grab(guest), pictures, reference.ALPHA)
    with boot(checks):
        _check_scenes(guest, checks)
        guest.shell("rm -r /board/mnt/usr/config/app_parameters/*")
        pid = guest.start("board_probe", QWS_MOUSE_PROTO=f"evdev:{guest.tablet()}")
        checks.serves(pid)
        probe = Probe(guest)
        _check_pointer(guest, checks, probe)
        _check_pretended_modes(guest, checks, probe)
        checks.expect(guest.is_running(pid), "board_probe runs on")
    return checks.failures
