#include "app/status_log.h"

#include <cstdio>
#include <iterator>

#include "app/option_reference.h"
#include "platform/file_operations.h"
#include "platform/program.h"

namespace app {
namespace {

constexpr const char* kFixedTexts[] = {
    "   Processing",
    "   Saving",
    ".",
    "\r\n",
    nullptr,  // kSourceName
    "..Loaded\n",
    "..Ready\n",
    "Task finished\n",
    nullptr,  // kNothing
    "..Loading failed\n",
    "..Converting failed\n",
    nullptr,  // kFolderFailed
    "   Cannot create too small GIF file\n",
    "..Ok\r\n",
};
static_assert(std::size(kFixedTexts) == kOk + 1);

StatusLog runLog;

void Write(std::FILE* target, int code, const char* text) {
  if (code == kFolderFailed) {
    std::fprintf(target, "\nCannot create folder %s\n or it is not available for writing\nConverting failed\n", text);
  } else if (code == kSourceName) {
    std::fputs(text, target);
  } else if (code >= 0 && code <= kOk && kFixedTexts[code] != nullptr) {
    std::fputs(kFixedTexts[code], target);
  }
}

void WriteCount(std::FILE* target, int count) { std::fprintf(target, " %d graphic files found\n\n", count); }

// A file is read by somebody later, a terminal now.
void FlushForReader() {
  static const bool terminal = platform::OutputIsTerminal();
  if (terminal) std::fflush(stdout);
}

}  // namespace

void StatusLog::Report(int code, gen::basic_string<char> text) {
  if (code == kSourceName) std::putchar(' ');
  Write(stdout, code, text.c_str());
  FlushForReader();
  if (path.IsEmpty()) return;
  std::FILE* log = platform::OpenText(path.c_str(), "a+");
  if (log == nullptr) return;
  Write(log, code, text.c_str());
  std::fclose(log);
}

void StatusLog::ReportCount(int count) {
  WriteCount(stdout, count);
  FlushForReader();
  if (path.IsEmpty()) return;
  std::FILE* log = platform::OpenText(path.c_str(), "w");
  if (log == nullptr) return;
  WriteCount(log, count);
  std::fclose(log);
}

void StatusLog::ShowBanner() {
  const char* const empty = "//                                                                           //\n";
  std::printf("\n//=========================================================================//\n");
  std::printf("%s", empty);
  std::printf("//                         Orvane Group International                        //\n");
  std::printf("%s", empty);
  std::printf("//%28s%s%28s//\n", "", kHostName, "");
  std::printf("%s", empty);
  std::printf("//===========================================================================//\n");
  std::printf("\n");
}

void StatusLog::ShowHelp() {
  std::printf(" Do you have any troubles or questions?\n Feel free to ask us in: http://%s/support/index.htm\n\n",
              kHostName);
  std::printf("%47sWith best regards,\n%47sOrvane Team\n", "", "");
  // The reference goes to another stream, behind what has been said.
  std::fflush(stdout);
  platform::ErrorMessage(kOptionReference);
}

StatusLog& RunLog() { return runLog; }

std::uint8_t OnProgress(glib::ProgressInfo*) {
  runLog.Report(kProgressDot, "");
  return 1;
}

}  // namespace app
