// The design as the host sees it: the occurrence tree derived from the hierarchy, read through the
// host interface only (the values seen through it are the page tests'); and the design written
// out as a document, which reads back to the same pages and writes again to the same document.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "hardening/export_in_memory.h"
#include "kalmor/dbo.h"
#include "kicad/kicad_reader.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/design_writer.h"
#include "support/page_fixture.h"
#include "support/paths.h"

namespace kalmor {
namespace {

std::string NameOf(const DboNamedObject* object) {
  DboState state;
  std::string name;
  if (object != nullptr) {
    object->GetName(name, state);
  }
  return name;
}

class Hierarchy : public ::testing::Test {
 protected:
  std::unique_ptr<model::Design> design =
      model::ReadDesignDocument(test::HierarchyDocument(), "h.json");
  DboState state;
};

TEST_F(Hierarchy, OccurrencesAreDepthFirstInPageThenPartOrder) {
  std::vector<std::string> seen;
  const std::unique_ptr<DboDesignOccurrencesIter> it = design->NewOccurrencesIter(state);
  while (const DboInstOccurrence* occurrence = it->NextOccurrence(state)) {
    DboInstOccurrencePtrProxy proxy;
    proxy.SetPtr(occurrence);
    const DboView* contents = occurrence->GetContents(state);
    seen.push_back(std::to_string(proxy.GetDWORDDesignOccurrenceId()) + " " +
                   (occurrence->IsPrimitive(state) ? "leaf" : "block ") + NameOf(contents));
    EXPECT_EQ(occurrence, design->FindOccurrence(std::vector<const char*>{
                              "/U1", "/BLK1", "/BLK1/U3", "/BLK1/BLK9", "/BLK1/BLK9/R1", "/BLK2",
                              "/BLK2/U3", "/BLK2/BLK9", "/BLK2/BLK9/R1"}[seen.size() - 1]));
  }
  EXPECT_EQ(seen,
            (std::vector<std::string>{"1 leaf", "2 block SUB", "3 leaf", "4 block LEAF", "5 leaf",
                                      "6 block SUB", "7 leaf", "8 block LEAF", "9 leaf"}));
  EXPECT_EQ(design->occurrenceCount(), 9u);
  EXPECT_EQ(design->FindOccurrence("/BLK3"), nullptr);
  EXPECT_EQ(design->FindOccurrence("/BLK1/"), nullptr);
}

TEST_F(Hierarchy, ViewsAreTheSchematicsInDocumentOrder) {
  std::vector<std::string> names;
  const std::unique_ptr<DboLibViewsIter> views = design->NewViewsIter(6, state);
  while (const DboView* view = views->NextView(state)) {
    ASSERT_NE(view->AsSchematic(), nullptr);
    names.push_back(NameOf(view));
  }
  EXPECT_EQ(names, (std::vector<std::string>{"OTHER", "ROOT", "SUB", "LEAF", "Sub"}));
  EXPECT_EQ(design->NewViewsIter(1, state)->NextView(state), nullptr);
}

TEST_F(Hierarchy, BlockOccurrencesKnowTheBlockAroundThem) {
  const std::vector<model::BlockOccurrence> blocks = design->BlockOccurrences();
  std::vector<std::string> seen;
  for (const model::BlockOccurrence& block : blocks) {
    const bool top = block.parent == model::BlockOccurrence::kTop;
    const std::string path = (top ? "" : "/" + blocks[block.parent].id) + "/" + block.id;
    EXPECT_EQ(block.occurrence, design->FindOccurrence(path)) << path;
    seen.push_back(path + " " + block.schematic);
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"/BLK1 SUB", "/BLK1/BLK9 LEAF", "/BLK2 SUB",
                                            "/BLK2/BLK9 LEAF"}));
}

TEST(HierarchyLimits, DesignWithoutSchematicsHasNoOccurrences) {
  const auto design =
      model::ReadDesignDocument(R"({"kalmor_design": 1, "name": "E", "schematics": []})", "e");
  DboState state;
  EXPECT_EQ(design->NewOccurrencesIter(state)->NextOccurrence(state), nullptr);
  EXPECT_EQ(design->NewViewsIter(6, state)->NextView(state), nullptr);
  EXPECT_EQ(design->rootName(), "");
}

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
