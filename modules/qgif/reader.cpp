#include "modules/qgif/reader.h"

#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/frame_composer.h"
#include "modules/qgif/gif_structure.h"

namespace qgif {
namespace {

constexpr double kDpi = 72.0;

// Dots an inch down a picture whose pixels are this wide, with kDpi across it.
double DpiDown(std::uint8_t aspect) { return aspect == 0 ? kDpi : modules::CheckedDpi(kDpi * (aspect + 15) / 64.0); }

}  // namespace

std::uint32_t LoadGif(std::span<const std::uint8_t> bytes, glib::ImageDataExchange& exchange) {
  StructureWalk walk(bytes);
  if (!walk.Ok()) return modules::Fail(exchange, glib::IERR, "This is no GIF, or its header is cut off");
  CanvasSize canvas(walk.Screen());
  std::vector<FrameHeader> frames;
  for (FrameHeader frame; walk.Next(frame);) {
    if (frames.size() == modules::kMaxPages) {
      return modules::Fail(exchange, glib::NSUP, "The GIF has too many frames");
    }
    canvas.Add(frame);
    frames.push_back(frame);
  }
  FrameComposer composer(exchange, bytes, canvas);
  for (const FrameHeader& frame : frames) {
    if (composer.Add(frame)) continue;
    exchange.pages.Clear();
    return glib::NSUP;
  }
  if (exchange.pages.count == 0) return modules::Fail(exchange, glib::IERR, "The GIF holds no picture");
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
    exchange.pages.At(i)->dpiX = kDpi;
    exchange.pages.At(i)->dpiY = DpiDown(walk.Screen().aspect);
  }
  // A still picture is not shown for no time.
  if (frames.size() == 1 && composer.LastPage()->delay == 0) composer.LastPage()->delay = modules::Page().delay;
  if (composer.Incomplete()) modules::Fail(exchange, glib::RCOK, "The GIF is cut off or damaged");
  return glib::RCOK;
}

std::uint32_t ReadGifInfo(const char* path, std::span<const std::uint8_t> bytes, std::uint32_t id,
                          glib::FileInfo** info) {
  StructureWalk walk(bytes);
  if (!walk.Ok()) return glib::IERR;
  CanvasSize canvas(walk.Screen());
  std::int32_t pages = 0;
  std::uint32_t bits = walk.Screen().tableBits;
  for (FrameHeader frame; walk.Next(frame); ++pages) {
    canvas.Add(frame);
    if (bits == 0) bits = frame.tableBits;
  }
  if (pages == 0) return glib::IERR;
  *info = modules::NewFileInfo(
      path, id, static_cast<std::int32_t>(canvas.Width()), static_cast<std::int32_t>(canvas.Height()),
      static_cast<std::int32_t>(bits != 0 ? bits : 8), pages, kDpi, DpiDown(walk.Screen().aspect));
  return glib::RCOK;
}

}  // namespace qgif
