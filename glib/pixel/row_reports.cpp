#include "glib/pixel/row_reports.h"

namespace glib {

RowReports::RowReports(ProgressCallback callback, std::uintptr_t userValue, std::uint32_t rowsPerReport,
                       std::uint32_t total, const char* text)
    : callback_(callback), rows_(callback == nullptr ? 0 : rowsPerReport) {
  if (rows_ == 0) return;
  info_.total = total;
  info_.userValue = userValue;
  info_.text.Assign(text);
  Send(kStageBegins);
}

RowReports::~RowReports() {
  if (rows_ != 0) Send(kStageEnds);
}

bool RowReports::Send(std::int32_t current) {
  info_.current = current;
  return callback_(&info_) != 0;
}

}  // namespace glib
