#ifndef MODULES_HELPERS_METAFILE_PLAYER_LIMITS_H_
#define MODULES_HELPERS_METAFILE_PLAYER_LIMITS_H_

#include <cstddef>
#include <cstdint>

// What the player believes of a stream, each with the attack that it stops.

namespace metafile_player {

inline constexpr std::uint32_t kMaxRecords = 16'000'000;
// A count that would make gigabytes of corners.
inline constexpr std::size_t kMaxPoints = std::size_t{1} << 24;
// States saved and never restored.
inline constexpr std::size_t kMaxSavedStates = 64;
inline constexpr std::uint32_t kMaxHandles = 65535;
inline constexpr std::size_t kMaxRegionBoxes = 65536;
// Clips in clips, each of which every later drawing must pass.
inline constexpr std::size_t kMaxClipTerms = 64;
// The library's numbers of 24.8 bits end at twice as much, which leaves room for what it adds to an outline.
inline constexpr double kMaxCoordinate = 4194304.0;
// A bitmap that is drawn; also what decoded bitmaps may keep in memory together.
inline constexpr std::uint64_t kMaxBitmapPixels = std::uint64_t{1} << 26;
inline constexpr std::size_t kMaxCachedPixels = std::size_t{1} << 26;
// A page full of fills from edge to edge comes to its end here instead of after hours; what was drawn by then stays.
// The work is counted in samples, lines and characters at what they take; as that is a guess from above, a page is only
// stopped when it has really taken long, or when the count is beyond all reason.
inline constexpr std::uint64_t kMuchWork = std::uint64_t{4} << 30;
inline constexpr std::uint64_t kMaxWork = std::uint64_t{256} << 30;
inline constexpr double kMaxSeconds = 4.0;  // of the processor

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_LIMITS_H_
