#pragma once

// Shared by the renderer's tests: DXF pages built around a few entity records, and rendering
// that keeps each picture for the SVG reader of svg_parse_test.py.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "render/svg_render.h"

namespace kalmor::test {

// Lines 1 to 14 of a page; the first entity record starts on line 15.
inline constexpr std::string_view kPageOpening =
    " 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1009\n 0\nENDSEC\n 0\nSECTION\n 2\nENTITIES\n";

inline std::string DxfPage(std::string_view entities) {
  return std::string(kPageOpening) + std::string(entities) + " 0\nENDSEC\n 0\nEOF\n";
}

// Renders `dxf` as NAME.dxf; with KALMOR_RENDER_OUT set, leaves the DXF and the SVG there.
inline std::string RenderKept(const std::string& name, std::string_view dxf) {
  std::string svg = RenderDxfToSvg(dxf, name + ".dxf");
  if (const char* dir = std::getenv("KALMOR_RENDER_OUT"); dir != nullptr && *dir != '\0') {
    const std::filesystem::path base = std::filesystem::path(dir) / name;
    std::ofstream(base.string() + ".dxf", std::ios::binary) << dxf;
    std::ofstream(base.string() + ".svg", std::ios::binary) << svg;
  }
  return svg;
}

}  // namespace kalmor::test
