#include "model/design_reader.h"

#include <simdjson.h>

#include <string>
#include <vector>

#include "input/input_file.h"
#include "model/design.h"
#include "model/design_data.h"
#include "model/document_fault.h"
#include "model/document_reader.h"
#include "model/json_tape.h"
#include "model/tape_reader.h"
#include "model/text_reader.h"

namespace kalmor::model {

namespace detail {
namespace {

// A pointer as a complaint quotes it. Member names are the document's own and may be of any
// length, and a pointer is as deep as the document; past a few hundred bytes its middle steps
// give way to how many they are, and its first and last steps stay.
std::string ShownPointer(std::string_view pointer) {
  constexpr std::size_t kEnds = 96;  // bytes kept at each end of a long pointer
  std::vector<std::string> steps;
  std::size_t length = 0;
  for (std::size_t step = 0; step < pointer.size();) {
    const std::size_t next = std::min(pointer.find('/', step + 1), pointer.size());
    length += steps.emplace_back(Abbreviated(pointer.substr(step, next - step))).size();
    step = next;
  }
  std::size_t first = 0;  // steps kept at the start
  std::size_t last = 0;   // and at the end
  if (length <= 3 * kEnds) {
    first = steps.size();
  } else {
    for (std::size_t kept = 0; first < steps.size() && kept + steps[first].size() <= kEnds;) {
      kept += steps[first++].size();
    }
    for (std::size_t kept = 0;
         last < steps.size() - first && kept + steps[steps.size() - 1 - last].size() <= kEnds;
         ++last) {
      kept += steps[steps.size() - 1 - last].size();
    }
  }
  std::string shown;
  for (std::size_t i = 0; i < first; ++i) {
    shown += steps[i];
  }
  if (first + last < steps.size()) {
    shown += "/...(" + std::to_string(steps.size() - first - last) + " more steps)...";
  }
  for (std::size_t i = steps.size() - last; i < steps.size(); ++i) {
    shown += steps[i];
  }
  return shown;
}

std::string Located(std::string_view documentName, std::string_view json, std::size_t offset,
                    const std::string& pointer, const std::string& message) {
  const LineColumn where = LineColumnAt(json, offset);
  std::string text = std::string(documentName) + ":" + std::to_string(where.line) + ":" +
                     std::to_string(where.column) + ": ";
  if (!pointer.empty()) {
    text += ShownPointer(pointer) + ": ";
  }
  return text + message;
}

}  // namespace

// The careful reading: the text parsed into a tape, then read with every complaint exact and
// placed at its line and column.
std::unique_ptr<DesignData> ReadCarefully(std::string_view json, std::string_view documentName) {
  JsonTape tape;
  SyntaxError syntax;
  if (!tape.Parse(json, syntax)) {
    throw DesignDocumentError(
        Located(documentName, json, syntax.offset, syntax.pointer, syntax.message));
  }
  auto data = std::make_unique<DesignData>();
  try {
    TapeReader in(tape);
    ReadDesign(in, *data);
  } catch (const DocumentFault& fault) {
    throw DesignDocumentError(Located(documentName, json, LocatePointer(json, fault.pointer),
                                      fault.pointer, fault.message));
  }
  return data;
}

std::unique_ptr<DesignData> ReadFast(std::string_view json, std::size_t padding) {
  // The reader's scans stop at the zero byte past the text; strings need no check of their
  // bytes once the whole text is known to be UTF-8.
  if (padding < kDocumentPadding || json.data()[json.size()] != '\0' ||
      !simdjson::validate_utf8(json.data(), json.size())) {
    return nullptr;
  }
  auto data = std::make_unique<DesignData>();
  try {
    TextReader in(json);
    ReadDesign(in, *data);
    in.Finish();
  } catch (const LeftToCarefulReader&) {
    return nullptr;
  } catch (const DocumentFault&) {
    return nullptr;
  } catch (const EnvironmentError&) {
    // No font to measure a text with: the careful reading reports a fault of the document
    // first, if there is one.
    return nullptr;
  }
  return data;
}

namespace {

std::unique_ptr<Design> ReadPadded(std::string_view json, std::size_t padding,
                                   std::string_view documentName) {
  std::unique_ptr<DesignData> data = ReadFast(json, padding);
  if (data == nullptr) {
    data = ReadCarefully(json, documentName);
  }
  return std::make_unique<Design>(std::move(data));
}

}  // namespace
}  // namespace detail

std::unique_ptr<Design> ReadDesignDocument(std::string_view json, std::string_view documentName) {
  // The fast reading needs a few bytes it may read beyond the text.
  std::string padded;
  padded.reserve(json.size() + kDocumentPadding);
  padded.append(json);
  padded.resize(json.size() + kDocumentPadding);
  return detail::ReadPadded(std::string_view(padded).substr(0, json.size()), kDocumentPadding,
                            documentName);
}

std::unique_ptr<Design> ReadDesignDocumentInPlace(std::string json, std::string_view documentName) {
  if (json.capacity() - json.size() < kDocumentPadding) {
    return ReadDesignDocument(std::string_view(json), documentName);
  }
  const std::size_t size = json.size();
  json.resize(size + kDocumentPadding);  // within the capacity: no copy
  return detail::ReadPadded(std::string_view(json).substr(0, size), kDocumentPadding, documentName);
}

std::unique_ptr<Design> LoadDesignDocument(const std::string& path) {
  std::string json;
  try {
    json = ReadInputFile(path, kDocumentPadding);
  } catch (const InputError& error) {
    throw DesignDocumentError(error.what());
  }
  return ReadDesignDocumentInPlace(std::move(json), path);
}

}  // namespace kalmor::model
