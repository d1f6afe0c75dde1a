#ifndef GLIB_COLOR_ROW_REPORTS_H_
#define GLIB_COLOR_ROW_REPORTS_H_

#include <cstdint>

#include "glib/module_api/progress.h"

namespace glib {

// Reports of work that goes through a raster row by row and can't be stopped: the number of the row that begins,
// counted from 1, and at the end the mark for it. Small rasters and a null callback make none.
class RowReports {
 public:
  RowReports(ProgressCallback callback, std::uintptr_t user, std::uint32_t width, std::uint32_t height,
             const char* text)
      : callback_(callback), every_(callback == nullptr ? 0 : RowsPerReport(width, height)) {
    if (every_ == 0) return;
    info_.total = height;
    info_.userValue = user;
    info_.text = text;
  }

  void BeforeRow(std::uint32_t y) {
    if (every_ != 0 && y % every_ == 0) Send(static_cast<std::int32_t>(y + 1));
  }

  void End() {
    if (every_ != 0) Send(kStageEnds);
  }

 private:
  void Send(std::int32_t current) {
    info_.current = current;
    callback_(&info_);
  }

  ProgressCallback callback_;
  std::uint32_t every_;
  ProgressInfo info_;
};

}  // namespace glib

#endif  // GLIB_COLOR_ROW_REPORTS_H_
