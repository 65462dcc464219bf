// The export and the command against what the world does to them: every integer of a document at
// its extremes, faults injected into its sinks and fonts, odd outputs, a full disk, signals, and
// the command's policies on names, inputs and standard descriptors.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/run_kalmor.h"
#include "dxf/byte_sink.h"
#include "dxf/output_file.h"
#include "dxf/skeleton.h"
#include "hardening/export_in_memory.h"
#include "kalmor/export.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/tape_reader.h"
#include "page/page_walk.h"
#include "render/dxf_reader.h"
#include "support/page_fixture.h"
#include "support/paths.h"
#include "support/recording_ui.h"
#include "support/thrown.h"
#include "text/font_metrics.h"

namespace kalmor::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Every integer field of a design document, set to the most negative and the most positive
// 32-bit value in turn: the document is either refused with an error that names the field, or
// read and exported whole with finite numbers. Built with the sanitizers, an export that
// overflows anywhere stops this test.

using nlohmann::json;

constexpr int64_t kMin = std::numeric_limits<int32_t>::min();
constexpr int64_t kMax = std::numeric_limits<int32_t>::max();
constexpr int64_t kEdge = model::detail::kCoordinateLimit;

// The last member name on the way to a value: "rect" for /a/rect/2, "points" for
// /a/points/3/1.
std::string FieldOf(const std::string& pointer) {
  std::string field;
  std::size_t start = 1;
  while (start <= pointer.size()) {
    const std::size_t end = std::min(pointer.find('/', start), pointer.size());
    const std::string step = pointer.substr(start, end - start);
    if (step.find_first_not_of("0123456789") != std::string::npos) {
      field = step;
    }
    start = end + 1;
  }
  return field;
}

// Points, boxes and locations: places on the page.
bool IsPlace(const std::string& pointer) {
  static const std::set<std::string> kPlaces = {"start", "end",    "entry",  "location", "rect",
                                                "bbox",  "extent", "points", "junctions"};
  return kPlaces.count(FieldOf(pointer)) != 0;
}

// What the reader must refuse at `value`: places and sizes on the page (the page arithmetic
// adds them up in 32 bits), bytes of the font record, zone counts (their labels run out of
// digits after 99), a pin-to-pin value that is not positive and any other format version.
// Rotations, display types, kinds, type codes, line widths, label widths and the font's numbers are
// taken at any value.
bool MustRefuse(const std::string& pointer, int64_t value) {
  static const std::regex kPageSize(R"(/schematics/\d+/pages/\d+/(width|height))");
  static const std::set<std::string> kBytes = {"charset", "out_precision", "clip_precision",
                                               "quality", "pitch_and_family"};
  const std::string field = FieldOf(pointer);
  if (field == "pin_to_pin") {
    return value < 1;
  }
  return std::regex_match(pointer, kPageSize) || IsPlace(pointer) || kBytes.count(field) != 0 ||
         field == "kalmor_design" || field == "horizontal_count" || field == "vertical_count";
}

TEST(IntegerExtremesTest, EveryFieldIsRefusedByNameOrExportedWhole) {
  const json base =
      json::parse(ReadFileBytes(SourceDir() / "tests/hardening/data/every_field.json"));
  const json flat = base.flatten();
  std::vector<std::string> pointers;
  for (const auto& [pointer, value] : flat.items()) {
    if (value.is_number_integer()) {
      pointers.push_back(pointer);
    }
  }
  ASSERT_GT(pointers.size(), 150u);  // the document sets every integer field somewhere

  for (const std::string& pointer : pointers) {
    for (const int64_t value : {kMin, kMax}) {
      SCOPED_TRACE(pointer + " = " + std::to_string(value));
      json document = flat;
      document[pointer] = value;
      const std::string text = document.unflatten().dump();
      std::unique_ptr<model::Design> design;
      try {
        design = model::ReadDesignDocument(text, "every.json");
      } catch (const model::DesignDocumentError& error) {
        EXPECT_TRUE(MustRefuse(pointer, value)) << error.what();
        EXPECT_THAT(error.what(), ::testing::HasSubstr(pointer + ": "));
        continue;
      }
      EXPECT_FALSE(MustRefuse(pointer, value)) << "read without complaint";
      const std::vector<std::string> pages = ExportPagesInMemory(*design);
      ASSERT_EQ(pages.size(), 2u);
      for (const std::string& page : pages) {
        EXPECT_EQ(PageProblem(page), "");
      }
    }
  }
}

