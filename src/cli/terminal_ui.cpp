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

// Appends "page 1 of 3 was completed (a.dxf)" or "pages 1 to 2 of 3 were completed (a.dxf to
// b.dxf)", given the paths as shown.
void AppendCompletedPages(std::string& out, int count, int total, std::string_view first,
                          std::string_view last) {
  if (count == 0) {
    out += "no page was completed";
    return;
  }
  out += count == 1 ? "page 1" : "pages 1 to " + std::to_string(count);
  out += " of ";
  out += std::to_string(total);
  out += count == 1 ? " was completed (" : " were completed (";
  out += first;
  if (count > 1) {
    out += " to ";
    out += last;
  }
  out += ')';
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

// The lines are rebuilt in the same strings for every page, as a design may have hundreds of
// thousands of them.
void TerminalUserInterface::TrackPage(const ExportProgress& progress) {
  std::string shown = ShownPath(progress.fileName);
  if (progress.index == 1) {
    firstShown_ = shown;
  }
  OutputInProgress& output = tracked_;
  output.path = progress.fileName;
  output.isPageFile = true;
  output.ifIncomplete.assign("kalmor: interrupted while writing ");
  output.ifIncomplete += shown;
  output.ifIncomplete += ", which was removed; ";
  AppendCompletedPages(output.ifIncomplete, progress.index - 1, progress.count, firstShown_,
                       previousShown_);
  output.ifIncomplete += '\n';
  output.ifComplete.assign("kalmor: interrupted; ");
  AppendCompletedPages(output.ifComplete, progress.index, progress.count, firstShown_, shown);
  output.ifComplete += '\n';
  BeginOutput(output);
  previousShown_ = std::move(shown);
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
