#pragma once

// The host's design database as the export sees it: abstract classes that an adapter for a
// schematic-capture application implements. The export reads a design through these operations
// and nothing else.
//
// Conventions of the whole interface:
// - every operation takes the caller's status object by reference, last; the host reports a
//   failure there, and the export mostly learns of failures only through null results;
// - no operation throws: whatever could fail, such as measuring a display property's text for
//   its bounding box (MeasureDisplayPropText), the host does before it hands the design over;
// - objects returned by pointer are owned by the host and live as long as the design;
// - iterators are owned by whoever creates them; a Next operation returns null (or false) at
//   the end.

#include <cstdint>
#include <memory>
#include <string>

#include "kalmor/api.h"
#include "kalmor/dbo_state.h"
#include "kalmor/types.h"

namespace kalmor {

// Host object-type codes, as the type query returns them.
namespace dbo_type {
inline constexpr int32_t kBlockInst = 12;  // hierarchical block instance
inline constexpr int32_t kPartInst = 13;   // placed library part
inline constexpr int32_t kWire = 20;       // thin (scalar) wire; any other wire code is drawn wide
inline constexpr int32_t kBus = 21;
// Graphic primitives of a symbol.
inline constexpr int32_t kBox = 40;
inline constexpr int32_t kLine = 41;
inline constexpr int32_t kArc = 42;
inline constexpr int32_t kEllipse = 43;
inline constexpr int32_t kPolygon = 44;
inline constexpr int32_t kPolyline = 45;
inline constexpr int32_t kCommentText = 46;
inline constexpr int32_t kBitMap = 47;
inline constexpr int32_t kSymbolVector = 48;
// Free graphics placed on a page.
inline constexpr int32_t kGraphicBoxInst = 55;
inline constexpr int32_t kGraphicLineInst = 56;
inline constexpr int32_t kGraphicArcInst = 57;
inline constexpr int32_t kGraphicEllipseInst = 58;
inline constexpr int32_t kGraphicPolygonInst = 59;
inline constexpr int32_t kGraphicPolylineInst = 60;
inline constexpr int32_t kGraphicCommentTextInst = 61;
inline constexpr int32_t kGraphicBitMapInst = 62;
}  // namespace dbo_type

// Host property identifiers read from a port occurrence.
namespace dbo_prop {
inline constexpr int32_t kPinName = 3495;
inline constexpr int32_t kPinNumber = 3496;
}  // namespace dbo_prop

// The iteration mode of DboLib::NewViewsIter that selects the design's schematic views.
inline constexpr int32_t kSchematicViews = 6;

class DboView;
class DboSchematic;
class DboPage;
class DboPartInst;
class DboPortInst;
class DboInstOccurrence;
class DboPortOccurrence;
class DboDisplayProp;
class DboGraphicObject;
class DboGraphicInstance;

// ----------------------------------------------------------------------------------------------
// Iterators

class KALMOR_API DboDesignOccurrencesIter {
 public:
  virtual ~DboDesignOccurrencesIter() = default;
  virtual const DboInstOccurrence* NextOccurrence(DboState& state) = 0;
};

class KALMOR_API DboLibViewsIter {
 public:
  virtual ~DboLibViewsIter() = default;
  virtual const DboView* NextView(DboState& state) = 0;
};

class KALMOR_API DboSchematicPagesIter {
 public:
  virtual ~DboSchematicPagesIter() = default;
  virtual const DboPage* NextPage(DboState& state) = 0;
};

class KALMOR_API DboDisplayPropsIter {
 public:
  virtual ~DboDisplayPropsIter() = default;
  virtual const DboDisplayProp* NextProp(DboState& state) = 0;
};

// Vectors (graphic primitives, type codes 40 to 48) of a defining graphic object.
class KALMOR_API DboGraphicObjectVectorsIter {
 public:
  virtual ~DboGraphicObjectVectorsIter() = default;
  virtual const class DboBaseObject* NextVector(DboState& state) = 0;
};

// Members of a nested symbol vector; the returned status is not OK at the end.
class KALMOR_API DboSymbolVectorVectorsIter {
 public:
  virtual ~DboSymbolVectorVectorsIter() = default;
  virtual const class DboBaseObject* NextVector(DboState& state) = 0;
};

// Points of a polygon or polyline: Next fills the point and returns a status that is not OK
// at the end.
class KALMOR_API DboPolygonPointsIter {
 public:
  virtual ~DboPolygonPointsIter() = default;
  virtual DboState Next(CPoint& point) = 0;
};
using DboPolylinePointsIter = DboPolygonPointsIter;

class KALMOR_API DboPageTitleBlocksIter {
 public:
  virtual ~DboPageTitleBlocksIter() = default;
  virtual const class DboTitleBlock* NextTitleBlock(DboState& state) = 0;
};

class KALMOR_API DboPagePartInstsIter {
 public:
  virtual ~DboPagePartInstsIter() = default;
  virtual const DboPartInst* NextPartInst(DboState& state) = 0;
};

class KALMOR_API DboPageWiresIter {
 public:
  virtual ~DboPageWiresIter() = default;
  virtual const class DboWire* NextWire(DboState& state) = 0;
};

class KALMOR_API DboPageGlobalsIter {
 public:
  virtual ~DboPageGlobalsIter() = default;
  virtual const class DboGlobal* NextGlobal(DboState& state) = 0;
};

class KALMOR_API DboPagePortsIter {
 public:
  virtual ~DboPagePortsIter() = default;
  virtual const class DboPort* NextPort(DboState& state) = 0;
};

class KALMOR_API DboPageOffPageConnectorsIter {
 public:
  virtual ~DboPageOffPageConnectorsIter() = default;
  virtual const class DboOffPageConnector* NextOffPageConnector(DboState& state) = 0;
};

class KALMOR_API DboPageBusEntriesIter {
 public:
  virtual ~DboPageBusEntriesIter() = default;
  virtual const class DboBusEntry* NextBusEntry(DboState& state) = 0;
};

class KALMOR_API DboPageCommentGraphicsIter {
 public:
  virtual ~DboPageCommentGraphicsIter() = default;
  virtual const DboGraphicInstance* NextCommentGraphic(DboState& state) = 0;
};

// Junction points of a wire: false at the end.
class KALMOR_API DboWireJunctionsIter {
 public:
  virtual ~DboWireJunctionsIter() = default;
  virtual bool NextJunction(CPoint& point, DboState& state) = 0;
};

class KALMOR_API DboWireAliasesIter {
 public:
  virtual ~DboWireAliasesIter() = default;
  virtual const class DboAlias* NextAlias(DboState& state) = 0;
};

class KALMOR_API DboPartInstPinsIter {
 public:
  virtual ~DboPartInstPinsIter() = default;
  virtual const DboPortInst* NextPin(DboState& state) = 0;
};

// ----------------------------------------------------------------------------------------------
// Objects

class KALMOR_API DboBaseObject {
 public:
  virtual ~DboBaseObject() = default;
  // The host's object-type code (dbo_type).
  virtual int32_t GetObjectType(DboState& state) const = 0;
};

// A design, schematic or page: an object with a name.
class KALMOR_API DboNamedObject : public DboBaseObject {
 public:
  virtual void GetName(std::string& name, DboState& state) const = 0;
};

class KALMOR_API DboLib : public DboNamedObject {
 public:
  // Iteration mode kSchematicViews selects the design's schematic views.
  virtual std::unique_ptr<DboLibViewsIter> NewViewsIter(int32_t mode, DboState& state) const = 0;
};

class KALMOR_API DboDesign : public DboLib {
 public:
  // The design's instance occurrences, depth-first from the root schematic; may be null.
  virtual std::unique_ptr<DboDesignOccurrencesIter> NewOccurrencesIter(DboState& state) const = 0;
};

class KALMOR_API DboView : public DboNamedObject {
 public:
  // The view as a schematic, or null when it is another kind of view.
  virtual const DboSchematic* AsSchematic() const = 0;
};

class KALMOR_API DboSchematic : public DboView {
 public:
  virtual std::unique_ptr<DboSchematicPagesIter> NewPagesIter(DboState& state) const = 0;
};

// One placement of a part or block in the design's hierarchy.
class KALMOR_API DboInstOccurrence : public DboBaseObject {
 public:
  virtual bool IsPrimitive(DboState& state) const = 0;
  // The schematic a hierarchical occurrence shows; null for a primitive one.
  virtual const DboView* GetContents(DboState& state) const = 0;
  // The child occurrence of an instance placed on this occurrence's schematic, or null.
  virtual const DboInstOccurrence* GetInstOccurrence(const DboPartInst* inst,
                                                     DboState& state) const = 0;
  // The occurrence of one pin of this (primitive or block) occurrence, or null.
  virtual const DboPortOccurrence* GetPortOccurrence(const DboPortInst* pin,
                                                     DboState& state) const = 0;
  // The occurrence's 32-bit id within the design (read through DboInstOccurrencePtrProxy).
  virtual DboDesignOccurrenceId GetDesignOccurrenceId() const = 0;
};

// Names an occurrence by its 32-bit design occurrence id.
class KALMOR_API DboInstOccurrencePtrProxy {
 public:
  void SetPtr(const DboInstOccurrence* occurrence) { occurrence_ = occurrence; }
  DboDesignOccurrenceId GetDWORDDesignOccurrenceId() const {
    return occurrence_ != nullptr ? occurrence_->GetDesignOccurrenceId() : 0;
  }

