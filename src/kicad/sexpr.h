#pragma once

// The S-expression grammar of KiCad's files: lists in parentheses, bare atoms, quoted strings with
// backslash escapes, and |...| blocks (embedded data, possibly over many lines). The tokenizer
// gives every token its line and column; the tree keeps them on every node, so that any complaint
// about a file can say where.

#include <cstdint>
#include <deque>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace kalmor::kicad::detail {

struct Spot {
  uint32_t line = 0;
  uint32_t column = 0;
};

// A malformed file: where and what. The reader adds the file's name.
struct SyntaxFault {
  Spot spot;
  std::string message;
};

enum class TokenKind : uint8_t { kOpen, kClose, kAtom, kString, kBar, kEnd };

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string_view text;  // an atom's or a bar block's bytes; a string's bytes between the quotes
  Spot spot;
  bool escaped = false;  // a string holding backslash escapes (text is then still raw)
};

class Tokenizer {
 public:
  explicit Tokenizer(std::string_view text);

  // The next token; kEnd at the end of the text, and every time after. Throws SyntaxFault for
  // a string or a bar block left open at the end.
  Token Next();

 private:
  void SkipBlanks();
  Spot Here() const { return {line_, static_cast<uint32_t>(at_ - lineStart_) + 1}; }

  const char* at_;
  const char* end_;
  const char* lineStart_;
  uint32_t line_ = 1;
};

// A string's value once its backslash escapes are undone.
std::string Unescape(std::string_view raw);

enum class NodeKind : uint8_t { kList, kAtom, kString };

class SexprTree;

// One node of a tree, by value: cheap to copy, valid while its tree lives.
class Sexpr {
 public:
  static constexpr uint32_t kNone = UINT32_MAX;

  Sexpr() = default;
  Sexpr(const SexprTree* tree, uint32_t index) : tree_(tree), index_(index) {}

  explicit operator bool() const { return tree_ != nullptr && index_ != kNone; }
  NodeKind kind() const;
  bool IsList() const { return kind() == NodeKind::kList; }
  Spot spot() const;

  // An atom's or string's text; a list's head, the text of its first element when that is an
  // atom (empty otherwise).
  std::string_view text() const;
  std::string_view head() const;

  // The elements of a list, the head included; `size` counts them.
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Sexpr;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Sexpr;
    Iterator() = default;
    Iterator(const SexprTree* tree, uint32_t index) : tree_(tree), index_(index) {}
    Sexpr operator*() const { return {tree_, index_}; }
    Iterator& operator++();
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.index_ == b.index_; }

   private:
    const SexprTree* tree_ = nullptr;
    uint32_t index_ = kNone;
  };
  Iterator begin() const;
  Iterator end() const { return {tree_, kNone}; }
  std::size_t size() const;

  // The element at `position` (0 is the head), or an empty node.
  Sexpr operator[](std::size_t position) const;
  // The first list element whose head is `name`, or an empty node.
  Sexpr Find(std::string_view name) const;

 private:
  const SexprTree* tree_ = nullptr;
  uint32_t index_ = kNone;
};

// A whole file as a tree of nodes, held in one array in document order.
class SexprTree {
 public:
  // Reads every expression of `text` (which must outlive the tree). Throws SyntaxFault for an
  // unbalanced parenthesis or an unterminated string.
  explicit SexprTree(std::string_view text);
  SexprTree(const SexprTree&) = delete;
  SexprTree& operator=(const SexprTree&) = delete;

  // The first expression of the text (empty when the text holds none).
  Sexpr root() const { return {this, nodes_.empty() ? Sexpr::kNone : 0}; }
  std::size_t nodeCount() const { return nodes_.size(); }

 private:
  friend class Sexpr;
  struct Node {
    std::string_view text;
    Spot spot;
    uint32_t firstChild = Sexpr::kNone;
    uint32_t next = Sexpr::kNone;
    uint32_t childCount = 0;
    NodeKind kind = NodeKind::kAtom;
  };
  std::vector<Node> nodes_;
  std::deque<std::string> unescaped_;  // the values of strings with escapes
};

}  // namespace kalmor::kicad::detail
