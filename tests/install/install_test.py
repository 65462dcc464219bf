#!/usr/bin/env python3
"""kalmor as a host application gets it: installed under a prefix, then the example host
(examples/host-adapter) built against that install once through the CMake package and once
through pkg-config, run, and its DXF files read; and the Debian package built from the same
build, with its dependencies computed."""

import collections
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import ezdxf

SOURCE = pathlib.Path(os.environ.get("KALMOR_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("KALMOR_BUILD_DIR", SOURCE / "build"))
EXAMPLE = SOURCE / "examples" / "host-adapter"
VERSION = "1.15.0"

# What the shared library may export: kalmor's names, and the type information and virtual
# tables of its classes; the version node names itself.
EXPORTED = re.compile(r"^(kalmor::|(typeinfo|typeinfo name|vtable) for kalmor::|KALMOR_1$)")


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options)


def entities_by_layer(path):
    document = ezdxf.readfile(path)
    assert document.dxfversion == "AC1009", document.dxfversion
    found = collections.defaultdict(list)
    for entity in document.modelspace():
        found[entity.dxf.layer].append(entity)
    return found


def texts(entities):
    return sorted(e.dxf.text for e in entities if e.dxftype() == "TEXT")


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temp = tempfile.TemporaryDirectory()
        cls.prefix = pathlib.Path(cls.temp.name) / "prefix"
        run("cmake", "--install", str(BUILD), "--prefix", str(cls.prefix))

    @classmethod
    def tearDownClass(cls):
        cls.temp.cleanup()

    def build_example(self, name, *options, env=None):
        build = pathlib.Path(self.temp.name) / name
        run("cmake", "-S", str(EXAMPLE), "-B", str(build), "-G", "Ninja", *options, env=env)
        run("cmake", "--build", str(build), env=env)
        program = build / "host_adapter"
        needed = run("readelf", "-d", str(program)).stdout
        self.assertIn("[libkalmor.so.1]", needed)
        return program

    def run_example(self, program, name, env=None):
        out = pathlib.Path(self.temp.name) / name
        out.mkdir()
        result = subprocess.run([str(program), str(out)], capture_output=True, text=True, env=env)
        return result, out

    def test_the_library_exports_its_public_api_only(self):
        library = self.prefix / "lib" / f"libkalmor.so.{VERSION}"
        self.assertIn("Library soname: [libkalmor.so.1]", run("readelf", "-d", str(library)).stdout)
        symbols = run("nm", "-DC", "--defined-only", str(library)).stdout.splitlines()
        names = [line.split(" ", 2)[2] for line in symbols]
        self.assertIn("kalmor::DesignToDXF(kalmor::DboDesign const*, std::__cxx11::basic_string<"
                      "char, std::char_traits<char>, std::allocator<char> >, int, int, int)@@KALMOR_1",
                      names)
        self.assertEqual([n for n in names if not EXPORTED.match(n)], [])
        self.assertEqual(run(str(self.prefix / "bin" / "kalmor"), "--version").stdout,
                         f"kalmor {VERSION}\n")

    def test_the_example_host_builds_runs_and_writes_its_pages(self):
        found = self.build_example("with-cmake", f"-DCMAKE_PREFIX_PATH={self.prefix}")
        result, out = self.run_example(found, "out-cmake")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.splitlines()[1:], [
            f"KALMOR V1.15 COMPLETE: DEMO has been output to {out}/demo_<SchematicName>_<PageName>.dxf",
            f"KALMOR V1.15 COMPLETE: POWER  output to  {out}/power.dxf"])
        pages = sorted(p.name for p in out.iterdir())
        self.assertEqual(pages, ["demo_MAIN_POWER.dxf", "demo_MAIN_SENSE.dxf", "power.dxf"])
        self.assertEqual((out / "power.dxf").read_bytes(), (out / "demo_MAIN_POWER.dxf").read_bytes())

        # POWER holds two resistors (body, two pins with name and number each; reference,
        # "Value = ..." and the glyph R) and three named wires; SENSE one sensor with one pin and
        # one named wire. Page units are hundredths of a drawing unit, y flipped on an 850 high page.
        power = entities_by_layer(out / "demo_MAIN_POWER.dxf")
        self.assertEqual({layer: len(power[layer]) for layer in ("PARTS", "PARTTEXT", "WIRE", "WIRETEXT")},
                         {"PARTS": 14, "PARTTEXT": 6, "WIRE": 3, "WIRETEXT": 3})
        self.assertEqual(texts(power["PARTTEXT"]), ["R", "R", "R1", "R2", "Value = 10k", "Value = 4k7"])
        self.assertEqual(texts(power["WIRETEXT"]), ["GND", "SENSE", "VIN"])
        vin = [[tuple(v.dxf.location)[:2] for v in wire.vertices] for wire in power["WIRE"]][0]
        self.assertEqual(vin, [(2.0, 5.8), (3.1, 5.8)])
        sense = entities_by_layer(out / "demo_MAIN_SENSE.dxf")
        self.assertEqual(texts(sense["PARTTEXT"]), ["S", "U1"])
        self.assertEqual(texts(sense["PARTS"]), ["3", "IN"])

        # pkg-config gives the same program the same library.
        environment = dict(os.environ, PKG_CONFIG_PATH=str(self.prefix / "lib" / "pkgconfig"))
        listed = self.build_example("with-pkg-config", "-DUSE_PKG_CONFIG=ON", env=environment)
        again, copy = self.run_example(listed, "out-pkg-config")
        self.assertEqual(again.returncode, 0, again.stderr)
        for page in pages:
            self.assertEqual((copy / page).read_bytes(), (out / page).read_bytes(), page)

        # Without fonts the host learns it through the library's error kind, before any file.
        no_fonts = pathlib.Path(self.temp.name) / "no-fonts.conf"
        no_fonts.write_text('<?xml version="1.0"?><fontconfig/>\n')
        failed, empty = self.run_example(found, "out-no-fonts",
                                         env=dict(os.environ, FONTCONFIG_FILE=str(no_fonts)))
        self.assertEqual(failed.returncode, 4, failed.stderr)
        self.assertIn("no font file found", failed.stderr)
        self.assertEqual(list(empty.iterdir()), [])


