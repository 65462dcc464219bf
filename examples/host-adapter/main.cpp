// host_adapter OUTDIR: exports the application's demo board through kalmor, first every page of
// the design (OUTDIR/demo_<schematic>_<page>.dxf), then its first page once more on its own
// (OUTDIR/power.dxf). Exit status: 0 done, 1 the design cannot be exported, 3 a file cannot be
// written, 4 no usable font.

#include <kalmor/errors.h>
#include <kalmor/export.h>
#include <kalmor/user_interface.h>
#include <kalmor/version.h>

#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "board_adapter.h"
#include "board_data.h"

namespace {

// The application's way of talking to its user, here a console: kalmor asks through this.
class ConsoleUserInterface final : public kalmor::UserInterface {
 public:
  void MessageBox(std::string_view caption, std::string_view text, unsigned) override {
    std::cout << caption << ": " << text << "\n";
  }
  std::optional<std::string> SaveFileDialog(const kalmor::SaveFileDialogSettings&) override {
    return std::nullopt;  // this application always names its files
  }
  bool AppendToSessionLog(std::string_view text) override {
    std::clog << "log: " << text << "\n";
    return true;
  }
};

int StatusOf(kalmor::ErrorKind kind) {
  switch (kind) {
    case kalmor::ErrorKind::kDocument:
      return 1;
    case kalmor::ErrorKind::kOutputFile:
      return 3;
    case kalmor::ErrorKind::kEnvironment:
      return 4;
  }
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: host_adapter OUTDIR\n";
    return 2;
  }
  const std::string folder = argv[1];
  // A library of another major version would not have loaded; a newer minor one is welcome.
  std::cout << "kalmor " << kalmor::LibraryVersion() << " (built against " << KALMOR_VERSION_MAJOR
            << "." << KALMOR_VERSION_MINOR << ")\n";

  ConsoleUserInterface ui;
  const kalmor::ScopedUserInterface installed(ui);
  try {
    const Board board = MakeDemoBoard();
    const BoardAdapter design(board);
    kalmor::DesignToDXF(&design, folder + "/demo.dxf", 0, 1, 1);
    kalmor::PageToDXF(&design.Page(0), nullptr, folder + "/power.dxf", 0, 1, 1);
  } catch (const kalmor::FileError& error) {
    std::cerr << "host_adapter: " << error.what() << " (errno " << error.errorNumber() << ")\n";
    return StatusOf(error.kind());
  } catch (const kalmor::Error& error) {
    std::cerr << "host_adapter: " << error.what() << "\n";
    return StatusOf(error.kind());
  }
  return 0;
}
