#include "model/design.h"

#include <unordered_map>

#include "model/design_data.h"
#include "model/sequence.h"

namespace kalmor::model {
namespace {

class ViewsIter final : public DboLibViewsIter {
 public:
  explicit ViewsIter(std::span<const detail::Schematic> schematics) : schematics_(schematics) {}
  const DboView* NextView(DboState&) override { return schematics_.Next(); }

 private:
  detail::Sequence<detail::Schematic> schematics_;
};

class OccurrencesIter final : public DboDesignOccurrencesIter {
 public:
  explicit OccurrencesIter(const std::vector<detail::Occurrence>& occurrences)
      : occurrences_(occurrences) {}
  const DboInstOccurrence* NextOccurrence(DboState&) override { return occurrences_.Next(); }

 private:
  detail::Sequence<detail::Occurrence> occurrences_;
};

}  // namespace

// The extents are measured here, once, so that no getter of the design ever measures (or fails).
Design::Design(std::unique_ptr<detail::DesignData> data) : data_(std::move(data)) {
  detail::MeasureDisplayProps(data_->schematics);
}
Design::~Design() = default;

const std::string& Design::name() const {
  return data_->name;
}

const DboPage* Design::FindPage(std::string_view schematic, std::string_view page) const {
  for (const detail::Schematic& candidate : data_->schematics) {
    if (candidate.name != schematic) {
      continue;
    }
    for (const detail::Page& own : candidate.pages) {
      if (own.name == page) {
        return &own;
      }
    }
  }
  return nullptr;
}

const DboInstOccurrence* Design::FindOccurrence(std::string_view path) const {
  return detail::FindOccurrenceByPath(*data_, path);
}

const std::string& Design::rootName() const {
  static const std::string kNone;
  return data_->root != nullptr ? data_->root->name : kNone;
}

std::size_t Design::occurrenceCount() const {
  return data_->occurrences.size();
}

std::vector<BlockOccurrence> Design::BlockOccurrences() const {
  std::vector<BlockOccurrence> blocks;
  // Depth-first order lists every block before the blocks inside it.
  std::unordered_map<const detail::Occurrence*, std::size_t> parentOf;
  for (const detail::Occurrence& occurrence : data_->occurrences) {
    if (occurrence.contents == nullptr) {
      continue;
    }
    const auto parent = parentOf.find(&occurrence);
    blocks.push_back({&occurrence, occurrence.part->id,
                      parent != parentOf.end() ? parent->second : BlockOccurrence::kTop,
                      occurrence.contents->name});
    for (const detail::Occurrence* child : occurrence.children) {
      if (child->contents != nullptr) {
        parentOf.emplace(child, blocks.size() - 1);
      }
    }
  }
  return blocks;
}

std::vector<SchematicSummary> Design::Summarize() const {
  std::vector<SchematicSummary> summary;
  for (const detail::Schematic& schematic : data_->schematics) {
    SchematicSummary& out = summary.emplace_back();
    out.name = schematic.name;
    for (const detail::Page& page : schematic.pages) {
      PageSummary& counts = out.pages.emplace_back();
      counts.name = page.name;
      counts.titleBlocks = static_cast<int>(page.titleBlocks.size());
      counts.parts = static_cast<int>(page.parts.size());
      for (const detail::PartInst& part : page.parts) {
        counts.pins += static_cast<int>(part.pins.size());
      }
      counts.wires = static_cast<int>(page.wires.size());
      for (const detail::Wire& wire : page.wires) {
        counts.junctions += static_cast<int>(wire.junctions.size());
        counts.aliases += static_cast<int>(wire.aliases.size());
      }
      counts.globals = static_cast<int>(page.globals.size());
      counts.ports = static_cast<int>(page.ports.size());
      counts.offPageConnectors = static_cast<int>(page.offPageConnectors.size());
      counts.busEntries = static_cast<int>(page.busEntries.size());
      counts.graphics = static_cast<int>(page.graphics.size());
    }
  }
  return summary;
}

int32_t Design::GetObjectType(DboState&) const {
  return detail::model_type::kDesign;
}

void Design::GetName(std::string& name, DboState&) const {
  name = data_->name;
}

std::unique_ptr<DboLibViewsIter> Design::NewViewsIter(int32_t mode, DboState&) const {
  if (mode != kSchematicViews) {
    return std::make_unique<ViewsIter>(std::span<const detail::Schematic>());
  }
  return std::make_unique<ViewsIter>(data_->schematics);
}

std::unique_ptr<DboDesignOccurrencesIter> Design::NewOccurrencesIter(DboState&) const {
  return std::make_unique<OccurrencesIter>(data_->occurrences);
}

}  // namespace kalmor::model