// Every integer field given a real, or an integer beyond 64 bits: the complaint says which, and
// quotes the number as the document writes it.
TEST(IntegerExtremesTest, RealsAndHugeIntegersInIntegerFieldsAreNamedAsWritten) {
  const json flat =
      json::parse(ReadFileBytes(SourceDir() / "tests/hardening/data/every_field.json")).flatten();
  constexpr int64_t kMarker = 987654321;  // stands where the number goes, once
  const struct {
    const char* written;
    const char* said;
  } numbers[] = {
      {"1.0", "got 1.0 (a real number)"},
      {"-25e-1", "got -25e-1 (a real number)"},
      {"18446744073709551616", "got 18446744073709551616"},
  };
  for (const auto& [pointer, value] : flat.items()) {
    if (!value.is_number_integer()) {
      continue;
    }
    json document = flat;
    document[pointer] = kMarker;
    const std::string text = document.unflatten().dump();
    const std::size_t at = text.find(std::to_string(kMarker));
    for (const auto& number : numbers) {
      SCOPED_TRACE(pointer + " = " + number.written);
      std::string changed = text;
      changed.replace(at, std::to_string(kMarker).size(), number.written);
      const std::string message = ThrownMessage<model::DesignDocumentError>(
          [&] { model::ReadDesignDocument(changed, "every.json"); });
      EXPECT_THAT(message, ::testing::HasSubstr(pointer + ": expected "));
      EXPECT_TRUE(message.ends_with(number.said)) << message;
    }
  }
}

// Every place of the document at the edge of its range at once, with the scale factor at its
// own edge: the sums of the page arithmetic stay inside 32 bits (the sanitizer build checks).
TEST(IntegerExtremesTest, PlacesAtTheEdgesOfTheirRangeExportWithoutOverflow) {
  const json flat =
      json::parse(ReadFileBytes(SourceDir() / "tests/hardening/data/every_field.json")).flatten();
  // Signs by the place's last index: all one way, or alternating so that boxes span 2 edges.
  const std::vector<std::function<int64_t(int)>> patterns = {
      [](int) { return kEdge; }, [](int) { return -kEdge; },
      [](int i) { return i % 2 == 0 ? -kEdge : kEdge; },
      [](int i) { return i % 2 == 0 ? kEdge : -kEdge; }};
  for (std::size_t p = 0; p < patterns.size(); ++p) {
    for (const double factor :
         {model::detail::kScaleFactorLimit, -model::detail::kScaleFactorLimit}) {
      SCOPED_TRACE("pattern " + std::to_string(p) + ", factor " + std::to_string(factor));
      json document = flat;
      for (const auto& [pointer, value] : flat.items()) {
        if (value.is_number_integer() && IsPlace(pointer)) {
          document[pointer] = patterns[p](std::stoi(pointer.substr(pointer.rfind('/') + 1)));
        }
      }
      const std::string page = "/schematics/1/pages/0/";
      document[page + "height"] = patterns[p](0) * 10;  // pin_to_pin 100: tenths are tens
      document[page + "width"] = patterns[p](1) * 10;
      document[page + "pin_to_pin_scale_factor"] = factor;
      const auto design = model::ReadDesignDocument(document.unflatten().dump(), "edges.json");
      for (const std::string& written : ExportPagesInMemory(*design)) {
        EXPECT_EQ(PageProblem(written), "");
      }
    }
  }
}

