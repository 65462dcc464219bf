// Every integer field of a design document, set to the most negative and the most positive
// 32-bit value in turn: the document is either refused with an error that names the field, or
// read and exported whole with finite numbers. Built with the sanitizers, an export that
// overflows anywhere stops this test.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "hardening/export_in_memory.h"
#include "model/design.h"
#include "model/design_reader.h"
#include "model/tape_reader.h"
#include "render/dxf_reader.h"
#include "support/paths.h"
#include "support/thrown.h"

namespace kalmor::test {
namespace {

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

// The page read back by the renderer's strict reader: every record whole, every number finite.
// The reader refuses only what the renderer cannot draw, a negative line width, which a document
// may give and the exporter writes as given.
void ExpectReadBack(const std::string& page) {
  const auto refused = Thrown<DxfReadError>([&] { ReadDxf(page, "page.dxf"); });
  EXPECT_TRUE(!refused ||
              std::string(refused->what()).find("negative POLYLINE width") != std::string::npos)
      << refused->what();
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
        ExpectReadBack(page);
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
        ExpectReadBack(written);
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

}  // namespace
}  // namespace kalmor::test
