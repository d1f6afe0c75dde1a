#ifndef MODULES_QSWF_EDIT_TEXT_H_
#define MODULES_QSWF_EDIT_TEXT_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "modules/qswf/bit_reader.h"
#include "modules/qswf/values.h"

namespace qswf {

// A box of text that the movie may change: with what stands in it at first.
struct EditText {
  enum class Align { kLeft, kRight, kCenter };

  Rect box;  // twips
  std::optional<std::uint16_t> font;
  double height = 240;  // of the em, twips
  Color color{0, 0, 0, 255};
  Align align = Align::kLeft;
  double leftMargin = 0;  // twips
  double rightMargin = 0;
  double indent = 0;
  double leading = 0;
  bool wraps = false;
  std::u16string text;  // lines end with a line feed
};

EditText ReadEditText(BitReader& in);

// A line of it, with its place in the box.
struct EditLine {
  std::u16string text;
  double x = 0;  // twips
  double baseline = 0;
};

// `length` gives the length of a text to the em, `ascent` is to the em as well.
std::vector<EditLine> LinesOf(const EditText& edit, double ascent,
                              const std::function<double(std::u16string_view)>& length);

}  // namespace qswf

#endif  // MODULES_QSWF_EDIT_TEXT_H_
