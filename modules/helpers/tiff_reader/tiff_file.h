#ifndef MODULES_HELPERS_TIFF_READER_TIFF_FILE_H_
#define MODULES_HELPERS_TIFF_READER_TIFF_FILE_H_

#include <tiffio.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

namespace modules {

// A block that the library or we allocate for one strip or one row of tiles; what needs more is refused.
inline constexpr std::uint64_t kMaxTiffBlock = std::uint64_t{1} << 30;

// An open TIFF file that stands at one of its directories. Nothing is printed; the first error text is kept.
class TiffFile {
 public:
  // Over a block of memory, which must stay during this life.
  explicit TiffFile(std::span<const std::uint8_t> bytes);
  // Over a file, of which only the directories are read. Null makes it not Ok.
  explicit TiffFile(std::FILE* file);
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;
  ~TiffFile();

  bool Ok() const { return tiff_ != nullptr; }
  TIFF* Get() const { return tiff_; }

  bool HadError() const { return error_[0] != '\0'; }
  const char* Error() const { return HadError() ? error_ : "The file is no readable TIFF file"; }
  void ForgetError() { error_[0] = '\0'; }

  // The file's bytes; none if it isn't in memory.
  std::span<const std::uint8_t> Bytes() const { return bytes_; }
  std::uint64_t Size() const;

  // Bytes of the file at `position`, as many of `count` as there are.
  std::size_t ReadAt(std::uint64_t position, void* target, std::size_t count);

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  static tmsize_t Read(thandle_t handle, void* target, tmsize_t count);
  static toff_t Seek(thandle_t handle, toff_t offset, int whence);
  static toff_t SizeOf(thandle_t handle) { return static_cast<TiffFile*>(handle)->Size(); }
  static int Map(thandle_t handle, void** base, toff_t* size);
  static int KeepError(TIFF*, void* user, const char* module, const char* format, va_list arguments);

  void Open(const char* mode);

  std::span<const std::uint8_t> bytes_;
  std::unique_ptr<std::FILE, CloseFile> file_;
  std::uint64_t position_ = 0;
  TIFF* tiff_ = nullptr;
  char error_[160] = {};
};

}  // namespace modules

#endif  // MODULES_HELPERS_TIFF_READER_TIFF_FILE_H_
