"""The files kalmor writes, read by the programs people open them with.

Every example design is exported with the kalmor command; each page file must then be read by
ezdxf (release AC1009, no auditor error) and by GDAL's ogrinfo (no error, no warning), and both
must find per layer exactly the entities that the design document implies, worked out here from
the design document alone. LibreCAD prints every page to PDF, which pdftoppm turns into a PNG in
build/interop/librecad/: the drawing in it must have the proportions of the page's frame.
Deliberately broken copies of a good file must make these checks fail.

The texts of examples/texts.json (µ, Ω, ±, °, é, ß, €, CJK characters, emoji) must come back from
both readers exactly as the document writes them. The file names no code page, so it is read in
Windows-1252, and characters beyond it are \\U+XXXX escapes of UTF-16 units, which ezdxf's recover
module decodes; GDAL 3.6 needs the code page (DXF_ENCODING) and leaves the escapes of TEXT
entities to the application, so here they are decoded as a DXF reader does.
"""

import collections
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import ezdxf
import ezdxf.bbox
import ezdxf.recover
from PIL import Image

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("KALMOR_BUILD_DIR", SOURCE / "build"))
KALMOR = BUILD / "src" / "kalmor"
PICTURES = BUILD / "interop"
# KiCad demo designs that go through LibreCAD with the examples, below KICAD_DEMOS: an A4, an A3
# and an A3 portrait page.
KICAD_DEMOS = pathlib.Path("/usr/share/kicad/demos")
KICAD_DEMO_DESIGNS = [
    "ecc83/ecc83-pp.kicad_sch",
    "interf_u/interf_u.kicad_sch",
    "stickhub/StickHub.kicad_sch",
]

TYPE_CODES = {"part": 13, "block": 12}
DRAWN_PRIMITIVES = {"line", "box", "arc", "ellipse", "polygon", "polyline", "bitmap"}


class CheckFailed(Exception):
    pass


# ---------------------------------------------------------------------------------------------
# What a design document implies, counted per (layer, entity type).


def text_lines(text):
    """TEXT records of a text laid out in a box: one per line, LF counted like CR."""
    return text.replace("\n", "\r").count("\r") + 1


