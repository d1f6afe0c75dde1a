#include <chrono>
#include <cstdio>

#include "app/command_line.h"
#include "app/converter.h"
#include "app/settings.h"
#include "app/status_log.h"
#include "glib/module_api/save_settings.h"
#include "platform/program.h"

namespace {

// The system cuts these to their lowest byte: 255, 254, 253.
enum ExitStatus : int { kDone = 0, kNoArguments = -1, kNoSources = -2, kRunFailed = -3 };

// Tells the debug channel at the end of its life how long the run took.
class ElapsedTimer {
 public:
  ElapsedTimer() : start_(Now()) {}
  ElapsedTimer(const ElapsedTimer&) = delete;
  ElapsedTimer& operator=(const ElapsedTimer&) = delete;
  ~ElapsedTimer() {
    char message[520];
    // "Converting the files took %f seconds" in Russian, in Windows-1251.
    std::snprintf(message, sizeof(message),
                  "\t \xCA\xEE\xED\xE2\xE5\xF0\xF2\xE0\xF6\xE8\xFF \xF4\xE0\xE9\xEB\xEE\xE2 "
                  "\xE7\xE0\xED\xFF\xEB\xE0 %f \xF1\xE5\xEA\xF3\xED\xE4\n",
                  static_cast<double>(Now() - start_) * 0.001);
    platform::DebugMessage(message);
  }

 private:
  static std::chrono::milliseconds::rep Now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
  }

  std::chrono::milliseconds::rep start_;
};

}  // namespace

int main(int argc, char** argv) {
  platform::FillStandardStreams();
  platform::LetWritesFail();
  platform::KeepFreedMemory();
  const ElapsedTimer timer;
  app::StatusLog log;
  glib::GIFSave gif;
  glib::BaseFormatDesc* format = &gif;
  app::ConvertSettings settings;
  app::Converter converter;

  if (argc < 2) {
    log.ShowBanner();
    log.ShowHelp();
    return kNoArguments;
  }
  app::ParseCommandLine(format, settings, argc, argv);
  if (settings.helpRequested) {
    log.ShowHelp();
    return kDone;
  }
  converter.FindSources(settings);
  if (settings.log) log.path = settings.logPath;
  log.ReportCount(static_cast<int>(settings.files.count));
  if (settings.files.count == 0) return kNoSources;
  return converter.Run(settings, *format) ? kDone : kRunFailed;
}
