#include "cli/terminal_ui.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "cli/commands.h"
#include "cli/interruption.h"
#include "export/vel_edit_path.h"
#include "input/character_start.h"

namespace kalmor::cli {
namespace {

std::string ShownPath(std::string_view path) {
  return Shortened(path, kLongestPathShown);
}

// "page 1 of 3 was completed (a.dxf)", "pages 1 to 2 of 3 were completed (a.dxf to b.dxf)"
std::string CompletedPages(int count, int total, const std::string& first,
                           const std::string& last) {
  if (count == 0) {
    return "no page was completed";
  }
  const std::string of = " of " + std::to_string(total);
  if (count == 1) {
    return "page 1" + of + " was completed (" + ShownPath(first) + ")";
  }
  return "pages 1 to " + std::to_string(count) + of + " were completed (" + ShownPath(first) +
         " to " + ShownPath(last) + ")";
}

}  // namespace

TerminalUserInterface::TerminalUserInterface()
    : progressToTerminal_(::isatty(STDERR_FILENO) != 0) {}

TerminalUserInterface::~TerminalUserInterface() {
  ClearProgress();
}

void TerminalUserInterface::MessageBox(std::string_view caption, std::string_view text,
                                       unsigned /*style*/) {
  ClearProgress();
  std::string shown(text);
  for (const std::string& name : longNames_) {
    if (name.size() > kLongestNameShown) {
      if (const std::size_t at = shown.find(name); at != std::string::npos) {
        shown.replace(at, name.size(), Shortened(name));
      }
    }
  }
  std::cout << Escaped(caption) << ": " << Escaped(shown) << std::endl;
}

std::optional<std::string> TerminalUserInterface::SaveFileDialog(
    const SaveFileDialogSettings& settings) {
  ClearProgress();
  std::string answer;
  if (::isatty(STDIN_FILENO) != 0) {
    std::cerr << "Save as [" << settings.initialFileName << "]: " << std::flush;
    if (!std::getline(std::cin, answer) || answer.empty()) {
      std::cerr << "kalmor: no file chosen; nothing written" << std::endl;
      return std::nullopt;
    }
  } else if (!std::getline(std::cin, answer) || answer.empty()) {
    // With no one to ask, an empty answer is a mistake rather than a change of mind.
    throw UsageError("no output file: give -o FILE, or the file name on standard input");
  }
  // As a save dialog does, a name typed without an extension gets the default one.
  if (!settings.defaultExtension.empty() && CVelEditPath(answer.c_str()).GetExtension().empty()) {
    answer += "." + settings.defaultExtension;
  }
  if (input_) {
    RefuseSameFile(answer, *input_, inputPath_);
  }
  TrackPageFile(answer);
  return answer;
}

bool TerminalUserInterface::AppendToSessionLog(std::string_view /*text*/) {
  return false;
}

// Every page is announced: an interruption must know which file is being written.
bool TerminalUserInterface::WantsExportProgress() const {
  return true;
}

void TerminalUserInterface::TrackPage(const ExportProgress& progress) {
  if (progress.index == 1) {
    firstFile_ = progress.fileName;
  }
  const int before = progress.index - 1;
  BeginOutput({progress.fileName, true,
               "kalmor: interrupted while writing " + ShownPath(progress.fileName) +
                   ", which was removed; " +
                   CompletedPages(before, progress.count, firstFile_, previousFile_) + "\n",
               "kalmor: interrupted; " +
                   CompletedPages(progress.index, progress.count, firstFile_, progress.fileName) +
                   "\n"});
  previousFile_ = progress.fileName;
}

void TerminalUserInterface::ShowExportProgress(const ExportProgress& progress) {
  TrackPage(progress);
  if (!progressToTerminal_ || progress.count <= 1) {
    return;
  }
  // Carriage return and erase-to-end-of-line rewrite the same line for every page.
  std::cerr << "\rpage " << progress.index << " of " << progress.count << ": "
            << Shortened(progress.schematicName) << " / " << Shortened(progress.pageName)
            << "\x1b[K" << std::flush;
  progressShown_ = true;
}

void TerminalUserInterface::ClearProgress() {
  if (progressShown_) {
    std::cerr << "\r\x1b[K" << std::flush;
    progressShown_ = false;
  }
}

void TrackPageFile(const std::string& path) {
  BeginOutput({path, true,
               "kalmor: interrupted while writing " + ShownPath(path) + ", which was removed\n",
               "kalmor: interrupted after " + ShownPath(path) + " was completed\n"});
}

std::string Shortened(std::string_view text, std::size_t longest) {
  if (text.size() <= longest) {
    return Escaped(text);
  }
  constexpr std::string_view kCut = "...";
  const std::size_t kept = (longest - kCut.size()) / 2;
  const std::size_t headEnd = CharacterStart(text, kept);
  const std::size_t tailStart = CharacterStart(text, text.size() - kept);
  return Escaped(text.substr(0, headEnd)) + std::string(kCut) + Escaped(text.substr(tailStart));
}

std::string ListedNames(const std::vector<std::string>& names) {
  constexpr std::size_t kListed = 12;
  std::string list;
  for (std::size_t i = 0; i < names.size() && i < kListed; ++i) {
    list += (i == 0 ? "\"" : ", \"") + Shortened(names[i]) + "\"";
  }
  if (names.size() > kListed) {
    list += " and " + std::to_string(names.size() - kListed) + " more";
  }
  return list;
}

std::string DescribeUnusableName(const UnusableName& name) {
  return "schematic \"" + Shortened(name.schematicName) + "\", page \"" + Shortened(name.pageName) +
         "\": " + name.reason;
}

}  // namespace kalmor::cli
