#include "kalmor/dbo.h"

namespace kalmor {
namespace {

// The object as the primitive class the accessor belongs to, or null with a failed status.
template <typename T>
const T* As(const DboBaseObject* object, DboState& state) {
  const T* typed = dynamic_cast<const T*>(object);
  if (typed == nullptr) {
    state.SetFailed();
  }
  return typed;
}

// Reads one field of a primitive; zero when the object is not of that class.
template <typename T, typename Field>
auto Read(const DboBaseObject* object, DboState& state, Field field) {
  const T* typed = As<T>(object, state);
  using Result = decltype(field(*typed));
  return typed != nullptr ? field(*typed) : Result{};
}

// The shape of a free page graphic (null, with a failed status, when there is none).
const DboBaseObject* ShapeOf(const DboGraphicInstance* object, DboState& state) {
  const auto* graphic = As<DboCommentGraphic>(object, state);
  return graphic != nullptr ? graphic->GetShape(state) : nullptr;
}

}  // namespace

// clang-format off
int32_t DboLine::sGetStartX(const DboBaseObject* o, DboState& s) { return Read<DboLine>(o, s, [&](const DboLine& l) { return l.GetStart(s).x; }); }
int32_t DboLine::sGetStartY(const DboBaseObject* o, DboState& s) { return Read<DboLine>(o, s, [&](const DboLine& l) { return l.GetStart(s).y; }); }
int32_t DboLine::sGetEndX(const DboBaseObject* o, DboState& s) { return Read<DboLine>(o, s, [&](const DboLine& l) { return l.GetEnd(s).x; }); }
int32_t DboLine::sGetEndY(const DboBaseObject* o, DboState& s) { return Read<DboLine>(o, s, [&](const DboLine& l) { return l.GetEnd(s).y; }); }
LineWidthT DboLine::sGetLineWidth(const DboBaseObject* o, DboState& s) { return Read<DboLine>(o, s, [&](const DboLine& l) { return l.GetLineWidth(s); }); }

int32_t DboBox::sGetLeft(const DboBaseObject* o, DboState& s) { return Read<DboBox>(o, s, [&](const DboBox& b) { return b.GetRect(s).left; }); }
int32_t DboBox::sGetTop(const DboBaseObject* o, DboState& s) { return Read<DboBox>(o, s, [&](const DboBox& b) { return b.GetRect(s).top; }); }
int32_t DboBox::sGetRight(const DboBaseObject* o, DboState& s) { return Read<DboBox>(o, s, [&](const DboBox& b) { return b.GetRect(s).right; }); }
int32_t DboBox::sGetBottom(const DboBaseObject* o, DboState& s) { return Read<DboBox>(o, s, [&](const DboBox& b) { return b.GetRect(s).bottom; }); }
LineWidthT DboBox::sGetLineWidth(const DboBaseObject* o, DboState& s) { return Read<DboBox>(o, s, [&](const DboBox& b) { return b.GetLineWidth(s); }); }

int32_t DboArc::sGetBoundingBoxLeft(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetBoundingBox(s).left; }); }
int32_t DboArc::sGetBoundingBoxTop(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetBoundingBox(s).top; }); }
int32_t DboArc::sGetBoundingBoxRight(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetBoundingBox(s).right; }); }
int32_t DboArc::sGetBoundingBoxBottom(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetBoundingBox(s).bottom; }); }
int32_t DboArc::sGetStartX(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetStart(s).x; }); }
int32_t DboArc::sGetStartY(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetStart(s).y; }); }
int32_t DboArc::sGetEndX(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetEnd(s).x; }); }
int32_t DboArc::sGetEndY(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetEnd(s).y; }); }
LineWidthT DboArc::sGetLineWidth(const DboBaseObject* o, DboState& s) { return Read<DboArc>(o, s, [&](const DboArc& a) { return a.GetLineWidth(s); }); }

