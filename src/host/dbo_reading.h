#pragma once

// Reading a host's design through kalmor/dbo.h: every iterator hands out objects until its Next
// operation returns null, and names come back through an out parameter.

#include <memory>
#include <string>
#include <utility>

#include "kalmor/dbo.h"

namespace kalmor {

// Calls `visit(object)` for each object that `iter` yields through `next`, in order. A null
// iterator, which a host may give for an empty collection, yields none.
template <typename Iter, typename Object, typename Visit>
void ForEachDbo(const std::unique_ptr<Iter>& iter, const Object* (Iter::*next)(DboState&),
                DboState& state, Visit&& visit) {
  if (iter == nullptr) {
    return;
  }
  while (const Object* object = ((*iter).*next)(state)) {
    visit(*object);
  }
}

// Calls `visit(view)` for each of the design's schematic views, in the host's order.
template <typename Visit>
void ForEachSchematicView(const DboDesign& design, DboState& state, Visit&& visit) {
  ForEachDbo(design.NewViewsIter(kSchematicViews, state), &DboLibViewsIter::NextView, state,
             std::forward<Visit>(visit));
}

// Calls `visit(page)` for each page of `schematic`, in order.
template <typename Visit>
void ForEachPage(const DboSchematic& schematic, DboState& state, Visit&& visit) {
  ForEachDbo(schematic.NewPagesIter(state), &DboSchematicPagesIter::NextPage, state,
             std::forward<Visit>(visit));
}

// Calls `visit(point)` for each point of `polygon`, in order; none for a null polygon or a null
// points iterator.
template <typename Visit>
void ForEachPoint(const DboPolygon* polygon, DboState& state, Visit&& visit) {
  if (polygon == nullptr) {
    return;
  }
  const std::unique_ptr<DboPolygonPointsIter> points = polygon->NewPointsIter(state);
  if (points == nullptr) {
    return;
  }
  CPoint point;
  while (points->Next(point).OK()) {
    visit(point);
  }
}

// The object's name; empty when the host gives none.
inline std::string NameOf(const DboNamedObject& object) {
  DboState state;
  std::string name;
  object.GetName(name, state);
  return name;
}

}  // namespace kalmor
