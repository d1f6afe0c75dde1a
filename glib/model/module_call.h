#ifndef GLIB_MODEL_MODULE_CALL_H_
#define GLIB_MODEL_MODULE_CALL_H_

#include "glib/model/film_body.h"
#include "glib/module_api/progress.h"

namespace glib {

// Stands around a call into a module: empties the film's message and reports the beginning, and at its own end the end,
// to the callback of the beginning. Declared before what must be gone by the end report.
class ModuleCall {
 public:
  explicit ModuleCall(FilmBody& body) : callback_(body.callback) {
    body.message = "";
    info_.userValue = body.userValue;
    Report(kModuleCallBegins);
  }
  ModuleCall(const ModuleCall&) = delete;
  ModuleCall& operator=(const ModuleCall&) = delete;
  ~ModuleCall() { Report(kModuleCallEnded); }

 private:
  void Report(std::int32_t mark) {
    info_.current = mark;
    if (callback_ != nullptr) callback_(&info_);
  }

  ProgressCallback callback_;
  ProgressInfo info_;
};

}  // namespace glib

#endif  // GLIB_MODEL_MODULE_CALL_H_