 private:
  const DboInstOccurrence* occurrence_ = nullptr;
};

class KALMOR_API DboPortOccurrence : public DboBaseObject {
 public:
  // A property string by the host's property id (dbo_prop::kPinName, kPinNumber).
  virtual void GetPropStringById(int32_t propId, std::string& value, DboState& state) const = 0;
};

class KALMOR_API DboPage : public DboNamedObject {
 public:
  virtual int32_t GetPinToPin(DboState& state) const = 0;
  virtual int32_t GetPageWidth(DboState& state) const = 0;
  virtual int32_t GetPageHeight(DboState& state) const = 0;
  virtual double GetPinToPinScaleFactor(DboState& state) const = 0;

  // The page frame.
  virtual int32_t GetOuterBorderIsVisible(DboState& state) const = 0;
  virtual LineWidthT GetOuterBorderLineWidth(DboState& state) const = 0;
  virtual int32_t GetHorizontalLabelWidth(DboState& state) const = 0;
  virtual int32_t GetVerticalLabelWidth(DboState& state) const = 0;
  virtual int32_t GetHorizontalLabelCount(DboState& state) const = 0;
  virtual int32_t GetVerticalLabelCount(DboState& state) const = 0;
  virtual LineWidthT GetHorizontalSeparatorLineWidth(DboState& state) const = 0;
  virtual LineWidthT GetVerticalSeparatorLineWidth(DboState& state) const = 0;
  virtual int32_t GetHorizontalLabelIsChar(DboState& state) const = 0;
  virtual int32_t GetVerticalLabelIsChar(DboState& state) const = 0;
  virtual int32_t GetHorizontalLabelIsAscending(DboState& state) const = 0;
  virtual int32_t GetVerticalLabelIsAscending(DboState& state) const = 0;

