"""KiCad's demo designs (Debian's kicad-demos) and the test designs in the newer formats, exported
by kalmor and read back by ezdxf.

Every page must be a clean release-12 file (ezdxf's auditor finds nothing), and what a reading of
the KiCad files written here, independently of kalmor's reader, expects must reach its layer:
wires, buses, bus entries and junctions on WIRE; net labels on WIRETEXT; references, values and
global and hierarchical labels on PARTTEXT; free texts on COMMENTS; the title on TITLE.
"""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import ezdxf

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("KALMOR_BUILD_DIR", SOURCE / "build"))
KALMOR = BUILD / "src" / "kalmor"
DEMOS = pathlib.Path("/usr/share/kicad/demos")


# ---------------------------------------------------------------------------------------------
# A reading of KiCad's files of its own.

TOKEN = re.compile(r'\s*(?:(\()|(\))|"((?:[^"\\]|\\.)*)"|\|([^|]*)\||([^\s()"]+))', re.S)
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", "\\": "\\", '"': '"'}


def parse(text):
    """The file's first expression as nested lists of strings."""
    stack, top = [[]], None
    for match in TOKEN.finditer(text):
        opened, closed, string, bar, atom = match.groups()
        if opened:
            stack.append([])
        elif closed:
            done = stack.pop()
            stack[-1].append(done)
        elif string is not None:
            stack[-1].append(re.sub(r"\\(.)", lambda m: ESCAPES.get(m.group(1), m.group(1)), string))
        else:
            stack[-1].append(bar if bar is not None else atom)
    top = stack[0]
    return top[0]


def children(node, head):
    return [c for c in node[1:] if isinstance(c, list) and c and c[0] == head]


def child(node, head):
    found = children(node, head)
    return found[0] if found else None


def flag(node, name):
    """A yes/no switch written bare, as (name), (name yes) or (name no)."""
    if name in node[1:]:
        return True
    found = child(node, name)
    return found is not None and (len(found) == 1 or found[1] == "yes")


def hidden(node):
    return flag(node, "hide") or flag(child(node, "effects") or [], "hide")


def shown(text):
    """A text as shown: markup gone, the escapes of net names undone."""
    text = re.sub(r"[~_^]\{([^{}]*)\}", r"\1", text)
    for name, char in (("slash", "/"), ("backslash", "\\"), ("lt", "<"), ("gt", ">")):
        text = text.replace("{" + name + "}", char)
    return text


def letters(unit):
    out = ""
    while unit > 0:
        unit -= 1
        out = chr(ord("A") + unit % 26) + out
        unit //= 26
    return out


class KiCadDesign:
    """The sheet files of a design in the order they are first used, with the first path that
    reaches each."""

    def __init__(self, root):
        self.files = collections.OrderedDict()
        self.root = parse(root.read_text())
        self.legacy = {path[1]: path for path in children(child(self.root, "symbol_instances") or [],
                                                           "path")}
        root_uuid = (child(self.root, "uuid") or [None, ""])[1]
        self.walk(root, self.root, "/" + root_uuid, "", [])

    def walk(self, path, tree, uuid_path, legacy_path, stack):
        key = path.resolve()
        if key in self.files or key in stack:
            return
        self.files[key] = (path, tree, uuid_path, legacy_path)
        for sheet in children(tree, "sheet"):
            fields = children(sheet, "property")
            file_field = next((f for f in fields if child(f, "id") and child(f, "id")[1] == "1"),
                              None) or next(f for f in fields if f[1] in ("Sheetfile", "Sheet file"))
            sub = path.parent / file_field[2]
            sheet_uuid = child(sheet, "uuid")[1]
            self.walk(sub, parse(sub.read_text()), uuid_path + "/" + sheet_uuid,
                      legacy_path + "/" + sheet_uuid, stack + [key])

    def expectations(self, tree, uuid_path, legacy_path):
        """What must reach each layer: (layer, text) pairs and the WIRE polyline count."""
        units = {}
        for symbol in children(child(tree, "lib_symbols") or [], "symbol"):
            numbers = [int(s[1].rsplit("_", 2)[1]) for s in children(symbol, "symbol")]
            units[symbol[1]] = max(numbers + [1])
        texts = collections.Counter()
        for symbol in children(tree, "symbol"):
            fields = {f[1]: f for f in children(symbol, "property")}
            reference, unit = fields["Reference"][2], int((child(symbol, "unit") or [0, 1])[1])
            value = fields["Value"][2] if "Value" in fields else ""
            uuid = child(symbol, "uuid")[1]
            paths = [p for project in children(child(symbol, "instances") or [], "project")
                     for p in children(project, "path")]
            found = [p for p in paths if p[1] == uuid_path] or (
                [self.legacy[legacy_path + "/" + uuid]] if legacy_path + "/" + uuid in self.legacy
                else [])
            if found:
                reference = child(found[0], "reference")[1]
                unit = int((child(found[0], "unit") or [0, unit])[1])
                value = (child(found[0], "value") or [0, value])[1]
            lib = (child(symbol, "lib_name") or child(symbol, "lib_id"))[1]
            if units.get(lib, 1) > 1:
                reference += letters(unit)
            if "Reference" in fields and not hidden(fields["Reference"]):
                texts[("PARTTEXT", shown(reference))] += 1
            if "Value" in fields and not hidden(fields["Value"]) and value and "${" not in value:
                named = flag(fields["Value"], "show_name")
                texts[("PARTTEXT", ("Value: " if named else "") + shown(value))] += 1
        for kind, layer in (("label", "WIRETEXT"), ("global_label", "PARTTEXT"),
                            ("hierarchical_label", "PARTTEXT")):
            for label in children(tree, kind):
                texts[(layer, shown(label[1]))] += 1
        for text in children(tree, "text"):
            if "${" not in text[1]:
                for line in text[1].split("\n"):
                    if line.strip():
                        texts[("COMMENTS", line.strip("\r"))] += 1
        title = child(child(tree, "title_block") or [], "title")
        if title and "${" not in title[1]:
            texts[("TITLE", "Title: " + shown(title[1]))] += 1
        wires = len(children(tree, "wire")) + len(children(tree, "bus"))
        polylines = wires + len(children(tree, "junction")) + len(children(tree, "bus_entry"))
        if wires == 0 and (children(tree, "label") or children(tree, "junction")):
            polylines += 1  # the wire of no length that carries them
        return texts, polylines


