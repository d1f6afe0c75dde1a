#include "modules/qpct/picture_header.h"

#include "modules/qpct/operations.h"

namespace qpct {
namespace {

constexpr std::size_t kLead = 512;
constexpr std::int16_t kExtended = -2;

bool HasArea(const platform::Box& box) { return box.right > box.left && box.bottom > box.top; }

// The header operation of version 2 may give the size in finer units.
void ReadExtension(modules::ByteReader in, PictureHeader& header) {
  if (in.BigWord() != kHeaderOperation || in.SignedBigWord() != kExtended) return;
  in.Skip(2);
  const double dpiX = in.BigLong() / 65536.0;
  const double dpiY = in.BigLong() / 65536.0;
  const platform::Box box = ReadBox(in);
  if (in.Failed() || dpiX != dpiY || dpiX < 1 || dpiX > 10000 || !HasArea(box)) return;
  header.frame = box;
  header.dpi = dpiX;
}

std::optional<PictureHeader> ReadAt(std::span<const std::uint8_t> file, std::size_t start) {
  modules::ByteReader in(file);
  in.Seek(start);
  in.Skip(2);  // the size's low word, which nobody keeps right
  PictureHeader header;
  header.frame = ReadBox(in);
  const std::uint16_t version = in.BigWord();
  if (version == 0x0011 && in.BigWord() == 0x02FF) {
    header.wordCodes = true;
  } else if (version != 0x1101) {
    return {};
  }
  if (in.Failed() || !HasArea(header.frame)) return {};
  header.body = in.Position();
  if (header.wordCodes) ReadExtension(in, header);
  return header;
}

}  // namespace

platform::Box ReadBox(modules::ByteReader& in) {
  platform::Box box;
  box.top = in.SignedBigWord();
  box.left = in.SignedBigWord();
  box.bottom = in.SignedBigWord();
  box.right = in.SignedBigWord();
  return box;
}

std::optional<PictureHeader> ReadPictureHeader(std::span<const std::uint8_t> file) {
  if (const auto header = ReadAt(file, kLead)) return header;
  return ReadAt(file, 0);
}

}  // namespace qpct
