#include "model/occurrences.h"

#include <unordered_map>
#include <vector>

#include "model/design_data.h"

namespace kalmor::model::detail {

void PortOccurrence::GetPropStringById(int32_t propId, std::string& value, DboState& state) const {
  const OccurrencePinText* own = FindForOccurrence(pin->occurrences, occurrence->id);
  if (propId == dbo_prop::kPinName) {
    value = own != nullptr ? own->name : pin->name;
  } else if (propId == dbo_prop::kPinNumber) {
    value = own != nullptr ? own->number : pin->number;
  } else {
    value.clear();
    state.SetFailed();
  }
}

const DboView* Occurrence::GetContents(DboState& state) const {
  if (contents == nullptr) {
    state.SetFailed();
  }
  return contents;
}

const DboInstOccurrence* Occurrence::GetInstOccurrence(const DboPartInst* inst,
                                                       DboState& state) const {
  const auto* placed = dynamic_cast<const PartInst*>(inst);
  if (placed == nullptr || contents == nullptr || placed->schematic != contents) {
    state.SetFailed();
    return nullptr;
  }
  return children[placed->ordinal];
}

std::span<const Occurrence* const> Occurrence::Children() const {
  return {children, contents != nullptr ? contents->parts.size() : 0};
}

const DboPortOccurrence* Occurrence::GetPortOccurrence(const DboPortInst* pin,
                                                       DboState& state) const {
  const auto* own = dynamic_cast<const Pin*>(pin);
  if (own == nullptr || own->owner != part) {
    state.SetFailed();
    return nullptr;
  }
  if (ports == nullptr) {
    ports = std::make_unique<PortOccurrence[]>(part->pins.size());
  }
  PortOccurrence& port = ports[static_cast<std::size_t>(own - part->pins.data())];
  port.occurrence = this;
  port.pin = own;
  return &port;
}

uint64_t CountOccurrences(const Schematic& schematic, uint64_t limit) {
  // Post-order over the schematics' block graph, without recursion: hierarchies may be deep.
  std::unordered_map<const Schematic*, uint64_t> below;
  std::vector<const Schematic*> pending{&schematic};
  while (!pending.empty()) {
    const Schematic* current = pending.back();
    if (below.contains(current)) {
      pending.pop_back();
      continue;
    }
    uint64_t count = 0;
    bool ready = true;
    for (const PartInst* part : current->parts) {
      ++count;
      if (part->contents == nullptr) {
        continue;
      }
      const auto known = below.find(part->contents);
      if (known == below.end()) {
        pending.push_back(part->contents);
        ready = false;
      } else {
        count += known->second;
      }
      count = std::min(count, limit + 1);
    }
    if (ready) {
      below.emplace(current, count);
      pending.pop_back();
    }
  }
  return below.at(&schematic);
}

void BuildOccurrences(DesignData& data) {
  if (data.root == nullptr) {
    return;
  }
  // Every occurrence is the child of exactly one parent (or of the root), so both tables
  // have the same size and never move once reserved.
  const uint64_t total = CountOccurrences(*data.root, UINT32_MAX);
  data.occurrences.reserve(total);
  data.childTable.reserve(total);

  struct Frame {
    const Schematic* schematic;
    const Occurrence* parent;
    std::size_t next;
    std::size_t childBase;
  };
  std::vector<Frame> stack;
  stack.push_back({data.root, nullptr, 0, 0});
  data.childTable.resize(data.root->parts.size());
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == frame.schematic->parts.size()) {
      stack.pop_back();
      continue;
    }
    const PartInst* part = frame.schematic->parts[frame.next];
    Occurrence& occurrence = data.occurrences.emplace_back();
    occurrence.id = static_cast<DboDesignOccurrenceId>(data.occurrences.size());
    occurrence.parent = frame.parent;
    occurrence.part = part;
    occurrence.contents = part->contents;
    data.childTable[frame.childBase + frame.next] = &occurrence;
    ++frame.next;
    if (part->contents != nullptr) {
      const std::size_t base = data.childTable.size();
      data.childTable.resize(base + part->contents->parts.size());
      occurrence.children = data.childTable.data() + base;
      stack.push_back({part->contents, &occurrence, 0, base});
    }
  }
}

const Occurrence* FindOccurrenceByPath(const DesignData& data, std::string_view path) {
  if (data.root == nullptr || !path.starts_with('/')) {
    return nullptr;
  }
  const Schematic* schematic = data.root;
  std::span<const Occurrence* const> children(data.childTable.data(), data.root->parts.size());
  const Occurrence* found = nullptr;
  while (!path.empty()) {
    if (schematic == nullptr) {
      return nullptr;  // a step below a primitive part
    }
    path.remove_prefix(1);
    const std::string_view id = path.substr(0, path.find('/'));
    path.remove_prefix(id.size());
    auto [ordinals, added] = data.partOrdinals.try_emplace(schematic);
    if (added) {
      ordinals->second.reserve(schematic->parts.size());
      for (const PartInst* part : schematic->parts) {
        ordinals->second.emplace(part->id, part->ordinal);
      }
    }
    const auto ordinal = ordinals->second.find(id);
    if (ordinal == ordinals->second.end()) {
      return nullptr;
    }
    found = children[ordinal->second];
    schematic = found->contents;
    children = found->Children();
  }
  return found;
}

}  // namespace kalmor::model::detail
