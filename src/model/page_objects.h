#pragma once

// The objects of a schematic page in the in-memory design: placed instances, parts and their
// pins, wires, connectors, free graphics, and the display properties they carry.

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "kalmor/dbo.h"
#include "model/design_storage.h"
#include "model/graphics.h"

namespace kalmor::model::detail {

struct Schematic;

// One value of a property (or one pin name and number) seen through a single occurrence.
// `path` is as the document wrote it; `id` is filled in once the hierarchy is known.
struct OccurrenceValue {
  Text path;
  DboDesignOccurrenceId id = 0;
  Text value;
};
struct OccurrencePinText {
  Text path;
  DboDesignOccurrenceId id = 0;
  Text name;
  Text number;
};

// Finds the entry for an occurrence id in a list sorted by id, or null.
template <typename T>
const T* FindForOccurrence(const List<T>& entries, DboDesignOccurrenceId id);

struct DisplayProp final : DboDisplayProp {
  Text name;
  Text value;
  const LogFont* font = nullptr;
  List<OccurrenceValue> values;  // sorted by id
  CPoint location;
  std::optional<CRect> extent;  // as the document gives it; measured when the design is made
  DisplayTypeT display = 1;
  RotationT rotation = 0;

  int32_t GetObjectType(DboState&) const override { return model_type::kDisplayProp; }
  DisplayTypeT GetDisplayType(DboState&) const override { return display; }
  void GetName(std::string& out, DboState&) const override { out = name.view(); }
  void GetValueString(std::string& out, const DboInstOccurrence* occurrence,
                      DboState& state) const override;
  void GetValueStringForOccurrence(DboDesignOccurrenceId id, std::string& out,
                                   DboState& state) const override;
  CPoint GetLocation(DboState&) const override { return location; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  void GetFont(int32_t, LogFont& out, DboState&) const override { out = *font; }
  // The export never asks; the model does not keep it.
  const DboBaseObject* GetOwner(DboState& state) const override;
  CRect GetBoundingBox(DboState& state) const override;
};
using DisplayPropList = List<DisplayProp>;

// The fields every placed graphic instance shares, over the host class it implements.
template <typename Base, int32_t kType>
struct Placed : Base {
  const Symbol* symbol = nullptr;
  CPoint location;
  RotationT rotation = 0;
  bool mirror = false;
  DisplayPropList properties;

  int32_t GetObjectType(DboState&) const override { return kType; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  CPoint GetLocation(DboState&) const override { return location; }
  int32_t GetMirror(DboState&) const override { return mirror ? 1 : 0; }
  const DboGraphicObject* GetDefiningGraphicObject(DboState&) const override { return symbol; }
  CRect GetBoundingBox(DboState&) const override { return symbol->bbox; }
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const override;
};
using TitleBlock = Placed<DboTitleBlock, model_type::kTitleBlock>;
using Global = Placed<DboGlobal, model_type::kGlobal>;
using Port = Placed<DboPort, model_type::kPort>;
using OffPageConnector = Placed<DboOffPageConnector, model_type::kOffPageConnector>;

struct PartInst;

struct Pin final : DboPortInst {
  Text id;
  Text name;
  Text number;
  CPoint start, end;
  DisplayPropList properties;
  List<OccurrencePinText> occurrences;  // sorted by id
  const PartInst* owner = nullptr;
  int32_t blockKind = 0;
  bool visible = true;
  bool noConnect = false;
  bool dot = false;
  bool clock = false;

  int32_t GetObjectType(DboState&) const override { return model_type::kPin; }
  CPoint GetStartPoint(DboState&) const override { return start; }
  CPoint GetEndPoint(DboState&) const override { return end; }
  int32_t GetIsVisible(DboState&) const override { return visible ? 1 : 0; }
  void GetPinName(std::string& out, DboState&) const override { out = name.view(); }
  void GetPinNumber(std::string& out, DboState&) const override { out = number.view(); }
  int32_t GetIsNoConnect(DboState&) const override { return noConnect ? 1 : 0; }
  int32_t GetBlockPinKind(DboState&) const override { return blockKind; }
  int32_t GetIsDot(DboState&) const override { return dot ? 1 : 0; }
  int32_t GetIsClock(DboState&) const override { return clock ? 1 : 0; }
  const DboPartInst* GetOwner(DboState& state) const override;
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const override;
};

struct PartInst final : Placed<DboPartInst, dbo_type::kPartInst> {
  Text id;
  // The symbol's own defining part, or one of the part's own with another box.
  const DefiningPart* body = nullptr;
  Text schematicName;                   // blocks only; empty when none was given
  const Schematic* contents = nullptr;  // the schematic that schematicName names
  List<Pin> pins;
  const Schematic* schematic = nullptr;  // where the part is placed
  int32_t kind = dbo_type::kPartInst;
  uint32_t ordinal = 0;  // its place among the parts of that schematic
  bool pinNamesVisible = true;
  bool pinNumbersVisible = true;

