#!/usr/bin/env python3
"""Checks the sample configuration and the documentation's examples against the JSON schemas.

usage: configuration_schema_test.py REPOSITORY
Needs Debian's python3-jsonschema.
"""
import copy
import json
import pathlib
import re
import sys
import unittest

from jsonschema import Draft202012Validator

ROOT = pathlib.Path()
CAPABILITIES = {
    "DeviceCapabilitySet", "VideoOutputCapabilitySet", "VideoOutputInterfaces",
    "AudioOutputCapabilitySet", "VideoDecodeCapabilitySet", "StreamingInputCapabilitySet",
}
PARAMETERS = {
    "VideoOutputInterfaceParameters", "VideoOutputDisplayParameters",
    "VideoOutputAccessParameters", "VideoOutputScreenSplitParameters", "AudioOutputParameters",
    "VideoOutputOSDParameters", "WatermarkOSDParameters", "WatermarkPictureParameters",
    "WatermarkDotmatrixParameters", "StreamingInputParameters",
}


def schema_of(stem):
    return json.loads((ROOT / "docs/schemas" / f"{stem}.schema.json").read_text("utf-8"))


def problems(stem, value):
    validator = Draft202012Validator(schema_of(stem))
    return [f"{list(e.absolute_path)}: {e.message}" for e in validator.iter_errors(value)]


class Schemas(unittest.TestCase):
    def test_every_record_file_has_a_valid_schema(self):
        stems = {p.name[:-len(".schema.json")] for p in (ROOT / "docs/schemas").iterdir()}
        self.assertEqual(stems, CAPABILITIES | PARAMETERS)
        for stem in stems:
            Draft202012Validator.check_schema(schema_of(stem))

    def test_array_files_state_how_many_records_fit(self):
        capacities = {
            "VideoOutputCapabilitySet": 16, "VideoOutputInterfaces": 2,
            "AudioOutputCapabilitySet": 3, "VideoOutputInterfaceParameters": 2,
            "VideoOutputAccessParameters": 16, "VideoOutputScreenSplitParameters": 8,
            "AudioOutputParameters": 3, "VideoOutputOSDParameters": 64,
            "WatermarkOSDParameters": 2, "WatermarkPictureParameters": 2,
            "WatermarkDotmatrixParameters": 2, "StreamingInputParameters": 64,
        }
        for stem in CAPABILITIES | PARAMETERS:
            with self.subTest(stem):
                capacity = capacities.get(stem)
                full = {} if capacity is None else [{}] * capacity
                self.assertEqual(problems(stem, full), [])
                other = [] if capacity is None else {}
                self.assertNotEqual(problems(stem, other), [])
                if capacity is not None:
                    self.assertNotEqual(problems(stem, [{}] * (capacity + 1)), [])

    def test_mistakes_are_found(self):
        good = {"if_name": "HDMI1", "font": 3, "forecolor": "#FF0000", "reserved_220": "0a"}
        self.assertEqual(problems("WatermarkOSDParameters", [good]), [])
        mistakes = [
            {"content": "misspelt"}, {"Font": 3}, {"font": "3"}, {"font": 1.5}, {"font": True},
            {"font": None}, {"font": 2**31}, {"font": -2**31 - 1}, {"forecolor": "#" * 64},
            {"forecolor": 0}, {"reserved_220": "0"}, {"reserved_220": "xy"},
            {"reserved_220": "0102030405"}, {"reserved_0": "00"},
        ]
        for mistake in mistakes:
            with self.subTest(mistake):
                record = copy.copy(good)
                record.update(mistake)
                self.assertNotEqual(problems("WatermarkOSDParameters", [record]), [])
        for levels in ([1, 2, 3], [1, 2, 3, 4, 5], [1, 2, 3, "4"], 1):
            with self.subTest(levels):
                self.assertNotEqual(
                    problems("VideoOutputInterfaceParameters", [{"PictureLevel": levels}]), [])


class Configuration(unittest.TestCase):
    def check_folder(self, folder, stems):
        files = {p.stem: p for p in (ROOT / "config" / folder).glob("*.json")}
        self.assertEqual(set(files), stems)
        for stem, path in files.items():
            with self.subTest(path.name):
                self.assertEqual(problems(stem, json.loads(path.read_text("utf-8"))), [])

    def test_capability_files_fit_their_schemas(self):
        self.check_folder("capability_sets", CAPABILITIES)

    def test_factory_files_fit_their_schemas(self):
        self.check_folder("default_parameters", PARAMETERS)

    def test_documented_examples_fit_their_schemas(self):
        text = (ROOT / "docs/configuration.md").read_text("utf-8")
        examples = re.findall(r"^`(\w+)\.json`[^\n]*:\n\n```json\n(.*?)^```", text, re.M | re.S)
        self.assertEqual(len(examples), text.count("```json"))
        self.assertGreater(len(examples), 0)
        for stem, example in examples:
            with self.subTest(stem):
                self.assertEqual(problems(stem, json.loads(example)), [])


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    ROOT = pathlib.Path(sys.argv.pop(1))
    unittest.main()