// The scale factor at the ends of its range and near zero, and a symbol whose vectors reach
// beyond the coordinates but which has a box, are read; beyond them, tests/model/data/
// bad_documents.json refuses them.
TEST(IntegerExtremesTest, ScaleFactorsInRangeAndBoxedSymbolsBeyondTheCoordinatesAreRead) {
  for (const std::string factor : {"32", "-32", "0", "1e-300"}) {
    EXPECT_NO_THROW(model::ReadDesignDocument(R"({"kalmor_design": 1, "name": "D", "schematics": [
        {"name": "S", "pages": [{"name": "P", "pin_to_pin_scale_factor": )" +
                                                  factor + "}]}]}",
                                              "factor.json"))
        << factor;
  }
  EXPECT_NO_THROW(model::ReadDesignDocument(R"({"kalmor_design": 1, "name": "D", "schematics": [],
      "symbols": {"S": {"bbox": [0, 0, 10, 10], "vectors": [{"type": "vector",
        "location": [16777216, 0], "members": [
          {"type": "polyline", "points": [[0, 0], [16777216, 0]]}]}]}}})",
                                            "s.json"));
}

// Faults injected where an export meets the world outside it: a sink that fails after any number
// of bytes, and fonts that fail in the middle of a page. Each failure leaves the export by its own
// error with nothing reported as done, and the next export writes the bytes of one that never met
// a fault: no state is left half changed.

std::unique_ptr<model::Design> Board() {
  return model::LoadDesignDocument((SourceDir() / "examples/board.json").string());
}

// Hands on `budget` bytes at most, in windows of a few dozen bytes so that it is asked for room at
// nearly every record; then fails as a full disk does.
class FailingSink final : public ByteSink {
 public:
  explicit FailingSink(std::size_t budget) : budget_(budget) { MakeRoom(0); }
  std::string bytes;  // what was handed on before the failure

 private:
  void MakeRoom(std::size_t size) override {
    const std::string_view pending = Pending();
    bytes.append(pending.substr(0, std::min(pending.size(), budget_)));
    if (pending.size() > budget_) {
      throw FileError("sink", ENOSPC);
    }
    budget_ -= pending.size();
    window_.assign(std::max<std::size_t>(size, 48), '\0');
    OpenWindow(window_.data(), window_.size());
  }
  std::size_t budget_;
  std::vector<char> window_;
};

TEST(FaultInjection, ASinkFailingAfterAnyNumberOfBytesStopsThePageWithItsError) {
  const auto design = Board();
  const std::vector<std::string> pages = ExportPagesInMemory(*design);
  std::size_t failures = 0;
  DboState state;
  int index = 0;
  VisitDesignPages(
      *design, state,
      [&](const DboPage& page, const DboInstOccurrence* occurrence, const std::string&) {
        const std::string& whole = pages.at(index++);
        for (std::size_t budget = 0; budget < whole.size(); budget += whole.size() / 97 + 1) {
          FailingSink sink(budget);
          DboState status;
          EXPECT_THROW(
              {
                DxfWriteHeader(sink);
                DxfWriteEntitiesOpen(sink);
                PageTranslator(status, page, occurrence, 1, 1, sink, {});
                DxfWriteEnd(sink);
                sink.Write(std::string(whole.size(), '\0'));  // past what any page could fit
              },
              FileError)
              << "budget " << budget;
          EXPECT_TRUE(whole.starts_with(sink.bytes)) << "budget " << budget;
          ++failures;
        }
      });
  EXPECT_GT(failures, 250u);
  EXPECT_EQ(ExportPagesInMemory(*design), pages) << "a failed page changed the next export";
}

// The fonts of the running system, until the measurement numbered `failAt` (from 0) fails as a
// font file that can no longer be read does.
class FailingFonts final : public FontMetricsSource {
 public:
  explicit FailingFonts(long failAt) : real_(CurrentFontMetrics()), left_(failAt) {}
  long calls = 0;

  bool GetTextMetrics(const LogFont& font, TextMetrics& metrics) override {
    Count();
    return real_.GetTextMetrics(font, metrics);
  }
  TextExtent GetTextExtent(const LogFont& font, std::string_view line) override {
    Count();
    return real_.GetTextExtent(font, line);
  }
  void PrepareFont(const LogFont& font) override { real_.PrepareFont(font); }

