#include "dxf/layers.h"
#include "page/page_polylines.h"
#include "page/translators.h"

namespace kalmor {

// Every bus entry is a thin segment from its entry point to its end point.
void TranslateBusEntries(PageContext& page) {
  std::unique_ptr<DboPageBusEntriesIter> entries = page.page.NewBusEntriesIter(page.state);
  if (entries == nullptr) {
    return;
  }
  while (const DboBusEntry* entry = entries->NextBusEntry(page.state)) {
    const CPoint from = entry->GetEntryPoint(page.state);
    const CPoint to = entry->GetEndPoint(page.state);
    page_detail::WriteSegment(page, layer::kWire, 0, from, to);
  }
}

}  // namespace kalmor
