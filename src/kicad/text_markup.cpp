#include "kicad/text_markup.h"

#include <algorithm>
#include <utility>

#include "kalmor/host_text.h"

namespace kalmor::kicad::detail {
namespace {

// Variables that name each other (or themselves) stop being expanded this deep.
constexpr int kMostExpansionDepth = 6;

struct Escape {
  std::string_view name;
  std::string_view text;
};
constexpr Escape kEscapes[] = {
    {"{slash}", "/"},   {"{backslash}", "\\"}, {"{lt}", "<"},    {"{gt}", ">"},
    {"{colon}", ":"},   {"{dblquote}", "\""},  {"{quote}", "'"}, {"{tab}", "\t"},
    {"{return}", "\n"}, {"{space}", " "},      {"{comma}", ","}, {"{brace}", "{"},
};

// Where the group opened by the "{" at `open` closes, or npos.
std::size_t ClosingBrace(std::string_view text, std::size_t open) {
  int depth = 0;
  for (std::size_t i = open; i < text.size(); ++i) {
    if (text[i] == '{') {
      ++depth;
    } else if (text[i] == '}' && --depth == 0) {
      return i;
    }
  }
  return std::string_view::npos;
}

// Walks the markup of `text`, handing each plain run to `plain` and each overbarred run's shown
// text to `barred`.
template <typename Plain, typename Barred>
void WalkMarkup(std::string_view text, Plain&& plain, Barred&& barred) {
  std::size_t i = 0;
  std::size_t runStart = 0;
  while (i < text.size()) {
    const char c = text[i];
    if ((c == '~' || c == '_' || c == '^') && i + 1 < text.size() && text[i + 1] == '{') {
      const std::size_t close = ClosingBrace(text, i + 1);
      if (close != std::string_view::npos) {
        plain(text.substr(runStart, i - runStart));
        const std::string inner = PlainText(text.substr(i + 2, close - i - 2));
        if (c == '~') {
          barred(inner);
        } else {
          plain(inner);
        }
        i = close + 1;
        runStart = i;
        continue;
      }
    }
    if (c == '{') {
      bool replaced = false;
      for (const Escape& escape : kEscapes) {
        if (text.substr(i).starts_with(escape.name)) {
          plain(text.substr(runStart, i - runStart));
          plain(escape.text);
          i += escape.name.size();
          runStart = i;
          replaced = true;
          break;
        }
      }
      if (replaced) {
        continue;
      }
    }
    ++i;
  }
  plain(text.substr(runStart));
}

std::string Expand(std::string_view text, const VariableLookup& lookup, int depth) {
  std::string out;
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t open = text.find("${", i);
    if (open == std::string_view::npos) {
      break;
    }
    const std::size_t close = text.find('}', open + 2);
    if (close == std::string_view::npos) {
      break;
    }
    out.append(text.substr(i, open - i));
    const std::string_view name = text.substr(open + 2, close - open - 2);
    std::optional<std::string> value = lookup(name);
    if (value && depth < kMostExpansionDepth) {
      out += Expand(*value, lookup, depth + 1);
    } else if (value) {
      out += *value;
    } else {
      out.append(text.substr(open, close + 1 - open));
    }
    i = close + 1;
  }
  out.append(text.substr(i));
  return out;
}

}  // namespace

std::string HostText(std::string text) {
  return HostTextFromUtf8(text);
}

std::string ExpandVariables(std::string_view text, const VariableLookup& lookup) {
  if (text.find("${") == std::string_view::npos) {
    return std::string(text);
  }
  return Expand(text, lookup, 0);
}

std::string PlainText(std::string_view text) {
  std::string out;
  const auto append = [&](std::string_view run) { out.append(run); };
  WalkMarkup(text, append, append);
  return out;
}

std::string PinNameText(std::string_view text) {
  if (text == "~") {
    return {};
  }
  std::string out;
  WalkMarkup(
      text, [&](std::string_view run) { out.append(run); },
      [&](std::string_view run) {
        // A backslash marks the character before it, however many bytes it takes.
        while (!run.empty()) {
          const std::size_t length = std::max<std::size_t>(1, DecodeUtf8(run).length);
          out.append(run.substr(0, length));
          out.push_back('\\');
          run.remove_prefix(std::min(length, run.size()));
        }
      });
  return out;
}

}  // namespace kalmor::kicad::detail
