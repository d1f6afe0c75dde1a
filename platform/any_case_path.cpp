#include "platform/any_case_path.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <vector>

#include "platform/native_path.h"

namespace platform {
namespace {

bool IsFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// ASCII letters only, whatever the locale.
bool EqualsInAnyCase(const std::string& left, const std::string& right) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [&lower](char a, char b) { return lower(a) == lower(b); });
}

// Names in a folder that equal `name` in another case.
std::vector<std::string> OtherCases(const std::string& folder, const std::string& name) {
  std::vector<std::string> names;
  DIR* stream = opendir(folder.empty() ? "." : folder.c_str());
  if (stream == nullptr) return names;
  while (const dirent* entry = readdir(stream)) {
    std::string found = entry->d_name;
    if (found != name && EqualsInAnyCase(found, name) && found.find('\\') == std::string::npos) {
      names.push_back(std::move(found));
    }
  }
  closedir(stream);
  std::sort(names.begin(), names.end());
  return names;
}

// `found` is what is settled, with its last separator, `rest` what is to be found. Gives an empty path for none.
std::string Find(const std::string& found, const std::string& rest) {
  const std::size_t end = rest.find('/');
  const std::string name = rest.substr(0, end);
  if (end != std::string::npos && (name.empty() || name == "." || name == "..")) {
    return Find(found + name + '/', rest.substr(end + 1));
  }
  std::vector<std::string> names = OtherCases(found, name);
  names.insert(names.begin(), name);
  for (const std::string& candidate : names) {
    std::string path = found + candidate;
    if (end == std::string::npos) {
      if (IsFile(path)) return path;
      continue;
    }
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) continue;
    std::string whole = Find(path + '/', rest.substr(end + 1));
    if (!whole.empty()) return whole;
  }
  return {};
}

}  // namespace

std::string FindFileInAnyCase(const char* path) {
  const std::string native = NativePath(path);
  if (native.empty() || IsFile(native)) return path;
  std::string found = Find({}, native);
  if (found.empty()) return path;
  std::replace(found.begin(), found.end(), '/', '\\');
  return found;
}

}  // namespace platform
