#include "glib/format/signature_pattern.h"

#include <cstring>

namespace glib {
namespace {

bool IsDigit(std::uint8_t c) { return c >= '0' && c <= '9'; }
bool IsUpper(std::uint8_t c) { return c >= 'A' && c <= 'Z'; }
bool IsLower(std::uint8_t c) { return c >= 'a' && c <= 'z'; }
std::uint8_t Folded(std::uint8_t c) { return IsLower(c) ? static_cast<std::uint8_t>(c - 'a' + 'A') : c; }

bool IsOfClass(std::uint8_t c, std::uint8_t patternClass) {
  switch (patternClass) {
    case '#':
      return IsDigit(c);
    case '@':
      return IsUpper(c) || IsLower(c);
    case 'A':
      return IsUpper(c);
    default:
      return IsLower(c);
  }
}

}  // namespace

// One level of the recursion. Too many of them end the test.
class SignaturePattern::Level {
 public:
  explicit Level(SignaturePattern& pattern) : pattern_(pattern) {
    if (++pattern_.nesting_ > kMaxNesting) pattern_.overLimit_ = true;
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;
  ~Level() { --pattern_.nesting_; }

 private:
  SignaturePattern& pattern_;
};

void SignaturePattern::SetPattern(const char* bytes, std::uint32_t length) {
  if (bytes == nullptr) length = 0;
  if (length == kNulTerminated) length = static_cast<std::uint32_t>(std::strlen(bytes));
  Assign(bytes == nullptr ? "" : bytes, length);
  patternLength = length;
}

bool SignaturePattern::Validate() const {
  if (patternLength == 0) return false;
  const std::uint8_t last = PatternByte(patternLength - 1);
  if (last == '\\') return false;
  if (last == '*' && (patternLength == 1 || PatternByte(patternLength - 2) != '\\')) return false;

  std::int32_t square = 0;
  std::int32_t curly = 0;
  for (std::uint32_t p = 0; p < patternLength; ++p) {
    switch (PatternByte(p)) {
      case '[':
        ++square;
        break;
      case ']':
        --square;
        break;
      case '{':
        ++curly;
        break;
      case '}':
        --curly;
        break;
      case '\\':
      case '~':
        ++p;
        break;
      default:
        break;
    }
  }
  return square == 0 && curly == 0;
}

bool SignaturePattern::Match(const std::uint8_t* text, std::uint32_t length) {
  if (!Validate() || text == nullptr) return false;
  textLength =
      length == kNulTerminated ? static_cast<std::uint32_t>(std::strlen(reinterpret_cast<const char*>(text))) : length;
  nesting_ = 0;
  steps_ = 0;
  overLimit_ = false;

  std::uint32_t p = 0;
  std::uint32_t t = 0;
  const MatchResult result = MatchSequence(text, patternLength, p, t);
  if (overLimit_) return false;
  if (result == MatchSyntax) return true;
  return result != MatchFail && t >= textLength;
}

std::uint8_t SignaturePattern::PatternByte(std::uint32_t p) const {
  return p < patternLength ? static_cast<std::uint8_t>(data[p]) : std::uint8_t{0};
}

// Two bytes behind a repeat's tilde can lead past the end of the part; the pattern's own end always stops.
bool SignaturePattern::AtEnd(std::uint32_t end, std::uint32_t p) const { return p == end || p > patternLength; }

bool SignaturePattern::CountStep() {
  if (++steps_ > kMaxSteps) overLimit_ = true;
  return !overLimit_;
}

// A tilde isn't looked at: "~c" counts as two elements here.
void SignaturePattern::SkipElement(std::uint32_t end, std::uint32_t& p) {
  const Level level(*this);
  std::int32_t square = 0;
  std::int32_t curly = 0;
  do {
    if (AtEnd(end, p) || !CountStep()) return;
    switch (PatternByte(p)) {
      case '*':
        ++p;
        while (IsDigit(PatternByte(p))) ++p;
        SkipElement(end, p);
        break;
      case '[':
        ++square;
        ++p;
        break;
      case '{':
        ++curly;
        ++p;
        break;
      case ']':
        --square;
        ++p;
        break;
      case '}':
        --curly;
        ++p;
        break;
      case '\\':
        p += 2;
        break;
      default:
        ++p;
        break;
    }
  } while (square != 0 || curly != 0);
}

bool SignaturePattern::NextAlternative(std::uint32_t end, std::uint32_t& p) {
  do {
    SkipElement(end, p);
    if (AtEnd(end, p) || overLimit_) return false;
  } while (PatternByte(p) != ',');
  ++p;
  return p < end;
}

SignaturePattern::MatchResult SignaturePattern::MatchSequence(const std::uint8_t* text, std::uint32_t end,
                                                              std::uint32_t& p, std::uint32_t& t) {
  const Level level(*this);
  const std::uint32_t firstText = t;
  std::uint32_t start = p;
  // The first alternative that ran out of text: what stands if no other does better.
  bool kept = false;
  std::uint32_t keptPattern = 0;
  std::uint32_t keptText = 0;

  for (;;) {
    if (!CountStep()) return MatchFail;
    MatchResult result = MatchRun(text, end, p, t);
    if ((result == MatchOk || result == MatchOptionalTail) && kept && t < keptText) {
      result = MatchPartial;
    } else if (result != MatchFail && result != MatchPartial) {
      return result == MatchOk && kept ? MatchOptionalTail : result;
    }
    if (!kept && result == MatchPartial) {
      kept = true;
      keptPattern = p;
      keptText = t;
    }
    p = start;
    t = firstText;
    if (!NextAlternative(end, p)) {
      if (!kept) return result;
      p = keptPattern;
      t = keptText;
      return MatchPartial;
    }
    start = p;
  }
}

SignaturePattern::MatchResult SignaturePattern::MatchRun(const std::uint8_t* text, std::uint32_t end, std::uint32_t& p,
                                                         std::uint32_t& t) {
  for (MatchResult code = MatchTextEnded;; code = MatchPartial) {
    if (AtEnd(end, p) || PatternByte(p) == ',') return MatchOk;
    if (t >= textLength) return MatchTail(end, p, code);
    if (!CountStep()) return MatchFail;

    const std::uint8_t c = text[t];
    const std::uint8_t element = PatternByte(p);
    switch (element) {
      case '*':
      case '{':
      case '[': {
        const MatchResult result = element == '*' ? MatchRepeat(text, end, p, t) : MatchGroup(text, end, p, t);
        if (overLimit_) return MatchFail;
        const bool goesOn = element == '[' ? result != MatchPartial : result == MatchOk || result == MatchOptionalTail;
        if (!goesOn) return result;
        continue;
      }
      case '#':
      case '@':
      case 'A':
      case 'a':
        if (!IsOfClass(c, element)) return MatchFail;
        break;
      case '?':
        break;
      case '~':
        ++p;
        if (PatternByte(p) == c) return MatchFail;
        break;
      default:
        if (element == '\\') ++p;
        if (Folded(PatternByte(p)) != Folded(c)) return MatchFail;
        break;
    }
    ++p;
    ++t;
  }
}

SignaturePattern::MatchResult SignaturePattern::MatchGroup(const std::uint8_t* text, std::uint32_t end,
                                                           std::uint32_t& p, std::uint32_t& t) {
  std::uint32_t behind = p;
  SkipElement(end, behind);
  ++p;
  const MatchResult result = MatchSequence(text, behind - 1, p, t);
  if (result != MatchPartial) p = behind;
  return result;
}

SignaturePattern::MatchResult SignaturePattern::MatchRepeat(const std::uint8_t* text, std::uint32_t end,
                                                            std::uint32_t& p, std::uint32_t& t) {
  std::uint64_t times = 0;
  for (++p; IsDigit(PatternByte(p)); ++p) {
    if (times <= textLength) times = times * 10 + (PatternByte(p) - std::uint64_t{'0'});
  }
  if (p >= end) return MatchSyntax;
  const std::uint32_t element = p;
  std::uint32_t behind = p;
  SkipElement(end, behind);

  for (std::uint64_t round = 1;; ++round) {
    const std::uint32_t roundText = t;
    p = element;
    const MatchResult result = MatchSequence(text, behind, p, t);
    const bool matched = result == MatchOk || result == MatchOptionalTail;
    // A round that took nothing would come out the same for ever.
    const bool last = t == roundText || round == times;
    if (times != 0) {
      if (result == MatchTextEnded) return MatchPartial;
      if (!matched) return result;
      if (!last) continue;
      p = behind;
      return result;
    }
    if (matched && !last) continue;
    p = behind;
    return matched || result == MatchTextEnded || result == MatchFail ? MatchOptionalTail : result;
  }
}

SignaturePattern::MatchResult SignaturePattern::MatchTail(std::uint32_t end, std::uint32_t p, MatchResult code) {
  if (code != MatchPartial) return code;
  while (!AtEnd(end, p)) {
    const std::uint8_t element = PatternByte(p);
    if (element == '*' && !IsDigit(PatternByte(p + 1))) {
      ++p;
    } else if (element != '[') {
      return code;
    }
    SkipElement(end, p);
    if (overLimit_) return code;
  }
  return MatchOptionalTail;
}

}  // namespace glib
