#ifndef PLATFORM_METAFILE_PLAYER_H_
#define PLATFORM_METAFILE_PLAYER_H_

#include <cstdint>

#include "platform/metafile/metafile.h"

namespace platform {

// Draws a metafile so that its frame fills a picture of `width` x `height` pixel words (blue in the lowest byte, alpha
// in the highest), top row first. Pixels that the metafile paints become opaque, the others 0. Edges are smooth: where
// a shape covers part of a pixel, the rest of it shows `paper`, a pixel word, which is also what drawing operations see
// where nothing was painted.
//
// Records that make no sense are passed over, and a stream that is cut off gives what it holds. False, with the pixels
// in any state: no metafile, no pixels, no memory, or the drawing library isn't there. It is loaded by the first call.
bool PlayEnhMetaFile(const Metafile* metafile, std::int32_t width, std::int32_t height, std::uint32_t paper,
                     std::uint32_t* pixels);

}  // namespace platform

#endif  // PLATFORM_METAFILE_PLAYER_H_
