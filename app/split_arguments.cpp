#include "app/split_arguments.h"

#include <cstdint>

namespace app {
namespace {

using Text = gen::basic_string<char>;
using Tokens = gen::array_ptr<Text>;

Text FromPosition(const Text& text, std::uint32_t position) {
  return position >= text.Length() ? Text("") : text.Right(text.Length() - position);
}

Text WithoutLeadingBlanks(const Text& text) {
  std::uint32_t blanks = 0;
  while (blanks < text.Length() && text.c_str()[blanks] == ' ') ++blanks;
  return FromPosition(text, blanks);
}

// `cut` is where the first piece of `rest` ends, -1 meaning at the end. A cut of 0 makes no piece: either the text
// began with blanks, which have gone meanwhile, or with the quote.
void SplitQuoted(Text rest, std::int32_t cut, Tokens& tokens) {
  for (;;) {
    rest = WithoutLeadingBlanks(rest);
    if (rest.IsEmpty()) return;
    if (cut != 0) {
      const Text piece = rest.Left(static_cast<std::uint32_t>(cut));
      if (piece.Find("\"") < 0) tokens.Append(new Text(piece));
      if (cut < 0) return;
      rest = FromPosition(rest, static_cast<std::uint32_t>(cut) + 1);
    }
    cut = rest.Find(" ");
  }
}

}  // namespace

Tokens SplitArguments(int argc, char** argv) {
  Tokens tokens;
  for (int i = 1; i < argc; ++i) {
    Text word(argv[i]);
    word.ReplaceAll("/", "\\");
    word.ReplaceAll(">", "\\");
    const std::int32_t quote = word.Find("\"");
    if (quote < 0) {
      tokens.Append(new Text(word));
    } else {
      SplitQuoted(word, quote, tokens);
    }
  }
  return tokens;
}

}  // namespace app
