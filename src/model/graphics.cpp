#include "model/graphics.h"

#include "model/sequence.h"

namespace kalmor::model::detail {

template <typename Base, int32_t kType>
std::unique_ptr<DboPolygonPointsIter> PointListShape<Base, kType>::NewPointsIter(DboState&) const {
  return NewListIter<DboPolygonPointsIter, CPoint>(points);
}
template struct PointListShape<DboPolygon, dbo_type::kPolygon>;
template struct PointListShape<DboPolyline, dbo_type::kPolyline>;

std::unique_ptr<DboSymbolVectorVectorsIter> VectorShape::NewVectorsIter(DboState&) const {
  return NewListIter<DboSymbolVectorVectorsIter, const DboBaseObject*>(members);
}

// Every mode yields the same vectors: a symbol here has one set.
std::unique_ptr<DboGraphicObjectVectorsIter> Symbol::NewVectorsIter(int32_t, DboState&) const {
  return NewListIter<DboGraphicObjectVectorsIter, const DboBaseObject*>(vectors);
}

std::unique_ptr<DboGraphicObjectVectorsIter> DefiningPart::NewVectorsIter(int32_t mode,
                                                                          DboState& state) const {
  return symbol->NewVectorsIter(mode, state);
}

}  // namespace kalmor::model::detail
