#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dxf/byte_sink.h"

namespace kalmor::test {

// Opens windows of just the size a writer reserves, so that nearly every piece finds the window
// full and makes the sink hand on what it holds: the mechanics of a full window, at every piece.
class TightSink final : public ByteSink {
 public:
  ~TightSink() override = default;
  // Everything written, in order.
  std::string Joined() {
    MakeRoom(0);
    std::string all;
    for (const std::string& chunk : chunks) {
      all += chunk;
    }
    return all;
  }

  std::vector<std::string> chunks;  // what each full window handed on

 private:
  void MakeRoom(std::size_t size) override {
    if (!Pending().empty()) {
      chunks.emplace_back(Pending());
    }
    window_.assign(size, '\0');
    OpenWindow(window_.data(), window_.size());
  }
  std::vector<char> window_;
};

// The values of one group code (" 10", " 42", ...) in written order, each followed by '|'.
inline std::string GroupValues(std::string_view bytes, std::string_view code) {
  std::string values;
  std::vector<std::string_view> lines;
  for (std::size_t end; (end = bytes.find("\r\n")) != std::string_view::npos;) {
    lines.push_back(bytes.substr(0, end));
    bytes.remove_prefix(end + 2);
  }
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    if (lines[i] == code) {
      values.append(lines[i + 1]).push_back('|');
    }
  }
  return values;
}

}  // namespace kalmor::test
