"""What the boards show: app_guictl commands that lead from one picture to the next.

No clock and no address among the texts: they would differ between the two devices.
"""

from dataclasses import dataclass


@dataclass(frozen=True)
class Scene:
    name: str
    commands: tuple = ()  # arguments of app_guictl, one tuple a command


def _text(window, index, **fields):
    values = {"visible": 1, "font": 4, "stroke": 0, "backcolor": "#004080", "backalpha": 160,
              "x": 256, "y": 256, **fields}
    return ("set", "VideoOutputOSDParameter", str(window), f"Index={index}",
            *(f"{name}={value}" for name, value in values.items()))


SCENES = (
    Scene("start"),
    Scene("split", (
        ("set", "VideoOutputDisplayParameter", "BorderWidth=6", "VideoBorderColor=#20C0FF"),
        ("split", "HDMI1", "Mode6_4"),
    )),
    Scene("texts", (
        _text(0, 1, head="Entrance hall", content="Camera 01, upper floor", tail="Jäger & Søn"),
        _text(1, 1, content="会议室 主会场", stroke=1, backcolor="#A00020", backalpha=255, corner=1),
        _text(2, 2, content="Window 3", bold=1, forecolor="#FFD200", corner=3),
        ("set", "WatermarkOSDParameter", "HDMI1", "visible=1", "font=5", "stroke=1",
         "forecolor=#FFFFFF", "forealpha=200", "backcolor=#203040", "backalpha=160", "x=512",
         "y=512", "contet=内部资料 Internal", "angle=30", "arrangement_mode=3"),
    )),
)

# Those with characters in them: the rasteriser of fonts has a say in these.
WITH_TEXT = frozenset({"texts"})

# Where the tablet is put, and the arrow is then to be; the last place is the one compared.
POINTER_PLACES = ((3, 1070), (700, 400), (1234, 567))

# Codes of the resolution change, and the sizes they stand for.
SMALLER, LARGER, FULL_HD = (2, "1280x720"), (11, "3840x2160"), (0, "1920x1080")
