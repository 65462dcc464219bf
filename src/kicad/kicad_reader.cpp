#include "kicad/kicad_reader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "input/input_file.h"
#include "input/shown_text.h"
#include "kicad/page_builder.h"
#include "kicad/sheet_file.h"
#include "kicad/text_markup.h"
#include "model/design.h"
#include "model/document_fault.h"
#include "model/hierarchy_links.h"

namespace kalmor::kicad {
namespace detail {
namespace {

namespace fs = std::filesystem;

// A hierarchy of more placed symbols and sheets than the design takes is refused while it is
// walked, before it can take the machine's memory.
constexpr std::size_t kMostPlacements = std::size_t{1} << 20;
constexpr std::size_t kMostSheetDepth = 256;

std::string Where(const std::string& path, Spot spot) {
  return Escaped(path) + ":" + std::to_string(spot.line) + ":" + std::to_string(spot.column) + ": ";
}

struct LoadedSheet {
  SheetFile file;
  std::string schematicName;
  std::vector<SheetLink> links;         // one per sheet of the file
  std::vector<std::string> sheetPaths;  // where each sheet's file was found
  std::vector<const SheetOccurrence*> occurrences;
};

class HierarchyReader {
 public:
  HierarchyReader(const FileSource& files, std::vector<std::string>& warnings)
      : files_(files), warnings_(warnings) {}

  std::unique_ptr<model::Design> Read(std::string_view text, const std::string& path) {
    const std::size_t root = Load(text, path);
    ReadProject(path);
    for (const SymbolInstance& instance : sheets_[root]->file.symbolInstances) {
      design_.legacySymbols.emplace(instance.path, &instance);
    }

    auto top = std::make_unique<SheetOccurrence>();
    top->uuidPath = "/" + sheets_[root]->file.uuid;
    top->sheetPath = "/";
    top->sheetName = "Root";
    top->pageNumber = RootPageNumber(sheets_[root]->file);
    sheets_[root]->occurrences.push_back(top.get());
    occurrences_.push_back(std::move(top));
    std::vector<std::size_t> stack{root};
    Walk(root, *occurrences_.front(), stack);
    design_.pageCount = occurrences_.size();
    return Build();
  }

 private:
  // Reads a sheet file once; later uses share it.
  std::size_t Load(std::string_view text, const std::string& path) {
    std::vector<SyntaxFault> warnings;
    auto sheet = std::make_unique<LoadedSheet>();
    try {
      sheet->file = ReadSheetFile(text, path, warnings);
    } catch (const SyntaxFault& fault) {
      throw KiCadError(Where(path, fault.spot) + fault.message);
    }
    for (const SyntaxFault& warning : warnings) {
      warnings_.push_back(Where(path, warning.spot) + "warning: " + warning.message);
    }
    sheet->schematicName = UniqueName(fs::path(path).stem().string(), schematicNames_);
    std::set<std::string> blockIds;
    for (const Sheet& own : sheet->file.sheets) {
      std::string name = own.nameField >= 0
                             ? own.fields[static_cast<std::size_t>(own.nameField)].value
                             : std::string();
      std::replace(name.begin(), name.end(), '/', '_');
      sheet->links.push_back({UniqueName(name.empty() ? "sheet" : name, blockIds), {}});
    }
    byPath_.emplace(Key(path), sheets_.size());
    sheets_.push_back(std::move(sheet));
    return sheets_.size() - 1;
  }

  static std::string UniqueName(const std::string& wanted, std::set<std::string>& used) {
    std::string name = wanted;
    for (int suffix = 2; !used.insert(name).second; ++suffix) {
      name = wanted + "_" + std::to_string(suffix);
    }
    return name;
  }

  static std::string Key(const std::string& path) {
    return fs::path(path).lexically_normal().generic_string();
  }

  // The sheet files a sheet names are found beside the file that names them, then beside the
  // root file.
  std::size_t LoadSheetFile(const LoadedSheet& parent, const Sheet& sheet) {
    const Field& field = sheet.fields[static_cast<std::size_t>(sheet.fileField)];
    std::string name = field.value;
    std::replace(name.begin(), name.end(), '\\', '/');
    const Spot spot = field.spot;
    if (name.empty()) {
      throw KiCadError(Where(parent.file.path, spot) + "a sheet names no file");
    }
    std::vector<std::string> candidates{
        (fs::path(parent.file.path).parent_path() / name).generic_string()};
    const std::string beside = (rootFolder_ / name).generic_string();
    if (Key(beside) != Key(candidates.front())) {
      candidates.push_back(beside);
    }
    std::string error;
    for (const std::string& candidate : candidates) {
      if (const auto found = byPath_.find(Key(candidate)); found != byPath_.end()) {
        return found->second;
      }
    }
    for (const std::string& candidate : candidates) {
      std::string text;
      if (files_(candidate, text, error)) {
        return Load(text, candidate);
      }
    }
    throw KiCadError(Where(parent.file.path, spot) + "cannot read the sheet file \"" + field.value +
                     "\": " + error);
  }

