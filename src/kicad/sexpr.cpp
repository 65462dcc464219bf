#include "kicad/sexpr.h"

#include <array>
#include <cstring>

#include "input/shown_text.h"

namespace kalmor::kicad::detail {
namespace {

// Characters that end an atom: blanks, parentheses and the quote.
constexpr std::array<bool, 256> kAtomEnds = [] {
  std::array<bool, 256> ends{};
  for (const unsigned char c : {' ', '\t', '\r', '\n', '\f', '\v', '(', ')', '"'}) {
    ends[c] = true;
  }
  return ends;
}();

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  return -1;
}

}  // namespace

Tokenizer::Tokenizer(std::string_view text)
    : at_(text.data()), end_(text.data() + text.size()), lineStart_(text.data()) {}

void Tokenizer::SkipBlanks() {
  while (at_ != end_ && IsBlank(*at_)) {
    if (*at_ == '\n') {
      ++line_;
      lineStart_ = at_ + 1;
    }
    ++at_;
  }
}

Token Tokenizer::Next() {
  SkipBlanks();
  Token token;
  token.spot = Here();
  if (at_ == end_) {
    return token;
  }
  const char first = *at_;
  if (first == '(' || first == ')') {
    token.kind = first == '(' ? TokenKind::kOpen : TokenKind::kClose;
    token.text = std::string_view(at_, 1);
    ++at_;
    return token;
  }
  if (first == '"' || first == '|') {
    // A string ends at the next quote that no backslash escapes; a bar block at the next bar.
    // Both may hold line breaks.
    const bool string = first == '"';
    const char* start = ++at_;
    for (;;) {
      if (at_ == end_) {
        throw SyntaxFault{token.spot, string ? "a string is not closed before the end of the file"
                                             : "a |...| block is not closed before the end of "
                                               "the file"};
      }
      const char c = *at_;
      if (c == first) {
        break;
      }
      if (c == '\n') {
        ++line_;
        lineStart_ = at_ + 1;
      } else if (c == '\\' && string) {
        token.escaped = true;
        if (at_ + 1 != end_ && at_[1] != '\n') {
          ++at_;
        }
      }
      ++at_;
    }
    token.kind = string ? TokenKind::kString : TokenKind::kBar;
    token.text = std::string_view(start, static_cast<std::size_t>(at_ - start));
    ++at_;
    return token;
  }
  const char* start = at_;
  while (at_ != end_ && !kAtomEnds[static_cast<unsigned char>(*at_)]) {
    ++at_;
  }
  token.kind = TokenKind::kAtom;
  token.text = std::string_view(start, static_cast<std::size_t>(at_ - start));
  return token;
}

std::string Unescape(std::string_view raw) {
  std::string out;
  out.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    if (c != '\\' || i + 1 == raw.size()) {
      out.push_back(c);
      continue;
    }
    const char code = raw[++i];
    switch (code) {
      case 'a':
        out.push_back('\a');
        break;
      case 'b':
        out.push_back('\b');
        break;
      case 'f':
        out.push_back('\f');
        break;
      case 'n':
        out.push_back('\n');
        break;
      case 'r':
        out.push_back('\r');
        break;
      case 't':
        out.push_back('\t');
        break;
      case 'v':
        out.push_back('\v');
        break;
      case 'x': {
        int value = 0;
        int digits = 0;
        while (digits < 2 && i + 1 < raw.size() && HexValue(raw[i + 1]) >= 0) {
          value = value * 16 + HexValue(raw[++i]);
          ++digits;
        }
        if (digits == 0) {
          out += "\\x";
        } else {
          out.push_back(static_cast<char>(value));
        }
        break;
      }
      default:
        if (code >= '0' && code <= '7') {
          int value = code - '0';
          for (int digits = 1;
               digits < 3 && i + 1 < raw.size() && raw[i + 1] >= '0' && raw[i + 1] <= '7';
               ++digits) {
            value = value * 8 + (raw[++i] - '0');
          }
          out.push_back(static_cast<char>(value & 0xFF));
        } else {
          out.push_back(code);  // \" and \\, and any other character as itself
        }
        break;
    }
  }
  return out;
}

