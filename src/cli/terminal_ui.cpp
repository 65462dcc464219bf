#include "cli/terminal_ui.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace kalmor::cli {
namespace {

// Whether the path's last component has an extension; '/' and '\' both end a folder, as in the
// paths the library takes apart.
bool HasExtension(std::string_view path) {
  const std::size_t folderEnd = path.find_last_of("/\\");
  const std::string_view name =
      folderEnd == std::string_view::npos ? path : path.substr(folderEnd + 1);
  return name.find('.') != std::string_view::npos;
}

}  // namespace

TerminalUserInterface::TerminalUserInterface(bool recordFiles)
    : progressToTerminal_(::isatty(STDERR_FILENO) != 0), recordFiles_(recordFiles) {}

TerminalUserInterface::~TerminalUserInterface() {
  ClearProgress();
}

void TerminalUserInterface::MessageBox(std::string_view caption, std::string_view text,
                                       unsigned /*style*/) {
  ClearProgress();
  std::cout << Printable(caption) << ": " << Printable(text) << std::endl;
}

std::optional<std::string> TerminalUserInterface::SaveFileDialog(
    const SaveFileDialogSettings& settings) {
  ClearProgress();
  std::string answer;
  if (::isatty(STDIN_FILENO) != 0) {
    std::cerr << "Save as [" << settings.initialFileName << "]: " << std::flush;
    if (!std::getline(std::cin, answer)) {
      answer.clear();
    }
  }
  if (answer.empty()) {
    std::cerr << "kalmor: no file chosen; nothing written" << std::endl;
    return std::nullopt;
  }
  // As a save dialog does, a name typed without an extension gets the default one.
  if (!settings.defaultExtension.empty() && !HasExtension(answer)) {
    answer += "." + settings.defaultExtension;
  }
  return answer;
}

bool TerminalUserInterface::AppendToSessionLog(std::string_view /*text*/) {
  return false;
}

bool TerminalUserInterface::WantsExportProgress() const {
  return progressToTerminal_ || recordFiles_;
}

void TerminalUserInterface::ShowExportProgress(const ExportProgress& progress) {
  if (recordFiles_) {
    announcedFiles_.push_back(progress.fileName);
  }
  if (!progressToTerminal_ || progress.count <= 1) {
    return;
  }
  // Carriage return and erase-to-end-of-line rewrite the same line for every page.
  std::cerr << "\rpage " << progress.index << " of " << progress.count << ": "
            << Printable(progress.schematicName) << " / " << Printable(progress.pageName)
            << "\x1b[K" << std::flush;
  progressShown_ = true;
}

void TerminalUserInterface::ClearProgress() {
  if (progressShown_) {
    std::cerr << "\r\x1b[K" << std::flush;
    progressShown_ = false;
  }
}

std::string Printable(std::string_view text) {
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      printable += escape;
    } else {
      printable += c;
    }
  }
  return printable;
}

std::string DescribeUnusableName(const UnusableName& name) {
  return "schematic \"" + name.schematicName + "\", page \"" + name.pageName + "\": " + name.reason;
}

}  // namespace kalmor::cli
