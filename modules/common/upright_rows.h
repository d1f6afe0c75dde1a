#ifndef MODULES_COMMON_UPRIGHT_ROWS_H_
#define MODULES_COMMON_UPRIGHT_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "modules/common/page_builder.h"

namespace modules {

// How a picture was stored, numbered as in TIFF and EXIF: 1 upright, 2 mirrored, 3 upside down, 4 flipped, 5 to 8 the
// same after the exchange of rows and columns. Other numbers count as 1.
constexpr bool ExchangesSides(std::uint32_t orientation) { return orientation >= 5 && orientation <= 8; }

// Takes the rows of a picture in their stored order, top row first, and puts them upright into a page, which has the
// upright size. Rows land in the page at once where the orientation allows; where rows become columns, a few rows at a
// time wait in a buffer.
//
//   for each stored row: write StoredWidth() pixels to NextRow(), then RowDone().
//   at the end, also of a picture that breaks off: Finish().
class UprightRows {
 public:
  UprightRows(Page& page, std::uint32_t orientation);

  std::uint32_t StoredWidth() const { return storedWidth_; }
  std::uint32_t StoredHeight() const { return storedHeight_; }
  std::uint32_t RowsDone() const { return rowsDone_; }

  // Room for one row of the page's depth, valid until RowDone. Not to be asked for more than StoredHeight rows.
  std::uint8_t* NextRow();
  void RowDone();
  void Finish();

 private:
  void TurnWaiting();

  Page& page_;
  std::uint32_t orientation_;
  std::uint32_t storedWidth_;
  std::uint32_t storedHeight_;
  std::uint32_t rowsDone_ = 0;
  std::uint32_t waiting_ = 0;  // rows in the buffer
  std::size_t waitingStride_ = 0;
  std::unique_ptr<std::uint8_t[]> buffer_;
};

}  // namespace modules

#endif  // MODULES_COMMON_UPRIGHT_ROWS_H_
