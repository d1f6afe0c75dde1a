#ifndef TESTS_SUPPORT_TEMPORARY_FOLDER_H_
#define TESTS_SUPPORT_TEMPORARY_FOLDER_H_

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

// A new folder of its own that goes with everything in it at the end of its life.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return path_; }
  // The path as the program writes it, with backslashes, and `relative`, which may be empty, behind it.
  std::string Text(const std::string& relative = "") const;

  const std::filesystem::path& Native() const { return path_; }
  std::string Path(const std::string& relative) const { return Text(relative); }

  // Makes a file with its folders and gives its path as Text does. `relative` has slashes.
  std::string Write(const std::string& relative, std::string_view content = "x") const;
  void MakeFolder(const std::string& relative) const;
  std::string Read(const std::string& relative) const;
  bool Has(const std::string& relative) const;
  // All files and folders below it, relative and sorted.
  std::vector<std::string> Contents() const;

 private:
  std::filesystem::path path_;
};

}  // namespace test_support

namespace test_support {
using test_support::TemporaryFolder;
}

#endif  // TESTS_SUPPORT_TEMPORARY_FOLDER_H_
