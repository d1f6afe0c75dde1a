#ifndef TESTS_SUPPORT_REPORT_RECORDER_H_
#define TESTS_SUPPORT_REPORT_RECORDER_H_

#include <cstdint>
#include <string>
#include <vector>

#include "glib/module_api/progress.h"

namespace test_support {

// Keeps the progress reports of an operation, and asks it to stop at one of them.
class ReportRecorder {
 public:
  static std::uint8_t Callback(glib::ProgressInfo* info) {
    auto& self = *reinterpret_cast<ReportRecorder*>(info->userValue);
    self.currents.push_back(info->current);
    self.totals.push_back(info->total);
    self.texts.emplace_back(info->text.c_str());
    return self.currents.size() == self.stopAt ? 0 : 1;
  }
  std::uintptr_t UserValue() { return reinterpret_cast<std::uintptr_t>(this); }

  std::vector<std::int32_t> currents;
  std::vector<std::uint32_t> totals;
  std::vector<std::string> texts;
  std::size_t stopAt = 0;  // the report, counted from 1, that is answered with 0; 0: none
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_REPORT_RECORDER_H_
