"""KiCad's demo designs (Debian's kicad-demos) and the test designs in the newer formats, converted
by kalmor to design documents: each must validate against the schema and export to the very same
bytes as the KiCad schematic it came from.
"""

import json
import pathlib
import sys
import tempfile
import unittest

import jsonschema

from kicad_demos_test import KALMOR, SOURCE, designs, run


class KiCadConversions(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kalmor-kicad-convert-"))
        cls.schema = json.loads((SOURCE / "docs/design-document.schema.json").read_text())

    def test_converted_designs_validate_and_export_the_same_bytes(self):
        for design in designs():
            with self.subTest(design=design.name):
                folder = self.folder / ("convert-" + design.stem.replace(" ", "_"))
                folder.mkdir()
                document = folder / "d.json"
                run("convert", design, "-o", document)
                jsonschema.validate(json.loads(document.read_text()), self.schema)
                (folder / "kicad").mkdir()
                (folder / "json").mkdir()
                run("export", design, "-o", folder / "kicad/d.dxf")
                run("export", document, "-o", folder / "json/d.dxf")
                direct = sorted(p.name for p in (folder / "kicad").iterdir())
                self.assertEqual(direct, sorted(p.name for p in (folder / "json").iterdir()))
                for name in direct:
                    self.assertEqual((folder / "kicad" / name).read_bytes(),
                                     (folder / "json" / name).read_bytes(), name)


if __name__ == "__main__":
    if not KALMOR.exists():
        sys.exit(f"{KALMOR} is not built")
    unittest.main(verbosity=2)
