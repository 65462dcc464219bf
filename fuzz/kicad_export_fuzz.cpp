// Any bytes given to the KiCad reader as a schematic are refused with a KiCadError naming a file
// and a place, or read into a design whose every page then exports into memory. Every sheet the
// bytes name is read as the same bytes again, so that hierarchies (and sheets that contain
// themselves) are explored too. A crash, another exception, a sanitizer report, a hang, or a
// page that the renderer's strict reader refuses is a finding.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "hardening/export_in_memory.h"
#include "kicad/kicad_reader.h"
#include "model/design.h"

namespace {

// True when `message` holds ":LINE:COLUMN: " after a file name.
bool SaysWhere(std::string_view message) {
  for (std::size_t colon = message.find(':'); colon != std::string_view::npos;
       colon = message.find(':', colon + 1)) {
    std::size_t at = colon + 1;
    int numbers = 0;
    while (numbers < 2 && at < message.size() &&
           std::isdigit(static_cast<unsigned char>(message[at]))) {
      while (at < message.size() && std::isdigit(static_cast<unsigned char>(message[at]))) {
        ++at;
      }
      if (at < message.size() && message[at] == ':') {
        ++numbers;
        ++at;
      } else {
        break;
      }
    }
    if (numbers == 2 && colon > 0 && message.substr(at).starts_with(" ")) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const kalmor::kicad::FileSource sameBytes = [&](const std::string& path, std::string& out,
                                                  std::string& error) {
    if (path.ends_with(".kicad_pro")) {
      error = "no project";
      return false;
    }
    out = text;
    return true;
  };
  kalmor::kicad::KiCadDesign read;
  try {
    read = kalmor::kicad::ReadKiCadSchematic(text, "fuzz.kicad_sch", sameBytes);
  } catch (const kalmor::kicad::KiCadError& error) {
    // Refusals say where: FILE:LINE:COL: what.
    if (!SaysWhere(error.what())) {
      std::fprintf(stderr, "refusal without a place: %s\n", error.what());
      std::abort();
    }
    return 0;
  }
  for (const std::string& page : kalmor::test::ExportPagesInMemory(*read.design)) {
    if (const std::string problem = kalmor::test::PageProblem(page); !problem.empty()) {
      std::fprintf(stderr, "page problem: %s\n", problem.c_str());
      std::abort();
    }
  }
  return 0;
}
