#include "modules/qimg/sgi.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"
#include "modules/common/pixel_rows.h"

namespace qimg {
namespace {

constexpr std::uint32_t kMagic = 474;
constexpr std::size_t kShownPlanes = 4;

// Runs of bytes: a count with the mark of a literal, then its samples or the one that is repeated; 0 ends the row.
void UnpackBytes(modules::ByteReader& in, std::span<std::uint8_t> row) {
  for (std::size_t done = 0; done < row.size();) {
    const std::uint8_t code = in.Byte();
    const std::size_t count = std::min<std::size_t>(code & 127U, row.size() - done);
    if (count == 0) return;
    if ((code & 128U) != 0) {
      in.Read(row.data() + done, count);
    } else {
      std::memset(row.data() + done, in.Byte(), count);
    }
    done += count;
  }
}

// The same of big-endian words, also for the codes.
void UnpackWords(modules::ByteReader& in, std::span<std::uint8_t> row) {
  for (std::size_t done = 0; done < row.size();) {
    const std::uint32_t code = in.BigWord();
    const std::size_t count = std::min<std::size_t>((code & 127U) * 2, row.size() - done);
    if (count == 0) return;
    if ((code & 128U) != 0) {
      in.Read(row.data() + done, count);
    } else {
      const std::uint32_t word = in.BigWord();
      for (std::size_t i = 0; i + 1 < count; i += 2) {
        row[done + i] = static_cast<std::uint8_t>(word >> 8);
        row[done + i + 1] = static_cast<std::uint8_t>(word);
      }
    }
    done += count;
  }
}

// The rows of all planes, which lie plane by plane, or anywhere that a table says.
class SgiRows {
 public:
  SgiRows(std::span<const std::uint8_t> file, const SgiHeader& header)
      : file_(file), header_(header), words_(header.sampleBytes == 2 ? std::size_t{header.width} * 2 : 0) {}

  // Row `y` counts from below. False if it is cut off or nowhere; what there is not of it is 0.
  bool Read(std::uint32_t plane, std::uint32_t y, std::span<std::uint8_t> samples) {
    const std::span<std::uint8_t> row = words_.empty() ? samples : std::span(words_);
    std::memset(row.data(), 0, row.size());
    const std::size_t number = std::size_t{plane} * header_.height + y;
    modules::ByteReader in(file_);
    const bool found = header_.packed ? Unpack(in, number, row) : Copy(in, number, row);
    if (!words_.empty()) modules::RoundBigWords(words_.data(), samples.size(), samples.data());
    return found;
  }

 private:
  bool Copy(modules::ByteReader& in, std::size_t number, std::span<std::uint8_t> row) const {
    return in.Seek(kSgiHeader + number * row.size()) && in.Read(row.data(), row.size()) == row.size();
  }

  bool Unpack(modules::ByteReader& in, std::size_t number, std::span<std::uint8_t> row) const {
    // All places come first, then all lengths.
    const std::size_t rows = std::size_t{header_.planes} * header_.height;
    if (!in.Seek(kSgiHeader + 4 * (rows + number))) return false;
    const std::size_t length = in.BigLong();
    in.Seek(kSgiHeader + 4 * number);
    const std::size_t place = in.BigLong();
    if (in.Failed() || place < kSgiHeader || !in.Seek(place)) return false;
    modules::ByteReader runs(in.Take(std::min(length, in.Left())));
    if (runs.AtEnd()) return false;
    words_.empty() ? UnpackBytes(runs, row) : UnpackWords(runs, row);
    return true;
  }

  std::span<const std::uint8_t> file_;
  const SgiHeader& header_;
  std::vector<std::uint8_t> words_;  // a row of samples of 16 bits
};

// Whether the file is long enough for its picture.
bool Believable(const SgiHeader& header, std::size_t size) {
  const std::uint64_t samples = std::uint64_t{header.width} * header.height * header.planes;
  return modules::SizeBelievable(samples, 1, size);
}

void JoinRow(const SgiHeader& header, const std::vector<std::uint8_t> (&planes)[kShownPlanes], std::uint8_t* row) {
  const std::uint8_t* red = planes[0].data();
  const std::uint8_t* green = header.Grey() ? red : planes[1].data();
  const std::uint8_t* blue = header.Grey() ? red : planes[2].data();
  if (!header.Alpha()) return modules::JoinThree(blue, green, red, header.width, row);
  modules::JoinFour(blue, green, red, planes[header.Grey() ? 1 : 3].data(), header.width, row);
}

}  // namespace

modules::Verdict ReadSgiHeader(std::span<const std::uint8_t> file, SgiHeader& header) {
  modules::ByteReader in(file);
  const std::uint32_t magic = in.BigWord();
  const std::uint8_t storage = in.Byte();
  header.sampleBytes = in.Byte();
  const std::uint32_t dimensions = in.BigWord();
  header.width = in.BigWord();
  // Of a row, or of a single plane, the numbers that follow mean nothing.
  const std::uint32_t height = in.BigWord();
  const std::uint32_t planes = in.BigWord();
  header.height = dimensions == 1 ? 1 : height;
  header.planes = dimensions == 3 ? planes : 1;
  header.packed = storage == 1;
  if (in.Failed() || magic != kMagic) return {glib::IERR, "The file has no header of this format"};
  if (storage > 1 || header.sampleBytes < 1 || header.sampleBytes > 2 || dimensions < 1 || dimensions > 3) {
    return {glib::NSUP, "The picture is stored in an unknown way"};
  }
  if (header.planes == 0 || !modules::SizeAllowed(header.width, header.height)) {
    return {glib::NSUP, "The picture has no pixels or too many"};
  }
  return modules::kFine;
}

std::uint32_t LoadSgi(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  SgiHeader header;
  const modules::Verdict verdict = ReadSgiHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  if (!Believable(header, file.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, header.PageBits());
  if (page == nullptr) return glib::NSUP;
  if (page->bits == 8) modules::SetGrayRamp(*page, 256);

  SgiRows rows(file, header);
  const std::uint32_t shown = (header.Grey() ? 1U : 3U) + (header.Alpha() ? 1U : 0U);
  std::vector<std::uint8_t> planes[kShownPlanes];
  for (auto& plane : planes) plane.resize(header.width);
  std::uint32_t found = 0;
  for (std::uint32_t y = 0; y < header.height; ++y) {
    std::uint8_t* target = modules::Row(*page, header.height - 1 - y);
    bool any = false;
    if (page->bits == 8) {
      any = rows.Read(0, y, {target, header.width});
    } else {
      for (std::uint32_t i = 0; i < shown; ++i) any = rows.Read(i, y, planes[i]) || any;
      if (any) JoinRow(header, planes, target);
    }
    if (any) ++found;
  }
  return modules::EndOfRows(exchange, found, header.height);
}

}  // namespace qimg
