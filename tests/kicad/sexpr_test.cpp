// The S-expression tokenizer and tree: tokens with their line and column, string escapes, |...|
// blocks, and the faults of malformed text.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kicad/sexpr.h"
#include "support/thrown.h"

namespace kalmor::kicad::detail {
namespace {

struct Seen {
  TokenKind kind;
  std::string text;
  uint32_t line;
  uint32_t column;
  friend bool operator==(const Seen&, const Seen&) = default;
};

std::vector<Seen> Tokens(std::string_view text) {
  std::vector<Seen> seen;
  Tokenizer tokens(text);
  for (Token token = tokens.Next(); token.kind != TokenKind::kEnd; token = tokens.Next()) {
    seen.push_back({token.kind, std::string(token.text), token.spot.line, token.spot.column});
  }
  return seen;
}

TEST(Tokenizer, GivesEveryTokenItsLineAndColumn) {
  const std::vector<Seen> expected = {
      {TokenKind::kOpen, "(", 1, 1},       {TokenKind::kAtom, "a", 1, 2},
      {TokenKind::kString, "b c", 1, 4},   {TokenKind::kOpen, "(", 2, 3},
      {TokenKind::kAtom, "-1.5e3", 2, 4},  {TokenKind::kClose, ")", 2, 10},
      {TokenKind::kBar, "x\ny", 3, 2},     {TokenKind::kAtom, "z", 5, 4},
      {TokenKind::kString, "q\\\"", 5, 6}, {TokenKind::kClose, ")", 5, 11},
  };
  EXPECT_EQ(Tokens("(a \"b c\"\n  (-1.5e3)\r\n |x\ny|\n   z \"q\\\"\")"), expected);
}

TEST(Tokenizer, LineBreaksInsideStringsCount) {
  const std::vector<Seen> tokens = Tokens("\"one\ntwo\" next");
  ASSERT_EQ(tokens.size(), 2u);
  EXPECT_EQ(tokens[1], (Seen{TokenKind::kAtom, "next", 2, 6}));
}

TEST(Unescape, KnowsKiCadsEscapes) {
  const std::pair<const char*, const char*> cases[] = {
      // clang-format off
      {R"(plain)", "plain"}, {R"(a\"b)", "a\"b"}, {R"(back\\slash)", "back\\slash"},
      {R"(two\nlines)", "two\nlines"}, {R"(tab\t.)", "tab\t."}, {R"(\x41\x4a!)", "AJ!"},
      {R"(\101\60)", "A0"}, {R"(\q)", "q"}, {R"(\xZ)", "\\xZ"},
      // clang-format on
  };
  for (const auto& [raw, value] : cases) {
    EXPECT_EQ(Unescape(raw), value) << raw;
  }
}

TEST(SexprTree, NavigatesListsByHeadAndPosition) {
  const std::string text =
      "(kicad_sch (version 20211014)\n (wire (pts (xy 1 2) (xy 3 4)))"
      " (label \"A\\nB\" (at 5 6 0)))";
  const SexprTree tree(text);
  const Sexpr root = tree.root();
  EXPECT_EQ(root.head(), "kicad_sch");
  EXPECT_EQ(root.size(), 4u);
  EXPECT_EQ(root.Find("version")[1].text(), "20211014");
  const Sexpr pts = root.Find("wire").Find("pts");
  EXPECT_EQ(pts.size(), 3u);
  EXPECT_EQ(pts[2][2].text(), "4");
  EXPECT_EQ(pts[2].spot().line, 2u);
  EXPECT_EQ(pts[2].spot().column, 22u);
  const Sexpr label = root.Find("label");
  EXPECT_EQ(label[1].kind(), NodeKind::kString);
  EXPECT_EQ(label[1].text(), "A\nB");
  EXPECT_FALSE(root.Find("junction"));
  EXPECT_FALSE(pts[7]);
  EXPECT_EQ(pts[1].head(), "xy");
}

TEST(SexprTree, RefusesMalformedTextSayingWhere) {
  struct Case {
    const char* text;
    uint32_t line;
    uint32_t column;
    const char* says;
  };
  const Case cases[] = {
      {"(a (b c)\n", 2, 1, "ends inside the list (a ...) opened at 1:1"},
      {"(a (b\n  (c d", 2, 7, "ends inside the list (c ...) opened at 2:3"},
      {"(a))", 1, 4, "closes no list"},
      {"(a \"open\n  string)", 1, 4, "string is not closed"},
      {"(a |data\n", 1, 4, "|...| block is not closed"},
  };
  for (const Case& c : cases) {
    const auto fault = test::Thrown<SyntaxFault>([&] { const SexprTree tree(c.text); });
    ASSERT_TRUE(fault) << "read: " << c.text;
    EXPECT_EQ(std::make_pair(fault->spot.line, fault->spot.column),
              std::make_pair(c.line, c.column))
        << c.text;
    EXPECT_NE(fault->message.find(c.says), std::string::npos) << fault->message;
  }
}

}  // namespace
}  // namespace kalmor::kicad::detail
