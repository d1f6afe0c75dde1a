#include "modules/helpers/dxf_reader/reader.h"

#include <dl_dxf.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <istream>
#include <streambuf>
#include <string_view>

namespace dxf {
namespace {

constexpr std::size_t kMaxLine = 1000;  // the library gives up at 1024
constexpr std::string_view kBinaryMark("AutoCAD Binary DXF\r\n\x1A\0", 22);

bool HasMark(std::span<const std::uint8_t> file) {
  return file.size() > kBinaryMark.size() &&
         std::equal(kBinaryMark.begin(), kBinaryMark.end(), file.begin(),
                    [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
}

enum class Form { kText, kReal, kFlag, kShort, kLong, kLongLong, kChunk };

// How the value of a group is stored.
Form FormOf(int code) {
  constexpr struct {
    int first, last;
    Form form;
  } kForms[] = {
      {10, 59, Form::kReal},       {60, 79, Form::kShort},     {90, 99, Form::kLong},    {110, 149, Form::kReal},
      {160, 169, Form::kLongLong}, {170, 179, Form::kShort},   {210, 239, Form::kReal},  {270, 289, Form::kShort},
      {290, 299, Form::kFlag},     {310, 319, Form::kChunk},   {370, 389, Form::kShort}, {400, 409, Form::kShort},
      {420, 429, Form::kLong},     {440, 459, Form::kLong},    {460, 469, Form::kReal},  {1004, 1004, Form::kChunk},
      {1010, 1059, Form::kReal},   {1060, 1070, Form::kShort}, {1071, 1071, Form::kLong}};
  for (const auto& [first, last, form] : kForms) {
    if (code >= first && code <= last) return form;
  }
  return Form::kText;
}

void Strip(std::string& line, bool spaces) {
  const char* kEnds = spaces ? " \t\r\n" : "\r\n";
  line.erase(line.find_last_not_of(kEnds) + 1);
  if (spaces) line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
}

// Hands the library a group at a time. When it asks for the next, it has told of all that the one before it ends, and
// the collector may have that one.
class GroupBuffer : public std::streambuf {
 public:
  GroupBuffer(std::span<const std::uint8_t> file, Collector& collector) : groups_(file), collector_(collector) {}

 private:
  int_type underflow() override {
    if (any_) collector_.TakeGroup(code_, value_);
    any_ = groups_.Next(code_, value_);
    if (!any_) return traits_type::eof();
    lines_ = std::to_string(code_) + "\n" + value_ + "\n";
    setg(lines_.data(), lines_.data(), lines_.data() + lines_.size());
    return traits_type::to_int_type(lines_[0]);
  }

  GroupReader groups_;
  Collector& collector_;
  bool any_ = false;
  int code_ = 0;
  std::string value_;
  std::string lines_;
};

}  // namespace

GroupReader::GroupReader(std::span<const std::uint8_t> file) : in_(file), binary_(HasMark(file)) {
  if (binary_) {
    in_.Skip(kBinaryMark.size());
    // A group of code 0 comes first; its text has no empty beginning.
    wideCodes_ = file.size() > kBinaryMark.size() + 1 && file[kBinaryMark.size() + 1] == 0;
  } else if (std::find(file.begin(), file.end(), '\n') == file.end()) {
    lineEnd_ = '\r';
  }
}

bool GroupReader::NextLine(std::string& line) {
  line.clear();
  if (in_.AtEnd()) return false;
  while (!in_.AtEnd()) {
    const char c = static_cast<char>(in_.Byte());
    if (c == lineEnd_) break;
    if (line.size() < kMaxLine) line += c;
  }
  return true;
}

bool GroupReader::NextBinary(int& code, std::string& value) {
  constexpr std::uint8_t kEscape = 255;
  if (in_.AtEnd()) return false;
  code = wideCodes_ ? in_.Word() : in_.Byte();
  if (!wideCodes_ && code == kEscape) code = in_.Word();
  char number[40] = {};
  switch (FormOf(code)) {
    case Form::kText:
      value.clear();
      for (char c = 0; !in_.AtEnd() && (c = static_cast<char>(in_.Byte())) != 0;) {
        if (value.size() < kMaxLine) value += c == '\n' ? ' ' : c;
      }
      return !in_.Failed();
    case Form::kReal: {
      const std::uint64_t low = in_.Long();
      std::snprintf(number, sizeof(number), "%.17g", std::bit_cast<double>(std::uint64_t{in_.Long()} << 32 | low));
      break;
    }
    case Form::kFlag:
      std::snprintf(number, sizeof(number), "%d", in_.Byte());
      break;
    case Form::kShort:
      std::snprintf(number, sizeof(number), "%d", static_cast<std::int16_t>(in_.Word()));
      break;
    case Form::kLong:
      std::snprintf(number, sizeof(number), "%d", static_cast<std::int32_t>(in_.Long()));
      break;
    case Form::kLongLong:
      in_.Skip(8);
      break;
    case Form::kChunk:
      in_.Skip(in_.Byte());
      break;
  }
  value = number;
  return !in_.Failed();
}

bool GroupReader::Next(int& code, std::string& value) {
  if (binary_) return NextBinary(code, value);
  std::string line;
  if (!NextLine(line) || !NextLine(value)) return false;
  Strip(line, true);
  Strip(value, false);
  code = static_cast<int>(std::strtol(line.c_str(), nullptr, 10));
  return true;
}

void ReadDxf(std::span<const std::uint8_t> file, Collector& collector) {
  GroupBuffer buffer(file, collector);
  std::istream stream(&buffer);
  DL_Dxf().in(stream, &collector);
  collector.Finish();
}

}  // namespace dxf
