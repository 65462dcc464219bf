#pragma once

// The subcommands of kalmor. Each returns the exit status for a normal end; problems with the
// inputs or the outputs leave as exceptions that main() turns into a message and a status.

#include <stdexcept>
#include <string>

namespace kalmor::cli {

// The README's table of exit statuses; the library's errors map to them by kind.
enum ExitStatus : int {
  kDone = 0,
  kInvalidInput = 1,  // an invalid design, KiCad schematic or DXF file, or refused names
                      // (DocumentError)
  kUsage = 2,
  kCannotWrite = 3,    // an output file (FileError)
  kCannotRunHere = 4,  // the environment lacks something, such as a font (EnvironmentError)
};

// A command line that parses but asks for something the design does not have.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ExportOptions {
  std::string design;
  std::string output;  // empty: beside the design
  bool noFrame = false;
  bool noTitleBlocks = false;
  bool rawNames = false;
  bool svg = false;
  bool html = false;  // also the SVGs and the gallery STEM.html
};

struct PageOptions {
  std::string design;
  std::string schematic;
  std::string page;
  std::string output;      // empty: ask
  std::string occurrence;  // empty: none
  bool noFrame = false;
  bool noTitleBlocks = false;
};

int RunExport(const ExportOptions& options);
int RunPage(const PageOptions& options);
int RunCheck(const std::string& design);
int RunConvert(const std::string& design, const std::string& output);
int RunRender(const std::string& input, const std::string& output);

}  // namespace kalmor::cli