class Oracle:
    def __init__(self, document):
        self.symbols = document.get("symbols", {})

    def symbol(self, ref):
        return self.symbols[ref] if isinstance(ref, str) else ref

    def vectors(self, counts, symbol, layer):
        for vector in self.symbol(symbol).get("vectors", []):
            kind = vector.get("type")
            if kind in DRAWN_PRIMITIVES:
                counts[(layer, "POLYLINE")] += 1
            elif kind == "text":
                counts[("PARTTEXT", "TEXT")] += text_lines(vector.get("text", ""))
            elif kind == "vector":
                members = vector.get("members", [])
                counts[(layer, "POLYLINE")] += sum(m.get("type") == "polyline" for m in members)

    def page(self, page):
        counts = collections.Counter()
        height = page.get("height", 8500)
        pin_to_pin = page.get("pin_to_pin", 100)
        flip = int(height / (pin_to_pin * 0.1))

        border = page.get("border", {})
        if border.get("visible", True):
            across = border.get("horizontal_count", 4)
            down = border.get("vertical_count", 4)
            counts[("TITLE", "POLYLINE")] += 2 + 2 * (across - 1) + 2 * (down - 1)
            counts[("TITLE", "SOLID")] += 2 * (across - 1) * (across % 2 == 0)
            counts[("TITLE", "SOLID")] += 2 * (down - 1) * (down % 2 == 0)
            counts[("TITLE", "TEXT")] += 2 * across + 2 * down

        for block in page.get("title_blocks", []):
            counts[("TITLE", "TEXT")] += len(block.get("properties", []))
            self.vectors(counts, block["symbol"], "TITLE")

        for part in page.get("parts", []):
            counts[("PARTTEXT", "TEXT")] += len(part.get("properties", []))
            kind = part.get("kind", "part")
            kind = TYPE_CODES.get(kind, kind)
            if kind == 12:
                counts[("PARTS", "POLYLINE")] += 1
                self.block_pins(counts, part, flip)
            else:
                self.symbol_pins(counts, part)
            self.vectors(counts, part["symbol"], "PARTS")

        for wire in page.get("wires", []):
            counts[("WIRE", "POLYLINE")] += 1 + len(wire.get("junctions", []))
            counts[("WIRETEXT", "TEXT")] += len(wire.get("properties", []))
            counts[("WIRETEXT", "TEXT")] += len(wire.get("aliases", []))

        for collection in ("globals", "ports", "off_page_connectors"):
            for connector in page.get(collection, []):
                counts[("PARTTEXT", "TEXT")] += len(connector.get("properties", []))
                self.vectors(counts, connector["symbol"], "PARTS")

        counts[("WIRE", "POLYLINE")] += len(page.get("bus_entries", []))

        for graphic in page.get("graphics", []):
            kind = graphic.get("type")
            if kind == "bitmap":
                counts[("BITMAPS", "POLYLINE")] += 1
            elif kind == "text":
                counts[("COMMENTS", "TEXT")] += text_lines(graphic.get("text", ""))
            elif kind in DRAWN_PRIMITIVES:
                counts[("COMMENTS", "POLYLINE")] += 1
        return +counts

    def symbol_pins(self, counts, part):
        names = part.get("pin_names_visible", True)
        numbers = part.get("pin_numbers_visible", True)
        for pin in part.get("pins", []):
            if not pin.get("visible", True):
                continue
            counts[("PARTS", "TEXT")] += len(pin.get("properties", [])) + names + numbers
            counts[("PARTS", "LINE")] += 1 + 2 * pin.get("clock", False)
            counts[("PARTS", "LINE")] += 2 * pin.get("no_connect", False)
            counts[("PARTS", "CIRCLE")] += pin.get("dot", False)

    def block_pins(self, counts, part, flip):
        # The examples give every block's symbol its box.
        left, top, right, bottom = part.get("bbox") or self.symbol(part["symbol"])["bbox"]
        if part.get("rotation", 0) in (1, 3):
            right, bottom = bottom, right
        x0, y0 = part.get("location", [0, 0])
        left, right = left + x0, right + x0
        top, bottom = flip - (top + y0), flip - (bottom + y0)
        names = part.get("pin_names_visible", True)
        solids = {0: 2, 1: 1, 2: 2, 4: 1, 5: 1, 6: 1, 7: 1}
        for pin in part.get("pins", []):
            counts[("PARTS", "TEXT")] += len(pin.get("properties", []))
            kind = pin.get("block_kind", 0)
            if kind not in solids:
                continue
            x, y = pin["start"][0], flip - pin["start"][1]
            edges = (x <= left) + (x >= right) + (y >= top) + (y <= bottom)
            counts[("PARTS", "SOLID")] += edges * solids[kind]
            counts[("PARTS", "TEXT")] += edges * names
            counts[("PARTS", "LINE")] += 2 * pin.get("no_connect", False)


# ---------------------------------------------------------------------------------------------
# What the readers find.


def ezdxf_counts(path):
    try:
        doc = ezdxf.readfile(path)
    except Exception as error:  # any refusal of the reader is a failed check
        raise CheckFailed(f"{path.name}: ezdxf cannot read it: {error}") from error
    if doc.dxfversion != "AC1009":
        raise CheckFailed(f"{path.name}: version {doc.dxfversion}, expected AC1009")
    auditor = doc.audit()
    if auditor.has_errors:
        raise CheckFailed(f"{path.name}: ezdxf's auditor: {[str(e) for e in auditor.errors]}")
    counts = collections.Counter()
    for entity in doc.modelspace():
        counts[(entity.dxf.layer, entity.dxftype())] += 1
        if entity.dxftype() == "SOLID" and not entity.dxf.hasattr("vtx3"):
            raise CheckFailed(f"{path.name}: a SOLID without its fourth corner")
    return doc, counts


def gdal_counts(path):
    result = subprocess.run(
        ["ogrinfo", "-ro", "-q", "-dialect", "SQLite", "-sql", "SELECT Layer, COUNT(*) AS n FROM entities GROUP BY Layer",
         str(path)], capture_output=True, text=True, check=False)
    if result.returncode != 0 or result.stderr.strip():
        raise CheckFailed(f"{path.name}: ogrinfo: {result.stderr.strip() or result.returncode}")
    counts, layer = {}, None
    for line in result.stdout.splitlines():
        line = line.strip()
        if line.startswith("Layer (String) ="):
            layer = line.split("=", 1)[1].strip()
        elif line.startswith("n (Integer) =") and layer is not None:
            counts[layer] = int(line.split("=", 1)[1])
    return counts


# ---------------------------------------------------------------------------------------------
# Texts, as written in the document and as the readers give them back.


