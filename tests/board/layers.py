"""Pictures of a display plane, pixel by pixel."""

import pathlib
import struct
import zlib
from dataclasses import dataclass

from boards import CheckError

_PIXEL_BYTES = 4
# So many pixels, of all, may lie on edges that differ.
_EDGE_SHARE = 0.001
_TRANSPARENT = bytes(_PIXEL_BYTES)
# What the difference picture shows: where the two differ, and where not but something is drawn.
_DIFFERING, _DRAWN = b"\xff\x00\x00\xff", b"\x50\x50\x50\xff"


@dataclass(frozen=True)
class Layer:
    """Rows without gaps; a pixel is blue, green, red and alpha, a byte each, as in memory."""

    width: int
    height: int
    pixels: bytes

    def row(self, y):
        length = self.width * _PIXEL_BYTES
        return self.pixels[y * length:(y + 1) * length]

    def is_blank(self):
        return not any(self.pixels)

    def opaque(self):
        """The same colours with full alpha: what a plane without alpha is compared by."""
        pixels = bytearray(self.pixels)
        pixels[3::_PIXEL_BYTES] = b"\xff" * (self.width * self.height)
        return Layer(self.width, self.height, bytes(pixels))

    def is_near(self, other, step):
        """Equal but for few pixels that differ, as they look, by no more than `step` in a channel."""
        if self == other:
            return True
        if step == 0 or (self.width, self.height) != (other.width, other.height):
            return False
        allowed = int(self.width * self.height * _EDGE_SHARE)
        for ours, theirs in self._differing_pairs(other):
            allowed -= 1
            if allowed < 0 or _distance(ours, theirs) > step:
                return False
        return True

    def differing_pixels(self, other):
        """How many pixels differ, and the place of the first one."""
        places = list(self._differing_places(other))
        return len(places), places[0] if places else None

    def difference(self, other):
        pixels = bytearray()
        for y in range(self.height):
            ours, theirs = self.row(y), other.row(y)
            for x in range(0, len(ours), _PIXEL_BYTES):
                pixel = ours[x:x + _PIXEL_BYTES]
                same = pixel == theirs[x:x + _PIXEL_BYTES]
                drawn = _TRANSPARENT if pixel == _TRANSPARENT else _DRAWN
                pixels += drawn if same else _DIFFERING[2::-1] + _DIFFERING[3:]
        return Layer(self.width, self.height, bytes(pixels))

    def _differing_places(self, other):
        for y in range(self.height):
            ours, theirs = self.row(y), other.row(y)
            if ours == theirs:
                continue
            for x in range(0, len(ours), _PIXEL_BYTES):
                if ours[x:x + _PIXEL_BYTES] != theirs[x:x + _PIXEL_BYTES]:
                    yield x // _PIXEL_BYTES, y

    def _differing_pairs(self, other):
        for x, y in self._differing_places(other):
            at = (y * self.width + x) * _PIXEL_BYTES
            yield self.pixels[at:at + _PIXEL_BYTES], other.pixels[at:at + _PIXEL_BYTES]

    def save(self, file: pathlib.Path):
        """As PNG with alpha (RFC 2083)."""
        rgba = bytearray(self.pixels)
        rgba[0::_PIXEL_BYTES], rgba[2::_PIXEL_BYTES] = self.pixels[2::4], self.pixels[0::4]
        length = self.width * _PIXEL_BYTES
        rows = b"".join(b"\0" + rgba[y * length:(y + 1) * length] for y in range(self.height))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)
        chunks = ((b"IHDR", header), (b"IDAT", zlib.compress(rows, 1)), (b"IEND", b""))
        file.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(content)) + kind + content +
            struct.pack(">I", zlib.crc32(kind + content)) for kind, content in chunks))


def _distance(ours, theirs):
    """The largest difference of two pixels' channels; colours count as much as they cover."""
    covered = [[round(color * pixel[3] / 255) for color in pixel[:3]] + [pixel[3]]
               for pixel in (ours, theirs)]
    return max(abs(a - b) for a, b in zip(*covered))


def from_memory(memory: bytes, width, height, stride):
    """A plane as it lies in memory: rows of `stride` bytes."""
    length = width * _PIXEL_BYTES
    rows = (memory[y * stride:y * stride + length] for y in range(height))
    return Layer(width, height, b"".join(rows))


def from_ppm(content: bytes):
    """The emulator's screen dump: a binary PPM, taken as opaque."""
    kind, size, deepest, rgb = content.split(b"\n", 3)
    width, height = map(int, size.split())
    if kind != b"P6" or deepest != b"255" or len(rgb) != width * height * 3:
        raise CheckError("the emulator's screen dump is not a PPM of 8 bits")
    pixels = bytearray(b"\xff" * (width * height * _PIXEL_BYTES))
    for channel in range(3):
        pixels[channel::_PIXEL_BYTES] = rgb[2 - channel::3]
    return Layer(width, height, bytes(pixels))
