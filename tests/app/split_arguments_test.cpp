#include "app/split_arguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

Words Split(const Words& arguments) {
  Words storage = arguments;
  storage.insert(storage.begin(), "zefa");
  std::vector<char*> argv;
  for (std::string& word : storage) argv.push_back(word.data());
  const auto tokens = app::SplitArguments(static_cast<int>(argv.size()), argv.data());
  Words words;
  for (std::uint32_t i = 0; i < tokens.count; ++i) words.emplace_back(tokens.At(i)->c_str());
  return words;
}

TEST(SplitArguments, CutsAtQuotesOnly) {
  struct {
    Words arguments, tokens;
  } const cases[] = {
      {{}, {}},
      {{"s=/pics/*.jpg", "-w100"}, {"s=\\pics\\*.jpg", "-w100"}},
      {{"d=a>b", "////"}, {"d=a\\b", "\\\\\\\\"}},
      {{"s=c:/my pics/*.*"}, {"s=c:\\my pics\\*.*"}},
      {{" -ov"}, {" -ov"}},
      {{""}, {""}},
      // The quote ends a word, and behind it blanks do.
      {{"s=c:\\in\" d=c:\\out -w100"}, {"s=c:\\in", "d=c:\\out", "-w100"}},
      {{"a\"b"}, {"a", "b"}},
      {{"a\""}, {"a"}},
      {{"a\"   "}, {"a"}},
      {{"a\"  b   c  "}, {"a", "b", "c"}},
      {{"a\"b \"c\" d\"e f"}, {"a", "b", "f"}},
      // A quote in front isn't cut off, and so its word goes.
      {{"\"a b c\""}, {"b"}},
      {{"\"\""}, {}},
      {{"\""}, {}},
      // The place of the quote was found before the blanks went.
      {{"  a\"b c"}, {"c"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Split(c.arguments), c.tokens) << testing::PrintToString(c.arguments);
}

TEST(SplitArguments, TakesLongArguments) {
  std::string argument = "x\"";
  for (int i = 0; i < 20000; ++i) argument += " word";
  EXPECT_EQ(Split({argument}).size(), 20001U);
}

}  // namespace
