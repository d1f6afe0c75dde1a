#ifndef TESTS_SUPPORT_LAYERS_H_
#define TESTS_SUPPORT_LAYERS_H_

#include <cstdint>
#include <vector>

#include "glib/model/layer.h"
#include "glib/model/slide.h"

namespace test_support {

// A block from platform::AllocatePages with these bytes.
std::uint8_t* NewPages(const std::vector<std::uint8_t>& bytes);

// Layers that are added to the slide. `pixels` are words, `rows` the bytes of the rows with their padding.
glib::Layer* AddLayer32(glib::Slide& slide, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                        const std::vector<std::uint32_t>& pixels);
// One colour all over.
glib::Layer* AddLayer32(glib::Slide& slide, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                        std::uint32_t pixel);
glib::Layer* AddLayer(glib::Slide& slide, std::int32_t bits, std::int32_t width, std::int32_t height,
                      const std::vector<std::uint8_t>& rows);

// All words of a 32-bit block; empty for any other.
std::vector<std::uint32_t> Words(const glib::RasterBlock& raster);
// All bytes of the rows with their padding; empty without pixels.
std::vector<std::uint8_t> RowBytes(const glib::RasterBlock& raster);

// A metafile without drawing, with a frame from 0, 0 in units of 0.01 mm. The caller owns it.
glib::MetafileHandle NewMetafile(std::int32_t frameRight, std::int32_t frameBottom);
// One of no records at all.
glib::MetafileHandle UnreadableMetafile();
// A red box that fills the left half of a picture of so many hundredths of an inch.
glib::MetafileHandle HalfRedMetafile(std::int32_t width, std::int32_t height);

}  // namespace test_support

#endif  // TESTS_SUPPORT_LAYERS_H_
