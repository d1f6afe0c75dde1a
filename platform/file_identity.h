#ifndef PLATFORM_FILE_IDENTITY_H_
#define PLATFORM_FILE_IDENTITY_H_

#include <cstdint>
#include <set>
#include <utility>

namespace platform {

// Files as they are now, whatever their names are. Paths are text with backslashes.
class FileSet {
 public:
  void Add(const char* path);  // one that leads nowhere adds nothing
  // Whether the path leads to one of the files, by any name, link or spelling.
  bool Holds(const char* path) const;
  bool IsEmpty() const { return files_.empty(); }

 private:
  std::set<std::pair<std::uint64_t, std::uint64_t>> files_;  // device and number on it
};

// Whether two paths are spellings of one name of one file: what is done to the one name is done to the other. A second
// hard link or a symbolic link to the file is another name.
bool IsSameName(const char* first, const char* second);

}  // namespace platform

#endif  // PLATFORM_FILE_IDENTITY_H_
