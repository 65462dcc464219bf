#include "kalmor/export.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dxf/output_file.h"
#include "dxf/skeleton.h"
#include "export/output_names.h"
#include "host/dbo_reading.h"
#include "page/page_fonts.h"
#include "page/page_walk.h"

namespace kalmor {

uint8_t g_inDesignExport = 0;

namespace {

// The names of the schematics met so far in one design export. A design may hold hundreds of
// thousands of schematics and is walked more than once, so a name is looked up by one probe of
// a flat table whose slots keep each name's hash: a new name, the usual case, is told apart
// without reading a stored one. (The standard set would allocate a node per name and follow two
// pointers per lookup; a table of 200,000 names no longer fits the processor's caches.)
class ExportedSchematics {
 public:
  // False when `name` is already listed; otherwise lists it.
  bool Add(std::string_view name) {
    if (2 * (names_.size() + 1) > slots_.size()) {
      Grow();
    }
    const std::size_t hash = std::hash<std::string_view>{}(name);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
      Slot& slot = slots_[at];
      if (slot.index == 0) {
        names_.emplace_back(name);
        slot = {hash, names_.size()};
        return true;
      }
      if (slot.hash == hash && names_[slot.index - 1] == name) {
        return false;
      }
    }
  }

 private:
  struct Slot {
    std::size_t hash;
    std::size_t index;  // of the name in names_, plus one; 0 while the slot is free
  };

  // Doubles the table, which stays at most half full so that probes stay short.
  void Grow() {
    const std::vector<Slot> old =
        std::exchange(slots_, std::vector<Slot>(std::max<std::size_t>(64, 2 * slots_.size())));
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.index != 0) {
        std::size_t at = slot.hash & mask;
        while (slots_[at].index != 0) {
          at = (at + 1) & mask;
        }
        slots_[at] = slot;
      }
    }
  }

  std::vector<Slot> slots_;  // a power of two long
  std::vector<std::string> names_;
};

// Visits the pages of `view` unless its schematic was met before.
void VisitView(const DboView& view, const DboInstOccurrence* occurrence, DboState& state,
               ExportedSchematics& exportedSchematics, const DesignPageVisitor& visit) {
  const std::string schematicName = NameOf(view);
  if (!exportedSchematics.Add(schematicName)) {
    return;
  }
  const DboSchematic* schematic = view.AsSchematic();
  if (schematic == nullptr) {
    return;
  }
  ForEachPage(*schematic, state,
              [&](const DboPage& page) { visit(page, occurrence, schematicName); });
}

// What identifies the contents of a written file: another process replacing them changes one
// of these (on file systems with coarse time stamps, a rewrite of the same size within one tick
// would go unseen).
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  timespec modified{};
  timespec changed{};
  friend bool operator==(const FileStamp& a, const FileStamp& b) {
    return a.device == b.device && a.inode == b.inode && a.size == b.size &&
           a.modified.tv_sec == b.modified.tv_sec && a.modified.tv_nsec == b.modified.tv_nsec &&
           a.changed.tv_sec == b.changed.tv_sec && a.changed.tv_nsec == b.changed.tv_nsec;
  }
};

FileStamp StampOf(const struct stat& info) {
  return {info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
}

// The page files of one design export, kept open, and so locked against other exports, until
// the completion message has been shown: no page can be replaced between being written and
// being reported complete. Near the process's limit of descriptors, the files held so far are
// closed and only their stamps kept, to be checked before the message instead. A spare of
// descriptors stays free for the host application (and for anything the process must open
// while a page is written); should the host take them anyway, an open that finds none free
// releases the held files and tries again.
class HeldPages {
 public:
  HeldPages() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
        limit.rlim_cur < static_cast<rlim_t>(std::numeric_limits<int>::max())) {
      holdBelow_ = static_cast<int>(limit.rlim_cur) - kSpareDescriptors;
    }
  }

  OutputFile Open(const std::string& path) {
    return OutputFile(path, [this] {
      const bool any = !files_.empty();
      ReleaseAll();
      return any;
    });
  }

  void Keep(OutputFile file) {
    // The system hands out the lowest free descriptor, so a high one means few are left.
    if (file.descriptor() >= holdBelow_) {
      ReleaseAll();
    }
    file.Hold();
    files_.push_back(std::move(file));
  }

  // Throws FileError naming the first page released early that has changed since.
  void CheckReleased() const {
    for (const auto& [path, stamp] : released_) {
      struct stat info {};
      if (::lstat(path.c_str(), &info) != 0 || !(StampOf(info) == stamp)) {
        throw FileError(path, "another process replaced it during the export");
      }
    }
  }

  void CloseAll() {
    for (OutputFile& file : files_) {
      file.Close();
    }
    files_.clear();
  }

 private:
  void ReleaseAll() {
    for (OutputFile& file : files_) {
      struct stat info {};
      if (::fstat(file.descriptor(), &info) == 0 && S_ISREG(info.st_mode)) {
        released_.emplace_back(file.path(), StampOf(info));
      }
      file.Close();
    }
    files_.clear();
  }

  static constexpr int kSpareDescriptors = 64;

  int holdBelow_ = std::numeric_limits<int>::max();
  std::vector<OutputFile> files_;
  std::vector<std::pair<std::string, FileStamp>> released_;
};

