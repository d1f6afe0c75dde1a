#ifndef MODULES_QPCT_OPERATIONS_H_
#define MODULES_QPCT_OPERATIONS_H_

#include <cstdint>

#include "modules/common/byte_reader.h"

namespace qpct {

enum Operation : std::uint32_t {
  kClip = 0x01,
  kBackPattern = 0x02,
  kTextFont = 0x03,
  kTextFace = 0x04,
  kTextMode = 0x05,
  kPenSize = 0x07,
  kPenMode = 0x08,
  kPenPattern = 0x09,
  kFillPattern = 0x0A,
  kOvalSize = 0x0B,
  kOrigin = 0x0C,
  kTextSize = 0x0D,
  kForeColor = 0x0E,
  kBackColor = 0x0F,
  kBackPixPattern = 0x12,
  kPenPixPattern = 0x13,
  kFillPixPattern = 0x14,
  kRgbForeColor = 0x1A,
  kRgbBackColor = 0x1B,
  kLine = 0x20,
  kLineFrom = 0x21,
  kShortLine = 0x22,
  kShortLineFrom = 0x23,
  kLongText = 0x28,
  kTextRight = 0x29,
  kTextDown = 0x2A,
  kTextRightDown = 0x2B,
  kFontName = 0x2C,
  kShapes = 0x30,  // up to 0x8F: a figure in the high half, what to do with it in the low one
  kShapesEnd = 0x90,
  kBits = 0x90,
  kBitsRegion = 0x91,
  kPackedBits = 0x98,
  kPackedBitsRegion = 0x99,
  kDirectBits = 0x9A,
  kDirectBitsRegion = 0x9B,
  kEnd = 0xFF,
  kHeaderOperation = 0x0C00,
  kCompressedQuickTime = 0x8200,
  kPlainQuickTime = 0x8201,
};

// Passes over the data of an operation that isn't read.
void SkipOperation(modules::ByteReader& in, std::uint32_t operation);

}  // namespace qpct

#endif  // MODULES_QPCT_OPERATIONS_H_