SexprTree::SexprTree(std::string_view text) {
  if (text.size() >= UINT32_MAX / 2) {
    throw SyntaxFault{{1, 1}, "the file is too large to read (4 GB or more)"};
  }
  nodes_.reserve(text.size() / 6);
  Tokenizer tokens(text);
  struct Open {
    uint32_t list;
    uint32_t lastChild;
  };
  std::vector<Open> open;
  uint32_t lastTop = Sexpr::kNone;
  const auto append = [&](const Node& node) {
    const auto index = static_cast<uint32_t>(nodes_.size());
    nodes_.push_back(node);
    if (open.empty()) {
      if (lastTop != Sexpr::kNone) {
        nodes_[lastTop].next = index;
      }
      lastTop = index;
    } else {
      Open& parent = open.back();
      if (parent.lastChild == Sexpr::kNone) {
        nodes_[parent.list].firstChild = index;
      } else {
        nodes_[parent.lastChild].next = index;
      }
      parent.lastChild = index;
      ++nodes_[parent.list].childCount;
    }
    return index;
  };
  for (;;) {
    const Token token = tokens.Next();
    switch (token.kind) {
      case TokenKind::kOpen:
        open.push_back(
            {append(Node{{}, token.spot, Sexpr::kNone, Sexpr::kNone, 0, NodeKind::kList}),
             Sexpr::kNone});
        break;
      case TokenKind::kClose:
        if (open.empty()) {
          throw SyntaxFault{token.spot, "a \")\" closes no list"};
        }
        open.pop_back();
        break;
      case TokenKind::kAtom:
      case TokenKind::kBar:
        append(Node{token.text, token.spot, Sexpr::kNone, Sexpr::kNone, 0, NodeKind::kAtom});
        break;
      case TokenKind::kString: {
        std::string_view value = token.text;
        if (token.escaped) {
          value = unescaped_.emplace_back(Unescape(token.text));
        }
        append(Node{value, token.spot, Sexpr::kNone, Sexpr::kNone, 0, NodeKind::kString});
        break;
      }
      case TokenKind::kEnd:
        if (!open.empty()) {
          const Sexpr list(this, open.back().list);
          const std::string_view head = list.head();
          throw SyntaxFault{token.spot, "the file ends inside the list (" +
                                            Escaped(head.substr(0, 40)) + " ...) opened at " +
                                            std::to_string(list.spot().line) + ":" +
                                            std::to_string(list.spot().column)};
        }
        return;
    }
  }
}

NodeKind Sexpr::kind() const {
  return tree_->nodes_[index_].kind;
}

Spot Sexpr::spot() const {
  return tree_->nodes_[index_].spot;
}

std::string_view Sexpr::text() const {
  return *this ? tree_->nodes_[index_].text : std::string_view();
}

std::string_view Sexpr::head() const {
  if (!*this || kind() != NodeKind::kList) {
    return {};
  }
  const uint32_t first = tree_->nodes_[index_].firstChild;
  if (first == kNone || tree_->nodes_[first].kind != NodeKind::kAtom) {
    return {};
  }
  return tree_->nodes_[first].text;
}

Sexpr::Iterator& Sexpr::Iterator::operator++() {
  index_ = tree_->nodes_[index_].next;
  return *this;
}

Sexpr::Iterator Sexpr::begin() const {
  if (!*this || kind() != NodeKind::kList) {
    return end();
  }
  return {tree_, tree_->nodes_[index_].firstChild};
}

std::size_t Sexpr::size() const {
  return *this && kind() == NodeKind::kList ? tree_->nodes_[index_].childCount : 0;
}

Sexpr Sexpr::operator[](std::size_t position) const {
  for (const Sexpr element : *this) {
    if (position-- == 0) {
      return element;
    }
  }
  return {};
}

Sexpr Sexpr::Find(std::string_view name) const {
  for (const Sexpr element : *this) {
    if (element.kind() == NodeKind::kList && element.head() == name) {
      return element;
    }
  }
  return {};
}

}  // namespace kalmor::kicad::detail
