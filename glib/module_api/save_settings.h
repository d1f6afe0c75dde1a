#ifndef GLIB_MODULE_API_SAVE_SETTINGS_H_
#define GLIB_MODULE_API_SAVE_SETTINGS_H_

#include <cstddef>
#include <cstdint>

namespace glib {

inline constexpr std::uint32_t kGifFormatId = 0x30000003;
inline constexpr std::uint32_t kAllSlides = 0xFFFFFFFF;

// Which format to write and how. Modules read these objects by position, so the offsets are an interface; which kind
// an object is follows from its dynamic type.
class BaseFormatDesc {
 public:
  explicit BaseFormatDesc(std::uint32_t formatId) : id(formatId) {}
  virtual ~BaseFormatDesc();

  std::uint32_t id;
  std::int32_t width = 0;   // pixels; 0: not set
  std::int32_t height = 0;  // pixels; 0: not set
  std::int32_t depth = 0;   // bits a pixel; 0: not set
  std::int32_t pages = 1;   // used in FileInfo only
  std::int32_t size = 0;    // used in FileInfo only
  double dpiX = 0.0;        // 0.0: that of the source
  double dpiY = 0.0;
  std::uint32_t firstSlide = 0;
  std::uint32_t slideCount = kAllSlides;
  std::uint8_t dither = 1;
  std::uint8_t grayscale = 0;
  std::uint8_t reservedFlag = 0;
  std::int32_t quantize = 8;  // units digit: palette level; the rest divided by 10: loss
};

class GIFSave : public BaseFormatDesc {
 public:
  GIFSave() : BaseFormatDesc(kGifFormatId) { depth = 8; }
  ~GIFSave() override;

  std::int32_t paletteItems = 256;     // colours, the transparent one included; 0: not set
  std::int32_t transparentIndex = -1;  // of indexed pages; -1: none
  std::uint8_t interlace = 0;
  std::uint8_t reservedGifFlag = 1;
  std::uint8_t nfi = 0;  // store only what changes from page to page
};

class PNGSave : public BaseFormatDesc {
 public:
  explicit PNGSave(std::uint32_t formatId) : BaseFormatDesc(formatId) {}
  ~PNGSave() override;

  std::int32_t transparentIndex = -1;
};

// What a module tells about a file without decoding it. The layout is that of BaseFormatDesc, with other meanings.
class FileInfo : public BaseFormatDesc {
 public:
  explicit FileInfo(std::uint32_t formatId) : BaseFormatDesc(formatId) {}
  ~FileInfo() override;

  std::int32_t& bits() { return depth; }  // bits a pixel; 0 when the file has no such number
  std::int32_t bits() const { return depth; }
};

}  // namespace glib

#endif  // GLIB_MODULE_API_SAVE_SETTINGS_H_
