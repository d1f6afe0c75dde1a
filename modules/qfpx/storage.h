#ifndef MODULES_QFPX_STORAGE_H_
#define MODULES_QFPX_STORAGE_H_

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"
#include "modules/helpers/structured_storage/entries.h"

namespace qfpx {

// The streams of a FlashPix file, through a helper.
class Storage {
 public:
  // Both must stay during this life; of a file that is opened by its path only what is asked for is read.
  explicit Storage(std::span<const std::uint8_t> file);
  explicit Storage(const char* path);

  static const char* HelperName();
  bool HelperFound() const { return found_; }

  // Empty if there is no such stream in the folder of the first picture.
  std::vector<std::uint8_t> Read(std::initializer_list<const char*> path) const;
  std::vector<std::uint8_t> ReadContents() const { return Read({"\005Image Contents"}); }

 private:
  StorageFile file_;
  bool found_;
};

std::uint32_t LoadFlashPix(const Storage& storage, glib::ImageDataExchange& exchange);

}  // namespace qfpx

#endif  // MODULES_QFPX_STORAGE_H_