int32_t DboEllipse::sGetBoundingBoxLeft(const DboBaseObject* o, DboState& s) { return Read<DboEllipse>(o, s, [&](const DboEllipse& e) { return e.GetBoundingBox(s).left; }); }
int32_t DboEllipse::sGetBoundingBoxTop(const DboBaseObject* o, DboState& s) { return Read<DboEllipse>(o, s, [&](const DboEllipse& e) { return e.GetBoundingBox(s).top; }); }
int32_t DboEllipse::sGetBoundingBoxRight(const DboBaseObject* o, DboState& s) { return Read<DboEllipse>(o, s, [&](const DboEllipse& e) { return e.GetBoundingBox(s).right; }); }
int32_t DboEllipse::sGetBoundingBoxBottom(const DboBaseObject* o, DboState& s) { return Read<DboEllipse>(o, s, [&](const DboEllipse& e) { return e.GetBoundingBox(s).bottom; }); }
LineWidthT DboEllipse::sGetLineWidth(const DboBaseObject* o, DboState& s) { return Read<DboEllipse>(o, s, [&](const DboEllipse& e) { return e.GetLineWidth(s); }); }

LineWidthT DboPolygon::sGetLineWidth(const DboBaseObject* o, DboState& s) { return Read<DboPolygon>(o, s, [&](const DboPolygon& p) { return p.GetLineWidth(s); }); }

LogFont DboCommentText::sGetFont(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { LogFont f; t.GetFont(f, s); return f; }); }
int32_t DboCommentText::sGetBoundingBoxLeft(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { return t.GetBoundingBox(s).left; }); }
int32_t DboCommentText::sGetBoundingBoxTop(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { return t.GetBoundingBox(s).top; }); }
int32_t DboCommentText::sGetBoundingBoxRight(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { return t.GetBoundingBox(s).right; }); }
int32_t DboCommentText::sGetBoundingBoxBottom(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { return t.GetBoundingBox(s).bottom; }); }
std::string DboCommentText::sGetText(const DboBaseObject* o, DboState& s) { return Read<DboCommentText>(o, s, [&](const DboCommentText& t) { std::string text; t.GetText(text, s); return text; }); }

int32_t DboBitMap::sGetBoundingBoxLeft(const DboBaseObject* o, DboState& s) { return Read<DboBitMap>(o, s, [&](const DboBitMap& b) { return b.GetBoundingBox(s).left; }); }
int32_t DboBitMap::sGetBoundingBoxTop(const DboBaseObject* o, DboState& s) { return Read<DboBitMap>(o, s, [&](const DboBitMap& b) { return b.GetBoundingBox(s).top; }); }
int32_t DboBitMap::sGetBoundingBoxRight(const DboBaseObject* o, DboState& s) { return Read<DboBitMap>(o, s, [&](const DboBitMap& b) { return b.GetBoundingBox(s).right; }); }
int32_t DboBitMap::sGetBoundingBoxBottom(const DboBaseObject* o, DboState& s) { return Read<DboBitMap>(o, s, [&](const DboBitMap& b) { return b.GetBoundingBox(s).bottom; }); }

// Free page graphics read the primitive that holds their shape.
LineWidthT DboGraphicBoxInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboBox::sGetLineWidth(ShapeOf(o, s), s); }
int32_t DboGraphicBoxInst::sGetLeft(const DboGraphicInstance* o, DboState& s) { return DboBox::sGetLeft(ShapeOf(o, s), s); }
int32_t DboGraphicBoxInst::sGetTop(const DboGraphicInstance* o, DboState& s) { return DboBox::sGetTop(ShapeOf(o, s), s); }
int32_t DboGraphicBoxInst::sGetRight(const DboGraphicInstance* o, DboState& s) { return DboBox::sGetRight(ShapeOf(o, s), s); }
int32_t DboGraphicBoxInst::sGetBottom(const DboGraphicInstance* o, DboState& s) { return DboBox::sGetBottom(ShapeOf(o, s), s); }

LineWidthT DboGraphicLineInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboLine::sGetLineWidth(ShapeOf(o, s), s); }
int32_t DboGraphicLineInst::sGetStartX(const DboGraphicInstance* o, DboState& s) { return DboLine::sGetStartX(ShapeOf(o, s), s); }
int32_t DboGraphicLineInst::sGetStartY(const DboGraphicInstance* o, DboState& s) { return DboLine::sGetStartY(ShapeOf(o, s), s); }
int32_t DboGraphicLineInst::sGetEndX(const DboGraphicInstance* o, DboState& s) { return DboLine::sGetEndX(ShapeOf(o, s), s); }
int32_t DboGraphicLineInst::sGetEndY(const DboGraphicInstance* o, DboState& s) { return DboLine::sGetEndY(ShapeOf(o, s), s); }

