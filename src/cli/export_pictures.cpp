#include "cli/export_pictures.h"

#include <filesystem>
#include <unordered_map>

#include "cli/files.h"
#include "cli/interruption.h"
#include "cli/terminal_ui.h"
#include "gallery/gallery.h"
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

// Every page file is complete by the time pictures are written; an interruption removes only
// the picture it cuts short.
void BeginPicture(const std::string& path) {
  BeginOutput({path,
               false,
               "kalmor: interrupted while writing " + Shortened(path, kLongestPathShown) +
                   ", which was removed; every page file was completed\n",
               {}});
}

// Reads a page file back, draws it beside itself, and describes it for the gallery. `file` is
// the page file's path relative to the gallery's folder.
gallery::Page DrawPage(const PlannedPage& planned, std::string file) {
  const std::string svgPath = SvgPathFor(planned.file);
  BeginPicture(svgPath);
  InputFile dxf(planned.file);
  const DxfDrawing drawing = ReadDxf(dxf, planned.file);
  WriteWholeFile(svgPath, WriteSvg(drawing, planned.file));  // titled as `kalmor render` does

  gallery::Page page;
  page.schematic = planned.schematicName;
  page.name = planned.pageName;
  page.svgFile = SvgPathFor(file);
  page.dxfFile = std::move(file);
  std::error_code error;
  page.dxfBytes = std::filesystem::file_size(planned.file, error);
  for (const DxfEntity& entity : drawing.entities) {
    ++page.entities[entity.layer];
  }
  return page;
}

}  // namespace

std::string SvgPathFor(const std::string& dxfPath) {
  return std::filesystem::path(dxfPath).replace_extension(".svg").string();
}

std::string GalleryPathFor(const std::string& stem) {
  return stem + ".html";
}

void WritePictures(const LoadedDesign& loaded, const ExportOptions& options,
                   const std::string& stem, const std::vector<PlannedPage>& pages) {
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
  for (const PlannedPage& planned : pages) {
    gallery::Page page = DrawPage(planned, planned.file.substr(folderLength));
    if (const auto block = blockIndex.find(planned.occurrence); block != blockIndex.end()) {
      page.shownThrough = block->second;
    }
    if (options.html) {
      gallery.pages.push_back(std::move(page));
    }
  }
  if (options.html) {
    BeginPicture(GalleryPathFor(stem));
    WriteWholeFile(GalleryPathFor(stem), gallery::WriteGalleryHtml(gallery));
  }
}

}  // namespace kalmor::cli
