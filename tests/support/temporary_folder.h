#ifndef TESTS_SUPPORT_TEMPORARY_FOLDER_H_
#define TESTS_SUPPORT_TEMPORARY_FOLDER_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace test_support {

// A fresh empty folder that disappears with its contents.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zefa-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    folder_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  const std::filesystem::path& Native() const { return folder_; }
  // The path of something in the folder, as the program writes paths.
  std::string Path(const std::string& name) const { return folder_.string() + "\\" + name; }

  // Writes a file and gives its path.
  std::string Write(const std::string& name, std::string_view bytes) const {
    std::ofstream(folder_ / name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return Path(name);
  }

  std::string Read(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_TEMPORARY_FOLDER_H_