 private:
  void Count() {
    ++calls;
    if (left_-- == 0) {
      throw EnvironmentError("the font file went away");
    }
  }
  FontMetricsSource& real_;
  long left_;
};

TEST(FaultInjection, FontsFailingInTheMiddleOfAPageStopTheExportWithTheirError) {
  const auto design = Board();
  const TempDir temp;
  RecordingUserInterface ui;
  const ScopedUserInterface scopedUi(ui);
  const auto exportAll = [&] { DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1); };

  long measurements = 0;
  {
    FailingFonts counting(-1);
    const ScopedFontMetrics scoped(counting);
    exportAll();
    measurements = counting.calls;
  }
  ASSERT_GT(measurements, 20) << "the pages measure too few texts to fail among them";
  const std::vector<std::string> written = FileNames(temp.path());
  std::vector<std::string> whole;
  for (const std::string& name : written) {
    whole.push_back(ReadFileBytes(temp / name));
  }

  for (long failAt = 0; failAt < measurements; failAt += measurements / 23 + 1) {
    SCOPED_TRACE(failAt);
    ui.messages.clear();
    {
      FailingFonts failing(failAt);
      const ScopedFontMetrics scoped(failing);
      EXPECT_THROW(exportAll(), EnvironmentError);
    }
    EXPECT_TRUE(ui.messages.empty()) << "a failed export reported completion";
    g_inDesignExport = 0;  // an export ended by an error leaves it set
    exportAll();
    for (std::size_t i = 0; i < written.size(); ++i) {
      EXPECT_TRUE(ReadFileBytes(temp / written[i]) == whole[i]) << written[i];
    }
  }
}

// What sits at an output path: links are not followed, named pipes and sockets are refused,
// devices are written. A design export, which holds every page file until it reports completion,
// still completes when the process runs short of descriptors.

