#pragma once

// The objects of a schematic page in the in-memory design: placed instances, parts and their
// pins, wires, connectors, free graphics, and the display properties they carry.

#include <optional>
#include <string>
#include <vector>

#include "kalmor/dbo.h"
#include "model/graphics.h"

namespace kalmor::model::detail {

struct Schematic;

// One value of a property (or one pin name and number) seen through a single occurrence.
// `path` is as the document wrote it; `id` is filled in once the hierarchy is known.
struct OccurrenceValue {
  std::string path;
  DboDesignOccurrenceId id = 0;
  std::string value;
};
struct OccurrencePinText {
  std::string path;
  DboDesignOccurrenceId id = 0;
  std::string name;
  std::string number;
};

// Finds the entry for an occurrence id in a list sorted by id, or null.
template <typename T>
const T* FindForOccurrence(const std::vector<T>& entries, DboDesignOccurrenceId id);

struct DisplayProp final : DboDisplayProp {
  std::string name;
  std::string value;
  DisplayTypeT display = 1;
  CPoint location;
  RotationT rotation = 0;
  const LogFont* font = nullptr;
  std::optional<CRect> extent;  // as the document gives it; measured when the design is made
  std::vector<OccurrenceValue> values;  // sorted by id
  const DboBaseObject* owner = nullptr;

  int32_t GetObjectType(DboState&) const override { return model_type::kDisplayProp; }
  DisplayTypeT GetDisplayType(DboState&) const override { return display; }
  void GetName(std::string& out, DboState&) const override { out = name; }
  void GetValueString(std::string& out, const DboInstOccurrence* occurrence,
                      DboState& state) const override;
  void GetValueStringForOccurrence(DboDesignOccurrenceId id, std::string& out,
                                   DboState& state) const override;
  CPoint GetLocation(DboState&) const override { return location; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  void GetFont(int32_t, LogFont& out, DboState&) const override { out = *font; }
  const DboBaseObject* GetOwner(DboState&) const override { return owner; }
  CRect GetBoundingBox(DboState& state) const override;
};
using DisplayPropList = std::vector<DisplayProp>;

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
  std::string id;
  std::string name;
  std::string number;
  CPoint start, end;
  bool visible = true;
  bool noConnect = false;
  bool dot = false;
  bool clock = false;
  int32_t blockKind = 0;
  DisplayPropList properties;
  std::vector<OccurrencePinText> occurrences;  // sorted by id
  const PartInst* owner = nullptr;

  int32_t GetObjectType(DboState&) const override { return model_type::kPin; }
  CPoint GetStartPoint(DboState&) const override { return start; }
  CPoint GetEndPoint(DboState&) const override { return end; }
  int32_t GetIsVisible(DboState&) const override { return visible ? 1 : 0; }
  void GetPinName(std::string& out, DboState&) const override { out = name; }
  void GetPinNumber(std::string& out, DboState&) const override { out = number; }
  int32_t GetIsNoConnect(DboState&) const override { return noConnect ? 1 : 0; }
  int32_t GetBlockPinKind(DboState&) const override { return blockKind; }
  int32_t GetIsDot(DboState&) const override { return dot ? 1 : 0; }
  int32_t GetIsClock(DboState&) const override { return clock ? 1 : 0; }
  const DboPartInst* GetOwner(DboState& state) const override;
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const override;
};

// What a part's defining part answers: the part's body box (its own, or else its symbol's),
// over its symbol's vectors.
struct DefiningPart final : DboGraphicObject {
  std::optional<CRect> own;
  const Symbol* symbol = nullptr;
  CRect box() const { return own ? *own : symbol->bbox; }
  int32_t GetObjectType(DboState&) const override { return model_type::kSymbol; }
  CRect GetBoundingBox(DboState&) const override { return box(); }
  std::unique_ptr<DboGraphicObjectVectorsIter> NewVectorsIter(int32_t mode,
                                                              DboState& state) const override {
    return symbol->NewVectorsIter(mode, state);
  }
};

struct PartInst final : Placed<DboPartInst, dbo_type::kPartInst> {
  std::string id;
  int32_t kind = dbo_type::kPartInst;
  DefiningPart body;
  std::string schematicName;            // blocks only; empty when none was given
  const Schematic* contents = nullptr;  // the schematic that schematicName names
  bool pinNamesVisible = true;
  bool pinNumbersVisible = true;
  std::vector<Pin> pins;
  const Schematic* schematic = nullptr;  // where the part is placed
  uint32_t ordinal = 0;                  // its place among the parts of that schematic

  int32_t GetObjectType(DboState&) const override { return kind; }
  CRect GetBoundingBox(DboState&) const override { return body.box(); }
  const DboGraphicObject* GetDefiningPart(DboState&) const override { return &body; }
  int32_t GetPinNamesAreVisible(DboState&) const override { return pinNamesVisible ? 1 : 0; }
  int32_t GetPinNumbersAreVisible(DboState&) const override { return pinNumbersVisible ? 1 : 0; }
  std::unique_ptr<DboPartInstPinsIter> NewPinsIter(int32_t mode, int32_t flag,
                                                   DboState& state) const override;
};

struct Alias final : DboAlias {
  std::string name;
  CPoint location;
  RotationT rotation = 0;
  const LogFont* font = nullptr;
  int32_t GetObjectType(DboState&) const override { return model_type::kAlias; }
  CPoint GetLocation(DboState&) const override { return location; }
  RotationT GetRotation(DboState&) const override { return rotation; }
  void GetName(std::string& out, DboState&) const override { out = name; }
  void GetFont(LogFont& out, DboState&) const override { out = *font; }
};

struct Wire final : DboWire {
  CPoint start, end;
  bool bus = false;
  DisplayPropList properties;
  std::vector<CPoint> junctions;
  std::vector<Alias> aliases;
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
  int32_t type = 0;
  std::unique_ptr<DboBaseObject> shape;
  RotationT rotation = 0;  // comment text only
  CRect box;               // the extent of the shape

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
  std::string name;
  int32_t pinToPin = 100;
  int32_t width = 11000;
  int32_t height = 8500;
  double pinToPinScaleFactor = 1.0;
  Border border;
  std::vector<TitleBlock> titleBlocks;
  std::vector<PartInst> parts;
  std::vector<Wire> wires;
  std::vector<Global> globals;
  std::vector<Port> ports;
  std::vector<OffPageConnector> offPageConnectors;
  std::vector<BusEntry> busEntries;
  std::vector<CommentGraphic> graphics;

  int32_t GetObjectType(DboState&) const override { return model_type::kPage; }
  void GetName(std::string& out, DboState&) const override { out = name; }
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
  std::string name;
  std::vector<Page> pages;
  std::vector<const PartInst*> parts;  // of every page, in page then part order

  int32_t GetObjectType(DboState&) const override { return model_type::kSchematic; }
  void GetName(std::string& out, DboState&) const override { out = name; }
  const DboSchematic* AsSchematic() const override { return this; }
  std::unique_ptr<DboSchematicPagesIter> NewPagesIter(DboState& state) const override;
};

// Gives every display property without an extent the measured extent of the text its plain
// value shows. Throws EnvironmentError when no font can be loaded.
void MeasureDisplayProps(std::vector<Schematic>& schematics);

}  // namespace kalmor::model::detail
