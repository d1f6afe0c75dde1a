#include "gen/basic_string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using Text = gen::basic_string<char>;

std::string Plain(const Text& text) {
  EXPECT_EQ(text.c_str()[text.Length()], '\0');
  return {text.c_str(), text.Length()};
}

template <typename Misuse>
gen::genlib_out_of_range Thrown(Misuse misuse) {
  try {
    misuse();
  } catch (const gen::genlib_out_of_range& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was thrown";
  return {0, 0};
}

TEST(BasicString, HasTwoFormsOfEmpty) {
  const Text fresh;
  const Text assigned("");
  EXPECT_EQ(fresh.count, 0U);
  EXPECT_EQ(assigned.count, 1U);
  EXPECT_EQ(fresh.capacity, 64U);
  for (const Text* text : {&fresh, &assigned}) {
    EXPECT_TRUE(text->IsEmpty());
    EXPECT_EQ(Plain(*text), "");
    EXPECT_EQ(text->Find("a"), -1);
    EXPECT_EQ(Plain(text->Left(5)), "");
    EXPECT_EQ(Plain(text->Mid(3, 5)), "");
  }
  EXPECT_EQ(fresh.Compare(assigned), 0);
  EXPECT_TRUE(fresh == assigned);
  Text cleared("abc");
  cleared.Assign(nullptr);
  EXPECT_TRUE(cleared.IsEmpty());
  EXPECT_EQ(Plain(cleared), "");
}

TEST(BasicString, GrowsToExactlyWhatItNeeds) {
  Text text("abc");
  EXPECT_EQ(text.capacity, 64U);
  text.Assign(std::string(63, 'x').c_str());
  EXPECT_EQ(text.capacity, 64U);
  text.Append("y");
  EXPECT_EQ(text.capacity, 65U);
  text.Append("zz", 2);
  EXPECT_EQ(text.capacity, 67U);
  text.Assign("a");
  EXPECT_EQ(text.capacity, 67U);
  Text grown;
  grown.Assign(std::string(200, 'q').c_str());
  EXPECT_EQ(grown.capacity, 201U);
}

TEST(BasicString, CopiesDeeply) {
  Text first("abc");
  Text second(first);
  second.c_str()[0] = 'X';
  EXPECT_EQ(Plain(first), "abc");
  first = second;
  EXPECT_EQ(Plain(first), "Xbc");
  const Text& itself = first;
  first = itself;
  first.Append(first);
  first.Append(first.c_str() + 1);
  EXPECT_EQ(Plain(first), "XbcXbcbcXbc");
  first.Assign(first.c_str() + 3);
  EXPECT_EQ(Plain(first), "XbcbcXbc");
  EXPECT_EQ(Plain(Text("a") + "b" + Text("c")), "abc");
}

TEST(BasicString, ComparesLengthsBeforeBytes) {
  struct {
    const char *left, *right;
    int order;
  } const cases[] = {{"b", "aa", -1}, {"aa", "b", 1},   {"abc", "abd", -1}, {"", "", 0},
                     {"a", "a", 0},   {"\xFF", "a", 1}, {"A", "a", -1}};
  for (const auto& c : cases) EXPECT_EQ(Text(c.left).Compare(Text(c.right)), c.order) << c.left << " " << c.right;
}

TEST(BasicString, FindsText) {
  struct {
    const char *text, *pattern;
    std::uint32_t from;
    std::int32_t position;
  } const cases[] = {
      {"abcabc", "bc", 0, 1},  {"abcabc", "bc", 2, 4}, {"abcabc", "bc", 5, -1}, {"abcabc", "cab", 0, 2},
      {"abc", "abcd", 0, -1},  {"abc", "abc", 0, 0},   {"abc", "c", 3, -1},     {"abc", "c", 0xFFFFFFFF, -1},
      {"aXbaYb", "aYb", 0, 3}, {"Abc", "abc", 0, -1},  {"aab", "ab", 0, 1},     {"abca", "abc", 1, -1},
  };
  for (const auto& c : cases) EXPECT_EQ(Text(c.text).Find(c.pattern, c.from), c.position) << c.text << " " << c.pattern;
  // The length that is given ends the text.
  EXPECT_EQ(Text::FindRaw("abcdef", 3, "cd", 0), -1);
  EXPECT_EQ(Text::FindRaw("abcdef", 4, "cd", 0), 2);
}

TEST(BasicString, FindsCharacters) {
  const Text text("a.b.c");
  EXPECT_EQ(text.FindChar('.'), 1);
  EXPECT_EQ(text.FindChar('x'), -1);
  EXPECT_EQ(text.ReverseFind('.'), 3);
  EXPECT_EQ(text.ReverseFind('.', 3), 3);
  EXPECT_EQ(text.ReverseFind('.', 2), 1);
  EXPECT_EQ(text.ReverseFind('.', 0), -1);
  EXPECT_EQ(text.ReverseFind('a', 0), 0);
  EXPECT_EQ(text.ReverseFind('.', 100), 3);
  EXPECT_EQ(Thrown([] { Text().ReverseFind('a', 7); }).index, 7U);
  EXPECT_EQ(Thrown([] { Text("").ReverseFind('a', 7); }).limit, 0U);
  EXPECT_EQ(Thrown([] { Text().FindChar('a'); }).limit, 0U);
}

TEST(BasicString, TakesParts) {
  const Text text("abc");
  EXPECT_EQ(Plain(text.Left(2)), "ab");
  EXPECT_EQ(Plain(text.Left(0)), "");
  EXPECT_EQ(Plain(text.Left(Text::npos)), "abc");
  EXPECT_EQ(Plain(text.Right(2)), "bc");
  EXPECT_EQ(Plain(text.Right(10)), "abc");
  EXPECT_EQ(Plain(text.Right(0)), "");
  EXPECT_EQ(Plain(text.Mid(1, 1)), "b");
  EXPECT_EQ(Plain(text.Mid(1, Text::npos)), "bc");
  EXPECT_EQ(Plain(text.Mid(1, 0)), "");
  EXPECT_EQ(Plain(text.Mid(3, 5)), "c");
  EXPECT_EQ(Plain(text.Mid(Text::npos, 5)), "c");
}

TEST(BasicString, ErasesWithinItsText) {
  Text text("abcdef");
  text.Erase(1, 2);
  EXPECT_EQ(Plain(text), "adef");
  text.Erase(3, 1);
  EXPECT_EQ(Plain(text), "ade");
  text.Erase(2, 0);
  EXPECT_EQ(Plain(text), "ade");
  text.Erase(1, Text::npos);
  EXPECT_EQ(Plain(text), "a");
  EXPECT_EQ(Thrown([&] { text.Erase(1, 1); }).index, 1U);
  EXPECT_EQ(Thrown([&] { text.Erase(0, 2); }).index, 1U);
  EXPECT_EQ(Thrown([&] { text.Erase(0, 0xFFFFFFFE); }).limit, 1U);
  EXPECT_EQ(Plain(text), "a");
}

TEST(BasicString, ReplacesInPlace) {
  Text text("abcdef");
  text.Replace(1, 2, "XYZ", 3);
  EXPECT_EQ(Plain(text), "aXYZdef");
  text.Replace(0, 0, "-", 1);
  EXPECT_EQ(Plain(text), "-aXYZdef");
  text.Replace(8, 0, "+", 1);
  EXPECT_EQ(Plain(text), "-aXYZdef+");
  text.Replace(2, 3, "", 0);
  EXPECT_EQ(Plain(text), "-adef+");
  Thrown([&] { text.Replace(7, 0, "x", 1); });
}

TEST(BasicString, ReplacesAllFromTheStartEachTime) {
  struct {
    const char *text, *pattern, *by, *result;
  } const cases[] = {
      {"a/b//c/", "/", "\\", "a\\b\\\\c\\"},
      {"=a==b=", "=", "", "ab"},
      {"1,5,2", ",", ".", "1.5.2"},
      {"abab", "ab", "x", "xx"},
      {"aabb", "ab", "", ""},
      {":\\\\\\", ":\\\\", ":\\", ":\\"},
      {"", "a", "b", ""},
      {"abc", "", "x", "abc"},
  };
  for (const auto& c : cases) {
    Text text(c.text);
    text.ReplaceAll(c.pattern, c.by);
    EXPECT_EQ(Plain(text), c.result) << c.text;
  }
  Text fresh;
  fresh.ReplaceAll("a", "b");
  EXPECT_EQ(fresh.count, 0U);
}

TEST(BasicString, ResizeSetsTheEndOnly) {
  Text text("abcdef");
  text.Resize(3);
  EXPECT_EQ(Plain(text), "abc");
  EXPECT_EQ(text.capacity, 64U);
  text.Resize(100);
  EXPECT_EQ(text.Length(), 100U);
  EXPECT_EQ(text.capacity, 101U);
  EXPECT_EQ(std::string(text.c_str(), 3), "abc");
}

TEST(BasicString, LowersLettersOfAsciiOnly) {
  Text text("AbZ[\x80\xC0@`");
  text.ToLower();
  EXPECT_EQ(Plain(text), "abz[\x80\xC0@`");
}

TEST(Format, CutsOffBehindItsRoom) {
  Text text("old");
  gen::Format(text, "%s(%d)%s", "a", 12, ".gif");
  EXPECT_EQ(Plain(text), "a(12).gif");
  EXPECT_GE(text.capacity, 4096U);
  const std::string longText(5000, 'x');
  gen::Format(text, "%s", longText.c_str());
  EXPECT_EQ(Plain(text), longText.substr(0, 4095));
  gen::Format(text, "%s", "");
  EXPECT_TRUE(text.IsEmpty());
}

}  // namespace