TEST(OutputTargetTest, LinksPipesAndSocketsAreRefusedDevicesWritten) {
  const TempDir temp;
  std::ofstream(temp / "kept") << "kept";
  fs::create_symlink(temp / "victim", temp / "dangling");
  fs::create_symlink(temp / "kept", temp / "link");
  mkfifo((temp / "fifo").c_str(), 0600);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (temp / "socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

  const std::string link = "it is a symbolic link, and links are not followed";
  const std::pair<std::string, std::string> cases[] = {
      {(temp / "dangling").string(), link},
      {(temp / "link").string(), link},
      {(temp / "fifo").string(), "it is a named pipe, not a file"},
      {(temp / "socket").string(), "it is a socket, not a file"},
      {"/dev/null", ""},
  };
  for (const auto& [path, reason] : cases) {
    try {
      OutputFile file(path);
      file.Write("page");
      file.Close();
      EXPECT_EQ(reason, "") << path << " was written";
    } catch (const FileError& error) {
      EXPECT_EQ(error.reason(), reason) << path;
    }
  }
  close(listener);
  EXPECT_FALSE(fs::exists(temp / "victim"));
  EXPECT_EQ(ReadFileBytes(temp / "kept"), "kept");
}

TEST(OutputTargetTest, ANulInThePathKeepsTheReasonInTheMessage) {
  const FileError error(std::string("a\0b.dxf", 7), "the name holds a NUL character");
  EXPECT_EQ(std::string(error.what()), "cannot write a\\x00b.dxf: the name holds a NUL character");
}

// Page files are held open until the export completes, but never so many that the process runs
// out of descriptors: near the limit the held ones are let go, and so when the host has taken
// the spare ones.
TEST(HeldPagesTest, MorePagesThanDescriptorsAreAllWritten) {
  std::vector<std::string> pages = {"S"};
  for (int i = 0; i < 40; ++i) {
    pages.push_back("P" + std::to_string(i));
  }
  const auto design = model::ReadDesignDocument(PagesDocument({pages}), "pages.json");
  const std::vector<std::string> expected = ExportPagesInMemory(*design);
  std::set<int> inUse;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    inUse.insert(std::stoi(entry.path().filename().string()));
  }
  // The limit under which `free` descriptors are not open (the listing's own is closed again).
  const auto limitLeaving = [&](int free) {
    int limit = 0;
    for (int left = 0; left < free; ++limit) {
      left += inUse.count(limit) == 0 ? 1 : 0;
    }
    return limit;
  };

  // Before each page the host counts the descriptors it could still open. A greedy one takes
  // them all at page 20, and gives them back at page 21.
  class GreedyHost final : public UserInterface {
   public:
    void MessageBox(std::string_view, std::string_view, unsigned) override {}
    std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings&) override {
      return std::nullopt;
    }
    bool AppendToSessionLog(std::string_view) override { return false; }
    bool WantsExportProgress() const override { return true; }
    void ShowExportProgress(const ExportProgress& shown) override {
      for (const int fd : taken) {
        close(fd);
      }
      taken.clear();
      taken.reserve(4096);
      for (int fd = open("/dev/null", O_RDONLY | O_CLOEXEC); fd >= 0;
           fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) {
        taken.push_back(fd);
      }
      fewestSpare = std::min(fewestSpare, static_cast<int>(taken.size()));
      if (!greedy || shown.index != 20) {
        for (const int fd : taken) {
          close(fd);
        }
        taken.clear();
      }
    }
    bool greedy = false;
    std::vector<int> taken;
    int fewestSpare = std::numeric_limits<int>::max();
  };

  struct Case {
    int free;     // descriptors below the limit when the export starts
    bool greedy;  // whether the host takes the spare ones in the middle
  };
  for (const Case& c : {Case{8, false}, Case{100, false}, Case{100, true}}) {
#ifdef __SANITIZE_ADDRESS__
    // The sanitizers open descriptors of their own to check a call, and find none.
    if (c.greedy) {
      continue;
    }
#endif
    const TempDir temp;
    GreedyHost host;
    host.greedy = c.greedy;
    const ScopedUserInterface scopedUi(host);
    rlimit previous{};
    getrlimit(RLIMIT_NOFILE, &previous);
    rlimit few = previous;
    few.rlim_cur = static_cast<rlim_t>(limitLeaving(c.free));
    setrlimit(RLIMIT_NOFILE, &few);
    DesignToDXF(design.get(), (temp / "b.dxf").string(), 0, 1, 1);
    setrlimit(RLIMIT_NOFILE, &previous);
    EXPECT_TRUE(host.taken.empty()) << c.free;
    EXPECT_GE(host.fewestSpare, std::min(c.free, 64)) << c.free << ' ' << c.greedy;
    for (int i = 0; i < 40; ++i) {
      EXPECT_EQ(ReadFileBytes(temp / ("b_S_P" + std::to_string(i) + ".dxf")), expected[i])
          << c.free << ' ' << c.greedy << ' ' << i;
    }
  }
}

// A disk that fills up in the middle of a page: the export stops with an error that names the
// file, and the part of the page written before the failure stays on disk, as it was written.
// The file size limit of the process stands in for the full disk: a write beyond it fails
// (EFBIG) as a write to a full disk does (ENOSPC), after the bytes that still fit.

constexpr rlim_t kDiskBytes = 100000;

// Files written by this process and by the processes it starts stop growing at `bytes` while
// the object lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &previous_);
    rlimit limit = previous_;
    limit.rlim_cur = bytes;
    // Beyond the limit the system would stop the process; ignored, the write fails instead.
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &previous_);
    std::signal(SIGXFSZ, previousHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit previous_{};
  void (*previousHandler_)(int) = SIG_DFL;
};

// Three pages; the second, a polygon of many points, is larger than the disk has room for.
std::string ThreePages() {
  std::string points;
  for (int i = 0; i < 5000; ++i) {
    points += (i == 0 ? "[" : ", [") + std::to_string(i) + ", " + std::to_string(i % 7) + "]";
  }
  return R"({"kalmor_design": 1, "name": "BOARD", "schematics": [{"name": "S", "pages": [
      {"name": "P1", "wires": [{"start": [0, 0], "end": [100, 0]}]},
      {"name": "P2", "graphics": [{"type": "polyline", "points": [)" +
         points + R"(]}]},
      {"name": "P3"}]}]})";
}

