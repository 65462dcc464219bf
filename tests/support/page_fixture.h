#pragma once

// A page of a design read from JSON, with the page context the walk would give its
// translators, writing into memory: what the page translators' tests start from.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"
#include "kalmor/dbo.h"
#include "model/design.h"
#include "page/page_context.h"

namespace kalmor::test {

// A whole design document with one schematic "S" holding one page "P" whose members are
// `pageMembers` (JSON object members without the braces, e.g. R"("wires": [ ... ])"), and the
// given `symbols` object. pin_to_pin, width and height take the document defaults unless the
// members set them.
std::string OnePageDesign(std::string_view pageMembers, std::string_view symbols = "{}");

// A design named `name` whose schematics are given as their name followed by their pages' names
// (JSON-escaped), every page holding `pageMembers`.
std::string PagesDocument(const std::vector<std::vector<std::string>>& schematics,
                          std::string_view pageMembers = "", std::string_view name = "B");

// The design of the tests of a hierarchy (tests/support/data/hierarchy.json): ROOT places U1 and
// BLK1 on R1 and BLK2 on R2, both blocks showing SUB; SUB's S1 holds U3, a wire, a title block and
// a port whose texts differ for /BLK1, and S2 places BLK9 showing LEAF. OTHER is placed nowhere,
// and Sub differs from SUB only in case.
std::string HierarchyDocument();

// A design read from a JSON document, one of its pages, and a page context over it computed
// exactly as the page walk does (OpenPageContext, plus the page's pin-to-pin scale factor),
// writing into memory.
class PageFixture {
 public:
  // The page names default to those of OnePageDesign.
  explicit PageFixture(std::string_view designJson, std::string_view schematic = "S",
                       std::string_view page = "P");
  ~PageFixture();
  PageFixture(const PageFixture&) = delete;
  PageFixture& operator=(const PageFixture&) = delete;

  PageContext& context() { return *context_; }
  // Reads the page through the occurrence at `path` (e.g. "/BLK1"); "" for none.
  void SetOccurrence(std::string_view path);
  const std::string& bytes() const { return sink_.bytes(); }  // everything written so far
  void clear() { sink_.clear(); }
  const model::Design& design() const { return *design_; }
  const DboPage& page() const { return *page_; }

 private:
  std::unique_ptr<model::Design> design_;
  const DboPage* page_ = nullptr;
  MemorySink sink_;
  DboState state_;
  std::optional<PageContext> context_;
};

}  // namespace kalmor::test
