#pragma once

// The graphic primitives of the in-memory design (a symbol's vectors, and the shapes of free
// page graphics) and the symbols that hold them.

#include <optional>

#include "kalmor/dbo.h"
#include "model/design_storage.h"

namespace kalmor::model::detail {

// Codes of our own for the objects that the export never classifies by type; they stay clear
// of the codes it does test.
namespace model_type {
inline constexpr int32_t kDesign = 1;
inline constexpr int32_t kSchematic = 2;
inline constexpr int32_t kPage = 3;
inline constexpr int32_t kTitleBlock = 4;
inline constexpr int32_t kGlobal = 5;
inline constexpr int32_t kPort = 6;
inline constexpr int32_t kOffPageConnector = 7;
inline constexpr int32_t kPin = 8;
inline constexpr int32_t kDisplayProp = 9;
inline constexpr int32_t kAlias = 10;
inline constexpr int32_t kBusEntry = 11;
inline constexpr int32_t kSymbol = 14;
inline constexpr int32_t kInstOccurrence = 15;
inline constexpr int32_t kPortOccurrence = 16;
}  // namespace model_type

// Graphic primitives, made in the design's arena.
using GraphicList = List<DboBaseObject*>;

struct LineShape final : DboLine {
  CPoint start, end;
  LineWidthT width = 0;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kLine; }
  CPoint GetStart(DboState&) const override { return start; }
  CPoint GetEnd(DboState&) const override { return end; }
  LineWidthT GetLineWidth(DboState&) const override { return width; }
};

struct BoxShape final : DboBox {
  CRect rect;
  LineWidthT width = 0;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kBox; }
  CRect GetRect(DboState&) const override { return rect; }
  LineWidthT GetLineWidth(DboState&) const override { return width; }
};

struct ArcShape final : DboArc {
  CRect rect;  // the whole circle or ellipse
  CPoint start, end;
  LineWidthT width = 0;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kArc; }
  CRect GetBoundingBox(DboState&) const override { return rect; }
  CPoint GetStart(DboState&) const override { return start; }
  CPoint GetEnd(DboState&) const override { return end; }
  LineWidthT GetLineWidth(DboState&) const override { return width; }
};

struct EllipseShape final : DboEllipse {
  CRect rect;
  LineWidthT width = 0;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kEllipse; }
  CRect GetBoundingBox(DboState&) const override { return rect; }
  LineWidthT GetLineWidth(DboState&) const override { return width; }
};

// Polygons and polylines differ only in their class and code.
template <typename Base, int32_t kType>
struct PointListShape final : Base {
  List<CPoint> points;
  LineWidthT width = 0;
  int32_t GetObjectType(DboState&) const override { return kType; }
  LineWidthT GetLineWidth(DboState&) const override { return width; }
  std::unique_ptr<DboPolygonPointsIter> NewPointsIter(DboState& state) const override;
};
using PolygonShape = PointListShape<DboPolygon, dbo_type::kPolygon>;
using PolylineShape = PointListShape<DboPolyline, dbo_type::kPolyline>;

struct TextShape final : DboCommentText {
  CRect rect;
  Text text;
  const LogFont* font = nullptr;
  RotationT rotation = 0;  // shown through the page graphic that holds the text
  int32_t GetObjectType(DboState&) const override { return dbo_type::kCommentText; }
  CRect GetBoundingBox(DboState&) const override { return rect; }
  void GetFont(LogFont& out, DboState&) const override { out = *font; }
  void GetText(std::string& out, DboState&) const override { out = text.view(); }
};

struct BitMapShape final : DboBitMap {
  CRect rect;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kBitMap; }
  CRect GetBoundingBox(DboState&) const override { return rect; }
};

struct VectorShape final : DboSymbolVector {
  CPoint location;
  GraphicList members;
  int32_t GetObjectType(DboState&) const override { return dbo_type::kSymbolVector; }
  CPoint GetLocation(DboState&) const override { return location; }
  std::unique_ptr<DboSymbolVectorVectorsIter> NewVectorsIter(DboState& state) const override;
};

// An object known only by its host type code (one the export does not draw, for example).
struct RawObject final : DboBaseObject {
  int32_t type = 0;
  int32_t GetObjectType(DboState&) const override { return type; }
};

struct Symbol;

// What a part's defining part answers: the part's body box (its own, or else its symbol's),
// over its symbol's vectors.
struct DefiningPart final : DboGraphicObject {
  std::optional<CRect> own;
  const Symbol* symbol = nullptr;

  CRect box() const;
  int32_t GetObjectType(DboState&) const override { return model_type::kSymbol; }
  CRect GetBoundingBox(DboState&) const override { return box(); }
  std::unique_ptr<DboGraphicObjectVectorsIter> NewVectorsIter(int32_t mode,
                                                              DboState& state) const override;
};

// A defining graphic object: a box and the vectors drawn in it.
struct Symbol final : DboGraphicObject {
  Text name;  // a name to give it when the design is written out; may be empty
  CRect bbox;
  GraphicList vectors;
  DefiningPart asPart;  // the defining part of the parts that keep its box

  Symbol() { asPart.symbol = this; }
  Symbol(const Symbol&) = delete;
  Symbol& operator=(const Symbol&) = delete;
  int32_t GetObjectType(DboState&) const override { return model_type::kSymbol; }
  CRect GetBoundingBox(DboState&) const override { return bbox; }
  std::unique_ptr<DboGraphicObjectVectorsIter> NewVectorsIter(int32_t mode,
                                                              DboState& state) const override;
};

inline CRect DefiningPart::box() const {
  return own ? *own : symbol->bbox;
}

}  // namespace kalmor::model::detail