TEST(WriteFailureTest, ExportExitsThreeNamingTheFileAndLeavesWhatWasWritten) {
  const std::vector<std::string> whole =
      ExportPagesInMemory(*model::ReadDesignDocument(ThreePages(), "board.json"));
  ASSERT_GT(whole.at(1).size(), kDiskBytes);
  const TempDir temp;
  std::ofstream(temp / "board.json") << ThreePages();
  const fs::path out = temp / "out";
  fs::create_directory(out);
  CommandResult result;
  {
    const FileSizeLimit disk(kDiskBytes);
    // The command, not its parent, turns the signal of the limit into a write error.
    result = RunKalmor({"export", (temp / "board.json").string(), "-o", out.string()},
                       {.input = "", .closedOutput = false, .defaultSignals = true});
  }
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.err,
            "kalmor: cannot write " + (out / "board_S_P2.dxf").string() + ": File too large\n");
  // The first page is whole, the second is cut where the disk was full, the third was never
  // begun.
  EXPECT_THAT(FileNames(out), ElementsAre("board_S_P1.dxf", "board_S_P2.dxf"));
  EXPECT_EQ(ReadFileBytes(out / "board_S_P1.dxf"), whole[0]);
  EXPECT_EQ(ReadFileBytes(out / "board_S_P2.dxf"), whole[1].substr(0, kDiskBytes));
}

// An export interrupted in the middle of a page: the cut page file is removed, the pages
// completed before it stay and are named, and the status tells which signal ended it.

