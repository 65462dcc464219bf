#include "page/page_fonts.h"

#include <memory>

#include "host/dbo_reading.h"
#include "text/vel_text.h"

namespace kalmor {

void PageFonts::Prepare(const DboPage& page, int titleBlocks) {
  const auto prepare = [this](const DboGraphicInstance& instance) { PrepareSymbol(instance); };
  if (titleBlocks != 0) {
    ForEachDbo(page.NewTitleBlocksIter(state_), &DboPageTitleBlocksIter::NextTitleBlock, state_,
               prepare);
  }
  ForEachDbo(page.NewPartInstsIter(state_), &DboPagePartInstsIter::NextPartInst, state_, prepare);
  ForEachDbo(page.NewGlobalsIter(state_), &DboPageGlobalsIter::NextGlobal, state_, prepare);
  ForEachDbo(page.NewPortsIter(1, state_), &DboPagePortsIter::NextPort, state_, prepare);
  ForEachDbo(page.NewOffPageConnectorsIter(1, state_),
             &DboPageOffPageConnectorsIter::NextOffPageConnector, state_, prepare);
}

void PageFonts::PrepareSymbol(const DboGraphicInstance& instance) {
  const DboGraphicObject* symbol = instance.GetDefiningGraphicObject(state_);
  if (symbol == nullptr || !seen_.insert(symbol).second) {
    return;
  }
  ForEachDbo(symbol->NewVectorsIter(0, state_), &DboGraphicObjectVectorsIter::NextVector, state_,
             [&](const DboBaseObject& vector) {
               if (vector.GetObjectType(state_) == dbo_type::kCommentText) {
                 PrepareTextFont(DboCommentText::sGetFont(&vector, state_));
               }
             });
}

}  // namespace kalmor
