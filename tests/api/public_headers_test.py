#!/usr/bin/env python3
"""Each public header compiles on its own and includes nothing but kalmor's and the standard's."""

import os
import pathlib
import re
import subprocess
import unittest

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
INCLUDE = SOURCE / "include"
HEADERS = sorted((INCLUDE / "kalmor").glob("*.h"))
CXX = os.environ.get("KALMOR_CXX", "c++")
INCLUDE_LINE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


class PublicHeaders(unittest.TestCase):
    def test_only_kalmor_and_standard_headers(self):
        self.assertGreaterEqual(len(HEADERS), 8)
        for header in HEADERS:
            for quote, name in INCLUDE_LINE.findall(header.read_text()):
                with self.subTest(header=header.name, include=name):
                    if quote == '"':
                        self.assertTrue(name.startswith("kalmor/"))
                        self.assertTrue((INCLUDE / name).is_file())
                    else:
                        # Standard C++ headers have neither a folder nor an extension.
                        self.assertNotRegex(name, r"[/.]")

    def test_each_compiles_alone(self):
        for header in HEADERS:
            with self.subTest(header=header.name):
                unit = f'#include "kalmor/{header.name}"\n'
                result = subprocess.run(
                    [CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic",
                     "-Werror", "-I", str(INCLUDE), "-x", "c++", "-"],
                    input=unit, capture_output=True, text=True)
                self.assertEqual(result.returncode, 0, result.stderr)


if __name__ == "__main__":
    unittest.main()
