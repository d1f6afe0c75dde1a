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

struct Told {
  std::uint32_t result = glib::IERR;
  qani::IconSummary icon;  // the first one
  std::uint32_t pages = 0;
};

// Both answer whether more of the file would tell nothing else.

bool TellOfIcons(std::span<const std::uint8_t> start, Told& told) {
  told.result = qani::SummarizeIcon(start, told.icon).result;
  told.pages = qani::CountOfIcons(start);
  return told.result == glib::RCOK;
}

bool TellOfAnimation(std::span<const std::uint8_t> start, Told& told) {
  qani::Animation animation;
  told.result = qani::ReadAnimation(start, animation).result;
  if (told.result != glib::RCOK) return false;
  told.pages = static_cast<std::uint32_t>(animation.steps.size());
  if (animation.steps.empty() || animation.steps[0].frame >= animation.frames.size()) {
    told.result = glib::IERR;
    return false;
  }
  const auto frame = animation.frames[animation.steps[0].frame];
  const modules::Verdict known = animation.framesAreIcons
                                     ? qani::SummarizeIcon(frame, told.icon)
                                     : qani::SummarizeBitmap(frame, modules::DibForm::kPicture, told.icon);
  told.result = known.result;
  return told.result == glib::RCOK && animation.settled;
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
  Told told;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> start) {
    told = {};
    return id == kAniId ? TellOfAnimation(start, told) : TellOfIcons(start, told);
  });
  if (told.result != glib::RCOK) return told.result;
  const qani::IconSummary& icon = told.icon;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(icon.width), static_cast<std::int32_t>(icon.height),
                               static_cast<std::int32_t>(icon.bits), static_cast<std::int32_t>(told.pages), icon.dpiX,
                               icon.dpiY);
  return glib::RCOK;
}
