#include "modules/qmng/jng.h"

#include <zlib.h>

#include <algorithm>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/jpeg_reader.h"
#include "modules/common/png_page.h"

namespace qmng {
namespace {

using Stream = std::vector<std::uint8_t>;

modules::Verdict ReadHeaderChunk(Bytes data, JngHeader& header) {
  enum Kind : std::uint8_t { kGrey = 8, kColours = 10, kGreyAlpha = 12, kColoursAlpha = 14 };
  constexpr std::uint8_t kJpeg = 8;
  modules::ByteReader in(data);
  header.width = in.BigLong();
  header.height = in.BigLong();
  const std::uint8_t kind = in.Byte();
  in.Skip(1);  // bits of the samples; of pictures with two streams the one of 8 bits comes first
  const std::uint8_t compression = in.Byte();
  in.Skip(1);
  header.alphaDepth = in.Byte();
  const std::uint8_t alphaCompression = in.Byte();
  if (in.Failed()) return {glib::IERR, "The file is cut off in its header"};
  if (kind != kGrey && kind != kColours && kind != kGreyAlpha && kind != kColoursAlpha) {
    return {glib::IERR, "The picture is of an unknown kind"};
  }
  if (compression != kJpeg || (alphaCompression != 0 && alphaCompression != kJpeg)) {
    return {glib::NSUP, "The picture's compression is not supported"};
  }
  if (!modules::SizeAllowed(header.width, header.height)) {
    return {glib::NSUP, "The picture has no pixels or too many"};
  }
  header.grey = kind == kGrey || kind == kGreyAlpha;
  header.alpha = kind == kGreyAlpha || kind == kColoursAlpha;
  header.alphaIsJpeg = alphaCompression == kJpeg;
  return modules::kFine;
}

void ReadResolution(Bytes data, JngHeader& header) {
  constexpr std::uint8_t kMetre = 1;
  modules::ByteReader in(data);
  const double x = in.BigLong();
  const double y = in.BigLong();
  if (in.Byte() != kMetre) return;
  header.dpiX = modules::DpiFromMetre(x);
  header.dpiY = modules::DpiFromMetre(y);
}

modules::Verdict ReadHeader(const std::vector<Chunk>& chunks, JngHeader& header) {
  if (chunks.empty() || chunks[0].name != Name("JHDR")) return {glib::IERR, "The file has no header of this format"};
  for (const Chunk& chunk : chunks) {
    if (chunk.name == Name("pHYs")) ReadResolution(chunk.data, header);
  }
  return ReadHeaderChunk(chunks[0].data, header);
}

// The data of all chunks of a name, up to the mark between two streams.
Stream Joined(const std::vector<Chunk>& chunks, std::uint32_t name) {
  Stream stream;
  for (const Chunk& chunk : chunks) {
    if (chunk.name == Name("JSEP") && name == Name("JDAT")) break;
    if (chunk.name == name) stream.insert(stream.end(), chunk.data.begin(), chunk.data.end());
  }
  return stream;
}

void PutBig(Stream& stream, std::size_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) stream.push_back(static_cast<std::uint8_t>(value >> shift));
}

void AppendChunk(Stream& file, const char (&name)[5], Bytes data) {
  PutBig(file, data.size());
  const std::size_t begin = file.size();
  for (int i = 0; i < 4; ++i) file.push_back(static_cast<std::uint8_t>(name[i]));
  file.insert(file.end(), data.begin(), data.end());
  PutBig(file, crc32_z(0, file.data() + begin, file.size() - begin));
}

// The alpha as a grey PNG file of its own.
Stream AlphaFile(const JngHeader& header, Bytes data) {
  Stream start;
  PutBig(start, header.width);
  PutBig(start, header.height);
  start.push_back(header.alphaDepth);
  start.insert(start.end(), 4, 0);  // grey; the only compression, filter and order of rows
  Stream file(std::begin(kPngSignature), std::end(kPngSignature));
  AppendChunk(file, "IHDR", start);
  AppendChunk(file, "IDAT", data);
  AppendChunk(file, "IEND", {});
  return file;
}

// Puts greys of a page into the alpha of another one of the same size.
void LayAlpha(const modules::Page& alpha, modules::Page& page) {
  for (std::int32_t y = 0; y < page.height; ++y) {
    const std::uint8_t* from = alpha.pixels + static_cast<std::size_t>(y) * alpha.Stride();
    std::uint8_t* to = modules::Row(page, static_cast<std::uint32_t>(y)) + 3;
    const auto bits = static_cast<std::uint32_t>(alpha.bits);
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x, to += 4) {
      const std::uint32_t bit = x * bits;
      const std::uint32_t index = from[bit / 8] >> (8 - bits - bit % 8) & ((1U << bits) - 1);
      *to = static_cast<std::uint8_t>(alpha.palette[index] & 255U);
    }
  }
}

