// Any bytes given to the design-document reader are refused with a DesignDocumentError or read
// into a design whose every page then exports, as a design export would write it, into memory.
// A crash, another exception, a sanitizer report, a hang, or a page whose bytes are not a whole
// DXF file of finite numbers is a finding.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "hardening/dxf_page_check.h"
#include "hardening/export_in_memory.h"
#include "model/design.h"
#include "model/design_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  std::unique_ptr<kalmor::model::Design> design;
  try {
    design = kalmor::model::ReadDesignDocument(json, "fuzz.json");
  } catch (const kalmor::model::DesignDocumentError& error) {
    // Refusals say which document they are about.
    if (!std::string_view(error.what()).starts_with("fuzz.json:")) {
      std::abort();
    }
    return 0;
  }
  for (const std::string& page : kalmor::testing::ExportPagesInMemory(*design)) {
    if (!kalmor::testing::DxfPageProblem(page).empty()) {
      std::abort();
    }
  }
  return 0;
}
