#!/usr/bin/env python3
"""The JSON Schema of the design document accepts every shipped example and refuses bad ones."""

import copy
import json
import os
import pathlib
import sys
import unittest

import jsonschema

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
SCHEMA = json.loads((SOURCE / "docs" / "design-document.schema.json").read_text())
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)

MINIMAL = {
    "kalmor_design": 1,
    "name": "D",
    "schematics": [{"name": "S", "pages": [{"name": "P"}]}],
}


def with_page(**members):
    document = copy.deepcopy(MINIMAL)
    document["schematics"][0]["pages"][0].update(members)
    return document


class Schema(unittest.TestCase):
    def test_schema_is_itself_valid(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_every_example_validates(self):
        examples = sorted((SOURCE / "examples").glob("*.json"))
        self.assertGreaterEqual(len(examples), 2)
        for path in examples:
            with self.subTest(example=path.name):
                errors = [e.message for e in VALIDATOR.iter_errors(json.loads(path.read_text()))]
                self.assertEqual(errors, [])

    def test_example_in_the_format_guide_validates(self):
        guide = (SOURCE / "docs" / "design-format.md").read_text()
        example = guide.split("```json\n", 1)[1].split("```", 1)[0]
        self.assertEqual([e.message for e in VALIDATOR.iter_errors(json.loads(example))], [])

    def test_minimal_document_and_every_graphic_kind_validate(self):
        graphics = [
            {"type": "line", "start": [0, 0], "end": [1, 1], "width": 1},
            {"type": "box", "rect": [0, 0, 1, 1]},
            {"type": "arc", "rect": [0, 0, 2, 2], "start": [2, 1], "end": [1, 0]},
            {"type": "ellipse", "rect": [0, 0, 2, 1]},
            {"type": "polygon", "points": [[0, 0], [1, 0], [0, 1]]},
            {"type": "polyline", "points": []},
            {"type": "text", "rect": [0, 0, 9, 9], "text": "a\rb", "rotation": 1},
            {"type": "bitmap", "rect": [0, 0, 9, 9]},
            {"type": 63},
        ]
        self.assertEqual(list(VALIDATOR.iter_errors(with_page(graphics=graphics))), [])

    def test_bad_documents_are_refused(self):
        wire = {"start": [0, 0], "end": [1, 1]}
        cases = {
            "no version": {k: v for k, v in MINIMAL.items() if k != "kalmor_design"},
            "wrong version": dict(MINIMAL, kalmor_design=2),
            "unknown field": dict(MINIMAL, colour="red"),
            "point of three": with_page(wires=[dict(wire, start=[0, 0, 0])]),
            "point beyond 32 bits": with_page(wires=[dict(wire, end=[0, 2**31])]),
            "string for a point": with_page(wires=[dict(wire, start="0,0")]),
            "pin_to_pin zero": with_page(pin_to_pin=0),
            "border count zero": with_page(border={"vertical_count": 0}),
            "vector on a page": with_page(
                graphics=[{"type": "vector", "location": [0, 0], "members": []}]),
            "graphic field of another kind": with_page(
                graphics=[{"type": "line", "start": [0, 0], "end": [1, 1], "rect": [0, 0, 1, 1]}]),
            "schematic on a part": with_page(
                parts=[{"id": "U1", "symbol": {}, "schematic": "S"}]),
            "part without id": with_page(parts=[{"symbol": "R"}]),
            "face too long": with_page(
                wires=[dict(wire, aliases=[{"name": "A", "location": [0, 0],
                                            "font": {"face": "F" * 32}}])]),
            "unknown display word": with_page(
                wires=[dict(wire, properties=[{"name": "N", "display": "both"}])]),
            "occurrence key not a path": with_page(
                wires=[dict(wire, properties=[{"name": "N", "values": {"BLK1": "x"}}])]),
        }
        for name, document in cases.items():
            with self.subTest(case=name):
                self.assertFalse(VALIDATOR.is_valid(document))


if __name__ == "__main__":
    sys.exit(unittest.main())
