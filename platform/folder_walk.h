#ifndef PLATFORM_FOLDER_WALK_H_
#define PLATFORM_FOLDER_WALK_H_

#include <string>
#include <vector>

namespace platform {

struct FolderEntry {
  std::string name;
  bool isFolder;  // a folder, or a link to one
  bool isLink;
};

// The entries of the current folder whose names match, in the order of the file system, without "." and "..". Names
// that hold a backslash are left out: no path of the program can name them. Empty if the folder can't be read.
std::vector<FolderEntry> ListCurrentFolder(const char* mask);

// "*" stands for any characters, "?" for one; ASCII letters match in either case. The mask "*.*" matches every name.
bool MatchesMask(const char* name, const char* mask);

}  // namespace platform

#endif  // PLATFORM_FOLDER_WALK_H_
