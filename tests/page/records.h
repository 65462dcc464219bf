#pragma once

// Expected records as text with "\n" line ends (turn them into file bytes with Crlf). Numbers
// are passed exactly as the file prints them, e.g. "  1.0000".

#include <initializer_list>
#include <string>
#include <string_view>

namespace kalmor::testing::records {

inline std::string Join(std::initializer_list<std::string_view> lines) {
  std::string text;
  for (std::string_view line : lines) {
    (text += line) += '\n';
  }
  return text;
}

// A POLYLINE header; `width` is the printed 40/41 value, empty for none.
inline std::string Polyline(std::string_view layer, std::string_view width = "",
                            bool closed = false) {
  return Join({" 0", "POLYLINE", " 8", layer, " 66", "1"}) + (closed ? " 70\n1\n" : "") +
         " 10\n0.0\n 20\n0.0\n 30\n0.0\n" +
         (width.empty() ? "" : Join({" 40", width, " 41", width}));
}

inline std::string Vertex(std::string_view layer, std::string_view x, std::string_view y,
                          std::string_view bulge = "") {
  return Join({" 0", "VERTEX", " 8", layer, " 10", x, " 20", y, " 30", "0.0"}) +
         (bulge.empty() ? "" : Join({" 42", bulge}));
}

inline std::string SeqEnd(std::string_view layer) {
  return Join({" 0", "SEQEND", " 8", layer});
}

// A TEXT record; `angle` empty when the text is upright (no 50 group).
inline std::string Text(std::string_view layer, std::string_view x, std::string_view y,
                        std::string_view height, std::string_view angle, std::string_view value) {
  return Join({" 0", "TEXT", " 8", layer, " 10", x, " 20", y, " 30", "0.0", " 40", height}) +
         (angle.empty() ? "" : Join({" 50", angle})) + Join({" 1", value});
}

}  // namespace kalmor::testing::records
