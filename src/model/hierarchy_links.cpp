#include "model/hierarchy_links.h"

#include <algorithm>
#include <unordered_map>

#include "model/document_fault.h"
#include "model/json_tape.h"

namespace kalmor::model::detail {
namespace {

// Each occurrence costs a little memory and hierarchies multiply; a design this large is
// refused rather than exhausting the machine.
constexpr uint64_t kMaxOccurrences = uint64_t{1} << 20;

class HierarchyLinker {
 public:
  HierarchyLinker(DesignData& data, const std::optional<std::string>& rootName,
                  const std::vector<BlockRef>& blocks, bool anyOccurrenceKeys)
      : data_(data), rootName_(rootName), blocks_(blocks), anyOccurrenceKeys_(anyOccurrenceKeys) {}

  void Link() {
    if (rootName_) {
      data_.root = FindSchematic(*rootName_);
      if (data_.root == nullptr) {
        throw DocumentFault{"/root", "no schematic named " + Quoted(*rootName_)};
      }
    } else if (!data_.schematics.empty()) {
      data_.root = &data_.schematics.front();
    }
    LinkParts();
    std::unordered_map<std::string_view, const Schematic*> byName;
    for (const Schematic& schematic : data_.schematics) {
      byName.emplace(schematic.name, &schematic);
    }
    for (const BlockRef& block : blocks_) {
      PartInst& part = PartAt(block);
      const auto found = byName.find(part.schematicName);
      if (found == byName.end()) {
        throw DocumentFault{block.Pointer(), "no schematic named " + Quoted(part.schematicName)};
      }
      part.contents = found->second;
    }
    CheckNoSchematicInstantiatesItself();
    if (data_.root != nullptr && CountOccurrences(*data_.root, kMaxOccurrences) > kMaxOccurrences) {
      throw DocumentFault{"/root", "the hierarchy below schematic " + Quoted(data_.root->name) +
                                       " has more than " + std::to_string(kMaxOccurrences) +
                                       " occurrences"};
    }
    BuildOccurrences(data_);
    if (anyOccurrenceKeys_) {
      ResolveOccurrenceKeys();
    }
    data_.partOrdinals.clear();  // made again if a caller looks a path up
  }

 private:
  const Schematic* FindSchematic(std::string_view name) const {
    for (const Schematic& schematic : data_.schematics) {
      if (schematic.name == name) {
        return &schematic;
      }
    }
    return nullptr;
  }

  PartInst& PartAt(const BlockRef& block) {
    return data_.schematics[block.schematic].pages[block.page].parts[block.part];
  }

  void LinkParts() {
    for (Schematic& schematic : data_.schematics) {
      std::size_t parts = 0;
      for (const Page& page : schematic.pages) {
        parts += page.parts.size();
      }
      schematic.parts.reserve(parts);
      for (Page& page : schematic.pages) {
        for (PartInst& part : page.parts) {
          part.schematic = &schematic;
          part.ordinal = static_cast<uint32_t>(schematic.parts.size());
          schematic.parts.push_back(&part);
          for (Pin& pin : part.pins) {
            pin.owner = &part;
          }
        }
      }
    }
  }

  void CheckNoSchematicInstantiatesItself() {
    std::unordered_map<const Schematic*, std::vector<const BlockRef*>> blocksIn;
    for (const BlockRef& block : blocks_) {
      blocksIn[&data_.schematics[block.schematic]].push_back(&block);
    }
    enum class Mark { kNew, kOpen, kDone };
    std::unordered_map<const Schematic*, Mark> marks;
    struct Visit {
      const Schematic* schematic;
      std::size_t next;
    };
    for (const Schematic& start : data_.schematics) {
      if (marks[&start] != Mark::kNew) {
        continue;
      }
      std::vector<Visit> path{{&start, 0}};
      marks[&start] = Mark::kOpen;
      while (!path.empty()) {
        Visit& visit = path.back();
        const std::vector<const BlockRef*>& blocks = blocksIn[visit.schematic];
        if (visit.next == blocks.size()) {
          marks[visit.schematic] = Mark::kDone;
          path.pop_back();
          continue;
        }
        const BlockRef& block = *blocks[visit.next++];
        const Schematic* target = PartAt(block).contents;
        if (marks[target] == Mark::kOpen) {
          std::string chain;
          bool inCycle = false;
          for (const Visit& step : path) {
            inCycle = inCycle || step.schematic == target;
            if (inCycle) {
              chain += Abbreviated(step.schematic->name) + " -> ";
            }
          }
          throw DocumentFault{block.Pointer(), "schematic " + Quoted(target->name) +
                                                   " instantiates itself (" + chain +
                                                   Abbreviated(target->name) + ")"};
        }
        if (marks[target] == Mark::kNew) {
          marks[target] = Mark::kOpen;
          path.push_back({target, 0});
        }
      }
    }
  }

