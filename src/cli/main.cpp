// kalmor: writes the pages of a schematic design as DXF release-12 files.

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <new>

#include "cli/commands.h"
#include "cli/interruption.h"
#include "cli/process_setup.h"
#include "cli/terminal_ui.h"
#include "input/input_file.h"
#include "kalmor/errors.h"
#include "kalmor/version.h"
#include "kicad/kicad_reader.h"
#include "model/design_reader.h"
#include "render/svg_render.h"

namespace {

using namespace kalmor::cli;

constexpr const char* kDesignHelp = "JSON design document or KiCad schematic (.kicad_sch)";

int Fail(int status, const std::string& message) {
  std::cerr << "kalmor: " << kalmor::Escaped(message) << std::endl;
  return status;
}

// A file that cannot be read or written, built from the error's parts: the path may be of any
// length, and is shortened here.
std::string FileProblem(const char* failure, const std::string& path, const std::string& reason) {
  return std::string(failure) + " " + Shortened(path, kLongestPathShown) + ": " + reason;
}

int StatusOf(kalmor::ErrorKind kind) {
  switch (kind) {
    case kalmor::ErrorKind::kDocument:
      return kInvalidInput;
    case kalmor::ErrorKind::kOutputFile:
      return kCannotWrite;
    case kalmor::ErrorKind::kEnvironment:
      return kCannotRunHere;
  }
  return kInvalidInput;
}

int Run(int argc, char** argv) {
  CLI::App app{"Writes the pages of a schematic design as DXF release-12 files.", "kalmor"};
  app.set_version_flag("--version", std::string("kalmor ") + kalmor::LibraryVersion());
  app.require_subcommand(1);

  ExportOptions exportOptions;
  CLI::App* exportCommand = app.add_subcommand(
      "export", "Write every page of every schematic to PATH less .dxf, then _SCHEMATIC_PAGE.dxf");
  exportCommand->add_option("DESIGN", exportOptions.design, kDesignHelp)->required();
  exportCommand->add_option("-o,--output", exportOptions.output,
                            "Output path (default: DESIGN with the extension .dxf); an existing "
                            "folder takes the files named after DESIGN");
  exportCommand->add_flag("--no-frame", exportOptions.noFrame, "Leave out the page frame");
  exportCommand->add_flag("--no-title-blocks", exportOptions.noTitleBlocks,
                          "Leave out the title blocks");
  exportCommand->add_flag("--raw-names", exportOptions.rawNames,
                          "Use schematic and page names in file names as they are, even those "
                          "that hold separators or control characters");
  exportCommand->add_flag("--svg", exportOptions.svg, "Also write an SVG picture beside each DXF");
  exportCommand->add_flag("--html", exportOptions.html,
                          "Also write the SVG pictures and STEM.html, a gallery of every page");

  PageOptions pageOptions;
  CLI::App* pageCommand = app.add_subcommand("page", "Write one page to a DXF file");
  pageCommand->add_option("DESIGN", pageOptions.design, kDesignHelp)->required();
  pageCommand->add_option("--schematic", pageOptions.schematic, "Schematic name")->required();
  pageCommand->add_option("--page", pageOptions.page, "Page name")->required();
  pageCommand->add_option("-o,--output", pageOptions.output,
                          "Output file (default: asked for on the terminal)");
  pageCommand->add_option("--occurrence", pageOptions.occurrence,
                          "Occurrence path such as /BLK1, for its property values");
  pageCommand->add_flag("--no-frame", pageOptions.noFrame, "Leave out the page frame");
  pageCommand->add_flag("--no-title-blocks", pageOptions.noTitleBlocks,
                        "Leave out the title blocks");

  std::string checkDesign;
  CLI::App* checkCommand = app.add_subcommand(
      "check", "Load and validate a design; list its schematics and pages with object counts");
  checkCommand->add_option("DESIGN", checkDesign, kDesignHelp)->required();

  std::string convertInput;
  std::string convertOutput;
  CLI::App* convertCommand = app.add_subcommand(
      "convert", "Write a design (such as a KiCad schematic) as a JSON design document");
  convertCommand->add_option("DESIGN", convertInput, kDesignHelp)->required();
  convertCommand->add_option("-o,--output", convertOutput, "JSON file to write")->required();

  std::string renderInput;
  std::string renderOutput;
  CLI::App* renderCommand = app.add_subcommand("render", "Draw a DXF file as SVG");
  renderCommand->add_option("FILE", renderInput, "DXF file")->required();
  renderCommand->add_option("-o,--output", renderOutput, "SVG file")->required();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }

  try {
    if (*exportCommand) {
      return RunExport(exportOptions);
    }
    if (*pageCommand) {
      return RunPage(pageOptions);
    }
    if (*checkCommand) {
      return RunCheck(checkDesign);
    }
    if (*convertCommand) {
      return RunConvert(convertInput, convertOutput);
    }
    return RunRender(renderInput, renderOutput);
  } catch (const kalmor::model::DesignDocumentError& error) {
    return Fail(kInvalidInput, error.what());
  } catch (const kalmor::kicad::KiCadError& error) {
    return Fail(kInvalidInput, error.what());
  } catch (const kalmor::DxfReadError& error) {
    return Fail(kInvalidInput, error.what());
  } catch (const kalmor::InputError& error) {
    return Fail(kInvalidInput, FileProblem("cannot read", error.path(), error.reason()));
  } catch (const UsageError& error) {
    return Fail(kUsage, error.what());
  } catch (const kalmor::FileError& error) {
    return Fail(kCannotWrite, FileProblem("cannot write", error.path(), error.reason()));
  } catch (const kalmor::Error& error) {
    return Fail(StatusOf(error.kind()), error.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (!PrepareProcess()) {
    return kCannotWrite;
  }
  InstallInterruptionHandlers();
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    return Fail(kInvalidInput, "out of memory");
  } catch (const std::exception& error) {
    return Fail(kInvalidInput, error.what());
  }
}
