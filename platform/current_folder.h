#ifndef PLATFORM_CURRENT_FOLDER_H_
#define PLATFORM_CURRENT_FOLDER_H_

#include <string>

namespace platform {

std::string CurrentFolder();  // whole path with backslashes; empty if it has none any more
bool SetCurrentFolder(const char* path);

// Remembers the current folder and goes back to it at the end of its life, on every way out.
class CurrentFolderKeeper {
 public:
  CurrentFolderKeeper();
  CurrentFolderKeeper(const CurrentFolderKeeper&) = delete;
  CurrentFolderKeeper& operator=(const CurrentFolderKeeper&) = delete;
  ~CurrentFolderKeeper();

 private:
  std::string path_;     // as the system has it
  int descriptor_ = -1;  // only for a folder that its path doesn't lead to; nested keepers would use them up
};

}  // namespace platform

#endif  // PLATFORM_CURRENT_FOLDER_H_