# ---------------------------------------------------------------------------------------------
# What kalmor writes.


def run(*arguments):
    result = subprocess.run([str(KALMOR), *map(str, arguments)], capture_output=True, text=True,
                            check=False)
    if result.returncode != 0:
        raise AssertionError(f"kalmor {' '.join(map(str, arguments))}: {result.stderr}")
    return result


def designs():
    found = [sch for pro in sorted(DEMOS.rglob("*.kicad_pro"))
             if (sch := pro.with_suffix(".kicad_sch")).is_file()]
    return found + [SOURCE / "tests/kicad/data/newer/newer.kicad_sch"]


def read_page(path):
    doc = ezdxf.readfile(path)
    if doc.dxfversion != "AC1009":
        raise AssertionError(f"{path.name}: version {doc.dxfversion}")
    auditor = doc.audit()
    if auditor.has_errors:
        raise AssertionError(f"{path.name}: ezdxf's auditor: {[str(e) for e in auditor.errors]}")
    texts, polylines = collections.Counter(), 0
    for entity in doc.modelspace():
        layer = entity.dxf.layer
        if entity.dxftype() == "TEXT":
            texts[(layer, entity.dxf.text)] += 1
        elif entity.dxftype() == "POLYLINE" and layer == "WIRE":
            polylines += 1
    return texts, polylines


class KiCadDemos(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kalmor-kicad-"))

    def test_the_demos_are_installed(self):
        self.assertGreaterEqual(len(designs()), 20, "scripts/setup installs kicad-demos")

    def test_every_page_reads_back_with_its_objects_on_their_layers(self):
        for design in designs():
            with self.subTest(design=design.name):
                folder = self.folder / design.stem.replace(" ", "_")
                folder.mkdir()
                run("export", design, "-o", folder / "d.dxf")
                pages = sorted(folder.glob("d_*.dxf"))
                kicad = KiCadDesign(design)
                self.assertEqual(len(pages), len(kicad.files))
                for path, tree, uuid_path, legacy_path in kicad.files.values():
                    page = next(p for p in pages if p.name.startswith(f"d_{path.stem}_"))
                    expected, polylines = kicad.expectations(tree, uuid_path, legacy_path)
                    found, found_polylines = read_page(page)
                    self.assertEqual(found_polylines, polylines, page.name)
                    missing = expected - found
                    self.assertFalse(missing, f"{page.name}: not found: {dict(missing)}")
                    wire_texts = {k: n for k, n in found.items() if k[0] == "WIRETEXT"}
                    expected_wire_texts = {k: n for k, n in expected.items() if k[0] == "WIRETEXT"}
                    self.assertEqual(wire_texts, expected_wire_texts, page.name)

    def test_the_oracle_notices_a_missing_label(self):
        design = SOURCE / "tests/kicad/data/newer/newer.kicad_sch"
        kicad = KiCadDesign(design)
        path, tree, uuid_path, legacy_path = next(iter(kicad.files.values()))
        expected, _ = kicad.expectations(tree, uuid_path, legacy_path)
        self.assertIn(("WIRETEXT", "D/BUS"), expected)
        self.assertIn(("PARTTEXT", "U3B"), expected)
        run("export", design, "-o", self.folder / "oracle.dxf")
        found, _ = read_page(self.folder / "oracle_newer_1.dxf")
        found[("WIRETEXT", "D/BUS")] = 0
        self.assertTrue(expected - found)


if __name__ == "__main__":
    if not KALMOR.exists():
        sys.exit(f"{KALMOR} is not built")
    unittest.main(verbosity=2)