  // Turns the occurrence paths that values and pin texts are keyed by into occurrence ids,
  // refusing paths that name no occurrence of the object. Pointers for complaints are only
  // spelled out when there is one.
  void ResolveOccurrenceKeys() {
    for (std::size_t s = 0; s < data_.schematics.size(); ++s) {
      Schematic& schematic = data_.schematics[s];
      for (std::size_t p = 0; p < schematic.pages.size(); ++p) {
        Page& page = schematic.pages[p];
        const auto at = [s, p](const char* collection) {
          return "/schematics/" + std::to_string(s) + "/pages/" + std::to_string(p) + "/" +
                 collection + "/";
        };
        ResolveCollection(page.titleBlocks, schematic, [&] { return at("title_blocks"); });
        ResolveCollection(page.parts, schematic, [&] { return at("parts"); });
        ResolveCollection(page.wires, schematic, [&] { return at("wires"); });
        ResolveCollection(page.globals, schematic, [&] { return at("globals"); });
        ResolveCollection(page.ports, schematic, [&] { return at("ports"); });
        ResolveCollection(page.offPageConnectors, schematic,
                          [&] { return at("off_page_connectors"); });
        for (std::size_t k = 0; k < page.parts.size(); ++k) {
          PartInst& part = page.parts[k];
          for (std::size_t n = 0; n < part.pins.size(); ++n) {
            Pin& pin = part.pins[n];
            const auto pinAt = [&, k, n] {
              return at("parts") + std::to_string(k) + "/pins/" + std::to_string(n);
            };
            ResolveProperties(pin.properties, schematic, [&] { return pinAt() + "/properties/"; });
            ResolveKeys(
                pin.occurrences, [&] { return pinAt() + "/occurrences"; },
                [&](const Occurrence& o) { return o.part == &part; },
                [&] { return "no occurrence of part " + Quoted(part.id) + " has this path"; });
          }
        }
      }
    }
  }

  template <typename Item, typename Where>
  void ResolveCollection(List<Item>& items, const Schematic& schematic, Where&& where) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      ResolveProperties(items[i].properties, schematic,
                        [&] { return where() + std::to_string(i) + "/properties/"; });
    }
  }

  template <typename Where>
  void ResolveProperties(DisplayPropList& props, const Schematic& schematic, Where&& where) {
    for (std::size_t i = 0; i < props.size(); ++i) {
      ResolveKeys(
          props[i].values, [&] { return where() + std::to_string(i) + "/values"; },
          [&](const Occurrence& o) { return o.contents == &schematic; },
          [&] {
            return "no occurrence of schematic " + Quoted(schematic.name) + " has this path";
          });
    }
  }

  template <typename Entry, typename Where, typename Fits, typename Complaint>
  void ResolveKeys(List<Entry>& entries, Where&& where, Fits&& fits, Complaint&& complaint) {
    if (entries.empty()) {
      return;
    }
    const auto fault = [&](const Entry& entry, std::string message) {
      std::string pointer = where();
      AppendPointerKey(pointer, entry.path);
      return DocumentFault{pointer, std::move(message)};
    };
    for (Entry& entry : entries) {
      const Occurrence* found = FindOccurrenceByPath(data_, entry.path);
      if (found == nullptr || !fits(*found)) {
        throw fault(entry, complaint());
      }
      entry.id = found->id;
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.id < b.id; });
    const auto twice =
        std::adjacent_find(entries.begin(), entries.end(),
                           [](const Entry& a, const Entry& b) { return a.id == b.id; });
    if (twice != entries.end()) {
      throw fault(*twice, "occurrence path given twice");
    }
  }

  DesignData& data_;
  const std::optional<std::string>& rootName_;
  const std::vector<BlockRef>& blocks_;
  bool anyOccurrenceKeys_;
};

}  // namespace

std::string BlockRef::Pointer() const {
  return "/schematics/" + std::to_string(schematic) + "/pages/" + std::to_string(page) + "/parts/" +
         std::to_string(part) + "/schematic";
}

void LinkHierarchy(DesignData& data, const std::optional<std::string>& rootName,
                   const std::vector<BlockRef>& blocks, bool anyOccurrenceKeys) {
  HierarchyLinker(data, rootName, blocks, anyOccurrenceKeys).Link();
}

}  // namespace kalmor::model::detail
