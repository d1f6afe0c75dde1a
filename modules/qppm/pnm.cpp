#include "modules/qppm/pnm.h"

#include <algorithm>
#include <cstring>

#include "glib/module_api/result_values.h"
#include "modules/qppm/pnm_rows.h"
#include "modules/qppm/pnm_text.h"

namespace qppm {
namespace {

constexpr std::uint32_t kMaxSample = 65535;

// The kind by the digit behind "P".
bool SetKind(std::uint8_t digit, PnmHeader& header) {
  if (digit < '1' || digit > '6') return false;
  constexpr PnmKind kKinds[] = {PnmKind::kBits, PnmKind::kGrey, PnmKind::kColour};
  header.kind = kKinds[(digit - '1') % 3];
  header.text = digit <= '3';
  return true;
}

// One picture. `used` gets the bytes that it took.
std::uint32_t LoadOne(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange, bool& more,
                      std::size_t& used) {
  more = false;
  PnmHeader header;
  const HeaderState state = ReadPnmHeader(file, header);
  if (state != HeaderState::kWhole) return modules::Fail(exchange, VerdictOf(state));
  const auto data = file.subspan(header.size);
  if (!modules::SizeBelievable(header.width, header.height, data.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, PnmPageBits(header.kind));
  if (page == nullptr) return glib::NSUP;
  if (header.kind == PnmKind::kBits) {
    modules::SetInkOnPaper(*page);
  } else if (header.kind == PnmKind::kGrey) {
    modules::SetGrayRamp(*page, 256);
  }
  const std::uint32_t rows = header.text ? ReadTextRows(data, header, *page) : ReadBinaryRows(data, header, *page);
  more = !header.text && rows == header.height;
  used = header.size + PnmRasterBytes(header);
  return modules::EndOfRows(exchange, rows, header.height);
}

}  // namespace

modules::Verdict VerdictOf(HeaderState state) {
  switch (state) {
    case HeaderState::kWhole:
      return modules::kFine;
    case HeaderState::kCut:
      return {glib::IERR, "The file ends within its header"};
    case HeaderState::kTooLarge:
      return {glib::NSUP, "The picture is too large"};
    default:
      return {glib::IERR, "The header makes no sense"};
  }
}

HeaderState ReadPnmHeader(std::span<const std::uint8_t> file, PnmHeader& header) {
  if (file.size() < 2) return HeaderState::kCut;
  if (file[0] != 'P' || !SetKind(file[1], header)) return HeaderState::kWrong;
  TextReader in(file.subspan(2));
  std::uint32_t* const numbers[] = {&header.width, &header.height, &header.highest};
  const std::size_t count = header.kind == PnmKind::kBits ? 2 : 3;
  for (std::size_t i = 0; i < count; ++i) {
    if (!in.Number(*numbers[i])) return in.AtEnd() ? HeaderState::kCut : HeaderState::kWrong;
  }
  if (header.width == 0 || header.height == 0) return HeaderState::kWrong;
  if (!modules::SizeAllowed(header.width, header.height)) return HeaderState::kTooLarge;
  if (header.highest == 0 || header.highest > kMaxSample) return HeaderState::kWrong;
  const std::size_t beforeEnd = 2 + in.Position();
  if (!in.EndOfHeader()) return in.AtEnd() ? HeaderState::kCut : HeaderState::kWrong;
  header.size = 2 + in.Position();
  // One character ends the header. Where that would leave one too many, the two of a line end were meant.
  const bool lineEndOfTwo = header.size < file.size() && file[beforeEnd] == '\r' && file[header.size] == '\n';
  if (!header.text && lineEndOfTwo && file.size() - header.size - 1 == PnmRasterBytes(header)) ++header.size;
  return HeaderState::kWhole;
}

std::uint32_t PnmPageBits(PnmKind kind) {
  if (kind == PnmKind::kBits) return 1;
  return kind == PnmKind::kGrey ? 8 : 24;
}

std::size_t PnmRowBytes(const PnmHeader& header) {
  const std::size_t width = header.width;
  if (header.kind == PnmKind::kBits) return (width + 7) / 8;
  return width * (header.kind == PnmKind::kColour ? 3 : 1) * (header.highest > 255 ? 2 : 1);
}

std::size_t PnmRasterBytes(const PnmHeader& header) { return PnmRowBytes(header) * header.height; }

std::size_t NextPnm(std::span<const std::uint8_t> file, std::size_t position) {
  while (position < file.size() && IsBlank(file[position])) ++position;
  const bool begins = file.size() - std::min(position, file.size()) >= 2 && file[position] == 'P' &&
                      file[position + 1] >= '1' && file[position + 1] <= '6';
  return begins ? position : file.size();
}

std::uint32_t LoadPnm(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  bool more = false;
  std::size_t used = 0;
  const std::uint32_t first = LoadOne(file, exchange, more, used);
  if (first != glib::RCOK) return first;
  while (more) {
    file = file.subspan(NextPnm(file, used));
    if (file.empty()) return glib::RCOK;
    // What is wrong with a later picture stays in the message; the others are worth having.
    LoadOne(file, exchange, more, used);
  }
  return glib::RCOK;
}

}  // namespace qppm
