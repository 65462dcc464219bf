#!/usr/bin/python3
"""Reads the renderer's golden picture of a page holding every layer and record kind with a real
XML parser and holds it against the DXF it came from: a white page, one element per entity in file
order, of the entity's kind, on its layer, in the legend's colour, at the DXF's coordinates with y
up, inside the view box. The renderer's test compares its pictures with the golden one byte for
byte; this says that the golden one is right."""

import math
import os
import re
import unittest
import xml.etree.ElementTree as ET

SOURCE = os.environ.get("KALMOR_SOURCE_DIR", os.path.abspath(__file__ + "/../../.."))
SVG = "{http://www.w3.org/2000/svg}"
TAGS = {"LINE": "line", "CIRCLE": "circle", "SOLID": "polygon", "POLYLINE": "path", "TEXT": "text"}
SCALE = 100  # SVG units per drawing unit


def read_dxf(path):
    """Entities as (type, groups, vertex groups), read without the renderer."""
    with open(path, "rb") as f:
        lines = f.read().decode("latin-1").replace("\r\n", "\n").split("\n")
    entities, groups = [], {}
    for i in range(0, len(lines) - 1, 2):
        code, value = int(lines[i]), lines[i + 1]
        if code != 0:
            groups[code] = value
            continue
        groups = {}
        if value in TAGS:
            entities.append((value, groups, []))
        elif value == "VERTEX":
            entities[-1][2].append(groups)
    return entities


def point(groups, x_code):
    return (float(groups[x_code]) * SCALE, -float(groups[x_code + 10]) * SCALE)


def shown_text(raw):
    """What a TEXT value shows: Windows-1252 (its five unused bytes as the control characters of
    the same number), \\U+XXXX escapes as their UTF-16 units, a lone surrogate and what XML cannot
    hold as replacements, any run of them as one."""
    value = "".join(bytes([b]).decode("cp1252", errors="ignore") or chr(b)
                    for b in raw.encode("latin-1"))
    value = re.sub(r"\\U\+([0-9A-Fa-f]{4})", lambda m: chr(int(m.group(1), 16)), value)
    value = value.encode("utf-16-le", "surrogatepass").decode("utf-16-le", errors="replace")
    return re.sub("\ufffd+", "\ufffd", re.sub(r"[\x00-\x08\x0a-\x1f\ufffe\uffff]", "\ufffd", value))


class RenderedPictures(unittest.TestCase):
    def assertNear(self, got, want, what):
        self.assertEqual(len(got), len(want), what)
        self.assertTrue(all(math.isclose(g, w, abs_tol=0.006) for g, w in zip(got, want)),
                        f"{what}: {got} != {want}")

    def test_the_golden_picture_matches_its_dxf(self):
        page = os.path.join(SOURCE, "tests/render/data/small_page")
        self.check_picture(ET.parse(page + ".svg").getroot(), read_dxf(page + ".dxf"))

    def check_picture(self, root, entities):
        self.assertEqual(root.tag, SVG + "svg")
        view = root.get("viewBox").split()
        page = root.find(SVG + "rect")
        self.assertEqual([page.get(a) for a in ("fill", "x", "y", "width", "height")],
                         ["#ffffff"] + view)
        vx, vy, vw, vh = map(float, view)

        legend = {r.get("data-legend"): r.get("fill") for r in root.iter(SVG + "rect")
                  if r.get("data-legend")}
        self.assertEqual(len(set(legend.values())), 7, "one colour for each of seven layers")
        counts = {layer: sum(g[8] == layer for _, g, _ in entities) for layer in legend}
        self.assertEqual({t.text for t in root.iter(SVG + "text") if t.get("data-layer") is None},
                         {f"{layer} ({n})" for layer, n in counts.items()})

        drawn = [e for e in root.iter() if e.get("data-layer") is not None]
        self.assertEqual(len(drawn), len(entities))
        for element, (kind, groups, vertices) in zip(drawn, entities):
            what = f"{kind} at {groups.get(10)}, {groups.get(20)}"
            self.assertEqual((element.tag, element.get("data-layer")), (SVG + TAGS[kind], groups[8]))
            stroke = element.get("stroke", "none")
            self.assertEqual(stroke if stroke != "none" else element.get("fill"), legend[groups[8]])
            got, want = self.points(element, kind, groups, vertices)
            self.assertNear([c for p in got for c in p], [c for p in want for c in p], what)
            for x, y in got:
                self.assertTrue(vx <= x <= vx + vw and vy <= y <= vy + vh, f"{what} outside")

    def points(self, element, kind, groups, vertices):
        """The element's points next to those its entity should give."""
        number = lambda name: float(element.get(name))
        if kind == "LINE":
            got = [(number("x1"), number("y1")), (number("x2"), number("y2"))]
            return got, [point(groups, 10), point(groups, 11)]
        if kind == "CIRCLE":
            (x, y, r), (cx, cy) = map(number, ("cx", "cy", "r")), point(groups, 10)
            cr = abs(float(groups[40])) * SCALE  # a negative radius draws at its size
            return [(x - r, y - r), (x + r, y + r)], [(cx - cr, cy - cr), (cx + cr, cy + cr)]
        if kind == "SOLID":
            got = [tuple(map(float, p.split(","))) for p in element.get("points").split()]
            return got, [point(groups, c) for c in (10, 11, 13, 12)]  # zig-zag corner order
        if kind == "TEXT":
            self.check_text(element, groups)
            return [(number("x"), number("y"))], [point(groups, 10)]
        return self.path_points(element, groups, vertices)

    def path_points(self, element, groups, vertices):
        want = [point(v, 10) for v in vertices]
        closed = groups.get(70, "0").strip() == "1"
        self.assertEqual(element.get("d").endswith("Z"), closed and bool(vertices))
        got = []
        for letter, numbers in re.findall(r"([MLA])([^MLAZ]*)", element.get("d")):
            numbers = [float(n) for n in numbers.split()]
            got.append((numbers[-2], numbers[-1]))
            if letter == "A":  # radius from the chord, large-arc and sweep flags from the bulge
                bulge = float(vertices[len(got) - 2].get(42, "0"))
                self.assertNear(numbers[:1] + numbers[3:5],
                                [math.dist(got[-2], got[-1]) * (1 + bulge * bulge) / (4 * abs(bulge)),
                                 abs(bulge) > 1, bulge < 0], "arc")
        if closed and vertices and float(vertices[-1].get(42, "0")) != 0:
            want.append(want[0])  # a bulged closing segment ends where the path began
        return got, want

    def check_text(self, element, groups):
        # The DXF height is that of the capitals: 1409/2048 of the font size.
        self.assertNear([float(element.get("font-size")) * 1409 / 2048],
                        [abs(float(groups[40])) * SCALE], "capital height")
        runs = re.split("%%[oO]", shown_text(groups[1]))
        self.assertEqual(re.sub("\ufffd+", "\ufffd", "".join(element.itertext())), "".join(runs))
        overlined = [t.text for t in element.iter(SVG + "tspan")
                     if t.get("text-decoration") == "overline"]
        self.assertEqual(overlined, [r for r in runs[1::2] if r])
        if float(groups.get(50, "0")):
            rotation = re.findall(r"-?[\d.]+", element.get("transform"))
            self.assertNear([float(n) for n in rotation],
                            [-float(groups[50]), *point(groups, 10)], "rotation")


if __name__ == "__main__":
    unittest.main()
