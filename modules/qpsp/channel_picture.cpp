#include "modules/qpsp/channel_picture.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace qpsp {
namespace {

std::uint32_t SampleDepth(const PictureKind& kind) {
  if (kind.depth <= 8) return kind.depth;
  return kind.depth == 24 ? 8 : 16;
}

bool IsOfPicture(const ChannelData& channel, const PicturePlan& plan) {
  const bool colour = plan.kind->depth >= 24;
  return channel.bitmap == plan.bitmaps.picture &&
         (colour ? channel.channel >= 1 && channel.channel <= 3 : channel.channel == 0);
}

// Grey pictures have their ramp where the file gives no palette.
void FillPalette(const PictureKind& kind, modules::Page& page) {
  if (OpaqueBits(kind) > 8) return;
  if (kind.paletteEntries == 0 || kind.grey) {
    modules::SetGrayRamp(page, 1U << OpaqueBits(kind));
    return;
  }
  std::copy_n(kind.palette.begin(), kind.paletteEntries, page.palette);
  page.paletteEntries = kind.paletteEntries;
}

std::uint32_t IndexAt(const std::uint8_t* row, std::size_t x, std::uint32_t depth) {
  if (depth == 1) return row[x / 8] >> (7 - x % 8) & 1U;
  if (depth == 4) return row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15U;
  return row[x];
}

// One row of indices into a page of 32 bits, whose palette says what they are.
void SpreadIndices(const std::uint8_t* row, std::uint32_t depth, modules::Page& page, std::uint32_t y) {
  std::uint8_t* target = modules::Row(page, y);
  for (std::size_t x = 0; x < static_cast<std::size_t>(page.width); ++x) {
    const std::uint32_t colour = page.palette[IndexAt(row, x, depth)];
    std::memcpy(target + 4 * x, &colour, 3);
  }
}

template <std::size_t kStep>
void Scatter(const std::uint8_t* samples, std::uint8_t* target, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) target[kStep * x] = samples[x];
}

// Reads all rows of a channel into the page; gives how many there were.
std::uint32_t ReadChannel(const ChannelData& channel, const PicturePlan& plan, bool transparency, modules::Page& page) {
  // Transparency comes in steps also where colours have fewer bits.
  const std::uint32_t depth = transparency ? std::max(SampleDepth(*plan.kind), 8U) : SampleDepth(*plan.kind);
  ChannelReader reader(channel, plan.kind->compression, plan.width, plan.height, depth);
  const auto width = static_cast<std::size_t>(plan.width);
  std::vector<std::uint8_t> row(width);
  for (std::uint32_t y = 0; y < plan.height; ++y) {
    if (!reader.Next(row.data())) return y;
    std::uint8_t* target = modules::Row(page, y);
    if (transparency) {
      Scatter<4>(row.data(), target + 3, width);
    } else if (plan.kind->depth >= 24) {
      target += 3 - channel.channel;
      page.bits == 32 ? Scatter<4>(row.data(), target, width) : Scatter<3>(row.data(), target, width);
    } else if (page.bits == 32) {
      SpreadIndices(row.data(), depth, page, y);
    } else {
      std::memcpy(target, row.data(), glib::PackedStride(width, static_cast<std::size_t>(page.bits)));
    }
  }
  return plan.height;
}

bool AllBelievable(const PicturePlan& plan, std::span<const ChannelData> channels) {
  return std::all_of(channels.begin(), channels.end(), [&](const ChannelData& channel) {
    if (!IsOfPicture(channel, plan)) return true;
    return ChannelReader(channel, plan.kind->compression, plan.width, plan.height, SampleDepth(*plan.kind))
        .Believable();
  });
}

void FillAlpha(modules::Page& page) {
  for (std::int32_t y = 0; y < page.height; ++y) {
    std::uint8_t* row = modules::Row(page, static_cast<std::uint32_t>(y));
    for (std::int32_t x = 0; x < page.width; ++x) row[4 * x + 3] = 255;
  }
}

}  // namespace

std::uint32_t AddPicture(const PicturePlan& plan, std::span<const ChannelData> channels,
                         glib::ImageDataExchange& exchange) {
  if (!modules::SizeAllowed(plan.width, plan.height)) {
    return modules::Fail(exchange, glib::NSUP, "A picture in the file has no pixels or too many");
  }
  const auto count = std::count_if(channels.begin(), channels.end(),
                                   [&](const ChannelData& channel) { return IsOfPicture(channel, plan); });
  if (count < (plan.kind->depth >= 24 ? 3 : 1))
    return modules::Fail(exchange, glib::IERR, "A channel of the picture is missing");
  if (!AllBelievable(plan, channels))
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  const bool alpha = plan.alphaWanted || std::any_of(channels.begin(), channels.end(), [&](const ChannelData& channel) {
                       return channel.bitmap == plan.bitmaps.transparency;
                     });
  modules::Page* page = modules::AddPage(exchange, plan.width, plan.height, alpha ? 32 : OpaqueBits(*plan.kind));
  if (page == nullptr) return glib::NSUP;
  FillPalette(*plan.kind, *page);
  if (alpha) FillAlpha(*page);
  std::uint32_t rows = plan.height;
  for (const ChannelData& channel : channels) {
    const bool transparency = channel.bitmap == plan.bitmaps.transparency;
    if (transparency || IsOfPicture(channel, plan))
      rows = std::min(rows, ReadChannel(channel, plan, transparency, *page));
  }
  return modules::EndOfRows(exchange, rows, plan.height);
}

}  // namespace qpsp
