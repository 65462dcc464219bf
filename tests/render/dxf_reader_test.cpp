#include "render/dxf_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "render_fixtures.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor {
namespace {

using test::DxfPage;

constexpr std::string_view kLine =
    " 0\nLINE\n 8\nWIRE\n 10\n  1.0000\n 20\n  2.0000\n 30\n0.0\n 11\n  3.0000\n 21\n  4.0000\n"
    " 31\n0.0\n";
constexpr std::string_view kOpenPolyline =
    " 0\nPOLYLINE\n 8\nWIRE\n 66\n1\n 0\nVERTEX\n 8\nWIRE\n 10\n0.0\n 20\n0.0\n";

struct Refusal {
  const char* what;
  std::string dxf;
  std::string message;
  std::string record;
  std::size_t line;
};

TEST(DxfReader, RefusesWithTheLineAndTheRecord) {
  const std::string noEof = DxfPage(kLine);
  const Refusal cases[] = {
      {"not DXF", "{\"kalmor_design\": 1}\n",
       "not a DXF file: it does not begin with a SECTION record", "", 1},
      {"binary", "\x89PNG\r\n\x1a\n", "not a DXF file: it does not begin with a SECTION record", "",
       1},
      {"empty", "", "not a DXF file: it is empty", "", 1},
      {"no EOF", noEof.substr(0, noEof.size() - 7), "file ends before the EOF record", "", 32},
      {"code without value", " 0\nSECTION\n 2\nHEADER\n 9\n",
       "file ends after group code 9 without its value", "", 5},
      {"bad number", DxfPage(" 0\nLINE\n 8\nWIRE\n 10\n1\n 20\n  2.0x00\n"),
       "bad number \"  2.0x00\" in group 20 of LINE", "LINE", 22},
      {"not a number", DxfPage(" 0\nCIRCLE\n 8\nPARTS\n 10\nnan\n"),
       "bad number \"nan\" in group 10 of CIRCLE", "CIRCLE", 20},
      {"out of range", DxfPage(" 0\nCIRCLE\n 8\nPARTS\n 10\n0\n 20\n0\n 40\n1e13\n"),
       "number \"1e13\" in group 40 of CIRCLE is out of range", "CIRCLE", 24},
      {"ARC", DxfPage(" 0\nARC\n 8\nCOMMENTS\n"), "unsupported record ARC", "ARC", 16},
      {"POLYLINE without SEQEND", DxfPage(std::string(kOpenPolyline) + std::string(kLine)),
       "POLYLINE from line 16 ends without SEQEND (found LINE)", "POLYLINE", 30},
      {"POLYLINE cut short", std::string(test::kPageOpening) + std::string(kOpenPolyline),
       "file ends inside the POLYLINE from line 16 (no SEQEND)", "POLYLINE", 28},
      {"SOLID missing a corner",
       DxfPage(" 0\nSOLID\n 8\nPARTS\n 10\n0\n 20\n0\n 11\n1\n 21\n0\n 12\n0\n 22\n1\n"),
       "SOLID lacks group 13 (fourth corner x)", "SOLID", 16},
      {"unknown layer", DxfPage(" 0\nLINE\n 8\n0\n"), "unknown layer \"0\" in LINE", "LINE", 18},
      {"colour group", DxfPage(" 0\nCIRCLE\n 8\nPARTS\n 62\n1\n"), "unsupported group 62 in CIRCLE",
       "CIRCLE", 19},
      {"repeated group", DxfPage(" 0\nTEXT\n 8\nPARTS\n 10\n0\n 20\n0\n 40\n1\n 1\nA\n 1\nB\n"),
       "repeated group 1 in TEXT", "TEXT", 27},
      {"tables", " 0\nSECTION\n 2\nTABLES\n 0\nENDSEC\n 0\nEOF\n", "unsupported section TABLES",
       "SECTION", 4},
      {"stray VERTEX", DxfPage(" 0\nVERTEX\n 8\nWIRE\n"), "VERTEX outside a POLYLINE", "VERTEX",
       16},
      {"vertex on another layer",
       DxfPage(" 0\nPOLYLINE\n 8\nWIRE\n 66\n1\n 0\nVERTEX\n 8\nPARTS\n 10\n0\n 20\n0\n"
               " 0\nSEQEND\n 8\nWIRE\n"),
       "VERTEX on layer \"PARTS\" inside a POLYLINE on layer \"WIRE\"", "VERTEX", 24},
      {"tapered",
       DxfPage(" 0\nPOLYLINE\n 8\nWIRE\n 66\n1\n 40\n  0.1000\n 41\n  0.2000\n"
               " 0\nSEQEND\n 8\nWIRE\n"),
       "tapered POLYLINE (widths 0.1000 and 0.2000) is not supported", "POLYLINE", 16},
      {"version", " 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1015\n",
       "unsupported DXF version AC1015 (AC1009 is read)", "HEADER", 8},
      {"no ENDSEC", std::string(test::kPageOpening) + " 0\nEOF\n",
       "ENTITIES section ends without ENDSEC", "EOF", 16},
      {"bad group code", DxfPage(" 0\nLINE\n x8\nWIRE\n"), "expected a group code, found \" x8\"",
       "", 17},
      {"after EOF", DxfPage(kLine) + "\n 0\nLINE\n", "content after the EOF record", "EOF", 36},
  };
  for (const Refusal& c : cases) {
    SCOPED_TRACE(c.what);
    const auto e = test::Thrown<DxfReadError>([&] { ReadDxf(c.dxf, "t.dxf"); });
    ASSERT_TRUE(e) << "read without an error";
    EXPECT_EQ(e->what(), "t.dxf:" + std::to_string(c.line) + ": " + c.message);
    EXPECT_EQ(std::make_pair(e->line(), e->record()), std::make_pair(c.line, c.record));
  }
}

std::string SmallPage() {
  return kalmor::test::ReadFileBytes(kalmor::test::SourceDir() /
                                     "tests/render/data/small_page.dxf");
}

TEST(DxfReader, ReadsLfAndCrLfPagesAlike) {
  const std::string crlf = SmallPage();
  std::string lf;
  for (const char c : crlf) {
    if (c != '\r') {
      lf += c;
    }
  }
  ASSERT_EQ(crlf.size() - lf.size(),
            static_cast<std::size_t>(std::count(lf.begin(), lf.end(), '\n')));
  EXPECT_EQ(RenderDxfToSvg(lf, "p.dxf"), RenderDxfToSvg(crlf, "p.dxf"));
}

// Cut anywhere before its EOF record, a page is refused, never read in part or crashed on.
TEST(DxfReader, RefusesEveryTruncationOfAPage) {
  const std::string page = SmallPage();
  const std::size_t whole = ReadDxf(page, "p.dxf").entities.size();
  ASSERT_EQ(page.substr(page.size() - 5), "EOF\r\n");
  for (std::size_t size = 0; size < page.size(); ++size) {
    const std::string_view prefix = std::string_view(page).substr(0, size);
    if (size >= page.size() - 2) {
      EXPECT_EQ(ReadDxf(prefix, "p.dxf").entities.size(), whole) << size;
    } else {
      EXPECT_THROW(ReadDxf(prefix, "p.dxf"), DxfReadError) << size;
    }
  }
}

}  // namespace
}  // namespace kalmor
