#include "kalmor/export.h"

#include <algorithm>
#include <list>
#include <stdexcept>

#include "dxf/output_file.h"
#include "dxf/skeleton.h"
#include "export/output_names.h"
#include "page/page_fonts.h"
#include "page/page_walk.h"

namespace kalmor {

uint8_t g_inDesignExport = 0;

namespace {

// Iteration mode that selects a design's schematic views.
constexpr int32_t kSchematicViews = 6;

// The schematics met so far in one design export, in the order first met.
class ExportedSchematics {
 public:
  // False when `name` is already listed; otherwise lists it.
  bool Add(const std::string& name) {
    if (std::find(names_.begin(), names_.end(), name) != names_.end()) {
      return false;
    }
    names_.push_back(name);
    return true;
  }

 private:
  std::list<std::string> names_;
};

// Visits the pages of `view` unless its schematic was met before.
void VisitView(const DboView& view, const DboInstOccurrence* occurrence, DboState& state,
               ExportedSchematics& exportedSchematics, const DesignPageVisitor& visit) {
  std::string schematicName;
  view.GetName(schematicName, state);
  if (!exportedSchematics.Add(schematicName)) {
    return;
  }
  const DboSchematic* schematic = view.AsSchematic();
  if (schematic == nullptr) {
    return;
  }
  const std::unique_ptr<DboSchematicPagesIter> pages = schematic->NewPagesIter(state);
  if (pages == nullptr) {
    return;
  }
  while (const DboPage* page = pages->NextPage(state)) {
    visit(*page, occurrence, schematicName);
  }
}

std::string PageName(const DboPage& page) {
  DboState state;
  std::string name;
  page.GetName(name, state);
  return name;
}

}  // namespace

void VisitDesignPages(const DboDesign& design, DboState& state, const DesignPageVisitor& visit) {
  ExportedSchematics exportedSchematics;

  if (const std::unique_ptr<DboDesignOccurrencesIter> occurrences =
          design.NewOccurrencesIter(state)) {
    while (const DboInstOccurrence* occurrence = occurrences->NextOccurrence(state)) {
      if (occurrence->IsPrimitive(state)) {
        continue;
      }
      if (const DboView* contents = occurrence->GetContents(state)) {
        VisitView(*contents, occurrence, state, exportedSchematics, visit);
      }
    }
  }

  // The host always answers with a views iterator and pages iterators here; should one be
  // missing all the same, it counts as an empty collection rather than a failure.
  if (const std::unique_ptr<DboLibViewsIter> views = design.NewViewsIter(kSchematicViews, state)) {
    while (const DboView* view = views->NextView(state)) {
      VisitView(*view, nullptr, state, exportedSchematics, visit);
    }
  }
}

SaveFileDialogSettings DxfSaveDialogSettings() {
  SaveFileDialogSettings settings;
  settings.defaultExtension = "dxf";
  settings.initialFileName = "*.dxf";
  settings.flags = 0;
  settings.filter = "DXF Files (*.dxf)||";
  return settings;
}

void DesignToDXF(const DboDesign* design, std::string path, int32_t unused, int32_t frame,
                 int32_t titleBlocks) {
  if (design == nullptr) {
    return;
  }
  // Every font the design's pages need is loaded before the first file is opened, so that a
  // missing one stops the export before it has written or changed anything.
  {
    PageFonts fonts;
    DboState fontState;
    VisitDesignPages(*design, fontState,
                     [&](const DboPage& page, const DboInstOccurrence*, const std::string&) {
                       fonts.Prepare(page, titleBlocks);
                     });
  }
  g_inDesignExport = 1;
  const std::string outputStem = MakeOutputStem(path);
  DboState state;
  UserInterface& ui = CurrentUserInterface();

  const bool announce = ui.WantsExportProgress();
  int pageCount = 0;
  if (announce) {
    DboState countState;
    VisitDesignPages(
        *design, countState,
        [&](const DboPage&, const DboInstOccurrence*, const std::string&) { ++pageCount; });
  }

  int pageIndex = 0;
  VisitDesignPages(
      *design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence,
          const std::string& schematicName) {
        std::string fileName = MakePageFileName(outputStem, schematicName, page);
        if (announce) {
          ui.ShowExportProgress({++pageIndex, pageCount, schematicName, PageName(page), fileName});
        }
        PageToDXF(&page, occurrence, std::move(fileName), unused, frame, titleBlocks);
      });

  std::string designName;
  design->GetName(designName, state);
  ui.MessageBox(
      kCompleteCaption,
      designName + " has been output to " + outputStem + "_<SchematicName>_<PageName>.dxf", 0);
  g_inDesignExport = 0;
}

void PageToDXF(const DboPage* page, const DboInstOccurrence* occurrence, std::string fileName,
               int32_t /*unused*/, int32_t frame, int32_t titleBlocks) {
  if (page == nullptr) {
    throw std::invalid_argument("PageToDXF: no page to export");
  }
  DboState status;
  std::string pageName;
  page->GetName(pageName, status);

  UserInterface& ui = CurrentUserInterface();
  std::string target;
  if (fileName.empty()) {
    std::optional<std::string> chosen = ui.SaveFileDialog(DxfSaveDialogSettings());
    if (!chosen) {
      return;
    }
    target = std::move(*chosen);
  } else {
    target = fileName;
  }

  // The operating system would see a name cut at its first NUL: a different file.
  if (target.find('\0') != std::string::npos) {
    throw FileError(target, "the name holds a NUL character");
  }
  PageFonts().Prepare(*page, titleBlocks);
  OutputFile file(target);
  DxfWriteHeader(file);
  DxfWriteEntitiesOpen(file);
  PageTranslator(status, *page, occurrence, frame, titleBlocks, file, std::string());
  DxfWriteEnd(file);
  file.Flush();

  // The file stays open, held exclusively, until the message is dismissed.
  if (!fileName.empty() && g_inDesignExport == 0) {
    ui.MessageBox(kCompleteCaption, pageName + "  output to  " + target, 0);
  }
  file.Close();
}

}  // namespace kalmor
