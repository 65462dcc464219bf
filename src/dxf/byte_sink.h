#pragma once

// Where DXF bytes go. Writer operations format one piece at a time and hand it to the sink in
// one call; the caller owns the sink and decides whether it is a file or memory.

#include <cstddef>
#include <string>
#include <string_view>

namespace kalmor {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual void Write(std::string_view bytes) = 0;
};

// Keeps everything written, for tests and in-memory exports.
class MemorySink final : public ByteSink {
 public:
  void Write(std::string_view bytes) override { bytes_.append(bytes); }
  const std::string& bytes() const { return bytes_; }
  void clear() { bytes_.clear(); }

 private:
  std::string bytes_;
};

}  // namespace kalmor
