#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qani/ani.h"
#include "modules/qani/icon.h"
#include "modules/qani/icon_image.h"

namespace {

constexpr std::uint32_t kAniId = 0x30000005;

std::uint32_t InfoOf(const qani::IconSummary& icon, std::uint32_t pages, const char* path, std::uint32_t id,
                     glib::FileInfo** info) {
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(icon.width), static_cast<std::int32_t>(icon.height),
                               static_cast<std::int32_t>(icon.bits), static_cast<std::int32_t>(pages), icon.dpiX,
                               icon.dpiY);
  return glib::RCOK;
}

std::uint32_t InfoOfIcon(std::span<const std::uint8_t> file, const char* path, std::uint32_t id,
                         glib::FileInfo** info) {
  qani::IconSummary icon;
  const modules::Verdict verdict = qani::SummarizeIcon(file, icon);
  if (verdict.result != glib::RCOK) return verdict.result;
  return InfoOf(icon, qani::CountOfIcons(file), path, id, info);
}

// The order of the steps may stand behind the frames, so that this one takes the whole file.
std::uint32_t InfoOfAnimation(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  qani::Animation animation;
  const modules::Verdict verdict = qani::ReadAnimation(file.Bytes(), animation);
  if (verdict.result != glib::RCOK) return verdict.result;
  if (animation.steps.empty() || animation.steps[0].frame >= animation.frames.size()) return glib::IERR;
  const auto frame = animation.frames[animation.steps[0].frame];
  qani::IconSummary icon;
  const modules::Verdict known = animation.framesAreIcons
                                     ? qani::SummarizeIcon(frame, icon)
                                     : qani::SummarizeBitmap(frame, modules::DibForm::kPicture, icon);
  if (known.result != glib::RCOK) return known.result;
  return InfoOf(icon, static_cast<std::uint32_t>(animation.steps.size()), path, id, info);
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qani", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  if (exchange->id == kAniId) return qani::LoadAnimation(file.Bytes(), *exchange);
  return qani::LoadIcons(file.Bytes(), qani::kAllIcons, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  if (id == kAniId) return InfoOfAnimation(path, id, info);
  std::uint32_t result = glib::IERR;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> start) {
    result = InfoOfIcon(start, path, id, info);
    return result == glib::RCOK;
  });
  return result;
}
