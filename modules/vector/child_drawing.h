#ifndef MODULES_VECTOR_CHILD_DRAWING_H_
#define MODULES_VECTOR_CHILD_DRAWING_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Libraries for rare drawings are little tried on bad files. They run in a process of their own, which hands over
// the recording, or why there is none.

namespace modules {

// The only entry of such a helper; called in the child, it ends with one of the three below.
using RecordDrawingEntry = void(const std::uint8_t* bytes, std::size_t size, int output);

void HandOver(int output, std::span<const std::uint8_t> records);
// A drawing that is one picture: a device-independent bitmap, which becomes a raster page.
void HandOverDib(int output, std::span<const std::uint8_t> dib);
// `cause` is cut to what a message holds.
void HandOverFailure(int output, std::uint32_t result, const char* cause);

// Calls `entry` of `helper` in a child; what it hands over becomes a page, or the result and the message.
std::uint32_t LoadChildDrawing(std::span<const std::uint8_t> file, const char* helper, const char* entry,
                               glib::ImageDataExchange& exchange);

}  // namespace modules

#endif  // MODULES_VECTOR_CHILD_DRAWING_H_