  int32_t GetObjectType(DboState&) const override { return kind; }
  CRect GetBoundingBox(DboState&) const override { return body->box(); }
  const DboGraphicObject* GetDefiningPart(DboState&) const override { return body; }
  int32_t GetPinNamesAreVisible(DboState&) const override { return pinNamesVisible ? 1 : 0; }
  int32_t GetPinNumbersAreVisible(DboState&) const override { return pinNumbersVisible ? 1 : 0; }
  std::unique_ptr<DboPartInstPinsIter> NewPinsIter(int32_t mode, int32_t flag,
                                                   DboState& state) const override;
};

struct Alias final : DboAlias {
  Text name;
  CPoint location;
  const LogFont* font = nullptr;
  RotationT rotation = 0;
  int32_t GetObjectType(DboState&) const override { return model_type::kAlias; }
  CPoint GetLocation(DboState&) const override { return location; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  void GetName(std::string& out, DboState&) const override { out = name.view(); }
  void GetFont(LogFont& out, DboState&) const override { out = *font; }
};

struct Wire final : DboWire {
  CPoint start, end;
  DisplayPropList properties;
  List<CPoint> junctions;
  List<Alias> aliases;
  bool bus = false;
  int32_t GetObjectType(DboState&) const override { return bus ? dbo_type::kBus : dbo_type::kWire; }
  CPoint GetStartPoint(DboState&) const override { return start; }
  CPoint GetEndPoint(DboState&) const override { return end; }
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const override;
  std::unique_ptr<DboWireJunctionsIter> NewJunctionsIter(DboState& state) const override;
  std::unique_ptr<DboWireAliasesIter> NewAliasesIter(DboState& state) const override;
};

struct BusEntry final : DboBusEntry {
  CPoint entry, end;
  int32_t GetObjectType(DboState&) const override { return model_type::kBusEntry; }
  CPoint GetEntryPoint(DboState&) const override { return entry; }
  CPoint GetEndPoint(DboState&) const override { return end; }
};

// A free graphic on a page: its code (55 to 62, or any code given as a number) and the
// primitive holding its geometry in page coordinates (none for a bare code).
struct CommentGraphic final : DboCommentGraphic {
  const DboBaseObject* shape = nullptr;
  CRect box;  // the extent of the shape
  int32_t type = 0;
  RotationT rotation = 0;  // comment text only

  int32_t GetObjectType(DboState&) const override { return type; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  CPoint GetLocation(DboState&) const override { return {}; }
  int32_t GetMirror(DboState&) const override { return 0; }
  const DboGraphicObject* GetDefiningGraphicObject(DboState& state) const override;
  CRect GetBoundingBox(DboState&) const override { return box; }
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const override;
  const DboBaseObject* GetShape(DboState& state) const override;
};

struct Border {
  bool visible = true;
  LineWidthT lineWidth = 0;
  int32_t horizontalLabelWidth = 20;
  int32_t verticalLabelWidth = 20;
  int32_t horizontalCount = 4;
  int32_t verticalCount = 4;
  bool horizontalLetters = false;
  bool verticalLetters = true;
  bool horizontalAscending = true;
  bool verticalAscending = true;
  LineWidthT horizontalSeparatorWidth = 0;
  LineWidthT verticalSeparatorWidth = 0;
};

struct Page final : DboPage {
  Text name;
  int32_t pinToPin = 100;
  int32_t width = 11000;
  int32_t height = 8500;
  double pinToPinScaleFactor = 1.0;
  Border border;
  List<TitleBlock> titleBlocks;
  List<PartInst> parts;
  List<Wire> wires;
  List<Global> globals;
  List<Port> ports;
  List<OffPageConnector> offPageConnectors;
  List<BusEntry> busEntries;
  List<CommentGraphic> graphics;