  // The page's collections, in the order the walk visits them.
  virtual std::unique_ptr<DboPageTitleBlocksIter> NewTitleBlocksIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboPagePartInstsIter> NewPartInstsIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboPageWiresIter> NewWiresIter(int32_t mode, DboState& state) const = 0;
  virtual std::unique_ptr<DboPageGlobalsIter> NewGlobalsIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboPagePortsIter> NewPortsIter(int32_t mode, DboState& state) const = 0;
  virtual std::unique_ptr<DboPageOffPageConnectorsIter> NewOffPageConnectorsIter(
      int32_t mode, DboState& state) const = 0;
  virtual std::unique_ptr<DboPageBusEntriesIter> NewBusEntriesIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboPageCommentGraphicsIter> NewCommentGraphicsIter(
      DboState& state) const = 0;
};

// A display property: one of an object's properties, shown as text.
class KALMOR_API DboDisplayProp : public DboBaseObject {
 public:
  virtual DisplayTypeT GetDisplayType(DboState& state) const = 0;
  virtual void GetName(std::string& name, DboState& state) const = 0;
  // The plain value; the export always passes a null occurrence here.
  virtual void GetValueString(std::string& value, const DboInstOccurrence* occurrence,
                              DboState& state) const = 0;
  // The value as seen through one occurrence of the page in the design.
  virtual void GetValueStringForOccurrence(DboDesignOccurrenceId id, std::string& value,
                                           DboState& state) const = 0;
  // Relative to the owner for parts, pins and instances; a page point for wires.
  virtual CPoint GetLocation(DboState& state) const = 0;
  virtual RotationT GetRotation(DboState& state) const = 0;
  virtual void GetFont(int32_t flag, LogFont& font, DboState& state) const = 0;
  virtual const DboBaseObject* GetOwner(DboState& state) const = 0;
  // The extent of the shown text.
  virtual CRect GetBoundingBox(DboState& state) const = 0;
};

// A symbol: the defining graphic object of a placed instance.
class KALMOR_API DboGraphicObject : public DboBaseObject {
 public:
  virtual CRect GetBoundingBox(DboState& state) const = 0;
  virtual std::unique_ptr<DboGraphicObjectVectorsIter> NewVectorsIter(int32_t mode,
                                                                      DboState& state) const = 0;
};

// Anything placed on a page with a location, rotation and mirror.
class KALMOR_API DboGraphicInstance : public DboBaseObject {
 public:
  virtual RotationT GetRotation(DboState& state) const = 0;
  virtual CPoint GetLocation(DboState& state) const = 0;
  virtual int32_t GetMirror(DboState& state) const = 0;
  virtual const DboGraphicObject* GetDefiningGraphicObject(DboState& state) const = 0;
  // The instance's own box, in its symbol's coordinates.
  virtual CRect GetBoundingBox(DboState& state) const = 0;
  virtual std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const = 0;
};

class KALMOR_API DboTitleBlock : public DboGraphicInstance {};
class KALMOR_API DboGlobal : public DboGraphicInstance {};
class KALMOR_API DboPort : public DboGraphicInstance {};
class KALMOR_API DboOffPageConnector : public DboGraphicInstance {};

class KALMOR_API DboPartInst : public DboGraphicInstance {
 public:
  // The library part that defines a part or block; its box is the body rectangle.
  virtual const DboGraphicObject* GetDefiningPart(DboState& state) const = 0;
  virtual int32_t GetPinNamesAreVisible(DboState& state) const = 0;
  virtual int32_t GetPinNumbersAreVisible(DboState& state) const = 0;
  virtual std::unique_ptr<DboPartInstPinsIter> NewPinsIter(int32_t mode, int32_t flag,
                                                           DboState& state) const = 0;
};

// A pin of a placed part or block; its points are page points.
class KALMOR_API DboPortInst : public DboBaseObject {
 public:
  virtual CPoint GetStartPoint(DboState& state) const = 0;
  virtual CPoint GetEndPoint(DboState& state) const = 0;
  virtual int32_t GetIsVisible(DboState& state) const = 0;
  virtual void GetPinName(std::string& name, DboState& state) const = 0;
  virtual void GetPinNumber(std::string& number, DboState& state) const = 0;
  virtual int32_t GetIsNoConnect(DboState& state) const = 0;
  // The marker of a block pin, 0 to 7.
  virtual int32_t GetBlockPinKind(DboState& state) const = 0;
  virtual int32_t GetIsDot(DboState& state) const = 0;
  virtual int32_t GetIsClock(DboState& state) const = 0;
  virtual const DboPartInst* GetOwner(DboState& state) const = 0;
  virtual std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const = 0;
};

class KALMOR_API DboWire : public DboBaseObject {
 public:
  virtual CPoint GetStartPoint(DboState& state) const = 0;
  virtual CPoint GetEndPoint(DboState& state) const = 0;
  virtual std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboWireJunctionsIter> NewJunctionsIter(DboState& state) const = 0;
  virtual std::unique_ptr<DboWireAliasesIter> NewAliasesIter(DboState& state) const = 0;
};

// A net name placed on a wire.
class KALMOR_API DboAlias : public DboBaseObject {
 public:
  virtual CPoint GetLocation(DboState& state) const = 0;
  virtual RotationT GetRotation(DboState& state) const = 0;
  virtual void GetName(std::string& name, DboState& state) const = 0;
  virtual void GetFont(LogFont& font, DboState& state) const = 0;
};

class KALMOR_API DboBusEntry : public DboBaseObject {
 public:
  virtual CPoint GetEntryPoint(DboState& state) const = 0;
  virtual CPoint GetEndPoint(DboState& state) const = 0;
};

// ----------------------------------------------------------------------------------------------
// Graphic primitives (the vectors of a symbol, type codes 40 to 48). Each class reads its
// fields through static accessors that take the object as a DboBaseObject; given an object of
// another class they return zero values and report a failure in the status.

class KALMOR_API DboLine : public DboBaseObject {
 public:
  virtual CPoint GetStart(DboState& state) const = 0;
  virtual CPoint GetEnd(DboState& state) const = 0;
  virtual LineWidthT GetLineWidth(DboState& state) const = 0;

