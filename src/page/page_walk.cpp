#include "page/page_walk.h"

#include <cstdint>

#include "page/translators.h"

namespace kalmor {

PageContext OpenPageContext(ByteSink& out, DboState& state, const DboPage& page,
                            const DboInstOccurrence* occurrence) {
  PageContext context{out, state, page, occurrence};
  // The pin-to-pin value is asked for each computation; the host answers the same each time.
  context.pinToPin = page.GetPinToPin(state);
  context.s = page.GetPinToPin(state) * 0.0001;
  const double tenth = page.GetPinToPin(state) * 0.1;
  context.H = static_cast<int32_t>(page.GetPageHeight(state) / tenth);
  context.W = static_cast<int32_t>(page.GetPageWidth(state) / tenth);
  return context;
}

DboState& PageTranslator(DboState& status, const DboPage& page, const DboInstOccurrence* occurrence,
                         int frame, int titleBlocks, ByteSink& out, std::string /*unused*/) {
  DboState state;
  PageContext context = OpenPageContext(out, state, page, occurrence);

  if (frame != 0 && page.GetOuterBorderIsVisible(state) != 0) {
    TranslateFrame(context);
  }
  context.pinToPinScaleFactor = page.GetPinToPinScaleFactor(state);
  if (titleBlocks != 0) {
    TranslateTitleBlocks(context);
  }
  TranslatePartInsts(context);
  TranslateWires(context);
  TranslateGlobals(context);
  TranslatePorts(context);
  TranslateOffPageConnectors(context);
  TranslateBusEntries(context);
  TranslateCommentGraphics(context);

  status.SetOK();
  return status;
}

}  // namespace kalmor
