#include "modules/helpers/tiff_reader/tiff_file.h"

#include <sys/types.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace modules {

TiffFile::TiffFile(std::span<const std::uint8_t> bytes) : bytes_(bytes) { Open("r"); }

// "m": no mapping; "D": the lists of strips, which can be long, are read only if someone asks.
TiffFile::TiffFile(std::FILE* file) : file_(file) {
  if (file_ != nullptr) Open("rmD");
}

TiffFile::~TiffFile() {
  if (tiff_ != nullptr) TIFFClose(tiff_);
}

void TiffFile::Open(const char* mode) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(kMaxTiffBlock));
  TIFFOpenOptionsSetErrorHandlerExtR(options, KeepError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(
      options, [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
  tiff_ = TIFFClientOpenExt(
      "TIFF", mode, this, Read, [](thandle_t, void*, tmsize_t) { return tmsize_t{0}; }, Seek,
      [](thandle_t) { return 0; }, SizeOf, Map, [](thandle_t, void*, toff_t) {}, options);
  TIFFOpenOptionsFree(options);
}

std::uint64_t TiffFile::Size() const {
  if (file_ == nullptr) return bytes_.size();
  if (fseeko(file_.get(), 0, SEEK_END) != 0) return 0;
  const off_t size = ftello(file_.get());
  return size < 0 ? 0 : static_cast<std::uint64_t>(size);
}

std::size_t TiffFile::ReadAt(std::uint64_t position, void* target, std::size_t count) {
  if (file_ != nullptr) {
    if (position > INT64_MAX || fseeko(file_.get(), static_cast<off_t>(position), SEEK_SET) != 0) return 0;
    return std::fread(target, 1, count, file_.get());
  }
  if (position >= bytes_.size()) return 0;
  const std::size_t taken = std::min(count, bytes_.size() - static_cast<std::size_t>(position));
  std::memcpy(target, bytes_.data() + position, taken);
  return taken;
}

tmsize_t TiffFile::Read(thandle_t handle, void* target, tmsize_t count) {
  auto* file = static_cast<TiffFile*>(handle);
  if (count <= 0) return 0;
  const std::size_t taken = file->ReadAt(file->position_, target, static_cast<std::size_t>(count));
  file->position_ += taken;
  return static_cast<tmsize_t>(taken);
}

toff_t TiffFile::Seek(thandle_t handle, toff_t offset, int whence) {
  auto* file = static_cast<TiffFile*>(handle);
  // Unsigned: a negative distance arrives as its two's complement.
  if (whence == SEEK_SET) file->position_ = offset;
  if (whence == SEEK_CUR) file->position_ += offset;
  if (whence == SEEK_END) file->position_ = file->Size() + offset;
  return file->position_;
}

int TiffFile::Map(thandle_t handle, void** base, toff_t* size) {
  auto* file = static_cast<TiffFile*>(handle);
  if (file->file_ != nullptr) return 0;
  // The library only reads: the file is open for reading.
  *base = const_cast<std::uint8_t*>(file->bytes_.data());
  *size = file->bytes_.size();
  return 1;
}

int TiffFile::KeepError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  auto* file = static_cast<TiffFile*>(user);
  if (!file->HadError()) std::vsnprintf(file->error_, sizeof(file->error_), format, arguments);
  return 1;
}

}  // namespace modules