  void Walk(std::size_t index, const SheetOccurrence& here, std::vector<std::size_t>& stack) {
    LoadedSheet& sheet = *sheets_[index];
    placements_ += sheet.file.symbols.size() + sheet.file.sheets.size();
    if (placements_ > kMostPlacements) {
      throw KiCadError(Where(sheet.file.path, {1, 1}) + "the hierarchy places more than " +
                       std::to_string(kMostPlacements) + " symbols and sheets");
    }
    for (std::size_t i = 0; i < sheet.file.sheets.size(); ++i) {
      const Sheet& own = sheet.file.sheets[i];
      const std::size_t child = LoadSheetFile(*sheets_[index], own);
      LoadedSheet& parent = *sheets_[index];  // Load may have moved the list, not the sheets
      parent.links[i].schematicName = sheets_[child]->schematicName;
      const Spot spot = own.fields[static_cast<std::size_t>(own.fileField)].spot;
      if (std::find(stack.begin(), stack.end(), child) != stack.end()) {
        std::string chain;
        for (const std::size_t step : stack) {
          chain += Escaped(fs::path(sheets_[step]->file.path).filename().string()) + " -> ";
        }
        const std::string name = fs::path(sheets_[child]->file.path).filename().string();
        throw KiCadError(Where(parent.file.path, spot) + "the sheet file " + Quoted(name) +
                         " contains itself (" + chain + Escaped(name) + ")");
      }
      if (stack.size() == kMostSheetDepth) {
        throw KiCadError(Where(parent.file.path, spot) + "sheets nested more than " +
                         std::to_string(kMostSheetDepth) + " deep");
      }
      auto occurrence = std::make_unique<SheetOccurrence>();
      const std::string name =
          own.nameField >= 0 ? own.fields[static_cast<std::size_t>(own.nameField)].value : "";
      occurrence->uuidPath = here.uuidPath + "/" + own.uuid;
      occurrence->legacyPath = here.legacyPath + "/" + own.uuid;
      occurrence->designPath = here.designPath + "/" + parent.links[i].blockId;
      occurrence->sheetPath = here.sheetPath + name + "/";
      occurrence->sheetName = name;
      occurrence->pageNumber = PageNumber(own, here, *occurrence);
      const SheetOccurrence& added = *occurrences_.emplace_back(std::move(occurrence));
      sheets_[child]->occurrences.push_back(&added);
      stack.push_back(child);
      Walk(child, added, stack);
      stack.pop_back();
    }
  }

  std::string RootPageNumber(const SheetFile& root) const {
    for (const SheetInstance& instance : root.sheetInstances) {
      if (instance.path == "/" && !instance.page.empty()) {
        return instance.page;
      }
    }
    return "1";
  }

  // A sheet's page number through one path: KiCad 7 and later keep it in the sheet, keyed by
  // the parent's path; KiCad 6 in the root file, keyed by the sheet's own path.
  std::string PageNumber(const Sheet& sheet, const SheetOccurrence& parent,
                         const SheetOccurrence& own) const {
    for (const SheetInstance& instance : sheet.instances) {
      if (instance.path == parent.uuidPath) {
        return instance.page;
      }
    }
    for (const SheetInstance& instance : sheets_.front()->file.sheetInstances) {
      if (instance.path == own.legacyPath) {
        return instance.page;
      }
    }
    for (const SheetInstance& instance : sheet.instances) {
      const std::size_t second = instance.path.find('/', 1);
      if (second != std::string::npos && instance.path.substr(second) == parent.legacyPath) {
        return instance.page;
      }
    }
    return std::to_string(occurrences_.size() + 1);
  }

