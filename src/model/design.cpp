#include "model/design.h"

#include <unordered_map>

#include "model/design_data.h"
#include "model/sequence.h"

namespace kalmor::model {

// The extents are measured here, once, so that no getter of the design ever measures (or fails).
Design::Design(std::unique_ptr<detail::DesignData> data) : data_(std::move(data)) {
  if (!data_->propsMeasured) {
    const detail::Arena::Scope scope(data_->arena);
    detail::MeasureDisplayProps(data_->schematics);
  }
}
Design::~Design() = default;

const std::string& Design::name() const {
  return data_->name;
}

const DboPage* Design::FindPage(std::string_view schematic, std::string_view page) const {
  for (const detail::Schematic& candidate : data_->schematics) {
    if (candidate.name.view() != schematic) {
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

std::string_view Design::rootName() const {
  return data_->root != nullptr ? data_->root->name.view() : std::string_view();
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
    blocks.push_back({&occurrence, occurrence.part->id.str(),
                      parent != parentOf.end() ? parent->second : BlockOccurrence::kTop,
                      occurrence.contents->name.str()});
    for (const detail::Occurrence* child : occurrence.Children()) {
      if (child->contents != nullptr) {
        parentOf.emplace(child, blocks.size() - 1);
      }
    }
  }
  return blocks;
}

int32_t Design::GetObjectType(DboState&) const {
  return detail::model_type::kDesign;
}

void Design::GetName(std::string& name, DboState&) const {
  name = data_->name;
}

std::unique_ptr<DboLibViewsIter> Design::NewViewsIter(int32_t mode, DboState&) const {
  using Views = DboLibViewsIter;
  if (mode != kSchematicViews) {
    return detail::NewListIter<Views, detail::Schematic>({});
  }
  return detail::NewListIter<Views, detail::Schematic>(data_->schematics);
}

std::unique_ptr<DboDesignOccurrencesIter> Design::NewOccurrencesIter(DboState&) const {
  return detail::NewListIter<DboDesignOccurrencesIter, detail::Occurrence>(data_->occurrences);
}

}  // namespace kalmor::model
