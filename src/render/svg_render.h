#pragma once

// The renderer of our own DXF files: reads exactly the records the exporter writes and draws
// them as an SVG picture, refusing anything else with the place and the reason.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "input/input_file.h"

namespace kalmor {

// A DXF file that cannot be drawn: what() reads "board.dxf:123: unsupported record ARC".
class DxfReadError : public std::runtime_error {
 public:
  // `record` names the record being read when the fault was found (empty outside records).
  DxfReadError(std::string_view sourceName, std::size_t line, std::string record,
               std::string_view problem);

  const std::string& source() const { return source_; }
  std::size_t line() const { return line_; }  // 1-based line of the file
  const std::string& record() const { return record_; }

 private:
  std::string source_;
  std::size_t line_;
  std::string record_;
};

// Renders a DXF file written by this exporter as an SVG document.
std::string RenderDxfToSvg(ByteSource& dxf, std::string_view sourceName);
std::string RenderDxfToSvg(std::string_view dxf, std::string_view sourceName);

}  // namespace kalmor
