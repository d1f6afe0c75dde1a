#include "modules/qwmf/emf.h"

#include "platform/metafile/records.h"

namespace qwmf {
namespace {

using platform::Record;
using platform::RecordReader;

constexpr std::uint32_t kPlusComment = 0x2B464D45;  // "EMF+"

// Records that paint, or build what later ones paint.
bool Draws(std::uint32_t type) {
  return (type >= platform::kEmrPolyBezier && type <= platform::kEmrPolyPolygon) || type == platform::kEmrSetPixel ||
         (type >= platform::kEmrAngleArc && type <= platform::kEmrPie) ||
         (type >= platform::kEmrLineTo && type <= platform::kEmrPolyDraw) ||
         (type >= platform::kEmrFillPath && type <= platform::kEmrStrokePath) ||
         (type >= platform::kEmrFillRgn && type <= platform::kEmrPaintRgn) ||
         (type >= platform::kEmrBitBlt && type <= platform::kEmrStretchDiBits) ||
         (type >= platform::kEmrExtTextOutA && type <= platform::kEmrPolyDraw16) ||
         type == platform::kEmrSmallTextOut || type == platform::kEmrAlphaBlend ||
         type == platform::kEmrTransparentBlt || type == platform::kEmrGradientFill;
}

}  // namespace

bool IsWholeEmf(std::span<const std::uint8_t> bytes) {
  RecordReader reader(bytes);
  Record record;
  if (!reader.Next(record) || record.Type() != platform::kEmrHeader || record.Size() < platform::kHeaderBytes) {
    return false;
  }
  while (record.Type() != platform::kEmrEof) {
    if (!reader.Next(record)) return false;
  }
  return true;
}

std::uint32_t LoadEmf(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  RecordReader reader(file);
  Record record;
  if (!reader.Next(record) || record.Type() != platform::kEmrHeader) {
    return modules::Fail(exchange, glib::IERR, "The metafile has no header");
  }
  bool any = false;
  bool draws = false;
  bool plus = false;
  while (!draws && reader.Next(record)) {
    any = true;
    draws = Draws(record.Type());
    plus = plus || (record.Type() == platform::kEmrComment && record.Long(12) == kPlusComment);
  }
  if (!any) return modules::Fail(exchange, glib::IERR, "The metafile is cut off before its first record");
  if (plus && !draws) return modules::Fail(exchange, glib::NSUP, "The metafile draws with EMF+ commands only");
  return modules::AddMetafilePage(exchange, file) != nullptr ? glib::RCOK : glib::IERR;
}

}  // namespace qwmf