class Package(unittest.TestCase):
    def test_debian_package_holds_the_install_and_computes_its_depends(self):
        with tempfile.TemporaryDirectory() as temp:
            run("cpack", "-G", "DEB", "--config", str(BUILD / "CPackConfig.cmake"), cwd=temp)
            deb = pathlib.Path(temp) / f"kalmor_{VERSION}_amd64.deb"
            depends = run("dpkg-deb", "-f", str(deb), "Depends").stdout
            for package in ("libc6", "libfontconfig1", "libfreetype6", "libstdc++6"):
                self.assertRegex(depends, rf"\b{re.escape(package)} \(>= ")
            files = run("dpkg-deb", "-c", str(deb)).stdout
            for path in (f"./usr/lib/libkalmor.so.{VERSION}", "./usr/lib/libkalmor.so.1 -> ",
                         "./usr/include/kalmor/kalmor.h", "./usr/lib/cmake/kalmor/kalmorConfig.cmake",
                         "./usr/lib/pkgconfig/kalmor.pc", "./usr/bin/kalmor",
                         "./usr/share/man/man1/kalmor.1", "./usr/share/doc/kalmor/README.md"):
                self.assertIn(path, files)
            self.assertIn("libkalmor 1 kalmor", run("dpkg-deb", "-I", str(deb), "shlibs").stdout)
            # Unpacked anywhere, the command finds its library beside it.
            root = pathlib.Path(temp) / "root"
            run("dpkg-deb", "-x", str(deb), str(root))
            self.assertEqual(run(str(root / "usr" / "bin" / "kalmor"), "--version").stdout,
                             f"kalmor {VERSION}\n")


if __name__ == "__main__":
    unittest.main()
