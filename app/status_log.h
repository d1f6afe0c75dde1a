#ifndef APP_STATUS_LOG_H_
#define APP_STATUS_LOG_H_

#include "gen/basic_string.h"
#include "glib/module_api/progress.h"

namespace app {

// What can be said about a run. The numbers choose the texts.
enum StatusCode : int {
  kProcessing = 0,
  kSaving = 1,
  kProgressDot = 2,
  kLineEnd = 3,
  kSourceName = 4,
  kLoaded = 5,
  kReady = 6,
  kTaskFinished = 7,
  kNothing = 8,
  kLoadingFailed = 9,
  kConvertingFailed = 10,
  kFolderFailed = 11,
  kTooSmall = 12,
  kOk = 13,
};

// Says things to the user: on standard output, and in a log file when it has a path. The file is opened and closed for
// each message, so that a run that dies leaves a complete log.
class StatusLog {
 public:
  // `text` is used by kSourceName and kFolderFailed only. Codes without a text print nothing.
  void Report(int code, gen::basic_string<char> text);
  // The first message of a run; it empties an earlier log.
  void ReportCount(int count);
  void ShowBanner();
  void ShowHelp();

  gen::basic_string<char> path;  // empty: no log
};

// The one that drivers, chain runner and progress callback use.
StatusLog& RunLog();

// The progress callback of a run: one dot a report. It never asks to stop.
std::uint8_t OnProgress(glib::ProgressInfo* info);

}  // namespace app

#endif  // APP_STATUS_LOG_H_
