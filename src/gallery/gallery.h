#pragma once

// The gallery of a design export: one static HTML page that shows every page file the export
// wrote, in export order, each with a thumbnail that opens its full drawing, its entity counts
// per layer and its DXF file; and for a hierarchical design, the tree of blocks that led to each
// schematic. The page needs nothing but the files beside it: no scripts, no fonts, no server.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "render/dxf_reader.h"

namespace kalmor::gallery {

inline constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// A hierarchical block's occurrence.
struct Block {
  std::string id;
  std::size_t parent = kNone;  // index of the enclosing block; kNone below the root schematic
  std::string schematic;       // the schematic it shows
};

struct Page {
  std::string schematic;
  std::string name;
  std::string dxfFile;  // relative to the gallery's folder, with '/' between folders
  std::string svgFile;  // the same for its drawing
  std::uintmax_t dxfBytes = 0;
  std::array<std::size_t, kDrawingLayers.size()> entities{};  // per layer, indexed like them
  std::size_t shownThrough = kNone;  // the block whose property values the page shows
};

struct Gallery {
  std::string designName;
  std::string source;                 // the design file's name
  std::string generator;              // the program and its version
  std::string rootSchematic;          // the top of the hierarchy; empty for a design without one
  std::vector<Block> blocks;          // depth-first: a block comes before the blocks inside it
  std::vector<Page> pages;            // in export order, a schematic's pages one after another
  std::vector<std::string> settings;  // how the export differed from the usual, as phrases
};

// The whole HTML document. Names are escaped and isolated as they come, whatever their bytes;
// file names become relative URLs that no character of a name can break.
std::string WriteGalleryHtml(const Gallery& gallery);

}  // namespace kalmor::gallery
