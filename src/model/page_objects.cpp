#include "model/page_objects.h"

#include <algorithm>

#include "kalmor/display_text.h"
#include "model/sequence.h"

namespace kalmor::model::detail {
namespace {

class DisplayPropsIter final : public DboDisplayPropsIter {
 public:
  explicit DisplayPropsIter(const DisplayPropList& props) : props_(props) {}
  const DboDisplayProp* NextProp(DboState&) override { return props_.Next(); }

 private:
  Sequence<DisplayProp> props_;
};

class PinsIter final : public DboPartInstPinsIter {
 public:
  explicit PinsIter(const std::vector<Pin>& pins) : pins_(pins) {}
  const DboPortInst* NextPin(DboState&) override { return pins_.Next(); }

 private:
  Sequence<Pin> pins_;
};

class JunctionsIter final : public DboWireJunctionsIter {
 public:
  explicit JunctionsIter(const std::vector<CPoint>& points) : points_(points) {}
  bool NextJunction(CPoint& point, DboState&) override {
    const CPoint* next = points_.Next();
    if (next != nullptr) {
      point = *next;
    }
    return next != nullptr;
  }

 private:
  Sequence<CPoint> points_;
};

class AliasesIter final : public DboWireAliasesIter {
 public:
  explicit AliasesIter(const std::vector<Alias>& aliases) : aliases_(aliases) {}
  const DboAlias* NextAlias(DboState&) override { return aliases_.Next(); }

 private:
  Sequence<Alias> aliases_;
};

class TitleBlocksIter final : public DboPageTitleBlocksIter {
 public:
  explicit TitleBlocksIter(const std::vector<TitleBlock>& items) : items_(items) {}
  const DboTitleBlock* NextTitleBlock(DboState&) override { return items_.Next(); }

 private:
  Sequence<TitleBlock> items_;
};

class PartInstsIter final : public DboPagePartInstsIter {
 public:
  explicit PartInstsIter(const std::vector<PartInst>& items) : items_(items) {}
  const DboPartInst* NextPartInst(DboState&) override { return items_.Next(); }

 private:
  Sequence<PartInst> items_;
};

class WiresIter final : public DboPageWiresIter {
 public:
  explicit WiresIter(const std::vector<Wire>& items) : items_(items) {}
  const DboWire* NextWire(DboState&) override { return items_.Next(); }

 private:
  Sequence<Wire> items_;
};

class GlobalsIter final : public DboPageGlobalsIter {
 public:
  explicit GlobalsIter(const std::vector<Global>& items) : items_(items) {}
  const DboGlobal* NextGlobal(DboState&) override { return items_.Next(); }

 private:
  Sequence<Global> items_;
};

class PortsIter final : public DboPagePortsIter {
 public:
  explicit PortsIter(const std::vector<Port>& items) : items_(items) {}
  const DboPort* NextPort(DboState&) override { return items_.Next(); }

 private:
  Sequence<Port> items_;
};

class OffPageConnectorsIter final : public DboPageOffPageConnectorsIter {
 public:
  explicit OffPageConnectorsIter(const std::vector<OffPageConnector>& items) : items_(items) {}
  const DboOffPageConnector* NextOffPageConnector(DboState&) override { return items_.Next(); }

 private:
  Sequence<OffPageConnector> items_;
};

class BusEntriesIter final : public DboPageBusEntriesIter {
 public:
  explicit BusEntriesIter(const std::vector<BusEntry>& items) : items_(items) {}
  const DboBusEntry* NextBusEntry(DboState&) override { return items_.Next(); }

 private:
  Sequence<BusEntry> items_;
};

class CommentGraphicsIter final : public DboPageCommentGraphicsIter {
 public:
  explicit CommentGraphicsIter(const std::vector<CommentGraphic>& items) : items_(items) {}
  const DboGraphicInstance* NextCommentGraphic(DboState&) override { return items_.Next(); }

 private:
  Sequence<CommentGraphic> items_;
};

class PagesIter final : public DboSchematicPagesIter {
 public:
  explicit PagesIter(const std::vector<Page>& pages) : pages_(pages) {}
  const DboPage* NextPage(DboState&) override { return pages_.Next(); }

