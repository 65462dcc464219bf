#include "model/page_objects.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "kalmor/display_text.h"
#include "model/sequence.h"

namespace kalmor::model::detail {

template <typename T>
const T* FindForOccurrence(const List<T>& entries, DboDesignOccurrenceId id) {
  const auto found =
      std::lower_bound(entries.begin(), entries.end(), id,
                       [](const T& entry, DboDesignOccurrenceId key) { return entry.id < key; });
  return found != entries.end() && found->id == id ? &*found : nullptr;
}
template const OccurrenceValue* FindForOccurrence(const List<OccurrenceValue>&,
                                                  DboDesignOccurrenceId);
template const OccurrencePinText* FindForOccurrence(const List<OccurrencePinText>&,
                                                    DboDesignOccurrenceId);

void DisplayProp::GetValueString(std::string& out, const DboInstOccurrence* occurrence,
                                 DboState& state) const {
  if (occurrence != nullptr) {
    GetValueStringForOccurrence(occurrence->GetDesignOccurrenceId(), out, state);
  } else {
    out = value.view();
  }
}

void DisplayProp::GetValueStringForOccurrence(DboDesignOccurrenceId id, std::string& out,
                                              DboState&) const {
  const OccurrenceValue* own = FindForOccurrence(values, id);
  out = (own != nullptr ? own->value : value).view();
}

const DboBaseObject* DisplayProp::GetOwner(DboState& state) const {
  state.SetFailed();
  return nullptr;
}

CRect DisplayProp::GetBoundingBox(DboState&) const {
  return extent.value_or(CRect{});
}

CRect PropExtents::Of(const DisplayProp& prop) {
  const Key key{prop.font, prop.display, prop.name, prop.value};
  if (const auto found = extents_.find(key); found != extents_.end()) {
    return found->second;
  }
  const CRect extent =
      MeasureDisplayPropText(prop.name.str(), prop.value.str(), prop.display, *prop.font);
  if (extents_.size() == kKept) {
    extents_.clear();
  }
  extents_.emplace(key, extent);
  return extent;
}

std::size_t PropExtents::KeyHash::operator()(const Key& key) const {
  const std::hash<std::string_view> text;
  return text(key.value) ^ (text(key.name) * 31) ^ std::hash<const LogFont*>{}(key.font) ^
         static_cast<std::size_t>(key.display);
}

void MeasureDisplayProps(List<Schematic>& schematics) {
  PropExtents extents;
  const auto measure = [&](DisplayPropList& props) {
    for (DisplayProp& prop : props) {
      if (!prop.extent) {
        prop.extent = extents.Of(prop);
      }
    }
  };
  const auto measureAll = [&](auto& placed) {
    for (auto& object : placed) {
      measure(object.properties);
    }
  };
  for (Schematic& schematic : schematics) {
    for (Page& page : schematic.pages) {
      measureAll(page.titleBlocks);
      measureAll(page.parts);
      for (PartInst& part : page.parts) {
        measureAll(part.pins);
      }
      measureAll(page.wires);
      measureAll(page.globals);
      measureAll(page.ports);
      measureAll(page.offPageConnectors);
    }
  }
}

template <typename Base, int32_t kType>
std::unique_ptr<DboDisplayPropsIter> Placed<Base, kType>::NewDisplayPropsIter(DboState&) const {
  return NewListIter<DboDisplayPropsIter, DisplayProp>(properties);
}
template struct Placed<DboTitleBlock, model_type::kTitleBlock>;
template struct Placed<DboGlobal, model_type::kGlobal>;
template struct Placed<DboPort, model_type::kPort>;
template struct Placed<DboOffPageConnector, model_type::kOffPageConnector>;
template struct Placed<DboPartInst, dbo_type::kPartInst>;

const DboPartInst* Pin::GetOwner(DboState&) const {
  return owner;
}

std::unique_ptr<DboDisplayPropsIter> Pin::NewDisplayPropsIter(DboState&) const {
  return NewListIter<DboDisplayPropsIter, DisplayProp>(properties);
}

// The model has one set of pins per part, whatever the mode and flag ask for.
std::unique_ptr<DboPartInstPinsIter> PartInst::NewPinsIter(int32_t, int32_t, DboState&) const {
  return NewListIter<DboPartInstPinsIter, Pin>(pins);
}

std::unique_ptr<DboDisplayPropsIter> Wire::NewDisplayPropsIter(DboState&) const {
  return NewListIter<DboDisplayPropsIter, DisplayProp>(properties);
}
std::unique_ptr<DboWireJunctionsIter> Wire::NewJunctionsIter(DboState&) const {
  return NewListIter<DboWireJunctionsIter, CPoint>(junctions);
}
std::unique_ptr<DboWireAliasesIter> Wire::NewAliasesIter(DboState&) const {
  return NewListIter<DboWireAliasesIter, Alias>(aliases);
}

const DboGraphicObject* CommentGraphic::GetDefiningGraphicObject(DboState& state) const {
  state.SetFailed();
  return nullptr;
}
std::unique_ptr<DboDisplayPropsIter> CommentGraphic::NewDisplayPropsIter(DboState&) const {
  return NewListIter<DboDisplayPropsIter, DisplayProp>({});
}
const DboBaseObject* CommentGraphic::GetShape(DboState& state) const {
  if (shape == nullptr) {
    state.SetFailed();
  }
  return shape;
}

std::unique_ptr<DboPageTitleBlocksIter> Page::NewTitleBlocksIter(DboState&) const {
  return NewListIter<DboPageTitleBlocksIter, TitleBlock>(titleBlocks);
}
std::unique_ptr<DboPagePartInstsIter> Page::NewPartInstsIter(DboState&) const {
  return NewListIter<DboPagePartInstsIter, PartInst>(parts);
}
std::unique_ptr<DboPageWiresIter> Page::NewWiresIter(int32_t, DboState&) const {
  return NewListIter<DboPageWiresIter, Wire>(wires);
}
std::unique_ptr<DboPageGlobalsIter> Page::NewGlobalsIter(DboState&) const {
  return NewListIter<DboPageGlobalsIter, Global>(globals);
}
std::unique_ptr<DboPagePortsIter> Page::NewPortsIter(int32_t, DboState&) const {
  return NewListIter<DboPagePortsIter, Port>(ports);
}
std::unique_ptr<DboPageOffPageConnectorsIter> Page::NewOffPageConnectorsIter(int32_t,
                                                                             DboState&) const {
  return NewListIter<DboPageOffPageConnectorsIter, OffPageConnector>(offPageConnectors);
}
std::unique_ptr<DboPageBusEntriesIter> Page::NewBusEntriesIter(DboState&) const {
  return NewListIter<DboPageBusEntriesIter, BusEntry>(busEntries);
}
std::unique_ptr<DboPageCommentGraphicsIter> Page::NewCommentGraphicsIter(DboState&) const {
  return NewListIter<DboPageCommentGraphicsIter, CommentGraphic>(graphics);
}

std::unique_ptr<DboSchematicPagesIter> Schematic::NewPagesIter(DboState&) const {
  return NewListIter<DboSchematicPagesIter, Page>(pages);
}

}  // namespace kalmor::model::detail
