"""The pictures that the boards have to show, taken of the virtual device."""

import scenes
from boards import CheckError
from native import VirtualDevice

# Formats of the virtual device's framebuffer.
ALPHA, PLAIN = "argb8888", "xrgb8888"


def take(build, folder, fonts):
    """Pictures by format and name."""
    folder.mkdir(parents=True, exist_ok=True)
    pictures = {}
    for pixel_format in (ALPHA, PLAIN):
        print(f"Pictures of the virtual device, {pixel_format}", flush=True)
        log = folder / f"{pixel_format}.log"
        with VirtualDevice(build, log, "app_gui", fonts, pixel_format) as device:
            for scene in scenes.SCENES:
                for command in scene.commands:
                    device.control(*command)
                pictures[pixel_format, scene.name] = device.settled_layer()
        with VirtualDevice(build, log, "board_probe", fonts, pixel_format) as device:
            pictures[pixel_format, "arrow"] = _arrow(device)
            device.pretend_modes()
            pictures[pixel_format, "smaller window"] = _resolution(device, scenes.SMALLER)
    for (pixel_format, name), layer in pictures.items():
        layer.save(folder / f"{pixel_format} {name}.png")
    _require_differences(pictures)
    return pictures


def _arrow(device):
    device.tell_probe("arrow {} {}".format(*scenes.POINTER_PLACES[-1]))
    return device.settled_layer()


def _resolution(device, resolution):
    device.tell_probe(f"resolution {resolution[0]}")
    return device.settled_layer()


def _require_differences(pictures):
    """A picture that is blank, or the same as another one, would prove nothing."""
    names = list(pictures)
    for at, name in enumerate(names):
        if pictures[name].is_blank():
            raise CheckError(f"the virtual device shows nothing for {name}")
        for other in names[:at]:
            if other[0] == name[0] and pictures[other] == pictures[name]:
                raise CheckError(f"the virtual device shows the same for {other} and {name}")