def document_texts(node):
    """Texts a page shows as the document writes them: property values, pin numbers, pin names
    (without their bar marks), net names, and each line of a comment text."""
    if isinstance(node, list):
        for item in node:
            yield from document_texts(item)
    elif isinstance(node, dict):
        for key, value in node.items():
            if key in ("value", "number") and isinstance(value, str):
                yield value
            elif key == "text" and isinstance(value, str):
                yield from value.replace("\r", "\n").split("\n")
            elif key == "name" and "start" in node:
                yield value.replace("\\", "")  # a pin's
            elif key == "aliases":
                yield from (alias["name"] for alias in value)
            else:
                yield from document_texts(value)


def joined(units):
    """The characters of text given as UTF-16 units (a surrogate pair is one character)."""
    return units.encode("utf-16-le", "surrogatepass").decode("utf-16-le")


def ezdxf_texts(path):
    doc, _ = ezdxf.recover.readfile(path)
    return [joined(e.dxf.text) for e in doc.modelspace() if e.dxftype() == "TEXT"]


def gdal_texts(path):
    result = subprocess.run(["ogrinfo", "--config", "DXF_ENCODING", "CP1252", "-ro", "-q", "-al",
                             str(path)], capture_output=True, text=True, check=True)
    prefix = "Text (String) = "
    values = [line.strip()[len(prefix):] for line in result.stdout.splitlines()
              if line.strip().startswith(prefix)]
    unescaped = [re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), value)
                 for value in values if value != "(null)"]
    return [joined(value) for value in unescaped]


def check_file(path, expected):
    doc, found = ezdxf_counts(path)
    if found != expected:
        raise CheckFailed(f"{path.name}: ezdxf found {sorted(found.items())}, "
                          f"the document implies {sorted(expected.items())}")
    per_layer = collections.Counter()
    for (layer, _), n in expected.items():
        per_layer[layer] += n
    found_by_gdal = gdal_counts(path)
    if found_by_gdal != dict(per_layer):
        raise CheckFailed(f"{path.name}: GDAL found {sorted(found_by_gdal.items())}, "
                          f"the document implies {sorted(per_layer.items())}")
    return doc



def librecad_pictures(dxfs, folder):
    """Prints the page files to PDF with LibreCAD, then each PDF to build/interop/librecad/ as a
    PNG; yields (page file, PNG). LibreCAD runs without a display or a configuration of its own,
    and stops waiting on a dialog when a file puzzles it, hence the time limit."""
    runtime = folder / "runtime"
    runtime.mkdir(mode=0o700, exist_ok=True)
    env = {key: value for key, value in os.environ.items() if "DISPLAY" not in key}
    env.update(QT_QPA_PLATFORM="offscreen", HOME=str(folder), XDG_RUNTIME_DIR=str(runtime),
               XDG_CONFIG_HOME=str(folder / "config"))
    try:
        printed = subprocess.run(["librecad", "dxf2pdf", "-a", "-t", str(folder), *dxfs],
                                 env=env, capture_output=True, text=True, timeout=120)
    except subprocess.TimeoutExpired as error:
        raise CheckFailed(f"LibreCAD still printing {[d.name for d in dxfs]} after 120 s") from error
    pictures = PICTURES / "librecad"
    pictures.mkdir(parents=True, exist_ok=True)
    for dxf in dxfs:
        pdf = folder / (dxf.stem + ".pdf")
        if not pdf.exists():
            raise CheckFailed(f"{dxf.name}: LibreCAD wrote no PDF: {printed.stderr[-500:]}")
        subprocess.run(["pdftoppm", "-png", "-r", "100", "-singlefile", str(pdf),
                        str(pictures / dxf.stem)], check=True, timeout=60)
        yield dxf, pictures / (dxf.stem + ".png")


def check_picture(png, dxf):
    """The drawing in `png` is there and has the page's proportions within 2 %."""
    ink = Image.open(png).convert("L").point(lambda value: 255 if value < 160 else 0)
    box = ink.getbbox()
    if box is None:
        raise CheckFailed(f"{png.name}: blank")
    space = ezdxf.readfile(dxf).modelspace()
    frame = ezdxf.bbox.extents(space.query('POLYLINE[layer=="TITLE"]') or space)
    expected = frame.size.x / frame.size.y
    found = (box[2] - box[0]) / (box[3] - box[1])
    if abs(found / expected - 1) > 0.02:
        raise CheckFailed(f"{png.name}: the drawing is {found:.3f} times as wide as high, "
                          f"the page {expected:.3f}")


