#ifndef MODULES_HELPERS_TIFF_READER_TIFF_SAMPLES_H_
#define MODULES_HELPERS_TIFF_READER_TIFF_SAMPLES_H_

#include <cstddef>
#include <cstdint>

#include "modules/helpers/tiff_reader/tiff_layout.h"

namespace modules {

// The value that stands for white or full in unpacked samples of a picture.
std::uint32_t FullSample(const TiffLayout& layout);

// Unpacks `count` samples of a row to `target`, `target + step` and so on, each 0 to FullSample. Samples of 16, 32 and
// 64 bits are in the processor's byte order, others have their highest bit first. Signed numbers are moved up to begin
// at 0; floating-point numbers are cut to what the layout calls lowest and highest, and count 65535 as full.
void UnpackSamples(const std::uint8_t* row, std::size_t count, const TiffLayout& layout, std::uint32_t* target,
                   std::size_t step);

// Turns colours that were multiplied by their alpha back, in a row of `width` pixels of the layout's samples.
void DivideByAlpha(std::uint32_t* samples, std::uint32_t width, const TiffLayout& layout);

// Samples of 0 to `full` to bytes, rounded.
void ReduceSamples(const std::uint32_t* samples, std::size_t count, std::uint32_t full, std::uint8_t* bytes);

// What each ink of a pixel lets through of white: blue, green, red.
void InkPixel(const std::uint8_t* inks, std::uint8_t* pixel);

// Raw samples of a Lab pixel, 8 or 16 bits by the layout, to blue, green, red of sRGB. Both whites fall together.
void LabPixel(const std::uint32_t* samples, const TiffLayout& layout, std::uint8_t* pixel);

}  // namespace modules

#endif  // MODULES_HELPERS_TIFF_READER_TIFF_SAMPLES_H_