// P2 and P3 are polygons of a million points, some 65 MB of DXF each: long enough to be caught
// writing.
std::string FourPagesWithTwoLongOnes() {
  std::string points;
  points.reserve(20'000'000);
  for (int i = 0; i < 1'000'000; ++i) {
    points +=
        (i == 0 ? "[" : ", [") + std::to_string(i % 5000) + ", " + std::to_string(i % 7) + "]";
  }
  const std::string polygon = R"({"type": "polyline", "points": [)" + points + "]}";
  return R"({"kalmor_design": 1, "name": "B", "schematics": [{"name": "S", "pages": [
      {"name": "P1"}, {"name": "P2", "graphics": [)" +
         polygon + R"(]}, {"name": "P3", "graphics": [)" + polygon + R"(]}, {"name": "P4"}]}]})";
}

bool EndsComplete(const fs::path& path) {
  const std::string bytes = ReadFileBytes(path);
  return bytes.size() >= kDxfFileEnd.size() &&
         bytes.compare(bytes.size() - kDxfFileEnd.size(), kDxfFileEnd.size(), kDxfFileEnd) == 0;
}

TEST(InterruptionTest, TheCutPageIsRemovedAndTheCompletedOnesNamed) {
  const TempDir temp;
  std::ofstream(temp / "b.json") << FourPagesWithTwoLongOnes();
  const fs::path out = temp / "out";
  const auto file = [&](int page) { return out / ("b_S_P" + std::to_string(page) + ".dxf"); };
  struct Case {
    int signal;
    int status;
    int cut;  // the page being written when the signal comes
    std::string completed;
  };
  const Case cases[] = {
      {SIGINT, 130, 2, "page 1 of 4 was completed (" + file(1).string() + ")"},
      {SIGTERM, 143, 3,
       "pages 1 to 2 of 4 were completed (" + file(1).string() + " to " + file(2).string() + ")"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.status);
    fs::remove_all(out);
    fs::create_directory(out);
    KalmorProcess export_({"export", (temp / "b.json").string(), "-o", out.string()},
                          {.input = "", .closedOutput = false, .defaultSignals = true});
    // Stopped once the long page is begun, so that it is caught before its end.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    std::error_code error;
    while (fs::file_size(file(c.cut), error) == 0 || error) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the long page never began";
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kill(export_.pid(), SIGSTOP);
    if (EndsComplete(file(c.cut))) {
      GTEST_SKIP() << "the long page was written before it could be interrupted";
    }
    kill(export_.pid(), c.signal);
    kill(export_.pid(), SIGCONT);
    const CommandResult result = export_.Wait();

    EXPECT_EQ(result.status, c.status);
    EXPECT_EQ(result.err, "kalmor: interrupted while writing " + file(c.cut).string() +
                              ", which was removed; " + c.completed + "\n");
    for (int page = 1; page <= 4; ++page) {
      if (page < c.cut) {
        EXPECT_TRUE(EndsComplete(file(page))) << page;
      } else {
        EXPECT_FALSE(fs::exists(file(page))) << page;
      }
    }
  }
}

// The command's policies around its files: the page file names it refuses before writing
// anything, outputs that are inputs, inputs that are not files, a closed standard output, a file
// name given on standard input, and messages that stay short whatever the names in a design.

using Args = std::vector<std::string>;

using CommandPoliciesTest = CommandTest;

TEST_F(CommandPoliciesTest, FileNamesAreRefusedBeforeAnythingIsWritten) {
  const std::string longName(250, 'n');
  struct Case {
    std::vector<Args> schematics;
    Args options;
    std::string message;  // one of the lines on standard error
  };
  const std::vector<Case> cases = {
      {{{"A_B", "C"}, {"A", "B_C"}},
       {},
       "schematic \"A\", page \"B_C\": would be written to the same file as schematic \"A_B\", "
       "page \"C\", "},
      {{{"A_B", "C"}, {"A", "B_C"}}, {"--raw-names"}, "would be written to the same file as"},
      {{{"S", "P1", longName}},
       {},
       "schematic \"S\", page \"" + std::string(30, 'n') + "..." + std::string(30, 'n') +
           "\": its file name would be 258 bytes long"},
      {{{"S", "P1", "sub/" + longName + longName}},
       {"--raw-names"},
       "its file name would be 504 bytes long, and the file system takes 255"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    fs::remove_all(temp / "out");
    fs::create_directories(temp / "out" / "o_S_sub");
    Args arguments = {"export", Write("o.json", PagesDocument(c.schematics)), "-o", In("out")};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(c.message));
    EXPECT_THAT(result.err, HasSubstr("kalmor: nothing written"));
    EXPECT_EQ(std::distance(fs::directory_iterator(temp / "out"), {}), 1) << "a file was written";
  }
}

TEST_F(CommandPoliciesTest, AnOutputThatIsAnInputIsRefused) {
  const Args page = {"page", In("d.json"), "--schematic", "S", "--page", "P", "-o"};
  const std::pair<std::string, Args> cases[] = {
      // the input, and the command
      {"d.json", {"-o", In("d.json")}},
      {"d.json", {"-o", In("hard.json")}},
      {"x_S_P.dxf", {"export", In("x_S_P.dxf"), "-o", In("x.dxf")}},
      {"r.dxf", {"render", In("r.dxf"), "-o", In("r.dxf")}},
  };
  for (const auto& [input, command] : cases) {
    fs::remove(temp / "hard.json");
    Write("d.json", PagesDocument({{"S", "P"}}));
    fs::create_hard_link(temp / "d.json", temp / "hard.json");
    Write("x_S_P.dxf", PagesDocument({{"S", "P"}}));
    Write("r.dxf", " 0\nSECTION\n 2\nENTITIES\n 0\nENDSEC\n 0\nEOF\n");
    const std::string before = ReadFileBytes(temp / input);
    Args arguments = command;
    if (command[0] == "-o") {
      arguments = page;
      arguments.push_back(command[1]);
    }
    const CommandResult result = RunKalmor(arguments);
    EXPECT_EQ(result.status, 2) << input;
    EXPECT_THAT(result.err, HasSubstr(" is the input "));
    EXPECT_EQ(ReadFileBytes(temp / input), before);
  }
}

TEST_F(CommandPoliciesTest, InputsMustBeFilesOrPipesOfBoundedSize) {
  fs::create_directory(temp / "folder");
  { std::ofstream huge(temp / "huge.json"); }
  fs::resize_file(temp / "huge.json", (std::uintmax_t{2} << 30) + 1);  // sparse: takes no room
  const std::pair<std::string, std::string> cases[] = {
      {"/dev/zero", "cannot read /dev/zero: it is a device; only files and pipes are read"},
      {In("folder"), "cannot read " + In("folder") + ": it is a directory"},
      {In("huge.json"), "cannot read " + In("huge.json") + ": it is larger than the 2 GiB"},
  };
  for (const auto& [path, message] : cases) {
    for (const std::string command : {"check", "render"}) {
      SCOPED_TRACE(command + " " + path);
      const Args arguments =
          command == "check" ? Args{"check", path} : Args{"render", path, "-o", In("r.svg")};
      const CommandResult result = RunKalmor(arguments);
      EXPECT_EQ(result.status, 1);
      EXPECT_THAT(result.err, HasSubstr(message));
    }
  }
  // A pipe has no size to check beforehand; it is read.
  const std::string pipeCommand = "cat " + Write("p.json", PagesDocument({{"S", "P"}})) + " | " +
                                  KALMOR_CLI_PATH + " check /dev/stdin >/dev/null";
  EXPECT_EQ(std::system(pipeCommand.c_str()), 0);
}

TEST_F(CommandPoliciesTest, PageWithStandardOutputClosedOrItsFileNameOnStandardInput) {
  const Args page = {
      "page", Write("d.json", PagesDocument({{"S", "P"}})), "--schematic", "S", "--page", "P"};
  const auto run = [&](const std::string& output, const CommandSetting& setting) {
    Args arguments = page;
    if (!output.empty()) {
      arguments.insert(arguments.end(), {"-o", In(output)});
    }
    return RunKalmor(arguments, setting);
  };
  ASSERT_EQ(run("shown.dxf", {}).status, 0);
  // The file must not take the closed descriptor 1 and receive the completion message.
  EXPECT_EQ(run("closed.dxf", {.input = "", .closedOutput = true}).status, 0);
  EXPECT_EQ(ReadFileBytes(temp / "closed.dxf"), ReadFileBytes(temp / "shown.dxf"));
  EXPECT_EQ(run("", {.input = In("named") + "\n", .closedOutput = false}).status, 0);
  EXPECT_EQ(ReadFileBytes(temp / "named.dxf"), ReadFileBytes(temp / "shown.dxf"));
  for (const std::string input : {"", "\n"}) {
    const CommandResult none = run("", {.input = input, .closedOutput = false});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err,
              "kalmor: no output file: give -o FILE, or the file name on standard input\n");
  }
}

