#include "platform/folder_walk.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

namespace platform {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Behind the character at `text`, which is more than one byte in UTF-8.
const char* NextCharacter(const char* text) {
  ++text;
  while ((static_cast<unsigned char>(*text) & 0xC0) == 0x80) ++text;
  return text;
}

bool LeadsToFolder(const char* name) {
  struct stat status {};
  return stat(name, &status) == 0 && S_ISDIR(status.st_mode);
}

FolderEntry Describe(const dirent& entry) {
  FolderEntry result{entry.d_name, entry.d_type == DT_DIR, entry.d_type == DT_LNK};
  if (entry.d_type == DT_UNKNOWN) {
    struct stat status {};
    result.isLink = lstat(entry.d_name, &status) == 0 && S_ISLNK(status.st_mode);
  }
  if (entry.d_type == DT_UNKNOWN || result.isLink) result.isFolder = LeadsToFolder(entry.d_name);
  return result;
}

}  // namespace

std::vector<FolderEntry> ListCurrentFolder(const char* mask) {
  std::vector<FolderEntry> entries;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("."), closedir);
  if (folder == nullptr) return entries;
  while (const dirent* entry = readdir(folder.get())) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0 || std::strchr(name, '\\') != nullptr) continue;
    if (MatchesMask(name, mask)) entries.push_back(Describe(*entry));
  }
  return entries;
}

bool MatchesMask(const char* name, const char* mask) {
  if (std::strcmp(mask, "*.*") == 0) return true;
  // Where to go on when the present try fails: behind the last "*", with one more character given to it.
  const char* retryMask = nullptr;
  const char* retryName = nullptr;
  while (*name != '\0') {
    if (*mask == '*') {
      retryMask = ++mask;
      retryName = name;
    } else if (*mask == '?') {
      ++mask;
      name = NextCharacter(name);
    } else if (*mask != '\0' && Lower(*mask) == Lower(*name)) {
      ++mask;
      ++name;
    } else if (retryMask != nullptr) {
      mask = retryMask;
      name = retryName = NextCharacter(retryName);
    } else {
      return false;
    }
  }
  while (*mask == '*') ++mask;
  return *mask == '\0';
}

}  // namespace platform
