#ifndef TESTS_SUPPORT_PROGRESS_RECORDER_H_
#define TESTS_SUPPORT_PROGRESS_RECORDER_H_

#include <cstdint>
#include <sstream>
#include <string>

#include "glib/module_api/progress.h"

namespace test_support {

// Keeps what a progress callback is told, as text: "current/total text" for each report, separated by ", ".
class ProgressRecorder {
 public:
  // Hand both to whatever reports.
  static std::uint8_t Callback(glib::ProgressInfo* info) {
    auto* self = reinterpret_cast<ProgressRecorder*>(info->userValue);
    std::ostringstream line;
    if (!self->reports.empty()) line << ", ";
    line << info->current << "/" << info->total;
    if (!info->text.IsEmpty()) line << " " << info->text.c_str();
    if (info->flag != 1) line << " flag " << int{info->flag};
    self->reports += line.str();
    return info->current == self->stopAt ? 0 : 1;
  }
  std::uintptr_t UserValue() const { return reinterpret_cast<std::uintptr_t>(this); }

  std::string reports;
  std::int32_t stopAt = 0;  // the report that is answered with a wish to stop; 0: none
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_PROGRESS_RECORDER_H_