TEST_F(CommandPoliciesTest, MessagesStayShortWhateverTheNames) {
  std::vector<Args> many;
  for (int i = 0; i < 30; ++i) {
    many.push_back({"SCHEMATIC" + std::to_string(i), "P"});
  }
  const std::string nul = Write("nul.json", PagesDocument({{"A\\u0000B", "P"}}));
  const std::string longName(100000, 'x');
  const std::string longPage = Write("page.json", PagesDocument({{"S", longName}}));
  fs::create_directory(temp / "out");
  const std::pair<Args, std::string> cases[] = {
      // the command, and a part of its message
      {{"page", Write("many.json", PagesDocument(many)), "--schematic", "NONE", "--page", "P", "-o",
        In("x.dxf")},
       "\"SCHEMATIC11\" and 18 more)\n"},
      {{"page", longPage, "--schematic", "S", "--page", longName + "y", "-o", In("x.dxf")},
       "has no page \"xxx"},
      {{"export", Write("long.json", PagesDocument({{"S", "P"}}, "", longName)), "-o", In("out")},
       "COMPLETE: xxx"},
      {{"page", nul, "--schematic", "NONE", "--page", "P", "-o", In("x.dxf")},
       "(it has: \"A\\x00B\")\n"},
  };
  for (const auto& [arguments, message] : cases) {
    const CommandResult result = RunKalmor(arguments);
    EXPECT_THAT(result.out + result.err, HasSubstr(message));
    EXPECT_LT(result.out.size() + result.err.size(), 400u) << message;
  }
}

}  // namespace
}  // namespace kalmor::test
