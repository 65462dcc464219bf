#include <memory>
#include <string>

#include "dxf/layers.h"
#include "dxf/polyline_records.h"
#include "host/dbo_reading.h"
#include "page/display_props.h"
#include "page/instance_placement.h"
#include "page/pins.h"
#include "page/translators.h"

namespace kalmor {
namespace {

// The rectangle is already flipped: only scaled here.
void DrawBlockOutline(const PageContext& page, const CRect& r) {
  const double s = page.s;
  DxfRectangle(page.out, layer::kParts, 0,
               {{{r.left * s, r.top * s},
                 {r.right * s, r.top * s},
                 {r.right * s, r.bottom * s},
                 {r.left * s, r.bottom * s}}});
}

void TranslatePartInst(const PageContext& page, const DboPartInst& inst) {
  DboState& st = page.state;
  InstancePlacement placement;
  placement.rotation = inst.GetRotation(st);
  const int32_t kind = inst.GetObjectType(st);
  // Blocks and library parts take their body from the defining part; should a host have none
  // to give, the instance's own box stands in rather than an empty one.
  const DboGraphicObject* part = nullptr;
  if (kind == dbo_type::kBlockInst || kind == dbo_type::kPartInst) {
    part = inst.GetDefiningPart(st);
  }
  const CRect box = part != nullptr ? part->GetBoundingBox(st) : inst.GetBoundingBox(st);
  placement.mirror = inst.GetMirror(st);
  const bool namesVisible = inst.GetPinNamesAreVisible(st) != 0;
  const bool numbersVisible = inst.GetPinNumbersAreVisible(st) != 0;
  placement.location = inst.GetLocation(st);
  placement.rect = PlaceInstanceBox(box, placement.rotation, placement.location, page.H);

  WriteDisplayPropTexts(
      page, inst.NewDisplayPropsIter(st), layer::kPartText, 1.0,
      [&](const DboDisplayProp& prop) { return DisplayPropAnchor(prop, placement.rect); },
      [&](const DboDisplayProp& prop, std::string& text) {
        // A failed display-type read still writes the text, formatted with what was returned.
        const std::string value = ReadDisplayPropValue(prop, page.occurrence, st);
        std::string name;
        prop.GetName(name, st);
        FormatDisplayPropText(name, value, prop.GetDisplayType(st), text);
        return true;
      });

  if (kind == dbo_type::kBlockInst) {
    DrawBlockOutline(page, placement.rect);
    DrawBlockPins(page, inst, placement.rect, namesVisible);
  } else {
    DrawSymbolPins(page, inst, placement.rect, namesVisible, numbersVisible);
  }
  placement.symbol = inst.GetDefiningGraphicObject(st);
  DrawSymbolVectors(page, layer::kParts, placement.symbol, placement, 1.0);
}

}  // namespace

void TranslatePartInsts(PageContext& page) {
  ForEachDbo(page.page.NewPartInstsIter(page.state), &DboPagePartInstsIter::NextPartInst,
             page.state, [&](const DboPartInst& inst) { TranslatePartInst(page, inst); });
}

}  // namespace kalmor
