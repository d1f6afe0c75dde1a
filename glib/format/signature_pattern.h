#ifndef GLIB_FORMAT_SIGNATURE_PATTERN_H_
#define GLIB_FORMAT_SIGNATURE_PATTERN_H_

#include <cstdint>

#include "gen/basic_string.h"

namespace glib {

// A description of how files of a format begin, and the test of a text against it. It is interpreted byte by byte.
//
//   ?        any byte              #   a digit          @   a letter
//   A        an upper-case letter  a   a lower-case letter
//   ~c       a byte that is not c, exactly
//   \c       c itself, without its special meaning
//   {x,y}    x or y                [x,y]  x or y or nothing
//   x,y      x or y, also outside of any group
//   *3x      three times x         *x  as many x as there are
//
// Every other byte stands for itself, and ASCII letters for both of their cases. There is no way back into what has
// matched: "{x,xy}z" doesn't find "xyz".
//
// Patterns come from modules and texts from anywhere, so whatever either holds, a test reads inside of both and ends. A
// pattern that nests too deep or takes too many steps doesn't match.
class SignaturePattern : public gen::basic_string<char> {
 public:
  static constexpr std::uint32_t kNulTerminated = 0xFFFFFFFF;
  static constexpr std::uint32_t kMaxNesting = 64;
  // A pattern with repeats within repeats could keep a test busy for years. Real ones take some 4000.
  static constexpr std::uint32_t kMaxSteps = 1U << 20;

  // `length` is kNulTerminated for text.
  void SetPattern(const char* bytes, std::uint32_t length);

  // Whether the pattern accounts for all of the text. A text may end before the pattern does. `length` is
  // kNulTerminated for text.
  bool Match(const std::uint8_t* text, std::uint32_t length);

  // Whether the pattern is not empty, its brackets come out even and its last byte lacks nothing behind it.
  bool Validate() const;

  std::uint32_t patternLength = 0;
  std::uint32_t textLength = 0;  // of the present test

 protected:
  enum MatchResult {
    MatchOk,            // all of the part, or one alternative of it, is used up
    MatchPartial,       // the text ended behind some elements; more of the pattern is required
    MatchTextEnded,     // the text had ended before
    MatchFail,          // a byte is another one
    MatchSyntax,        // a repeat of nothing
    MatchOptionalTail,  // the text ended and the rest of the pattern may be missing
  };

  // Steps of a test. `p` is a position in the pattern, of which the part up to `end` counts, and `t` one in the text.
  MatchResult MatchSequence(const std::uint8_t* text, std::uint32_t end, std::uint32_t& p, std::uint32_t& t);
  MatchResult MatchRun(const std::uint8_t* text, std::uint32_t end, std::uint32_t& p, std::uint32_t& t);
  MatchResult MatchGroup(const std::uint8_t* text, std::uint32_t end, std::uint32_t& p, std::uint32_t& t);
  MatchResult MatchRepeat(const std::uint8_t* text, std::uint32_t end, std::uint32_t& p, std::uint32_t& t);
  MatchResult MatchTail(std::uint32_t end, std::uint32_t p, MatchResult code);
  void SkipElement(std::uint32_t end, std::uint32_t& p);
  bool NextAlternative(std::uint32_t end, std::uint32_t& p);

 private:
  class Level;

  std::uint8_t PatternByte(std::uint32_t p) const;
  bool AtEnd(std::uint32_t end, std::uint32_t p) const;
  bool CountStep();

  std::uint32_t nesting_ = 0;
  std::uint32_t steps_ = 0;
  bool overLimit_ = false;
};

}  // namespace glib

#endif  // GLIB_FORMAT_SIGNATURE_PATTERN_H_
