// A design written out as a design document and read back exports to the same bytes, and
// writing it again gives the same document.

#include <string>

#include <gtest/gtest.h>

#include "hardening/export_in_memory.h"
#include "kicad/kicad_reader.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/design_writer.h"
#include "support/paths.h"

namespace kalmor {
namespace {

void ExpectRoundTrip(const model::Design& design) {
  const std::string document = model::WriteDesignDocument(design);
  const auto reread = model::ReadDesignDocument(document, "written.json");
  EXPECT_EQ(test::ExportPagesInMemory(*reread), test::ExportPagesInMemory(design));
  EXPECT_EQ(model::WriteDesignDocument(*reread), document);
}

TEST(DesignWriter, ExamplesRoundTrip) {
  for (const char* name : {"board.json", "tiny.json"}) {
    SCOPED_TRACE(name);
    ExpectRoundTrip(*model::LoadDesignDocument((test::SourceDir() / "examples" / name).string()));
  }
}

TEST(DesignWriter, KiCadDesignRoundTrips) {
  const kicad::KiCadDesign read = kicad::LoadKiCadSchematic(
      (test::SourceDir() / "tests/kicad/data/newer/newer.kicad_sch").string());
  ExpectRoundTrip(*read.design);
}

TEST(DesignWriter, WritesTextsInUtf8AndNamesAsTheyAre) {
  const auto design = model::ReadDesignDocument(
      R"({"kalmor_design": 1, "name": "q\"\\\n\u0001)"
      "\xB5"
      R"(", "schematics": [{"name": "S", "pages": [{"name": "P", "wires": [{"start": [0, 0],
          "end": [1, 0], "aliases": [{"name": "100µF Ω 😀", "location": [0, 0]}]}]}]}]})",
      "q.json");
  const std::string document = model::WriteDesignDocument(*design);
  EXPECT_NE(document.find(R"("name": "q\"\\\n\u0001)"
                          "\xB5"
                          "\""),
            std::string::npos)
      << document;
  EXPECT_NE(document.find(R"("name": "100µF Ω 😀")"), std::string::npos) << document;
}

}  // namespace
}  // namespace kalmor
