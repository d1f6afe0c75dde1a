#ifndef MODULES_QBMP_CLP_H_
#define MODULES_QBMP_CLP_H_

#include <cstdint>
#include <optional>
#include <span>

#include "modules/common/page_builder.h"

namespace qbmp {

enum class ClipKind : std::uint32_t {
  kMetafilePicture = 3,
  kDib = 8,
  kEnhancedMetafile = 14,
  kDibV5 = 17,
};

// The one of the forms of a clipboard's content that says most of a picture.
struct Clip {
  ClipKind kind;
  std::span<const std::uint8_t> data;
};

// Nothing if the directory lists no picture. A form whose data begin past the end of the file counts as not there.
std::optional<Clip> FindClip(std::span<const std::uint8_t> file);

std::uint32_t LoadClp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qbmp

#endif  // MODULES_QBMP_CLP_H_
