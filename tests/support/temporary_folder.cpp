#include "tests/support/temporary_folder.h"

#include <cstdlib>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace test_support {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::string name = (fs::temp_directory_path() / "zefa-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = fs::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  for (fs::recursive_directory_iterator it(path_, error), end; it != end; it.increment(error)) {
    if (it->is_directory() && !it->is_symlink()) fs::permissions(*it, fs::perms::owner_all, error);
  }
  fs::remove_all(path_, error);
}

std::string TemporaryFolder::Text(const std::string& relative) const {
  std::string text = (relative.empty() ? path_ : path_ / relative).string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

std::string TemporaryFolder::Write(const std::string& relative, std::string_view content) const {
  fs::create_directories((path_ / relative).parent_path());
  std::ofstream file(path_ / relative, std::ios::binary);
  file << content;
  return Text(relative);
}

void TemporaryFolder::MakeFolder(const std::string& relative) const { fs::create_directories(path_ / relative); }

std::string TemporaryFolder::Read(const std::string& relative) const {
  std::ifstream file(path_ / relative, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool TemporaryFolder::Has(const std::string& relative) const { return fs::exists(path_ / relative); }

std::vector<std::string> TemporaryFolder::Contents() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(path_)) {
    names.push_back(fs::relative(entry.path(), path_).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace test_support