void ReadPngAlpha(const JngHeader& header, const std::vector<Chunk>& chunks, glib::ImageDataExchange& exchange,
                  modules::Page& page) {
  const Stream file = AlphaFile(header, Joined(chunks, Name("IDAT")));
  modules::PngReader png(file);
  if (!png.ReadHeader(false) || png.Bits() > 8) return;
  glib::ImageDataExchange aside;
  aside.AllocateRaster = exchange.AllocateRaster;
  aside.FreeRaster = exchange.FreeRaster;
  aside.message = exchange.message;
  modules::AddPngPage(png, aside);
  if (aside.pages.count != 0) LayAlpha(*aside.pages.At(0), page);
}

void ReadJpegAlpha(const std::vector<Chunk>& chunks, modules::Page& page) {
  const Stream file = Joined(chunks, Name("JDAA"));
  modules::JpegReader jpeg(file);
  const auto width = static_cast<std::uint32_t>(page.width);
  const auto height = static_cast<std::uint32_t>(page.height);
  if (!jpeg.ReadHeader() || jpeg.Bits() != 8 || jpeg.Width() != width || jpeg.Height() != height || !jpeg.Start()) {
    return;
  }
  Stream row(width);
  for (std::uint32_t y = 0; y < height && jpeg.ReadRow(row.data()); ++y) {
    std::uint8_t* to = modules::Row(page, y) + 3;
    for (std::uint32_t x = 0; x < width; ++x) to[4 * x] = row[x];
  }
}

// Opaque pixels from a decoded row of greys or colours.
void Widen(const std::uint8_t* row, std::uint32_t width, bool grey, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x, row += grey ? 1 : 3, to += 4) {
    to[0] = row[0];
    to[1] = row[grey ? 0 : 1];
    to[2] = row[grey ? 0 : 2];
    to[3] = 255;
  }
}

// Gives the number of rows.
std::uint32_t ReadColours(modules::JpegReader& jpeg, modules::Page& page) {
  if (!jpeg.Start()) return 0;
  Stream wide(page.bits == 32 ? std::size_t{jpeg.Width()} * 3 : 0);
  std::uint32_t rows = 0;
  for (; rows < jpeg.Height(); ++rows) {
    std::uint8_t* target = modules::Row(page, rows);
    if (!jpeg.ReadRow(wide.empty() ? target : wide.data())) break;
    if (!wide.empty()) Widen(wide.data(), jpeg.Width(), jpeg.Bits() == 8, target);
  }
  return jpeg.WithoutRows() ? 0 : rows;
}

}  // namespace

modules::Verdict ReadJngHeader(Bytes file, JngHeader& header) { return ReadHeader(ReadChunks(file), header); }

std::uint32_t LoadJng(Bytes file, glib::ImageDataExchange& exchange) {
  const std::vector<Chunk> chunks = ReadChunks(file);
  JngHeader header;
  const modules::Verdict verdict = ReadHeader(chunks, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const Stream colours = Joined(chunks, Name("JDAT"));
  modules::JpegReader jpeg(colours);
  if (!jpeg.ReadHeader()) return modules::Fail(exchange, jpeg.Result(), jpeg.Cause());
  if (jpeg.Width() != header.width || jpeg.Height() != header.height || (jpeg.Bits() == 8) != header.grey) {
    return modules::Fail(exchange, glib::IERR, "The picture is another than its header says");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, header.PageBits());
  if (page == nullptr) return glib::NSUP;
  page->dpiX = header.dpiX;
  page->dpiY = header.dpiY;
  if (page->bits == 8) jpeg.FillGreys(*page);
  const std::uint32_t rows = ReadColours(jpeg, *page);
  const std::uint32_t result = modules::EndOfRows(exchange, rows, header.height);
  if (result != glib::RCOK || !header.alpha) return result;
  if (header.alphaIsJpeg) {
    ReadJpegAlpha(chunks, *page);
  } else {
    ReadPngAlpha(header, chunks, exchange, *page);
  }
  return glib::RCOK;
}

}  // namespace qmng