def export(design, folder):
    stem = folder / design.stem
    result = subprocess.run([str(KALMOR), "export", str(design), "-o", f"{stem}.dxf"],
                            capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise AssertionError(f"kalmor export {design.name}: {result.returncode} {result.stderr}")
    return stem


def page_files(stem, document):
    for schematic in document["schematics"]:
        for page in schematic["pages"]:
            yield page, pathlib.Path(f"{stem}_{schematic['name']}_{page['name']}.dxf")


class Readers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kalmor-interop-"))
        PICTURES.mkdir(parents=True, exist_ok=True)

    def test_every_example_page_reads_back_as_the_document_implies(self):
        designs = sorted((SOURCE / "examples").glob("*.json"))
        self.assertTrue(designs, "no example designs")
        for design in designs:
            document = json.loads(design.read_text())
            stem = export(design, self.folder)
            oracle = Oracle(document)
            for page, path in page_files(stem, document):
                with self.subTest(file=path.name):
                    check_file(path, oracle.page(page))

    def test_texts_read_back_as_written(self):
        design = SOURCE / "examples" / "texts.json"
        document = json.loads(design.read_text())
        (page, path), = page_files(export(design, self.folder), document)
        written = set(document_texts(document))
        samples = "µΩ±°éß€中😀"
        expected = {text for text in written if any(c in text for c in samples)}
        self.assertTrue(all(any(c in text for text in expected) for c in samples))
        for reader, read in (("ezdxf", ezdxf_texts), ("GDAL", gdal_texts)):
            with self.subTest(reader=reader):
                found = read(path)
                self.assertEqual(expected - set(found), set())
                # No text comes back changed: each one beyond ASCII is one of the document's.
                shown = {re.sub("%%[oO]", "", text) for text in found}
                self.assertEqual({text for text in shown if not text.isascii()} - written, set())

    def test_librecad_draws_every_page_in_its_proportions(self):
        designs = sorted((SOURCE / "examples").glob("*.json"))
        designs += [KICAD_DEMOS / design for design in KICAD_DEMO_DESIGNS]
        for design in designs:
            folder = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
            export(design, folder)
            dxfs = sorted(folder.glob("*.dxf"))
            self.assertTrue(dxfs, f"{design.name}: no page files")
            for dxf, png in librecad_pictures(dxfs, folder):
                with self.subTest(file=dxf.name):
                    check_picture(png, dxf)

    def test_broken_files_fail_the_checks(self):
        design = SOURCE / "examples" / "board.json"
        document = json.loads(design.read_text())
        stem = export(design, self.folder)
        page, good = next(page_files(stem, document))
        expected = Oracle(document).page(page)
        check_file(good, expected)
        text = good.read_bytes()

        solid = text.index(b"\r\nSOLID\r\n")
        corner = text.index(b" 13\r\n", solid)
        corner_end = text.index(b" 33\r\n0.0\r\n", corner) + len(b" 33\r\n0.0\r\n")
        polyline = text.index(b"\r\nPOLYLINE\r\n")
        seqend = text.index(b" 0\r\nSEQEND\r\n", polyline)
        seqend_end = text.index(b"\r\n 0\r\n", seqend + 4) + 2
        broken = {
            "missing-corner": text[:corner] + text[corner_end:],
            "missing-seqend": text[:seqend] + text[seqend_end:],
        }
        for name, content in broken.items():
            with self.subTest(broken=name):
                path = self.folder / f"broken-{name}.dxf"
                path.write_bytes(content)
                with self.assertRaises(CheckFailed):
                    check_file(path, expected)

        entities = text.index(b"ENTITIES\r\n") + len(b"ENTITIES\r\n")
        end = text.index(b" 0\r\nENDSEC\r\n", entities)
        stray = b" 0\r\nLINE\r\n 8\r\nWIRE\r\n 10\r\n0.0\r\n 20\r\n0.0\r\n 30\r\n0.0\r\n" \
                b" 11\r\n0.0\r\n 21\r\n900.0\r\n 31\r\n0.0\r\n"
        drawings = {"stray-line": text[:end] + stray + text[end:],
                    "no-entities": text[:entities] + text[end:]}
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        for name, content in drawings.items():
            (folder / f"broken-{name}.dxf").write_bytes(content)
        for dxf, png in librecad_pictures(sorted(folder.glob("*.dxf")), folder):
            with self.subTest(broken=dxf.name), self.assertRaises(CheckFailed):
                check_picture(png, dxf)


if __name__ == "__main__":
    if not KALMOR.exists():
        sys.exit(f"{KALMOR} is not built")
    unittest.main(verbosity=2)
