#!/usr/bin/python3
"""Reads every SVG picture that the renderer's tests draw with a real XML parser, and holds each
against the DXF it was drawn from: one element per entity in file order, of the entity's kind, on
its layer, in the legend's colour for that layer, at the DXF's coordinates with y up, inside the
view box."""

import glob
import math
import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ET

SOURCE = os.environ.get("KALMOR_SOURCE_DIR",
                        os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
BUILD = os.environ.get("KALMOR_BUILD_DIR", os.path.join(SOURCE, "build"))
SVG = "{http://www.w3.org/2000/svg}"
TAGS = {"LINE": "line", "CIRCLE": "circle", "SOLID": "polygon", "POLYLINE": "path", "TEXT": "text"}
SCALE = 100  # SVG units per drawing unit
CLOSE = 0.006


def read_dxf(path):
    """Entities as (type, groups, vertex groups), read independently of the renderer."""
    with open(path, "rb") as f:
        text = f.read().decode("latin-1").replace("\r\n", "\n")
    lines = text.split("\n")
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


def path_segments(d):
    """The path's commands as (letter, numbers)."""
    return [(m.group(1), [float(n) for n in m.group(2).split()])
            for m in re.finditer(r"([MLAZ])([^MLAZ]*)", d)]


def shown_text(raw):
    """What a TEXT value should show: UTF-8 with replacements, toggles removed."""
    value = raw.encode("latin-1").decode("utf-8", errors="replace")
    value = re.sub(r"[\x00-\x08\x0a-\x1f\ufffe\uffff]", "\ufffd", value)
    return re.sub("\ufffd+", "\ufffd", value)


class RenderedPictures(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.out = tempfile.TemporaryDirectory()
        env = dict(os.environ, KALMOR_RENDER_OUT=cls.out.name, KALMOR_SOURCE_DIR=SOURCE)
        for source in glob.glob(os.path.join(SOURCE, "tests/render/*_test.cpp")):
            binary = os.path.join(BUILD, "tests", os.path.basename(source)[:-4])
            subprocess.run([binary], env=env, check=True, stdout=subprocess.DEVNULL)
        cls.pictures = sorted(glob.glob(os.path.join(cls.out.name, "*.svg")))
        cls.pictures.append(os.path.join(SOURCE, "tests/render/data/small_page.svg"))

    @classmethod
    def tearDownClass(cls):
        cls.out.cleanup()

    def assertNear(self, got, want, what):
        self.assertEqual(len(got), len(want), what)
        for g, w in zip(got, want):
            self.assertTrue(math.isclose(g, w, abs_tol=CLOSE), f"{what}: {got} != {want}")

    def test_pictures_match_their_dxf(self):
        self.assertGreaterEqual(len(self.pictures), 5)
        for svg_path in self.pictures:
            with self.subTest(picture=os.path.basename(svg_path)):
                self.check_picture(svg_path, read_dxf(svg_path[:-4] + ".dxf"))

    def check_picture(self, svg_path, entities):
        root = ET.parse(svg_path).getroot()
        self.assertEqual(root.tag, SVG + "svg")
        vx, vy, vw, vh = map(float, root.get("viewBox").split())
        page = root.find(SVG + "rect")
        self.assertEqual((page.get("fill"), page.get("x"), page.get("width")),
                         ("#ffffff", root.get("viewBox").split()[0], root.get("viewBox").split()[2]))

        legend = {r.get("data-legend"): r.get("fill") for r in root.iter(SVG + "rect")
                  if r.get("data-legend")}
        self.assertEqual(len(legend), 7)
        self.assertEqual(len(set(legend.values())), 7, "one colour per layer")
        counts = {layer: 0 for layer in legend}
        for _, groups, _ in entities:
            counts[groups[8]] += 1
        shown = {t.text for t in root.iter(SVG + "text") if t.get("data-layer") is None}
        self.assertEqual(shown, {f"{layer} ({n})" for layer, n in counts.items()})

        drawn = [e for e in root.iter() if e.get("data-layer") is not None]
        self.assertEqual(len(drawn), len(entities))
        inside = []
        for element, (kind, groups, vertices) in zip(drawn, entities):
            what = f"{kind} at {groups.get(10)}, {groups.get(20)}"
            self.assertEqual((element.tag, element.get("data-layer")), (SVG + TAGS[kind], groups[8]))
            colour = element.get("stroke") if element.get("stroke", "none") != "none" else element.get("fill")
            self.assertEqual(colour, legend[groups[8]], what)
            got, want = self.points(element, kind, groups, vertices)
            self.assertNear([c for p in got for c in p], [c for p in want for c in p], what)
            inside += got
            if kind == "CIRCLE":
                r = float(element.get("r"))
                self.assertNear([r], [abs(float(groups[40])) * SCALE], what)
                inside += [(got[0][0] - r, got[0][1] - r), (got[0][0] + r, got[0][1] + r)]
            if kind == "TEXT":
                self.check_text(element, groups)
        for x, y in inside:
            self.assertTrue(vx <= x <= vx + vw and vy <= y <= vy + vh, f"{x}, {y} outside the view")

    def points(self, element, kind, groups, vertices):
        """The element's points next to the points its entity should give."""
        if kind == "LINE":
            got = [(float(element.get("x" + n)), float(element.get("y" + n))) for n in "12"]
            return got, [point(groups, 10), point(groups, 11)]
        if kind == "CIRCLE":
            return [(float(element.get("cx")), float(element.get("cy")))], [point(groups, 10)]
        if kind == "SOLID":
            got = [tuple(map(float, p.split(","))) for p in element.get("points").split()]
            return got, [point(groups, c) for c in (10, 11, 13, 12)]  # zig-zag corner order
        if kind == "TEXT":
            return [(float(element.get("x")), float(element.get("y")))], [point(groups, 10)]
        return self.path_points(element, groups, vertices)

    def path_points(self, element, groups, vertices):
        want = [point(v, 10) for v in vertices]
        closed = groups.get(70, "0").strip() == "1"
        got = []
        for letter, numbers in path_segments(element.get("d")):
            if letter == "Z":
                self.assertTrue(closed)
                continue
            got.append((numbers[-2], numbers[-1]))
            if letter != "A":
                continue
            # The arc of the segment ending here: radius from the chord, sweep from the sign.
            start, end = got[-2], got[-1]
            bulge = float(vertices[len(got) - 2].get(42, "0"))
            chord = math.dist(start, end)
            self.assertNear([numbers[0], numbers[3], numbers[4]],
                            [chord * (1 + bulge * bulge) / (4 * abs(bulge)),
                             abs(bulge) > 1, bulge < 0], "arc")
        if closed and vertices and float(vertices[-1].get(42, "0")) != 0:
            want.append(want[0])  # the bulged closing segment ends where the path began
        return got, want

    def check_text(self, element, groups):
        self.assertNear([float(element.get("font-size")) * 1409 / 2048],
                        [abs(float(groups[40])) * SCALE], "capital height")
        runs = re.split("%%[oO]", shown_text(groups[1]))
        self.assertEqual(re.sub("\ufffd+", "\ufffd", "".join(element.itertext())), "".join(runs))
        overlined = [t.text for t in element.iter(SVG + "tspan")
                     if t.get("text-decoration") == "overline"]
        self.assertEqual(overlined, [r for r in runs[1::2] if r])
        angle = float(groups.get(50, "0"))
        if angle:
            x, y = point(groups, 10)
            self.assertNear([float(n) for n in re.findall(r"-?[\d.]+", element.get("transform"))],
                            [-angle, x, y], "rotation")


if __name__ == "__main__":
    unittest.main()