 private:
  Sequence<Page> pages_;
};

}  // namespace

template <typename T>
const T* FindForOccurrence(const std::vector<T>& entries, DboDesignOccurrenceId id) {
  const auto found =
      std::lower_bound(entries.begin(), entries.end(), id,
                       [](const T& entry, DboDesignOccurrenceId key) { return entry.id < key; });
  return found != entries.end() && found->id == id ? &*found : nullptr;
}
template const OccurrenceValue* FindForOccurrence(const std::vector<OccurrenceValue>&,
                                                  DboDesignOccurrenceId);
template const OccurrencePinText* FindForOccurrence(const std::vector<OccurrencePinText>&,
                                                    DboDesignOccurrenceId);

void DisplayProp::GetValueString(std::string& out, const DboInstOccurrence* occurrence,
                                 DboState& state) const {
  if (occurrence != nullptr) {
    GetValueStringForOccurrence(occurrence->GetDesignOccurrenceId(), out, state);
  } else {
    out = value;
  }
}

void DisplayProp::GetValueStringForOccurrence(DboDesignOccurrenceId id, std::string& out,
                                              DboState&) const {
  const OccurrenceValue* own = FindForOccurrence(values, id);
  out = own != nullptr ? own->value : value;
}

CRect DisplayProp::GetBoundingBox(DboState&) const {
  return extent.value_or(CRect{});
}

void MeasureDisplayProps(std::vector<Schematic>& schematics) {
  const auto measure = [](DisplayPropList& props) {
    for (DisplayProp& prop : props) {
      if (!prop.extent) {
        prop.extent = MeasureDisplayPropText(prop.name, prop.value, prop.display, *prop.font);
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
  return std::make_unique<DisplayPropsIter>(properties);
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
  return std::make_unique<DisplayPropsIter>(properties);
}

// The model has one set of pins per part, whatever the mode and flag ask for.
std::unique_ptr<DboPartInstPinsIter> PartInst::NewPinsIter(int32_t, int32_t, DboState&) const {
  return std::make_unique<PinsIter>(pins);
}

std::unique_ptr<DboDisplayPropsIter> Wire::NewDisplayPropsIter(DboState&) const {
  return std::make_unique<DisplayPropsIter>(properties);
}
std::unique_ptr<DboWireJunctionsIter> Wire::NewJunctionsIter(DboState&) const {
  return std::make_unique<JunctionsIter>(junctions);
}
std::unique_ptr<DboWireAliasesIter> Wire::NewAliasesIter(DboState&) const {
  return std::make_unique<AliasesIter>(aliases);
}

const DboGraphicObject* CommentGraphic::GetDefiningGraphicObject(DboState& state) const {
  state.SetFailed();
  return nullptr;
}
std::unique_ptr<DboDisplayPropsIter> CommentGraphic::NewDisplayPropsIter(DboState&) const {
  static const DisplayPropList kNone;
  return std::make_unique<DisplayPropsIter>(kNone);
}
const DboBaseObject* CommentGraphic::GetShape(DboState& state) const {
  if (shape == nullptr) {
    state.SetFailed();
  }
  return shape.get();
}

std::unique_ptr<DboPageTitleBlocksIter> Page::NewTitleBlocksIter(DboState&) const {
  return std::make_unique<TitleBlocksIter>(titleBlocks);
}
std::unique_ptr<DboPagePartInstsIter> Page::NewPartInstsIter(DboState&) const {
  return std::make_unique<PartInstsIter>(parts);
}
std::unique_ptr<DboPageWiresIter> Page::NewWiresIter(int32_t, DboState&) const {
  return std::make_unique<WiresIter>(wires);
}
std::unique_ptr<DboPageGlobalsIter> Page::NewGlobalsIter(DboState&) const {
  return std::make_unique<GlobalsIter>(globals);
}
std::unique_ptr<DboPagePortsIter> Page::NewPortsIter(int32_t, DboState&) const {
  return std::make_unique<PortsIter>(ports);
}
std::unique_ptr<DboPageOffPageConnectorsIter> Page::NewOffPageConnectorsIter(int32_t,
                                                                             DboState&) const {
  return std::make_unique<OffPageConnectorsIter>(offPageConnectors);
}
std::unique_ptr<DboPageBusEntriesIter> Page::NewBusEntriesIter(DboState&) const {
  return std::make_unique<BusEntriesIter>(busEntries);
}
std::unique_ptr<DboPageCommentGraphicsIter> Page::NewCommentGraphicsIter(DboState&) const {
  return std::make_unique<CommentGraphicsIter>(graphics);
}

std::unique_ptr<DboSchematicPagesIter> Schematic::NewPagesIter(DboState&) const {
  return std::make_unique<PagesIter>(pages);
}

}  // namespace kalmor::model::detail
