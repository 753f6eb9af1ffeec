"""What the board check is made of, without a board."""

import pathlib
import subprocess
import tempfile
import unittest

import layers
import scenes
from boards import BOARDS, CheckError
from initramfs import Archive, module_order
from layers import Layer


def _layer(*pixels, width=2):
    return Layer(width, len(pixels) // width, b"".join(pixels))


CLEAR, RED, BLUE = bytes(4), b"\0\0\xff\xff", b"\xff\0\0\xff"


class Layers(unittest.TestCase):
    def test_rows_are_cut_at_the_stride(self):
        memory = RED + BLUE + b"????" + BLUE + CLEAR + b"????"
        self.assertEqual(layers.from_memory(memory, 2, 2, 12), _layer(RED, BLUE, BLUE, CLEAR))

    def test_differing_pixels_are_counted_in_every_channel(self):
        plain = _layer(RED, RED, RED, RED)
        for channel in range(4):
            other = bytearray(plain.pixels)
            other[2 * 4 + channel] ^= 1
            self.assertEqual(plain.differing_pixels(Layer(2, 2, bytes(other))), (1, (0, 1)))
        self.assertEqual(plain.differing_pixels(plain), (0, None))

    def test_edges_may_differ_by_a_step_as_they_look_and_only_few(self):
        clear = Layer(100, 100, bytes(100 * 100 * 4))

        def with_edges(pixel, count):
            return Layer(100, 100, pixel * count + clear.pixels[count * 4:])

        edge = bytes((64, 48, 32, 16))
        seen = with_edges(edge, 10)
        for pixel, near in ((bytes((68, 51, 34, 15)), True), (bytes((64, 48, 32, 18)), False),
                            (bytes((64, 48, 96, 16)), False), (bytes((70, 48, 32, 16)), True)):
            self.assertEqual(with_edges(pixel, 10).is_near(seen, 1), near, pixel)
            self.assertFalse(with_edges(pixel, 10).is_near(seen, 0))
        self.assertFalse(with_edges(bytes((68, 51, 34, 15)), 11).is_near(with_edges(edge, 11), 1))
        self.assertFalse(_layer(CLEAR, CLEAR).is_near(_layer(CLEAR, CLEAR, CLEAR, CLEAR), 1))
        self.assertTrue(clear.is_near(clear, 0))

    def test_the_difference_is_red_and_what_is_drawn_grey(self):
        seen = _layer(RED, BLUE, CLEAR, CLEAR).difference(_layer(BLUE, BLUE, CLEAR, RED))
        self.assertEqual(seen.pixels, RED + b"\x50\x50\x50\xff" + CLEAR + RED)

    def test_a_screen_dump_is_opaque_and_has_its_channels_in_place(self):
        dump = b"P6\n2 1\n255\n" + b"\xff\0\0" + b"\0\0\xff"
        self.assertEqual(layers.from_ppm(dump), _layer(RED, BLUE))

    def test_another_kind_of_dump_is_refused(self):
        for dump in (b"P5\n2 1\n255\n" + bytes(6), b"P6\n2 1\n65535\n" + bytes(6),
                     b"P6\n2 1\n255\n" + bytes(5)):
            with self.assertRaises(CheckError):
                layers.from_ppm(dump)

    def test_only_a_layer_without_any_bit_is_blank(self):
        self.assertTrue(_layer(CLEAR, CLEAR).is_blank())
        self.assertFalse(_layer(CLEAR, b"\0\0\0\x01").is_blank())


class InitialFileSystem(unittest.TestCase):
    def test_the_archive_unpacks_to_what_went_in(self):
        archive = Archive()
        archive.folder("modules")
        archive.file("modules/odd", b"12345", 0o644)
        archive.file("init", b"#!/bin/sh\n", 0o755)
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["busybox", "cpio", "-i", "-d"], input=archive.finished(), cwd=folder,
                           check=True, capture_output=True)
            root = pathlib.Path(folder)
            self.assertEqual((root / "modules/odd").read_bytes(), b"12345")
            self.assertEqual((root / "init").read_bytes(), b"#!/bin/sh\n")
            self.assertEqual((root / "init").stat().st_mode & 0o777, 0o755)

    def test_modules_come_after_what_they_depend_on(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, depends in (("virtio-gpu", "drm,virtio_bus"), ("drm", ""),
                                  ("virtio_bus", "drm")):
                file = pathlib.Path(folder) / f"{name}.ko"
                file.write_bytes(b"ELF\0depends=" + depends.encode() + b"\0")
            order = list(module_order(pathlib.Path(folder), ["virtio_gpu"]))
            self.assertEqual(order, ["drm", "virtio_bus", "virtio_gpu"])
            with self.assertRaises(CheckError):
                module_order(pathlib.Path(folder), ["9p"])


class Tables(unittest.TestCase):
    def test_rows_have_the_name_they_are_found_by(self):
        for name, board in BOARDS.items():
            self.assertEqual(board.name, name)

    def test_scenes_have_names_of_their_own_and_lead_somewhere(self):
        names = [scene.name for scene in scenes.SCENES]
        self.assertEqual(len(names), len(set(names)))
        for scene in scenes.SCENES[1:]:
            self.assertTrue(scene.commands)

    def test_the_pointer_is_moved_within_the_screen_and_never_stays(self):
        for x, y in scenes.POINTER_PLACES:
            self.assertTrue(0 <= x < 1920 and 0 <= y < 1080)
        self.assertEqual(len(set(scenes.POINTER_PLACES)), len(scenes.POINTER_PLACES))


if __name__ == "__main__":
    unittest.main()
