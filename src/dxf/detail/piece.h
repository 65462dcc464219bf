#pragma once

// The one place that turns a record template into file bytes. A template reads as the record
// does, with "\n" line ends, "%s" for a string and "%8.4f" for a real; it is compiled once into
// its literal bytes with CR LF line ends (the file bytes are the same on every platform) and the
// offsets where values go. Each piece is filled in place in the sink's window, reserved for the
// longest the piece can be.

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

inline char* Append(char* out, double value) {
  return AppendReal(out, value);
}

// A string value ends at its first NUL, so the file never holds one; and the file is text: a line
// feed inside a value ends its line with CR LF like any other. Values are names and texts of a
// few hundred bytes at most, which a plain loop copies fastest.
inline char* Append(char* out, std::string_view value) {
  for (const char c : value) {
    if (c == '\0') {
      break;
    }
    if (c == '\n') {
      *out++ = '\r';
    }
    *out++ = c;
  }
  return out;
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
  // Every run of literal bytes has a size known at compile time, so each copy is a few moves.
  const auto put = [&]<std::size_t J>(const auto& value) {
    constexpr std::size_t from = J == 0 ? 0 : compiled.offset[J - 1];
    constexpr std::size_t to = compiled.offset[J];
    std::memcpy(out, literal + from, to - from);
    out = Append(out + (to - from), value);
  };
  (put.template operator()<I>(values), ...);
  constexpr std::size_t last = sizeof...(I) == 0 ? 0 : compiled.offset[sizeof...(I) - 1];
  std::memcpy(out, literal + last, compiled.literal.size() - last);
  return out + (compiled.literal.size() - last);
}

template <Template T, typename... Args>
void WriteFilledPiece(ByteSink& out, Args... values) {
  constexpr auto& compiled = kCompiled<T>;
  const std::size_t needed = compiled.literal.size() + (std::size_t{0} + ... + Room(values));
  char* at = out.Reserve(needed);
  out.Commit(FillPiece<T>(at, std::index_sequence_for<Args...>{}, values...));
}

// Formats one piece straight into the room `out` reserves for it. Values are doubles for "%8.4f"
// and string views for "%s", in template order.
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
    WriteFilledPiece<T>(out, values...);
  }
}

}  // namespace kalmor::dxf_detail
