#pragma once

// The user interface of the kalmor command: message boxes become lines on standard output, the
// save dialog a prompt on the terminal, and a design export's progress a line on standard error
// that is rewritten in place.

#include <cstdio>
#include <string>
#include <vector>

#include "cli/unusable_names.h"
#include "kalmor/user_interface.h"

namespace kalmor::cli {

class TerminalUserInterface final : public UserInterface {
 public:
  // `recordFiles`: keep the name of every page file a design export announces.
  explicit TerminalUserInterface(bool recordFiles = false);
  ~TerminalUserInterface() override;

  void MessageBox(std::string_view caption, std::string_view text, unsigned style) override;
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings& settings) override;
  bool AppendToSessionLog(std::string_view text) override;
  bool WantsExportProgress() const override;
  void ShowExportProgress(const ExportProgress& progress) override;

  // Removes the progress line, if one is showing.
  void ClearProgress();
  const std::vector<std::string>& AnnouncedFiles() const { return announcedFiles_; }

 private:
  bool progressToTerminal_;
  bool recordFiles_;
  bool progressShown_ = false;
  std::vector<std::string> announcedFiles_;
};

// `text` with control characters written as escapes, so that names from a
// design cannot move the terminal's cursor.
std::string Printable(std::string_view text);

// schematic "S", page "P": the page name holds a '/'
std::string DescribeUnusableName(const UnusableName& name);

}  // namespace kalmor::cli
