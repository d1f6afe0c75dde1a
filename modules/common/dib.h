#ifndef MODULES_COMMON_DIB_H_
#define MODULES_COMMON_DIB_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Device-independent bitmaps as they stand in BMP files, icons, metafiles and elsewhere: a header, masks, a palette and
// the rows. A reader that only wants the picture calls LoadDib; one with wishes of its own takes the four steps.

namespace modules {

enum class DibForm {
  kPicture,
  kPictureAndMask,  // of icons: the header's height counts the rows of both
};

enum class DibEncoding {
  kRows,    // rows as they are, each padded to 4 bytes
  kFields,  // the same, with colours where the masks say
  kRuns4,
  kRuns8,
  kRuns24,
};

struct DibHeader {
  DibEncoding encoding = DibEncoding::kRows;
  std::uint32_t width = 0;  // checked against the limits, as the height
  std::uint32_t height = 0;
  bool topDown = false;
  std::uint32_t bits = 0;            // of a pixel in the file: 1, 2, 4, 8, 16, 24 or 32
  std::uint32_t mask[4] = {};        // red, green, blue, alpha; set for 16 bits and up
  std::size_t paletteOffset = 0;     // from the header's first byte, as all offsets
  std::uint32_t paletteEntries = 0;  // as declared, which may be more than `bits` can use
  std::uint32_t entryBytes = 4;      // of the palette: 3 or 4
  double dpiX = 72.0;
  double dpiY = 72.0;
};

// Where things are and what the page will be.
struct DibPlan {
  std::uint32_t pageBits = 0;        // 1, 4, 8, 24 or 32
  std::uint32_t paletteEntries = 0;  // that are there and of use
  std::size_t dataOffset = 0;
  std::size_t stride = 0;      // bytes of a row in the file; 0 for runs
  std::size_t maskOffset = 0;  // of the mask of icons, which follows uncompressed rows
};

// `dib` begins with the header and may go on behind the picture, for instance to the end of the file.
Verdict ReadDibHeader(std::span<const std::uint8_t> dib, DibForm form, DibHeader& header);

// Bits of the page as far as the header tells: 32 bits without masks may turn out to have no alpha, and become 24.
std::uint32_t DibPageBits(const DibHeader& header);

// With a `dataOffset` of 0, or one that lies within the header, the rows follow the palette. Refuses pictures that the
// data can't hold.
Verdict PlanDib(std::span<const std::uint8_t> dib, const DibHeader& header, std::size_t dataOffset, DibPlan& plan);

// Decodes into a zeroed page of the plan's size and depth. Gives how many rows there were: fewer than the height if the
// data ended early, in which case the others stay zero.
std::uint32_t ReadDibRows(std::span<const std::uint8_t> dib, const DibHeader& header, const DibPlan& plan, Page& page);

// Resolution and palette.
void FillDibPage(std::span<const std::uint8_t> dib, const DibHeader& header, const DibPlan& plan, Page& page);

// All of it: appends the picture as a page, or gives a result value with its cause in the message.
std::uint32_t LoadDib(std::span<const std::uint8_t> dib, std::size_t dataOffset, glib::ImageDataExchange& exchange);

}  // namespace modules

#endif  // MODULES_COMMON_DIB_H_