  int32_t GetObjectType(DboState&) const override { return model_type::kPage; }
  void GetName(std::string& out, DboState&) const override { out = name.view(); }
  int32_t GetPinToPin(DboState&) const override { return pinToPin; }
  int32_t GetPageWidth(DboState&) const override { return width; }
  int32_t GetPageHeight(DboState&) const override { return height; }
  double GetPinToPinScaleFactor(DboState&) const override { return pinToPinScaleFactor; }

  int32_t GetOuterBorderIsVisible(DboState&) const override { return border.visible ? 1 : 0; }
  LineWidthT GetOuterBorderLineWidth(DboState&) const override { return border.lineWidth; }
  int32_t GetHorizontalLabelWidth(DboState&) const override { return border.horizontalLabelWidth; }
  int32_t GetVerticalLabelWidth(DboState&) const override { return border.verticalLabelWidth; }
  int32_t GetHorizontalLabelCount(DboState&) const override { return border.horizontalCount; }
  int32_t GetVerticalLabelCount(DboState&) const override { return border.verticalCount; }
  LineWidthT GetHorizontalSeparatorLineWidth(DboState&) const override {
    return border.horizontalSeparatorWidth;
  }
  LineWidthT GetVerticalSeparatorLineWidth(DboState&) const override {
    return border.verticalSeparatorWidth;
  }
  int32_t GetHorizontalLabelIsChar(DboState&) const override {
    return border.horizontalLetters ? 1 : 0;
  }
  int32_t GetVerticalLabelIsChar(DboState&) const override {
    return border.verticalLetters ? 1 : 0;
  }
  int32_t GetHorizontalLabelIsAscending(DboState&) const override {
    return border.horizontalAscending ? 1 : 0;
  }
  int32_t GetVerticalLabelIsAscending(DboState&) const override {
    return border.verticalAscending ? 1 : 0;
  }

  // Every mode yields the page's one collection of each kind.
  std::unique_ptr<DboPageTitleBlocksIter> NewTitleBlocksIter(DboState& state) const override;
  std::unique_ptr<DboPagePartInstsIter> NewPartInstsIter(DboState& state) const override;
  std::unique_ptr<DboPageWiresIter> NewWiresIter(int32_t mode, DboState& state) const override;
  std::unique_ptr<DboPageGlobalsIter> NewGlobalsIter(DboState& state) const override;
  std::unique_ptr<DboPagePortsIter> NewPortsIter(int32_t mode, DboState& state) const override;
  std::unique_ptr<DboPageOffPageConnectorsIter> NewOffPageConnectorsIter(
      int32_t mode, DboState& state) const override;
  std::unique_ptr<DboPageBusEntriesIter> NewBusEntriesIter(DboState& state) const override;
  std::unique_ptr<DboPageCommentGraphicsIter> NewCommentGraphicsIter(
      DboState& state) const override;
};

struct Schematic final : DboSchematic {
  Text name;
  List<Page> pages;
  List<const PartInst*> parts;  // of every page, in page then part order

  int32_t GetObjectType(DboState&) const override { return model_type::kSchematic; }
  void GetName(std::string& out, DboState&) const override { out = name.view(); }
  const DboSchematic* AsSchematic() const override { return this; }
  std::unique_ptr<DboSchematicPagesIter> NewPagesIter(DboState& state) const override;
};

// The extents of the property texts measured last. Designs repeat them (values such as "10k",
// the same references on the pages of one schematic), and a text is measured in the time of
// many lookups. At most kKept texts are kept, so that a design of distinct texts costs little
// more memory.
class PropExtents {
 public:
  // The extent of the text `prop`'s plain value shows. Throws EnvironmentError when no font can
  // be loaded.
  CRect Of(const DisplayProp& prop);

 private:
  static constexpr std::size_t kKept = 4096;
  // The font is interned (one object per distinct font); texts are kept by value or by where
  // the design stores them.
  struct Key {
    const LogFont* font;
    DisplayTypeT display;
    Text name;
    Text value;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const;
  };
  std::unordered_map<Key, CRect, KeyHash> extents_;
};

// Gives every display property without an extent the measured extent of the text its plain
// value shows. Throws EnvironmentError when no font can be loaded.
void MeasureDisplayProps(List<Schematic>& schematics);

}  // namespace kalmor::model::detail