  // The project file beside the root: its text variables and how units are lettered.
  void ReadProject(const std::string& rootPath) {
    rootFolder_ = fs::path(rootPath).parent_path();
    const std::string path =
        (fs::path(rootPath).parent_path() / fs::path(rootPath).stem()).generic_string() +
        ".kicad_pro";
    std::string text;
    std::string error;
    if (!files_(path, text, error)) {
      return;  // a schematic without its project is common
    }
    try {
      const nlohmann::json project = nlohmann::json::parse(text);
      if (const auto variables = project.find("text_variables");
          variables != project.end() && variables->is_object()) {
        for (const auto& [name, value] : variables->items()) {
          if (value.is_string()) {
            design_.projectVariables.emplace(name, value.get<std::string>());
          }
        }
      }
      if (const auto schematic = project.find("schematic");
          schematic != project.end() && schematic->is_object()) {
        const int separator = schematic->value("subpart_id_separator", 0);
        if (separator > 0 && separator < 128) {
          design_.unitSeparator = std::string(1, static_cast<char>(separator));
        }
        const int first = schematic->value("subpart_first_id", static_cast<int>('A'));
        if (first == 'A' || first == 'a') {
          design_.firstUnitLetter = static_cast<char>(first);
        }
      }
    } catch (const nlohmann::json::exception& error) {
      warnings_.push_back(path +
                          ": warning: the project file cannot be read, so its text "
                          "variables are left unknown (" +
                          std::string(error.what()) + ")");
    }
  }

  static std::string PageName(const std::string& number) {
    std::string name = number.empty() ? "1" : number;
    for (char& c : name) {
      if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20) {
        c = '_';
      }
    }
    return name == "." || name == ".." ? "_" : name;
  }

  std::unique_ptr<model::Design> Build() {
    auto data = std::make_unique<model::detail::DesignData>();
    data->name = sheets_.front()->schematicName;
    FontTable fonts(data->fonts);
    std::vector<model::detail::BlockRef> blocks;
    data->schematics.resize(sheets_.size());
    std::vector<SyntaxFault> warnings;
    for (std::size_t s = 0; s < sheets_.size(); ++s) {
      const LoadedSheet& sheet = *sheets_[s];
      model::detail::Schematic& schematic = data->schematics[s];
      schematic.name = sheet.schematicName;
      model::detail::Page& page = schematic.pages.emplace_back();
      page.name = PageName(sheet.occurrences.front()->pageNumber);
      PageSources sources{&sheet.file, sheet.occurrences, sheet.links};
      std::vector<std::size_t> blockParts;
      warnings.clear();
      BuildPage(sources, design_, fonts, *data, page, blockParts, warnings);
      for (const SyntaxFault& warning : warnings) {
        warnings_.push_back(Where(sheet.file.path, warning.spot) + "warning: " + warning.message);
      }
      for (const std::size_t part : blockParts) {
        blocks.push_back({s, 0, part});
      }
    }
    try {
      model::detail::LinkHierarchy(*data, std::nullopt, blocks);
    } catch (const model::detail::DocumentFault& fault) {
      // The walk above refuses every hierarchy the design would; this is a fault of the reader.
      throw KiCadError(Where(sheets_.front()->file.path, {1, 1}) +
                       "cannot build the design: " + fault.message);
    }
    return std::make_unique<model::Design>(std::move(data));
  }

  const FileSource& files_;
  std::vector<std::string>& warnings_;
  std::vector<std::unique_ptr<LoadedSheet>> sheets_;  // the root first, then as first used
  std::map<std::string, std::size_t> byPath_;
  std::set<std::string> schematicNames_;
  std::vector<std::unique_ptr<SheetOccurrence>> occurrences_;
  std::size_t placements_ = 0;
  fs::path rootFolder_;
  DesignContext design_;
};

}  // namespace
}  // namespace detail

bool IsKiCadSchematic(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) {
    return false;
  }
  text.remove_prefix(first);
  return text.starts_with("(kicad_sch") || text.starts_with("EESchema Schematic File Version");
}

FileSource DiskFiles() {
  return [](const std::string& path, std::string& text, std::string& error) {
    try {
      text = ReadInputFile(path);
      return true;
    } catch (const InputError& refusal) {
      error = refusal.what();
      return false;
    }
  };
}

KiCadDesign ReadKiCadSchematic(std::string_view text, const std::string& path,
                               const FileSource& files) {
  KiCadDesign result;
  result.design = detail::HierarchyReader(files, result.warnings).Read(text, path);
  return result;
}

KiCadDesign LoadKiCadSchematic(const std::string& path) {
  const FileSource files = DiskFiles();
  std::string text;
  std::string error;
  if (!files(path, text, error)) {
    throw KiCadError(error);
  }
  return ReadKiCadSchematic(text, path, files);
}

}  // namespace kalmor::kicad
