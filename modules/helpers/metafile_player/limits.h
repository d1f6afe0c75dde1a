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
// Boxes of one region times those of another: what is looked at to join them.
inline constexpr std::int64_t kMaxRegionProduct = std::int64_t{1} << 22;
// Rows of samples that the edges of a shape cross, all together: a million edges from top to bottom take minutes.
inline constexpr double kMaxCrossedRows = 1 << 26;
// Marks and gaps of one dashed line.
inline constexpr double kMaxDashes = 100000;
// The library's numbers of 24.8 bits end at twice as much, which leaves room for what it adds to an outline.
inline constexpr double kMaxCoordinate = 4194304.0;
// A bitmap that is drawn; also what decoded bitmaps may keep in memory together.
inline constexpr std::uint64_t kMaxBitmapPixels = std::uint64_t{1} << 26;
// One of which a copy is made, for its mask or its colours.
inline constexpr std::uint64_t kMaxCopiedPixels = std::uint64_t{1} << 24;
inline constexpr std::size_t kMaxCachedPixels = std::size_t{1} << 26;
// A page full of fills from edge to edge comes to its end here instead of after hours; what was drawn by then stays.
inline constexpr double kMaxSeconds = 3.0;  // of the processor
// How often that is looked at: work is counted in samples, lines and characters at what they take, as a guess.
inline constexpr std::uint64_t kWorkBetweenLooks = std::uint64_t{1} << 23;

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_LIMITS_H_