  static int32_t sGetStartX(const DboBaseObject* object, DboState& state);
  static int32_t sGetStartY(const DboBaseObject* object, DboState& state);
  static int32_t sGetEndX(const DboBaseObject* object, DboState& state);
  static int32_t sGetEndY(const DboBaseObject* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboBaseObject* object, DboState& state);
};

class KALMOR_API DboBox : public DboBaseObject {
 public:
  virtual CRect GetRect(DboState& state) const = 0;
  virtual LineWidthT GetLineWidth(DboState& state) const = 0;

  static int32_t sGetLeft(const DboBaseObject* object, DboState& state);
  static int32_t sGetTop(const DboBaseObject* object, DboState& state);
  static int32_t sGetRight(const DboBaseObject* object, DboState& state);
  static int32_t sGetBottom(const DboBaseObject* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboBaseObject* object, DboState& state);
};

// An arc of the circle or ellipse inscribed in its bounding box, from start to end.
class KALMOR_API DboArc : public DboBaseObject {
 public:
  virtual CRect GetBoundingBox(DboState& state) const = 0;
  virtual CPoint GetStart(DboState& state) const = 0;
  virtual CPoint GetEnd(DboState& state) const = 0;
  virtual LineWidthT GetLineWidth(DboState& state) const = 0;

