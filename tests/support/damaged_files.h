#ifndef TESTS_SUPPORT_DAMAGED_FILES_H_
#define TESTS_SUPPORT_DAMAGED_FILES_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/module_host.h"

namespace tests {

using Bytes = std::vector<std::uint8_t>;

// A file of its own folder, which is removed with it.
class TemporaryFile {
 public:
  explicit TemporaryFile(const Bytes& bytes);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string folder_;
  std::string path_;
};

// Loads `file` cut at many places, and with one byte after the other changed, and reports as test failures: a result
// that no module may give, a failed load that leaves pages or no message, pages without a raster, printed text.
void CheckCuts(const ModuleHost& host, const Bytes& file);
void CheckFlips(const ModuleHost& host, const Bytes& file);

}  // namespace tests

#endif  // TESTS_SUPPORT_DAMAGED_FILES_H_
