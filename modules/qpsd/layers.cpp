#include "modules/qpsd/layers.h"

#include <algorithm>
#include <vector>

#include "modules/common/layer_alpha.h"
#include "modules/common/limits.h"
#include "modules/qpsd/channels.h"
#include "modules/qpsd/layer_records.h"
#include "modules/qpsd/planes.h"

namespace qpsd {
namespace {

// Layers of a few bytes each may be large; together they get the memory of the largest picture that may be alone.
constexpr std::uint64_t kMaxLayerPixels = modules::kMaxPagePixels;

// What the groups around a layer make of it.
struct Outer {
  bool visible = true;
  std::uint32_t opacity = 255;
};

// For each record the groups that it is in, from the topmost down, as a group stands above its members.
std::vector<Outer> OuterOf(const std::vector<LayerRecord>& records) {
  std::vector<Outer> outer(records.size());
  std::vector<Outer> open{Outer{}};
  for (std::size_t i = records.size(); i-- != 0;) {
    outer[i] = open.back();
    const LayerRecord& record = records[i];
    if (record.kind == LayerKind::kGroup) {
      open.push_back({open.back().visible && record.visible, modules::Share(open.back().opacity, record.opacity)});
    } else if (record.kind == LayerKind::kGroupEnd && open.size() > 1) {
      open.pop_back();
    }
  }
  return outer;
}

std::uint64_t PixelsOf(const Box& box) { return std::uint64_t{box.Width()} * box.Height(); }

bool HasPixels(const LayerRecord& record) {
  return record.kind == LayerKind::kPicture && !record.planes.empty() && PixelsOf(record.box) != 0;
}

PlaneShape ShapeOf(const PsdFile& psd, const Box& box) { return {box.Width(), box.Height(), psd.depth}; }

// Whether all planes of the layer are such as can be read. Masks have sides of their own.
bool Readable(const PsdFile& psd, const LayerRecord& record) {
  return std::all_of(record.planes.begin(), record.planes.end(), [&](const LayerRecord::Plane& plane) {
    if (plane.id < LayerRecord::kAlphaPlane) return true;
    const PlaneReader reader(plane.data, ShapeOf(psd, record.box));
    return reader.Known() && reader.Believable();
  });
}

// kNone: a mask, or one channel too many.
Channel ChannelOf(const PsdFile& psd, const LayerRecord::Plane& plane) {
  constexpr std::uint32_t kPageBits = 32;
  if (plane.id == LayerRecord::kAlphaPlane) return Channel::kAlpha;
  const Channel channel =
      plane.id < 0 ? Channel::kNone : ChannelAt(psd, static_cast<std::uint32_t>(plane.id), kPageBits);
  return channel == Channel::kAlpha ? Channel::kNone : channel;
}

void ReadMask(const PsdFile& psd, const LayerRecord& record, const LayerRecord::Plane& plane, modules::Page& page) {
  const Box& box = record.mask.box;
  if (!record.mask.used || !modules::SizeAllowed(box.Width(), box.Height())) return;
  PlaneReader reader(plane.data, ShapeOf(psd, box));
  if (!reader.Known() || !reader.Believable()) return;
  const modules::MaskPlace place{std::int64_t{box.left} - record.box.left, std::int64_t{box.top} - record.box.top,
                                 box.Width(), box.Height(), record.mask.outside};
  modules::LayMask(
      place, [&](std::uint8_t* row) { return reader.Next(row, false); }, page);
}

std::uint32_t LoadLayer(const PsdFile& psd, const LayerRecord& record, const Outer& outer,
                        glib::ImageDataExchange& exchange) {
  if (!Readable(psd, record))
    return modules::Fail(exchange, glib::IERR, "A layer is damaged or compressed in a way that is not supported");
  modules::Page* page = modules::AddPage(exchange, record.box.Width(), record.box.Height(), 32);
  if (page == nullptr) return glib::NSUP;
  page->slideNumber = 0;
  page->x = record.box.left;
  page->y = record.box.top;
  page->visible = record.visible && outer.visible ? 1 : 0;
  page->name.Assign(record.name.c_str());
  page->dpiX = psd.dpiX;
  page->dpiY = psd.dpiY;
  const LayerRecord::Plane* mask = nullptr;
  std::vector<ChannelPlane> planes;
  for (const auto& plane : record.planes) {
    if (plane.id == LayerRecord::kMaskPlane) mask = &plane;
    const Channel channel = ChannelOf(psd, plane);
    if (channel != Channel::kNone) planes.push_back({channel, PlaneReader(plane.data, ShapeOf(psd, record.box))});
  }
  const std::uint32_t rows = planes.empty() ? record.box.Height() : ReadPlanes(psd, planes, *page).fewest;
  const std::uint32_t result = modules::EndOfRows(exchange, rows, record.box.Height());
  if (result != glib::RCOK) return result;
  FinishLab(psd, *page);
  ApplyProfile(psd, *page);
  if (mask != nullptr) ReadMask(psd, record, *mask, *page);
  modules::FadePage(static_cast<std::uint8_t>(modules::Share(record.opacity, outer.opacity)), *page);
  return glib::RCOK;
}

}  // namespace

std::uint32_t LoadLayers(const PsdFile& psd, glib::ImageDataExchange& exchange) {
  const std::vector<LayerRecord> records = ReadLayerRecords(psd);
  const std::vector<Outer> outer = OuterOf(records);
  std::uint64_t pixels = 0;
  for (const LayerRecord& record : records) pixels += HasPixels(record) ? PixelsOf(record.box) : 0;
  if (pixels > kMaxLayerPixels) return modules::Fail(exchange, glib::NSUP, "The layers have too many pixels");

  const std::uint32_t before = exchange.pages.count;
  std::uint32_t failure = glib::RCOK;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (!HasPixels(records[i])) continue;
    const std::uint32_t result = LoadLayer(psd, records[i], outer[i], exchange);
    if (result != glib::RCOK) failure = result;
  }
  if (exchange.pages.count != before) return glib::RCOK;
  if (failure != glib::RCOK) return failure;
  return modules::Fail(exchange, glib::IERR, "The file has no layers with pixels");
}

}  // namespace qpsd
