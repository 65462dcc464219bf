#pragma once

// The user interface of the kalmor command: message boxes become lines on standard output, the
// save dialog a prompt on the terminal, and a design export's progress a line on standard error
// that is rewritten in place.

#include <cstdio>
#include <optional>
#include <string>

#include "cli/files.h"
#include "cli/interruption.h"
#include "cli/unusable_names.h"
#include "input/shown_text.h"  // Escaped: what messages print
#include "kalmor/user_interface.h"

namespace kalmor::cli {

class TerminalUserInterface final : public UserInterface {
 public:
  TerminalUserInterface();

  // A name that messages show cut short when it is long (a design's or a page's).
  void ShortenInMessages(std::string name) { longNames_.push_back(std::move(name)); }
  // The save dialog refuses the file at `path`, the input being read.
  void RefuseInput(const FileIdentity& input, std::string path) {
    input_ = input;
    inputPath_ = std::move(path);
  }
  ~TerminalUserInterface() override;

  void MessageBox(std::string_view caption, std::string_view text, unsigned style) override;
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings& settings) override;
  bool AppendToSessionLog(std::string_view text) override;
  bool WantsExportProgress() const override;
  void ShowExportProgress(const ExportProgress& progress) override;

  // Removes the progress line, if one is showing.
  void ClearProgress();

 private:
  void TrackPage(const ExportProgress& progress);

  bool progressToTerminal_;
  bool progressShown_ = false;
  std::vector<std::string> longNames_;
  std::optional<FileIdentity> input_;
  std::string inputPath_;
  // Of a design export, for the interruption report: the first page file and the one before
  // the page being written, as shown, and the report's lines.
  std::string firstShown_;
  std::string previousShown_;
  OutputInProgress tracked_;
};

// Tells the interruption handler that the single page file at `path` is being written.
void TrackPageFile(const std::string& path);

// How much of a name, and of a path, messages show at most.
inline constexpr std::size_t kLongestNameShown = 64;
inline constexpr std::size_t kLongestPathShown = 256;

// `text` cut in the middle when it is longer than `longest` bytes: its beginning, "...", and
// its end, at character boundaries; escaped. Messages never grow with the names of a design, and
// a NUL in a name cannot cut a message short.
std::string Shortened(std::string_view text, std::size_t longest = kLongestNameShown);

// At most a dozen names, shortened and quoted, separated by commas; "and N more" says how many
// were left out.
std::string ListedNames(const std::vector<std::string>& names);

// schematic "S", page "P": the page name holds a '/'
std::string DescribeUnusableName(const UnusableName& name);

}  // namespace kalmor::cli
