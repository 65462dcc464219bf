#pragma once

// A whole design export, as DesignToDXF walks it, with each page written into memory instead
// of a file, and what is wrong with such a page: the hardening tests and the fuzz targets look at
// the bytes without touching the disk.

#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"
#include "dxf/skeleton.h"
#include "kalmor/dbo.h"
#include "kalmor/export.h"
#include "page/page_walk.h"
#include "render/dxf_reader.h"

namespace kalmor::test {

// The file bytes of every page the design export writes, in its order, frame and title blocks
// included.
inline std::vector<std::string> ExportPagesInMemory(const DboDesign& design) {
  std::vector<std::string> pages;
  DboState state;
  VisitDesignPages(
      design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string&) {
        MemorySink sink;
        DboState status;
        DxfWriteHeader(sink);
        DxfWriteEntitiesOpen(sink);
        PageTranslator(status, page, occurrence, 1, 1, sink, {});
        DxfWriteEnd(sink);
        pages.push_back(sink.bytes());
      });
  return pages;
}

// What is wrong with a page file as the renderer's strict reader reads it back (every record
// whole, every number finite and in range), or "" when nothing is.
inline std::string PageProblem(std::string_view page) {
  try {
    ReadDxf(page, "page.dxf");
  } catch (const DxfReadError& error) {
    return error.what();
  }
  return "";
}

}  // namespace kalmor::test
