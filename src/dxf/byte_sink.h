#pragma once

// Where DXF bytes go. A sink owns a window of writable memory: a writer reserves room in it,
// formats a piece straight into that room and commits what it used, with no call through the
// sink's interface; only when the window is full does the sink hand its bytes on (to a file, to
// memory) and open a new one. The caller owns the sink and decides what it is.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace kalmor {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;

  // At least `size` writable bytes at the returned place, valid until the next call on the sink.
  char* Reserve(std::size_t size) {
    if (size > static_cast<std::size_t>(limit_ - next_)) [[unlikely]] {
      MakeRoom(size);
    }
    return next_;
  }
  // Keeps the bytes written from the last Reserve up to `end`.
  void Commit(char* end) { next_ = end; }

  void Write(std::string_view bytes) {
    char* at = Reserve(bytes.size());
    if (!bytes.empty()) {
      std::memcpy(at, bytes.data(), bytes.size());
    }
    Commit(at + bytes.size());
  }

 protected:
  ByteSink() = default;

  // Hands on the bytes committed so far (Pending) and opens a window of at least `size` bytes;
  // throws when it cannot.
  virtual void MakeRoom(std::size_t size) = 0;

  std::string_view Pending() const { return {begin_, static_cast<std::size_t>(next_ - begin_)}; }
  void OpenWindow(char* begin, std::size_t size) {
    begin_ = next_ = begin;
    limit_ = begin + size;
  }
  void CloseWindow() { begin_ = next_ = limit_ = nullptr; }
  // Moves the window of `other` here, leaving `other` without one.
  void TakeWindow(ByteSink& other) {
    begin_ = other.begin_;
    next_ = other.next_;
    limit_ = other.limit_;
    other.CloseWindow();
  }

 private:
  char* begin_ = nullptr;
  char* next_ = nullptr;
  char* limit_ = nullptr;
};

// Keeps everything written, for tests and in-memory exports.
class MemorySink final : public ByteSink {
 public:
  // Settles the window into the bytes first; a sink in use is never itself const.
  const std::string& bytes() const {
    const_cast<MemorySink*>(this)->Settle();
    return bytes_;
  }
  void clear() {
    Settle();
    bytes_.clear();
  }

 private:
  void MakeRoom(std::size_t size) override {
    Settle();
    window_.resize(std::max(window_.size(), std::max(size, kWindowBytes)));
    OpenWindow(window_.data(), window_.size());
  }
  // Moves what the window holds to the end of bytes_.
  void Settle() {
    bytes_.append(Pending());
    OpenWindow(window_.data(), window_.size());
  }

  static constexpr std::size_t kWindowBytes = 4096;
  std::string bytes_;
  std::vector<char> window_;
};

}  // namespace kalmor
