#include "glib/format/signature_pattern.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <string_view>

namespace glib {
namespace {

using namespace std::string_view_literals;

const std::uint8_t* Bytes(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

bool Matches(std::string_view pattern, std::string_view text) {
  SignaturePattern signature;
  signature.SetPattern(pattern.data(), static_cast<std::uint32_t>(pattern.size()));
  return signature.Match(Bytes(text), static_cast<std::uint32_t>(text.size()));
}

struct MatchCase {
  std::string_view pattern;
  std::string_view text;
  bool matches;
};

TEST(SignaturePattern, TellsWhatTextsItMatches) {
  const MatchCase cases[] = {
      // Literals and the folding of their case.
      {"BM", "BM", true},
      {"BM", "bm", true},
      {"bm", "BM", true},
      {"BM", "BN", false},
      {"BM", "XBM", false},
      {"BM", "BMX", false},
      {"BMX", "BM", true},
      {"BM", "", true},
      {"@", "[", false},
      {"[[]", "[", false},
      {"\xE4", "\xE4", true},
      {"\xE4", "\xC4", false},
      {"a\0b"sv, "x\0b"sv, true},
      {"\0\0"sv, "\0\1"sv, false},
      {"{", "{", false},
      {"!\x7F", "!\x7F", true},
      // Classes.
      {"#", "0", true},
      {"#", "9", true},
      {"#", "/", false},
      {"#", ":", false},
      {"#", "\xB2", false},
      {"@", "a", true},
      {"@", "Z", true},
      {"@", "0", false},
      {"@", "`", false},
      {"@", "\xE9", false},
      {"A", "Q", true},
      {"A", "q", false},
      {"A", "@", false},
      {"a", "q", true},
      {"a", "Q", false},
      {"a", "{", false},
      {"ab", "xB", true},
      {"ab", "XB", false},
      {"?", "\0"sv, true},
      {"?", "\xFF", true},
      // Escapes and what is not a byte.
      {"\\a", "a", true},
      {"\\a", "A", true},
      {"\\a", "x", false},
      {"\\*", "*", true},
      {"\\*", "x", false},
      {"\\?\\#\\,", "?#,", true},
      {"\\?", "x", false},
      {"\\{x\\}", "{x}", true},
      {"~x", "x", false},
      {"~x", "X", true},
      {"~\0"sv, "\0"sv, false},
      {"~\0"sv, "\1"sv, true},
      {"~\\\\x", "\\\\x"sv, false},
      {"~[x", "yx", true},
      {"~[x", "[x", false},
      {"~", "x", true},
      {"~", "\0"sv, false},
      // Alternatives and groups.
      {"x,y", "x", true},
      {"x,y", "y", true},
      {"x,y", "z", false},
      {"x,yz", "xz", false},
      {"{x,y}z", "xz", true},
      {"{x,y}z", "yz", true},
      {"{x,y}z", "z", false},
      {"{xy,x}z", "xz", true},
      {"{x,xy}z", "xyz", false},
      {"{{x,y}z,w}", "yz", true},
      {"{{x,y}z,w}", "w", true},
      {"{x,}y", "xy", true},
      {"{x,}y", "y", false},
      {"[x]y", "xy", true},
      {"[x]y", "y", true},
      {"[x]y", "xx", false},
      {"x[y]", "x", true},
      {"x[y]", "xy", true},
      {"x[y]", "xz", false},
      {"x[y,z]w", "xzw", true},
      {"x[yz]w", "xyw", false},
      {"x[y[z]]w", "xyw", true},
      {"x[y[z]]w", "xw", true},
      {"GIF8{7,9}a", "GIF89a", true},
      {"GIF8{7,9}a", "gif87b", true},
      {"GIF8{7,9}a", "GIF88a", false},
      {"GIF8{7,9}a", "GIF89A", false},
      {"RIFF????ACON", "RIFF....XCON", true},
      {"RIFF????ACON", "RIFF....aCON", false},
      // An alternative that runs out of text gives way to one that doesn't, unless that accounts for less.
      {"xyz,xy", "xy", true},
      {"xyz,x", "xy", true},
      {"{xyz,x}y", "xy", true},
      // Repeats.
      {"*x", "", true},
      {"*x", "xxx", true},
      {"*x", "xxy", false},
      {"*0x", "xxx", true},
      {"*xy", "xxxy", true},
      {"*xy", "y", true},
      {"*xx", "xxx", true},
      {"*xxy", "xxxy", false},
      {"*2x", "xx", true},
      {"*2x", "xxx", false},
      {"*2x", "x", true},
      {"*2x", "xy", false},
      {"*02x", "xx", true},
      {"*12?", "123456789012", true},
      {"*12?", "1234567890123", false},
      {"*2{x,yz}", "yzx", true},
      {"*2{x,yz}", "yzz", false},
      {"*{xy}z", "xyxyz", true},
      {"*2*2x", "xxxx", true},
      {"*2*2x", "xxxxx", false},
      {"*2\\*3", "**3", true},
      {"*2[x]y", "xxy", true},
      {"*2[x]y", "xy", true},
      {"*2[x]y", "y", true},
      {"*2[x]y", "xxxy", false},
      {"*2{~x}y", "zzy", true},
      {"*2{~x}y", "zxy", false},
      // Without a group a repeat takes the tilde alone, whose own byte then stands outside.
      {"*2~x", "zz", false},
      // A repeat of nothing matches whatever comes.
      {"*9", "", true},
      {"*9", "anything", true},
      {"x*9", "xyz", true},
      {"x*9", "yz", false},
      {"{*}", "anything", true},
      {"[x*]y", "xy", false},
      {"[*9]y", "y", false},
      {"\\\\*", "\\anything", true},
      // Where the text ends.
      {"x[y]*z", "x", true},
      {"x*2y", "x", true},
      {"x[y],z", "x", true},
  };
  for (const MatchCase& c : cases) EXPECT_EQ(Matches(c.pattern, c.text), c.matches) << c.pattern << " on " << c.text;
}

TEST(SignaturePattern, RefusesPatternsThatAreNotWhole) {
  struct {
    std::string_view pattern;
    bool valid;
  } const cases[] = {
      {"", false},      {"x", true},   {"\\", false},   {"x\\", false},  {"\\\\", false}, {"*", false},
      {"x*", false},    {"\\*", true}, {"\\\\*", true}, {"*9", true},    {"[x", false},   {"x]", false},
      {"{x", false},    {"x}", false}, {"[x]", true},   {"{[x]}", true}, {"\\[x", true},  {"~[x", true},
      {"[x\\]", false}, {"]x[", true}, {"{[}]", true},  {"~", true},     {"{x]", false},  {"\0"sv, true},
  };
  for (const auto& c : cases) {
    SignaturePattern signature;
    signature.SetPattern(c.pattern.data(), static_cast<std::uint32_t>(c.pattern.size()));
    EXPECT_EQ(signature.Validate(), c.valid) << c.pattern;
    EXPECT_FALSE(!c.valid && signature.Match(Bytes("x"), 1)) << c.pattern;
  }
}

TEST(SignaturePattern, TakesLengthsFromTextWhereNoneAreGiven) {
  SignaturePattern signature;
  signature.SetPattern("BM\0X", SignaturePattern::kNulTerminated);
  EXPECT_EQ(signature.patternLength, 2U);
  EXPECT_TRUE(signature.Match(Bytes("BM\0Y"), SignaturePattern::kNulTerminated));
  EXPECT_EQ(signature.textLength, 2U);
  EXPECT_FALSE(signature.Match(nullptr, 2));

  signature.SetPattern("BM\0X", 4);  // one object serves many patterns
  EXPECT_EQ(signature.Length(), 4U);
  EXPECT_FALSE(signature.Match(Bytes("BM\0Y"sv), 4));
  EXPECT_TRUE(signature.Match(Bytes("BM\0X"sv), 4));

  signature.SetPattern(nullptr, SignaturePattern::kNulTerminated);
  EXPECT_FALSE(signature.Match(Bytes("BM"), 2));
}

// The steps of a test, opened.
class Steps : public SignaturePattern {
 public:
  struct Outcome {
    MatchResult result;
    std::uint32_t p;
    std::uint32_t t;

    bool operator==(const Outcome&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
      return out << "result " << outcome.result << ", pattern at " << outcome.p << ", text at " << outcome.t;
    }
  };
  using SignaturePattern::MatchFail;
  using SignaturePattern::MatchOk;
  using SignaturePattern::MatchOptionalTail;
  using SignaturePattern::MatchPartial;
  using SignaturePattern::MatchSyntax;
  using SignaturePattern::MatchTextEnded;

  explicit Steps(std::string_view pattern) { SetPattern(pattern.data(), static_cast<std::uint32_t>(pattern.size())); }

  Outcome Sequence(std::string_view text) {
    Outcome outcome{MatchOk, 0, 0};
    textLength = static_cast<std::uint32_t>(text.size());
    outcome.result = MatchSequence(Bytes(text), patternLength, outcome.p, outcome.t);
    return outcome;
  }
  std::uint32_t Skip(std::uint32_t p) {
    SkipElement(patternLength, p);
    return p;
  }
  // Where the next alternative begins, or -1.
  std::int32_t Next(std::uint32_t p) { return NextAlternative(patternLength, p) ? static_cast<std::int32_t>(p) : -1; }
};

TEST(SignaturePattern, ResultsOfTheStepsKeepTheirNumbers) {
  EXPECT_EQ(Steps::MatchOk, 0);
  EXPECT_EQ(Steps::MatchPartial, 1);
  EXPECT_EQ(Steps::MatchTextEnded, 2);
  EXPECT_EQ(Steps::MatchFail, 3);
  EXPECT_EQ(Steps::MatchSyntax, 4);
  EXPECT_EQ(Steps::MatchOptionalTail, 5);
}

TEST(SignaturePattern, StepsTellHowFarTheyCame) {
  const struct {
    std::string_view pattern;
    std::string_view text;
    Steps::Outcome outcome;
  } cases[] = {
      {"BM", "BM", {Steps::MatchOk, 2, 2}},
      {"BM", "BMX", {Steps::MatchOk, 2, 2}},
      {"BMX", "BM", {Steps::MatchPartial, 2, 2}},
      {"BM", "", {Steps::MatchTextEnded, 0, 0}},
      {"[B]", "", {Steps::MatchTextEnded, 0, 0}},
      {"BM", "BX", {Steps::MatchFail, 2, 0}},
      {"x,y", "y", {Steps::MatchOk, 3, 1}},
      {"x,y", "x", {Steps::MatchOk, 1, 1}},
      {"*9", "x", {Steps::MatchSyntax, 2, 0}},
      {"x*9", "xy", {Steps::MatchSyntax, 3, 1}},
      {"x[y]", "x", {Steps::MatchOptionalTail, 1, 1}},
      {"x*y", "x", {Steps::MatchOptionalTail, 1, 1}},
      {"x[y]*{z}[w]", "x", {Steps::MatchOptionalTail, 1, 1}},
      {"x*2y", "x", {Steps::MatchPartial, 1, 1}},
      {"x[y]z", "x", {Steps::MatchPartial, 1, 1}},
      {"x[y],z", "x", {Steps::MatchPartial, 1, 1}},
      {"*x", "xxy", {Steps::MatchOk, 2, 2}},
      {"*2x", "x", {Steps::MatchPartial, 2, 1}},
      {"*2x", "xy", {Steps::MatchFail, 3, 0}},
      {"*2{xy}", "xyx", {Steps::MatchPartial, 4, 3}},
      {"xyz,x", "xy", {Steps::MatchPartial, 2, 2}},
      {"xy,x", "x", {Steps::MatchOptionalTail, 4, 1}},
      {"xy,z,x", "x", {Steps::MatchOptionalTail, 6, 1}},
      {"x[yz]w", "xy", {Steps::MatchPartial, 3, 2}},
      {"[x*]y", "xy", {Steps::MatchOk, 5, 1}},  // the repeat takes the bracket for its element
      {"[*9]", "x", {Steps::MatchOk, 4, 0}},
      {"*[x]", "y", {Steps::MatchOk, 4, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(Steps(c.pattern).Sequence(c.text), c.outcome) << c.pattern << " on " << c.text;
}

TEST(SignaturePattern, StepsOverWholeElements) {
  const struct {
    std::string_view pattern;
    std::uint32_t start;
    std::uint32_t end;
  } skips[] = {
      {"xy", 0, 1},      {"xy", 2, 2},   {"\\{x", 0, 2},    {"*12xy", 0, 4}, {"**xy", 0, 3},
      {"*{x,y}z", 0, 6}, {"~xy", 0, 1},  {"{x[y]}z", 0, 6}, {"[]x", 0, 2},   {"{\\}}x", 0, 4},
      {"{*}x", 0, 4},    {"}x{y", 0, 3}, {"*\\{x", 0, 3},
  };
  for (const auto& c : skips) EXPECT_EQ(Steps(c.pattern).Skip(c.start), c.end) << c.pattern;

  const struct {
    std::string_view pattern;
    std::int32_t next;
  } alternatives[] = {
      {"x,y", 2}, {"xy", -1}, {"x,", -1}, {"{x,y},z", 6}, {"{x,y}", -1}, {"\\,,z", 3}, {"~,z", 2}, {"*3,,z", 4},
  };
  for (const auto& c : alternatives) EXPECT_EQ(Steps(c.pattern).Next(0), c.next) << c.pattern;
}

TEST(SignaturePattern, EndsWhateverThePatternAsksFor) {
  EXPECT_TRUE(Matches("*[x]y", "xxy"));
  EXPECT_TRUE(Matches("*[x]y", "y"));
  EXPECT_TRUE(Matches("*{x,}y", "xxy"));
  EXPECT_TRUE(Matches("*4000000000[x]y", "xxy"));
  EXPECT_TRUE(Matches("*99999999999999999999999x", "xxxxx"));

  // Each level would go through the rest of the text for each of its bytes.
  EXPECT_TRUE(Matches("*{*{*{*xy,x}w,x}w,x}z", "xxxxxxxxz"));
  EXPECT_FALSE(Matches("*{*{*{*xy,x}w,x}w,x}z", std::string(4096, 'x') + "z"));
}

TEST(SignaturePattern, NestsToAFixedDepth) {
  const auto nested = [](std::size_t depth) { return std::string(depth, '{') + "x" + std::string(depth, '}'); };
  EXPECT_TRUE(Matches(nested(SignaturePattern::kMaxNesting - 2), "x"));
  EXPECT_FALSE(Matches(nested(SignaturePattern::kMaxNesting + 1), "x"));
  EXPECT_FALSE(Matches(nested(1U << 20), "x"));
  EXPECT_FALSE(Matches(std::string(1U << 20, '*') + "x", "x"));
  EXPECT_FALSE(Matches("x" + std::string(1U << 20, '*') + "x", "x"));
}

// Nothing to compare with: the point is that the sanitizers see no read outside of pattern or text and that it ends.
TEST(SignaturePattern, StaysInsideOfPatternAndText) {
  std::mt19937 random(20240229);
  const std::string_view alphabet = "xyaA?#@~\\{}[],*0129\0\xFF"sv;
  SignaturePattern signature;
  std::uint32_t valid = 0;
  std::uint32_t matched = 0;
  for (int round = 0; round < 200000; ++round) {
    std::string pattern(1 + random() % 12, ' ');
    for (char& c : pattern) c = alphabet[random() % alphabet.size()];
    const std::uint32_t length = random() % 8;
    const std::unique_ptr<std::uint8_t[]> text(new std::uint8_t[length]);
    for (std::uint32_t i = 0; i < length; ++i)
      text[i] = static_cast<std::uint8_t>(alphabet[random() % alphabet.size()]);
    signature.SetPattern(pattern.data(), static_cast<std::uint32_t>(pattern.size()));
    valid += signature.Validate();
    matched += signature.Match(text.get(), length);
  }
  EXPECT_GT(valid, 50000U);
  EXPECT_GT(matched, 10000U);
}

}  // namespace
}  // namespace glib
