#include "cli/export_pictures.h"

#include <filesystem>
#include <unordered_map>

#include "cli/files.h"
#include "export/output_names.h"
#include "gallery/gallery.h"
#include "kalmor/export.h"
#include "kalmor/version.h"
#include "render/dxf_reader.h"
#include "render/svg_writer.h"

namespace kalmor::cli {
namespace {

// The export's settings that change what the pages show.
std::vector<std::string> SettingsOf(const ExportOptions& options) {
  std::vector<std::string> settings;
  if (options.noFrame) {
    settings.emplace_back("without the page frame");
  }
  if (options.noTitleBlocks) {
    settings.emplace_back("without title blocks");
  }
  return settings;
}

// Reads a page file back, draws it beside itself, and describes it for the gallery. `file` is
// the page file's path relative to the gallery's folder.
gallery::Page DrawPage(const std::string& dxfPath, std::string file) {
  const std::string svgPath = std::filesystem::path(dxfPath).replace_extension(".svg").string();
  const std::string dxf = ReadWholeFile(dxfPath);
  const DxfDrawing drawing = ReadDxf(dxf, dxfPath);
  WriteWholeFile(svgPath, WriteSvg(drawing, dxfPath));  // as `kalmor render` titles it

  gallery::Page page;
  page.svgFile = std::filesystem::path(file).replace_extension(".svg").string();
  page.dxfFile = std::move(file);
  page.dxfBytes = dxf.size();
  for (const DxfEntity& entity : drawing.entities) {
    ++page.entities[entity.layer];
  }
  return page;
}

}  // namespace

std::string GalleryPathFor(const std::string& stem) {
  return stem + ".html";
}

void WritePictures(const LoadedDesign& loaded, const ExportOptions& options,
                   const std::string& stem) {
  gallery::Gallery gallery;
  DboState state;
  loaded.design().GetName(gallery.designName, state);
  gallery.source = std::filesystem::path(options.design).filename().string();
  gallery.generator = std::string("kalmor ") + LibraryVersion();
  gallery.rootSchematic = loaded.RootSchematic();
  gallery.settings = SettingsOf(options);
  std::unordered_map<const DboInstOccurrence*, std::size_t> blockIndex;
  for (model::BlockOccurrence& block : loaded.Blocks()) {
    blockIndex.emplace(block.occurrence, gallery.blocks.size());
    gallery.blocks.push_back({std::move(block.id), block.parent, std::move(block.schematic)});
  }

  // Page files sit beside the gallery, or below it when names hold separators (--raw-names).
  const std::size_t folderLength = stem.rfind('/') + 1;
  VisitDesignPages(loaded.design(), state,
                   [&](const DboPage& page, const DboInstOccurrence* occurrence,
                       const std::string& schematicName) {
                     const std::string dxfPath = MakePageFileName(stem, schematicName, page);
                     gallery::Page drawn = DrawPage(dxfPath, dxfPath.substr(folderLength));
                     drawn.schematic = schematicName;
                     page.GetName(drawn.name, state);
                     if (const auto block = blockIndex.find(occurrence);
                         block != blockIndex.end()) {
                       drawn.shownThrough = block->second;
                     }
                     if (options.html) {
                       gallery.pages.push_back(std::move(drawn));
                     }
                   });
  if (options.html) {
    WriteWholeFile(GalleryPathFor(stem), gallery::WriteGalleryHtml(gallery));
  }
}

}  // namespace kalmor::cli
