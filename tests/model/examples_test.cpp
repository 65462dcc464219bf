// The shipped example designs, read back through the host interface alone.

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kalmor/dbo.h"
#include "model/design.h"
#include "model/design_data.h"
#include "model/design_reader.h"
#include "support/paths.h"

namespace kalmor {
namespace {

std::unique_ptr<model::Design> LoadExample(const char* name) {
  return model::LoadDesignDocument((testing::SourceDir() / "examples" / name).string());
}

template <typename Named>
std::string NameOf(const Named& object) {
  DboState state;
  std::string name;
  object.GetName(name, state);
  return name;
}

std::vector<const DboPage*> PagesOf(const DboSchematic& schematic) {
  DboState state;
  std::vector<const DboPage*> pages;
  const auto it = schematic.NewPagesIter(state);
  while (const DboPage* page = it->NextPage(state)) {
    pages.push_back(page);
  }
  return pages;
}

std::vector<const DboPartInst*> PartsOf(const DboPage& page) {
  DboState state;
  std::vector<const DboPartInst*> parts;
  const auto it = page.NewPartInstsIter(state);
  while (const DboPartInst* part = it->NextPartInst(state)) {
    parts.push_back(part);
  }
  return parts;
}

std::string Reference(const DboPartInst& part, const DboInstOccurrence* occurrence) {
  DboState state;
  const auto props = part.NewDisplayPropsIter(state);
  while (const DboDisplayProp* prop = props->NextProp(state)) {
    std::string name;
    prop->GetName(name, state);
    if (name == "Value") {
      std::string value;
      DboInstOccurrencePtrProxy proxy;
      proxy.SetPtr(occurrence);
      prop->GetValueStringForOccurrence(proxy.GetDWORDDesignOccurrenceId(), value, state);
      return value;
    }
  }
  return "(none)";
}

class Board : public ::testing::Test {
 protected:
  std::unique_ptr<model::Design> owned = LoadExample("board.json");
  const DboDesign& design = *owned;
  DboState state;
};

TEST_F(Board, BlockUsedTwiceShowsItsValuesAndPinsPerOccurrence) {
  // Depth-first: the root's first page, each block's contents right after the block, then
  // the root's second page.
  std::vector<std::string> order;
  std::map<std::string, std::string> seen;  // "occurrence part" -> value / pin texts
  const auto occurrences = design.NewOccurrencesIter(state);
  while (const DboInstOccurrence* block = occurrences->NextOccurrence(state)) {
    DboInstOccurrencePtrProxy proxy;
    proxy.SetPtr(block);
    order.push_back(std::to_string(proxy.GetDWORDDesignOccurrenceId()));
    if (block->IsPrimitive(state)) {
      continue;
    }
    const auto* contents = block->GetContents(state)->AsSchematic();
    ASSERT_NE(contents, nullptr);
    order.back() += " " + NameOf(*contents);
    for (const DboPage* page : PagesOf(*contents)) {
      for (const DboPartInst* part : PartsOf(*page)) {
        const DboInstOccurrence* child = block->GetInstOccurrence(part, state);
        ASSERT_NE(child, nullptr);
        std::string texts = Reference(*part, block);
        const auto pins = part->NewPinsIter(0, 0, state);
        while (const DboPortInst* pin = pins->NextPin(state)) {
          std::string name;
          std::string number;
          const DboPortOccurrence* port = child->GetPortOccurrence(pin, state);
          port->GetPropStringById(dbo_prop::kPinName, name, state);
          port->GetPropStringById(dbo_prop::kPinNumber, number, state);
          texts += " " + name + ":" + number;
        }
        DboInstOccurrencePtrProxy childId;
        childId.SetPtr(child);
        seen[std::to_string(proxy.GetDWORDDesignOccurrenceId()) + "/" +
             std::to_string(childId.GetDWORDDesignOccurrenceId())] = texts;
      }
    }
  }
  EXPECT_EQ(order, (std::vector<std::string>{"1", "2", "3", "4 CHANNEL", "5", "6", "7", "8 CHANNEL",
                                             "9", "10", "11", "12", "13", "14", "15", "16"}));
  EXPECT_EQ(seen, (std::map<std::string, std::string>{
                      {"4/5", "OPA-2 IN-:2 IN+:3 OUTA:1"},
                      {"4/6", "10k :1 :2"},
                      {"4/7", "47k :1 :2"},
                      {"8/9", "OPA-2 IN-:6 IN+:5 OUTB:7"},
                      {"8/10", "22k :1 :2"},
                      {"8/11", "100k :1 :2"},
                  }));
}

TEST_F(Board, UsesEveryKindOfObject) {
  std::set<int32_t> pageGraphics;
  std::set<int32_t> vectors;
  std::set<std::string> decorations;
  int titleBlocks = 0, globals = 0, ports = 0, connectors = 0, busEntries = 0, junctions = 0,
      aliases = 0, wireTexts = 0;
  const auto collect = [&](const DboGraphicInstance& instance) {
    const auto it = instance.GetDefiningGraphicObject(state)->NewVectorsIter(0, state);
    while (const DboBaseObject* vector = it->NextVector(state)) {
      vectors.insert(vector->GetObjectType(state));
    }
  };
  const auto count = [&](auto&& iter, auto next, int& counter) {
    while (const auto* item = ((*iter).*next)(state)) {
      ++counter;
      collect(*item);
    }
  };
  const auto views = design.NewViewsIter(6, state);
  while (const DboView* view = views->NextView(state)) {
    for (const DboPage* page : PagesOf(*view->AsSchematic())) {
      count(page->NewTitleBlocksIter(state), &DboPageTitleBlocksIter::NextTitleBlock, titleBlocks);
      count(page->NewGlobalsIter(state), &DboPageGlobalsIter::NextGlobal, globals);
      count(page->NewPortsIter(1, state), &DboPagePortsIter::NextPort, ports);
      count(page->NewOffPageConnectorsIter(1, state),
            &DboPageOffPageConnectorsIter::NextOffPageConnector, connectors);
      for (const DboPartInst* part : PartsOf(*page)) {
        collect(*part);
        decorations.insert("kind " + std::to_string(part->GetObjectType(state)));
        const auto pins = part->NewPinsIter(0, 0, state);
        while (const DboPortInst* pin = pins->NextPin(state)) {
          std::string name;
          pin->GetPinName(name, state);
          if (name.find('\\') != std::string::npos)
            decorations.insert("overbar");
          if (pin->GetIsDot(state))
            decorations.insert("dot");
          if (pin->GetIsClock(state))
            decorations.insert("clock");
          if (pin->GetIsNoConnect(state))
            decorations.insert("no-connect");
          if (!pin->GetIsVisible(state))
            decorations.insert("hidden");
          if (part->GetObjectType(state) == dbo_type::kBlockInst) {
            decorations.insert("block pin " + std::to_string(pin->GetBlockPinKind(state)));
          }
        }
      }
      const auto wires = page->NewWiresIter(1, state);
      while (const DboWire* wire = wires->NextWire(state)) {
        decorations.insert("wire " + std::to_string(wire->GetObjectType(state)));
        CPoint point;
        for (const auto it = wire->NewJunctionsIter(state); it->NextJunction(point, state);) {
          ++junctions;
        }
        for (const auto it = wire->NewAliasesIter(state); it->NextAlias(state) != nullptr;) {
          ++aliases;
        }
        for (const auto it = wire->NewDisplayPropsIter(state); it->NextProp(state) != nullptr;) {
          ++wireTexts;
        }
      }
      for (const auto it = page->NewBusEntriesIter(state); it->NextBusEntry(state) != nullptr;) {
        ++busEntries;
      }
      const auto graphics = page->NewCommentGraphicsIter(state);
      while (const DboGraphicInstance* graphic = graphics->NextCommentGraphic(state)) {
        pageGraphics.insert(graphic->GetObjectType(state));
      }
    }
  }
  EXPECT_EQ(pageGraphics, (std::set<int32_t>{55, 56, 57, 58, 59, 60, 61, 62}));
  EXPECT_EQ(vectors, (std::set<int32_t>{40, 41, 42, 43, 44, 45, 46, 47, 48}));
  EXPECT_EQ(decorations,
            (std::set<std::string>{"kind 12", "kind 13", "overbar", "dot", "clock", "no-connect",
                                   "hidden", "block pin 0", "block pin 1", "block pin 2",
                                   "block pin 4", "wire 20", "wire 21"}));
  EXPECT_EQ(titleBlocks, 3);
  EXPECT_GT(globals, 0);
  EXPECT_GT(ports, 0);
  EXPECT_GT(connectors, 0);
  EXPECT_GT(busEntries, 0);
  EXPECT_GT(junctions, 0);
  EXPECT_GT(aliases, 0);
  EXPECT_GT(wireTexts, 0);
}

TEST(Tiny, IsOnePageWithAPartAndWires) {
  const auto design = LoadExample("tiny.json");
  const auto& schematics = design->data().schematics;
  ASSERT_EQ(schematics.size(), 1u);
  ASSERT_EQ(schematics[0].pages.size(), 1u);
  const model::detail::Page& page = schematics[0].pages[0];
  ASSERT_EQ(page.parts.size(), 1u);
  EXPECT_EQ(page.parts[0].pins.size(), 2u);
  ASSERT_EQ(page.wires.size(), 2u);
  EXPECT_EQ(page.wires[0].aliases.size() + page.wires[1].aliases.size(), 2u);
  EXPECT_EQ(design->rootName(), "SCHEMATIC1");
}

}  // namespace
}  // namespace kalmor
