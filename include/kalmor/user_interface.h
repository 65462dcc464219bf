#pragma once

// The user interface of the process the export runs in: message boxes, the save dialog and the
// session log. The library never touches a terminal or a window itself; the host (or the
// kalmor command) installs an implementation.

#include <optional>
#include <string>
#include <string_view>

#include "kalmor/api.h"

namespace kalmor {

struct SaveFileDialogSettings {
  std::string defaultExtension;  // without the dot
  std::string initialFileName;
  std::string filter;  // description and pattern pairs separated by '|', as given
  unsigned flags = 0;
};

// One page of a design export, announced before it is written.
struct ExportProgress {
  int index = 0;  // from 1
  int count = 0;  // pages the whole export writes
  std::string schematicName;
  std::string pageName;
  std::string fileName;
};

class KALMOR_API UserInterface {
 public:
  virtual ~UserInterface() = default;
  // A modal message with an OK button (style 0).
  virtual void MessageBox(std::string_view caption, std::string_view text, unsigned style) = 0;
  // The chosen full path, or nothing when the user cancelled.
  virtual std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings& settings) = 0;
  // Appends to the application's session log; false when no log is open.
  virtual bool AppendToSessionLog(std::string_view text) = 0;

  // Whether a design export should count its pages first and announce each one; counting walks
  // the design once more, so interfaces that show nothing say no.
  virtual bool WantsExportProgress() const { return false; }
  virtual void ShowExportProgress(const ExportProgress& /*progress*/) {}
};

// A user interface that shows nothing: messages are dropped, dialogs are cancelled.
class KALMOR_API SilentUserInterface final : public UserInterface {
 public:
  void MessageBox(std::string_view, std::string_view, unsigned) override {}
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings&) override {
    return std::nullopt;
  }
  bool AppendToSessionLog(std::string_view) override { return false; }
};

// The process-wide user interface (a silent one until something is installed).
KALMOR_API UserInterface& CurrentUserInterface();

// Installs `ui` for the lifetime of this object, restoring the previous one afterwards.
class KALMOR_API ScopedUserInterface {
 public:
  explicit ScopedUserInterface(UserInterface& ui);
  ~ScopedUserInterface();
  ScopedUserInterface(const ScopedUserInterface&) = delete;
  ScopedUserInterface& operator=(const ScopedUserInterface&) = delete;

 private:
  UserInterface* previous_;
};

}  // namespace kalmor
