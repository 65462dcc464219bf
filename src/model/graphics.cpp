#include "model/graphics.h"

#include "model/sequence.h"

namespace kalmor::model::detail {
namespace {

class PointsIter final : public DboPolygonPointsIter, public Recycled<PointsIter> {
 public:
  explicit PointsIter(std::span<const CPoint> points) : points_(points) {}
  DboState Next(CPoint& point) override {
    const CPoint* next = points_.Next();
    if (next == nullptr) {
      return DboState(DboState::kFailed);
    }
    point = *next;
    return DboState();
  }

 private:
  Sequence<CPoint> points_;
};

class MembersIter final : public DboSymbolVectorVectorsIter, public Recycled<MembersIter> {
 public:
  explicit MembersIter(const GraphicList& members) : members_(members) {}
  const DboBaseObject* NextVector(DboState& state) override {
    const DboBaseObject* next = members_.Next();
    if (next == nullptr) {
      state.SetFailed();
    }
    return next;
  }

 private:
  Sequence<std::unique_ptr<DboBaseObject>> members_;
};

class VectorsIter final : public DboGraphicObjectVectorsIter, public Recycled<VectorsIter> {
 public:
  explicit VectorsIter(const GraphicList& vectors) : vectors_(vectors) {}
  const DboBaseObject* NextVector(DboState&) override { return vectors_.Next(); }

 private:
  Sequence<std::unique_ptr<DboBaseObject>> vectors_;
};

}  // namespace

template <typename Base, int32_t kType>
std::unique_ptr<DboPolygonPointsIter> PointListShape<Base, kType>::NewPointsIter(DboState&) const {
  return std::make_unique<PointsIter>(points);
}
template struct PointListShape<DboPolygon, dbo_type::kPolygon>;
template struct PointListShape<DboPolyline, dbo_type::kPolyline>;

std::unique_ptr<DboSymbolVectorVectorsIter> VectorShape::NewVectorsIter(DboState&) const {
  return std::make_unique<MembersIter>(members);
}

// Every mode yields the same vectors: a symbol here has one set.
std::unique_ptr<DboGraphicObjectVectorsIter> Symbol::NewVectorsIter(int32_t, DboState&) const {
  return std::make_unique<VectorsIter>(vectors);
}

}  // namespace kalmor::model::detail
