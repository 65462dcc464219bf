#pragma once

// A page of a design read from JSON, with the page context the walk would give its
// translators, writing into memory: what the page translators' tests start from.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "dxf/byte_sink.h"
#include "kalmor/dbo.h"
#include "model/design.h"
#include "page/page_context.h"

namespace kalmor::testing {

// The message of the error that reading `json` as the document `documentName` raises, or
// `whenAccepted` when it reads.
std::string DocumentError(const std::string& json, std::string_view documentName,
                          std::string_view whenAccepted);

// Expected DXF text written with "\n" line ends, turned into the file's CR LF.
std::string Crlf(std::string_view text);

// A whole design document with one schematic "S" holding one page "P" whose members are
// `pageMembers` (JSON object members without the braces, e.g. R"("wires": [ ... ])"), and the
// given `symbols` object. pin_to_pin, width and height take the document defaults unless the
// members set them.
std::string OnePageDesign(std::string_view pageMembers, std::string_view symbols = "{}");

// A design read from a JSON document, one of its pages, and a page context over it computed
// exactly as the page walk does (OpenPageContext, plus the page's pin-to-pin scale factor),
// writing into memory.
class PageFixture {
 public:
  // An empty name picks the first schematic, or the schematic's first page.
  explicit PageFixture(std::string_view designJson, std::string_view schematic = "",
                       std::string_view page = "");
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

}  // namespace kalmor::testing
