#pragma once

// The one place that turns a record template into file bytes. A template reads as the record
// does, with "\n" line ends, "%s" for a string and "%8.4f" for a real; it is compiled once into
// its literal bytes with CR LF line ends (the file bytes are the same on every platform) and the
// offsets where values go. Each piece is filled into one stack buffer and written with exactly one
// Write, so a sink sees the record's pieces as they are.

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "dxf/byte_sink.h"
#include "dxf/detail/real_format.h"

namespace kalmor::dxf_detail {

template <std::size_t N>
struct Template {
  char source[N]{};
  consteval Template(const char (&text)[N]) {  // NOLINT: implicit, so templates read as literals
    for (std::size_t i = 0; i < N; ++i) {
      source[i] = text[i];
    }
  }
  static constexpr std::size_t kLength = N - 1;
};

enum class Slot : char { kString, kReal };

// Strings longer than this (with every line feed doubled) leave the stack buffer for the heap.
inline constexpr std::size_t kStringRoom = 512;

template <std::size_t LiteralBytes, std::size_t Slots>
struct CompiledTemplate {
  std::array<char, LiteralBytes> literal{};
  std::array<std::size_t, Slots> offset{};  // where each value goes in `literal`
  std::array<Slot, Slots> slot{};
};

// Walks a template; `emit` sees each literal byte (line ends already CR LF), `value` each slot.
// A template with any other '%' directive does not compile.
template <std::size_t N, typename Emit, typename Value>
constexpr void ScanTemplate(const Template<N>& t, Emit emit, Value value) {
  const std::string_view s(t.source, Template<N>::kLength);
  for (std::size_t i = 0; i < s.size();) {
    if (s[i] == '\n') {
      emit('\r');
      emit('\n');
      ++i;
    } else if (s.substr(i, 2) == "%s") {
      value(Slot::kString);
      i += 2;
    } else if (s.substr(i, 5) == "%8.4f") {
      value(Slot::kReal);
      i += 5;
    } else if (s[i] == '%') {
      throw "unsupported directive in a record template";
    } else {
      emit(s[i]);
      ++i;
    }
  }
}

template <Template T>
consteval std::pair<std::size_t, std::size_t> TemplateSize() {
  std::size_t bytes = 0;
  std::size_t slots = 0;
  ScanTemplate(
      T, [&](char) { ++bytes; }, [&](Slot) { ++slots; });
  return {bytes, slots};
}

template <Template T>
inline constexpr auto kCompiled = [] {
  constexpr auto size = TemplateSize<T>();
  CompiledTemplate<size.first, size.second> compiled;
  std::size_t bytes = 0;
  std::size_t slots = 0;
  ScanTemplate(
      T, [&](char c) { compiled.literal[bytes++] = c; },
      [&](Slot kind) {
        compiled.offset[slots] = bytes;
        compiled.slot[slots++] = kind;
      });
  return compiled;
}();

template <typename Arg>
constexpr Slot SlotOf() {
  static_assert(std::is_same_v<Arg, double> || std::is_same_v<Arg, std::string_view>,
                "record values are doubles or string views");
  return std::is_same_v<Arg, double> ? Slot::kReal : Slot::kString;
}

inline double Clean(double value) {
  return value;
}
// A string value ends at its first NUL, so the file never holds one.
inline std::string_view Clean(std::string_view value) {
  return value.substr(0, value.find('\0'));
}

inline char* Append(char* out, double value) {
  return AppendReal(out, value);
}

inline char* Append(char* out, std::string_view value) {
  // The file is text: a line feed inside a value ends its line with CR LF like any other.
  for (;;) {
    const std::size_t lf = value.find('\n');
    const std::size_t run = lf == std::string_view::npos ? value.size() : lf;
    std::memcpy(out, value.data(), run);
    out += run;
    if (lf == std::string_view::npos) {
      return out;
    }
    *out++ = '\r';
    *out++ = '\n';
    value.remove_prefix(lf + 1);
  }
}

inline std::size_t Room(double) {
  return kMaxRealChars;
}
inline std::size_t Room(std::string_view value) {
  return 2 * value.size();
}

template <Template T, typename... Args, std::size_t... I>
char* FillPiece(char* out, std::index_sequence<I...>, const Args&... values) {
  constexpr auto& compiled = kCompiled<T>;
  const char* literal = compiled.literal.data();
  std::size_t done = 0;
  const auto put = [&](std::size_t at, const auto& value) {
    std::memcpy(out, literal + done, at - done);
    out = Append(out + (at - done), value);
    done = at;
  };
  (put(compiled.offset[I], values), ...);
  std::memcpy(out, literal + done, compiled.literal.size() - done);
  return out + (compiled.literal.size() - done);
}

template <Template T, typename... Args>
void WriteFilledPiece(ByteSink& out, Args... values) {
  constexpr auto& compiled = kCompiled<T>;

  constexpr std::size_t kStackRoom = compiled.literal.size() + [] {
    std::size_t room = 0;
    for (Slot s : compiled.slot) {
      room += s == Slot::kReal ? kMaxRealChars : kStringRoom;
    }
    return room;
  }();
  const std::size_t needed = compiled.literal.size() + (std::size_t{0} + ... + Room(values));
  const auto seq = std::index_sequence_for<Args...>{};
  if (needed <= kStackRoom) {
    char buffer[kStackRoom];
    const char* end = FillPiece<T>(buffer, seq, values...);
    out.Write(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
  } else {
    // Only an oversized string value (a layer name nobody uses) gets here.
    std::string buffer(needed, '\0');
    const char* end = FillPiece<T>(buffer.data(), seq, values...);
    out.Write(std::string_view(buffer.data(), static_cast<std::size_t>(end - buffer.data())));
  }
}

// Formats one piece and hands it to `out` in one Write. Values are doubles for "%8.4f" and string
// views for "%s", in template order.
template <Template T, typename... Args>
void WritePiece(ByteSink& out, Args... values) {
  constexpr auto& compiled = kCompiled<T>;
  static_assert(sizeof...(Args) == compiled.slot.size(), "one value per template slot");
  static_assert(
      [] {
        constexpr std::array<Slot, sizeof...(Args)> given{SlotOf<Args>()...};
        for (std::size_t i = 0; i < given.size(); ++i) {
          if (given[i] != compiled.slot[i]) {
            return false;
          }
        }
        return true;
      }(),
      "value types follow the template's slots");

  if constexpr (sizeof...(Args) == 0) {
    out.Write(std::string_view(compiled.literal.data(), compiled.literal.size()));
  } else {
    WriteFilledPiece<T>(out, Clean(values)...);
  }
}

}  // namespace kalmor::dxf_detail
