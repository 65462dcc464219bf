#include "dxf/layers.h"
#include "host/dbo_reading.h"
#include "page/page_polylines.h"
#include "page/translators.h"

namespace kalmor {

// Every bus entry is a thin segment from its entry point to its end point.
void TranslateBusEntries(PageContext& page) {
  ForEachDbo(page.page.NewBusEntriesIter(page.state), &DboPageBusEntriesIter::NextBusEntry,
             page.state, [&](const DboBusEntry& entry) {
               const CPoint from = entry.GetEntryPoint(page.state);
               const CPoint to = entry.GetEndPoint(page.state);
               page_detail::WriteSegment(page, layer::kWire, 0, from, to);
             });
}

}  // namespace kalmor