// The operating system would see a name cut at its first NUL: a different file.
void RefuseNul(const std::string& path) {
  if (path.find('\0') != std::string::npos) {
    throw FileError(path, "the name holds a NUL character");
  }
}

// Writes the page into the open file and hands every byte to the system.
void WritePage(OutputFile& file, const DboPage& page, const DboInstOccurrence* occurrence,
               int32_t frame, int32_t titleBlocks) {
  DboState status;
  DxfWriteHeader(file);
  DxfWriteEntitiesOpen(file);
  PageTranslator(status, page, occurrence, frame, titleBlocks, file, std::string());
  DxfWriteEnd(file);
  file.Flush();
}

}  // namespace

void VisitDesignPages(const DboDesign& design, DboState& state, const DesignPageVisitor& visit) {
  ExportedSchematics exportedSchematics;

  ForEachDbo(design.NewOccurrencesIter(state), &DboDesignOccurrencesIter::NextOccurrence, state,
             [&](const DboInstOccurrence& occurrence) {
               if (occurrence.IsPrimitive(state)) {
                 return;
               }
               if (const DboView* contents = occurrence.GetContents(state)) {
                 VisitView(*contents, &occurrence, state, exportedSchematics, visit);
               }
             });

  // The host always answers with a views iterator and pages iterators here; should one be
  // missing all the same, it counts as an empty collection rather than a failure.
  ForEachSchematicView(design, state, [&](const DboView& view) {
    VisitView(view, nullptr, state, exportedSchematics, visit);
  });
}

SaveFileDialogSettings DxfSaveDialogSettings() {
  SaveFileDialogSettings settings;
  settings.defaultExtension = "dxf";
  settings.initialFileName = "*.dxf";
  settings.flags = 0;
  settings.filter = "DXF Files (*.dxf)||";
  return settings;
}

void DesignToDXF(const DboDesign* design, std::string path, int32_t /*unused*/, int32_t frame,
                 int32_t titleBlocks) {
  if (design == nullptr) {
    return;
  }
  // Every font the design's pages need is loaded before the first file is opened, so that a
  // missing one stops the export before it has written or changed anything. The same walk
  // counts the pages for the progress messages.
  int pageCount = 0;
  {
    PageFonts fonts;
    DboState fontState;
    VisitDesignPages(*design, fontState,
                     [&](const DboPage& page, const DboInstOccurrence*, const std::string&) {
                       fonts.Prepare(page, titleBlocks);
                       ++pageCount;
                     });
  }
  g_inDesignExport = 1;
  const std::string outputStem = MakeOutputStem(path);
  DboState state;
  UserInterface& ui = CurrentUserInterface();
  const bool announce = ui.WantsExportProgress();

  // Each page is written as PageToDXF writes a named file, silently since the flag is set; its
  // file stays held until the message below.
  HeldPages held;
  int pageIndex = 0;
  VisitDesignPages(
      *design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence,
          const std::string& schematicName) {
        const std::string fileName = MakePageFileName(outputStem, schematicName, page);
        if (announce) {
          ui.ShowExportProgress({++pageIndex, pageCount, schematicName, NameOf(page), fileName});
        }
        RefuseNul(fileName);
        OutputFile file = held.Open(fileName);
        WritePage(file, page, occurrence, frame, titleBlocks);
        held.Keep(std::move(file));
      });
  held.CheckReleased();

  ui.MessageBox(
      kCompleteCaption,
      NameOf(*design) + " has been output to " + outputStem + "_<SchematicName>_<PageName>.dxf", 0);
  held.CloseAll();
  g_inDesignExport = 0;
}

void PageToDXF(const DboPage* page, const DboInstOccurrence* occurrence, std::string fileName,
               int32_t /*unused*/, int32_t frame, int32_t titleBlocks) {
  if (page == nullptr) {
    throw std::invalid_argument("PageToDXF: no page to export");
  }
  const std::string pageName = NameOf(*page);

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

  RefuseNul(target);
  PageFonts().Prepare(*page, titleBlocks);
  OutputFile file(target);
  WritePage(file, *page, occurrence, frame, titleBlocks);

  // The file stays open, held exclusively, until the message is dismissed.
  if (!fileName.empty() && g_inDesignExport == 0) {
    ui.MessageBox(kCompleteCaption, pageName + "  output to  " + target, 0);
  }
  file.Close();
}

}  // namespace kalmor
