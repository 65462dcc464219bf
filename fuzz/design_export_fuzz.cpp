// Any bytes given to the design-document reader are refused with a DesignDocumentError or read
// into a design whose every page then exports, as a design export would write it, into memory.
// The fast reading must make the very design the careful one makes, or leave the bytes to it.
// A crash, another exception, a sanitizer report, a hang, a page that the renderer's strict reader
// refuses, or a fast reading that differs from the careful one is a finding.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "hardening/export_in_memory.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/document_reader.h"

namespace {

std::vector<std::string> Pages(std::unique_ptr<kalmor::model::detail::DesignData> data) {
  const kalmor::model::Design design(std::move(data));
  return kalmor::test::ExportPagesInMemory(design);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  std::string padded(json);
  padded.resize(size + 64);
  auto fast = kalmor::model::detail::ReadFast(std::string_view(padded).substr(0, size), 64);
  std::unique_ptr<kalmor::model::detail::DesignData> careful;
  try {
    careful = kalmor::model::detail::ReadCarefully(json, "fuzz.json");
  } catch (const kalmor::model::DesignDocumentError& error) {
    // Refusals say which document they are about, and the fast reading refuses them too.
    if (!std::string_view(error.what()).starts_with("fuzz.json:") || fast != nullptr) {
      std::abort();
    }
    return 0;
  }
  const std::vector<std::string> pages = Pages(std::move(careful));
  if (fast != nullptr && Pages(std::move(fast)) != pages) {
    std::abort();
  }
  for (const std::string& page : pages) {
    if (!kalmor::test::PageProblem(page).empty()) {
      std::abort();
    }
  }
  return 0;
}
