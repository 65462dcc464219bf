#include "page/page_fonts.h"

#include <memory>

#include "text/vel_text.h"

namespace kalmor {
namespace {

// Calls `visit` for every object a page iterator yields; a null iterator yields none.
template <typename Iter, typename Object, typename Visit>
void ForEach(std::unique_ptr<Iter> iter, const Object* (Iter::*next)(DboState&), DboState& state,
             Visit visit) {
  if (iter == nullptr) {
    return;
  }
  while (const Object* object = ((*iter).*next)(state)) {
    visit(*object);
  }
}

}  // namespace

void PageFonts::Prepare(const DboPage& page, int titleBlocks) {
  const auto prepare = [this](const DboGraphicInstance& instance) { PrepareSymbol(instance); };
  if (titleBlocks != 0) {
    ForEach(page.NewTitleBlocksIter(state_), &DboPageTitleBlocksIter::NextTitleBlock, state_,
            prepare);
  }
  ForEach(page.NewPartInstsIter(state_), &DboPagePartInstsIter::NextPartInst, state_, prepare);
  ForEach(page.NewGlobalsIter(state_), &DboPageGlobalsIter::NextGlobal, state_, prepare);
  ForEach(page.NewPortsIter(1, state_), &DboPagePortsIter::NextPort, state_, prepare);
  ForEach(page.NewOffPageConnectorsIter(1, state_),
          &DboPageOffPageConnectorsIter::NextOffPageConnector, state_, prepare);
}

void PageFonts::PrepareSymbol(const DboGraphicInstance& instance) {
  const DboGraphicObject* symbol = instance.GetDefiningGraphicObject(state_);
  if (symbol == nullptr || !seen_.insert(symbol).second) {
    return;
  }
  const std::unique_ptr<DboGraphicObjectVectorsIter> vectors = symbol->NewVectorsIter(0, state_);
  if (vectors == nullptr) {
    return;
  }
  while (const DboBaseObject* vector = vectors->NextVector(state_)) {
    if (vector->GetObjectType(state_) == dbo_type::kCommentText) {
      PrepareTextFont(DboCommentText::sGetFont(vector, state_));
    }
  }
}

}  // namespace kalmor
