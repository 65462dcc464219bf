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
        """The bad documents that the reader's test refuses too, but those whose fault lies
        beyond what a schema tells (references, cycles, fields given twice)."""
        cases = json.loads((SOURCE / "tests" / "model" / "data" / "bad_documents.json").read_text())
        checked = 0
        for case in (c for c in cases if c.get("schema", True)):
            document = case.get("document") or with_page(**case.get("page", {}))
            with self.subTest(case=case["what"]):
                self.assertFalse(VALIDATOR.is_valid(document))
                checked += 1
        self.assertGreater(checked, 15)


if __name__ == "__main__":
    sys.exit(unittest.main())