  static int32_t sGetBoundingBoxLeft(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboBaseObject* object, DboState& state);
  static int32_t sGetStartX(const DboBaseObject* object, DboState& state);
  static int32_t sGetStartY(const DboBaseObject* object, DboState& state);
  static int32_t sGetEndX(const DboBaseObject* object, DboState& state);
  static int32_t sGetEndY(const DboBaseObject* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboBaseObject* object, DboState& state);
};

class KALMOR_API DboEllipse : public DboBaseObject {
 public:
  virtual CRect GetBoundingBox(DboState& state) const = 0;
  virtual LineWidthT GetLineWidth(DboState& state) const = 0;

  static int32_t sGetBoundingBoxLeft(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboBaseObject* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboBaseObject* object, DboState& state);
};

// Polygons (closed) and polylines (open) share the point list.
class KALMOR_API DboPolygon : public DboBaseObject {
 public:
  virtual LineWidthT GetLineWidth(DboState& state) const = 0;
  virtual std::unique_ptr<DboPolygonPointsIter> NewPointsIter(DboState& state) const = 0;

  static LineWidthT sGetLineWidth(const DboBaseObject* object, DboState& state);
};

class KALMOR_API DboPolyline : public DboPolygon {};

class KALMOR_API DboCommentText : public DboBaseObject {
 public:
  virtual CRect GetBoundingBox(DboState& state) const = 0;
  virtual void GetFont(LogFont& font, DboState& state) const = 0;
  virtual void GetText(std::string& text, DboState& state) const = 0;

  static LogFont sGetFont(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxLeft(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboBaseObject* object, DboState& state);
  static std::string sGetText(const DboBaseObject* object, DboState& state);
};

class KALMOR_API DboBitMap : public DboBaseObject {
 public:
  virtual CRect GetBoundingBox(DboState& state) const = 0;

  static int32_t sGetBoundingBoxLeft(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboBaseObject* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboBaseObject* object, DboState& state);
};

// A nested group of vectors, placed at its location within the symbol.
class KALMOR_API DboSymbolVector : public DboBaseObject {
 public:
  virtual CPoint GetLocation(DboState& state) const = 0;
  virtual std::unique_ptr<DboSymbolVectorVectorsIter> NewVectorsIter(DboState& state) const = 0;
};

// ----------------------------------------------------------------------------------------------
// Free graphics placed on a page (type codes 55 to 62). Each is a graphic instance whose shape
// is one primitive in page coordinates; the static accessors read that shape.

class KALMOR_API DboCommentGraphic : public DboGraphicInstance {
 public:
  // The primitive (type 40 to 47) that holds the graphic's geometry, or null.
  virtual const DboBaseObject* GetShape(DboState& state) const = 0;
};

class KALMOR_API DboGraphicBoxInst {
 public:
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetLeft(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetTop(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetRight(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBottom(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicLineInst {
 public:
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetStartX(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetStartY(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetEndX(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetEndY(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicArcInst {
 public:
  static int32_t sGetBoundingBoxLeft(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetStartX(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetStartY(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetEndX(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetEndY(const DboGraphicInstance* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicEllipseInst {
 public:
  static int32_t sGetBoundingBoxLeft(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboGraphicInstance* object, DboState& state);
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicPolygonInst {
 public:
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
  static const DboPolygon* GetDboPolygon(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicPolylineInst {
 public:
  static LineWidthT sGetLineWidth(const DboGraphicInstance* object, DboState& state);
  static const DboPolyline* GetDboPolyline(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicCommentTextInst {
 public:
  static int32_t sGetBoundingBoxLeft(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxRight(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxTop(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBoundingBoxBottom(const DboGraphicInstance* object, DboState& state);
  static LogFont sGetFont(const DboGraphicInstance* object, DboState& state);
  static std::string sGetText(const DboGraphicInstance* object, DboState& state);
};

class KALMOR_API DboGraphicBitMapInst {
 public:
  static int32_t sGetLeft(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetTop(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetRight(const DboGraphicInstance* object, DboState& state);
  static int32_t sGetBottom(const DboGraphicInstance* object, DboState& state);
};

}  // namespace kalmor
