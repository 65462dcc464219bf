#!/usr/bin/env python3
"""kalmor as a host application gets it: installed under a prefix, its headers and exported
symbols; the example host built against the install through the CMake package and through
pkg-config, run, and its pages read; the Debian package of the same build."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import ezdxf

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("KALMOR_BUILD_DIR", SOURCE / "build"))
CXX = os.environ.get("KALMOR_CXX", "c++")
VERSION = "1.15.0"
# kalmor's names with its classes' type information and virtual tables; the version node.
EXPORTED = re.compile(r"^(kalmor::|(typeinfo|typeinfo name|vtable) for kalmor::|KALMOR_1$)")


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options)


def layer_texts(path, layer):
    document = ezdxf.readfile(path)
    assert document.dxfversion == "AC1009"
    return sorted(e.dxf.text for e in document.modelspace().query(f'TEXT[layer=="{layer}"]'))


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temp = tempfile.TemporaryDirectory()
        cls.root = pathlib.Path(cls.temp.name)
        cls.prefix = cls.root / "prefix"
        run("cmake", "--install", str(BUILD), "--prefix", str(cls.prefix))

    @classmethod
    def tearDownClass(cls):
        cls.temp.cleanup()

    def example(self, name, *options, **environment):
        env = dict(os.environ, **environment)
        build, out = self.root / name, self.root / (name + "-out")
        run("cmake", "-S", str(SOURCE / "examples" / "host-adapter"), "-B", str(build), "-G",
            "Ninja", *options, env=env)
        run("cmake", "--build", str(build), env=env)
        self.assertIn("[libkalmor.so.1]", run("readelf", "-d", str(build / "host_adapter")).stdout)
        out.mkdir()
        return build / "host_adapter", out

    def test_headers_stand_alone_and_the_library_exports_only_them(self):
        for header in (self.prefix / "include" / "kalmor").glob("*.h"):
            for name in re.findall(r'#include [<"]([^>"]+)', header.read_text()):
                # Standard headers have neither a folder nor an extension.
                self.assertTrue(name.startswith("kalmor/") or not re.search(r"[/.]", name), name)
            run(CXX, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
                "-I", str(self.prefix / "include"), "-x", "c++", "-",
                input=f"#include <kalmor/{header.name}>\n")
        library = self.prefix / "lib" / f"libkalmor.so.{VERSION}"
        self.assertIn("soname: [libkalmor.so.1]", run("readelf", "-d", str(library)).stdout)
        names = [line.split(" ", 2)[2]
                 for line in run("nm", "-DC", "--defined-only", str(library)).stdout.splitlines()]
        self.assertIn("kalmor::g_inDesignExport@@KALMOR_1", names)
        self.assertEqual([name for name in names if not EXPORTED.match(name)], [])

    def test_the_example_host_writes_its_pages_through_either_build(self):
        program, out = self.example("cmake", f"-DCMAKE_PREFIX_PATH={self.prefix}")
        result = subprocess.run([program, out], capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.splitlines()[1:], [
            f"KALMOR V1.15 COMPLETE: DEMO has been output to {out}/demo_<SchematicName>_<PageName>.dxf",
            f"KALMOR V1.15 COMPLETE: POWER  output to  {out}/power.dxf"])
        pages = sorted(p.name for p in out.iterdir())
        self.assertEqual(pages, ["demo_MAIN_POWER.dxf", "demo_MAIN_SENSE.dxf", "power.dxf"])
        # POWER: two resistors (reference, "Value = ...", the glyph R), three named wires.
        self.assertEqual(layer_texts(out / "power.dxf", "PARTTEXT"),
                         ["R", "R", "R1", "R2", "Value = 10k", "Value = 4k7"])
        self.assertEqual(layer_texts(out / "power.dxf", "WIRETEXT"), ["GND", "SENSE", "VIN"])
        self.assertEqual(layer_texts(out / "demo_MAIN_SENSE.dxf", "PARTS"), ["3", "IN"])
        self.assertIn(b" 10\r\n  2.0000\r\n 20\r\n  5.8000\r\n",
                      (out / "power.dxf").read_bytes())  # VIN starts at (200, 270)

        program, copy = self.example("pkg-config", "-DUSE_PKG_CONFIG=ON",
                                     PKG_CONFIG_PATH=str(self.prefix / "lib" / "pkgconfig"))
        self.assertEqual(subprocess.run([program, copy], capture_output=True).returncode, 0)
        for page in pages:
            self.assertEqual((copy / page).read_bytes(), (out / page).read_bytes(), page)

        # Without fonts the host learns it through the error's kind, before any file exists.
        no_fonts = self.root / "no-fonts.conf"
        no_fonts.write_text('<?xml version="1.0"?><fontconfig/>\n')
        empty = self.root / "empty"
        empty.mkdir()
        failed = subprocess.run([program, empty], capture_output=True, text=True,
                                env=dict(os.environ, FONTCONFIG_FILE=str(no_fonts)))
        self.assertEqual((failed.returncode, list(empty.iterdir())), (4, []), failed.stderr)

    def test_the_debian_package_holds_the_install_and_computes_its_depends(self):
        run("cpack", "-G", "DEB", "--config", str(BUILD / "CPackConfig.cmake"), cwd=self.root)
        deb = str(self.root / f"kalmor_{VERSION}_amd64.deb")
        depends = run("dpkg-deb", "-f", deb, "Depends").stdout
        for package in ("libc6", "libfontconfig1", "libfreetype6", "libstdc++6"):
            self.assertIn(package + " (>= ", depends)
        files = run("dpkg-deb", "-c", deb).stdout
        for path in (f"/lib/libkalmor.so.{VERSION}", "/include/kalmor/kalmor.h",
                     "/lib/cmake/kalmor/kalmorConfig.cmake", "/lib/pkgconfig/kalmor.pc",
                     "/share/man/man1/kalmor.1", "/share/doc/kalmor/README.md"):
            self.assertIn("./usr" + path, files)
        # The packaged command runs as it is.
        run("dpkg-deb", "-x", deb, str(self.root / "unpacked"))
        self.assertEqual(run(str(self.root / "unpacked/usr/bin/kalmor"), "--version").stdout,
                         f"kalmor {VERSION}\n")


if __name__ == "__main__":
    unittest.main()
