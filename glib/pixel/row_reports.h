#ifndef GLIB_PIXEL_ROW_REPORTS_H_
#define GLIB_PIXEL_ROW_REPORTS_H_

#include <cstdint>

#include "glib/module_api/progress.h"

namespace glib {

// The reports of one piece of work that goes row by row: a begin mark, a report every so many rows, an end mark.
// Without a callback, or with 0 rows between reports, nothing is sent at all.
class RowReports {
 public:
  // Sends the begin mark.
  RowReports(ProgressCallback callback, std::uintptr_t userValue, std::uint32_t rowsPerReport, std::uint32_t total,
             const char* text);
  // Sends the end mark.
  ~RowReports();
  RowReports(const RowReports&) = delete;
  RowReports& operator=(const RowReports&) = delete;

  // Whether a report falls on this row: on the first row and every so many from there, or on the last row of each so
  // many.
  bool DueFirst(std::uint32_t row) const { return rows_ != 0 && row % rows_ == 0; }
  bool DueLast(std::uint32_t row) const { return rows_ != 0 && row % rows_ == rows_ - 1; }

  // False asks to stop.
  bool Send(std::int32_t current);

 private:
  ProgressCallback callback_;
  std::uint32_t rows_;
  ProgressInfo info_;
};

}  // namespace glib

#endif  // GLIB_PIXEL_ROW_REPORTS_H_
