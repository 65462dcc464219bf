// The derived occurrence tree, read through the host interface only; the values seen through it
// are the page tests'.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kalmor/dbo.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "support/page_fixture.h"

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

}  // namespace
}  // namespace kalmor