int32_t DboGraphicArcInst::sGetBoundingBoxLeft(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetBoundingBoxLeft(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetBoundingBoxRight(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetBoundingBoxRight(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetBoundingBoxTop(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetBoundingBoxTop(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetBoundingBoxBottom(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetBoundingBoxBottom(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetStartX(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetStartX(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetStartY(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetStartY(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetEndX(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetEndX(ShapeOf(o, s), s); }
int32_t DboGraphicArcInst::sGetEndY(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetEndY(ShapeOf(o, s), s); }
LineWidthT DboGraphicArcInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboArc::sGetLineWidth(ShapeOf(o, s), s); }

int32_t DboGraphicEllipseInst::sGetBoundingBoxLeft(const DboGraphicInstance* o, DboState& s) { return DboEllipse::sGetBoundingBoxLeft(ShapeOf(o, s), s); }
int32_t DboGraphicEllipseInst::sGetBoundingBoxRight(const DboGraphicInstance* o, DboState& s) { return DboEllipse::sGetBoundingBoxRight(ShapeOf(o, s), s); }
int32_t DboGraphicEllipseInst::sGetBoundingBoxTop(const DboGraphicInstance* o, DboState& s) { return DboEllipse::sGetBoundingBoxTop(ShapeOf(o, s), s); }
int32_t DboGraphicEllipseInst::sGetBoundingBoxBottom(const DboGraphicInstance* o, DboState& s) { return DboEllipse::sGetBoundingBoxBottom(ShapeOf(o, s), s); }
LineWidthT DboGraphicEllipseInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboEllipse::sGetLineWidth(ShapeOf(o, s), s); }

LineWidthT DboGraphicPolygonInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboPolygon::sGetLineWidth(ShapeOf(o, s), s); }
const DboPolygon* DboGraphicPolygonInst::GetDboPolygon(const DboGraphicInstance* o, DboState& s) { return As<DboPolygon>(ShapeOf(o, s), s); }
LineWidthT DboGraphicPolylineInst::sGetLineWidth(const DboGraphicInstance* o, DboState& s) { return DboPolygon::sGetLineWidth(ShapeOf(o, s), s); }
const DboPolyline* DboGraphicPolylineInst::GetDboPolyline(const DboGraphicInstance* o, DboState& s) { return As<DboPolyline>(ShapeOf(o, s), s); }

int32_t DboGraphicCommentTextInst::sGetBoundingBoxLeft(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetBoundingBoxLeft(ShapeOf(o, s), s); }
int32_t DboGraphicCommentTextInst::sGetBoundingBoxRight(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetBoundingBoxRight(ShapeOf(o, s), s); }
int32_t DboGraphicCommentTextInst::sGetBoundingBoxTop(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetBoundingBoxTop(ShapeOf(o, s), s); }
int32_t DboGraphicCommentTextInst::sGetBoundingBoxBottom(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetBoundingBoxBottom(ShapeOf(o, s), s); }
LogFont DboGraphicCommentTextInst::sGetFont(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetFont(ShapeOf(o, s), s); }
std::string DboGraphicCommentTextInst::sGetText(const DboGraphicInstance* o, DboState& s) { return DboCommentText::sGetText(ShapeOf(o, s), s); }

int32_t DboGraphicBitMapInst::sGetLeft(const DboGraphicInstance* o, DboState& s) { return DboBitMap::sGetBoundingBoxLeft(ShapeOf(o, s), s); }
int32_t DboGraphicBitMapInst::sGetTop(const DboGraphicInstance* o, DboState& s) { return DboBitMap::sGetBoundingBoxTop(ShapeOf(o, s), s); }
int32_t DboGraphicBitMapInst::sGetRight(const DboGraphicInstance* o, DboState& s) { return DboBitMap::sGetBoundingBoxRight(ShapeOf(o, s), s); }
int32_t DboGraphicBitMapInst::sGetBottom(const DboGraphicInstance* o, DboState& s) { return DboBitMap::sGetBoundingBoxBottom(ShapeOf(o, s), s); }
// clang-format on

}  // namespace kalmor
