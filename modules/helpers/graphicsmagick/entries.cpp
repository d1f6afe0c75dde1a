#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <string>

#include "glib/module_api/result_values.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/helper.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"
#include "modules/helpers/graphicsmagick/pages.h"

namespace {

using modules::MagickOptions;
using modules::MagickSummary;

// The library keeps some 10 bytes a pixel, while the page is made of them.
constexpr magick_int64_t kMaxMemory = magick_int64_t{640} << 20;
constexpr magick_int64_t kMaxRead = magick_int64_t{4} << 30;

// What the library calls fatal (memory for a few bytes lacks) must not end the process. Its state is not to be trusted
// afterwards.
std::jmp_buf escape;
bool broken = false;

// With Clang this spelling is a part of the type, which the library asks for.
__attribute__((noreturn)) void Escape(ExceptionType, const char*, const char*) { std::longjmp(escape, 1); }

void Ignore(ExceptionType, const char*, const char*) {}

// Before every call: a JNG that breaks off leaves its own size behind as the limit of all that comes later.
void SetLimits() {
  SetMagickResourceLimit(MemoryResource, kMaxMemory);
  SetMagickResourceLimit(PixelsResource, static_cast<magick_int64_t>(modules::kMaxPagePixels));
  SetMagickResourceLimit(WidthResource, modules::kMaxSide);
  SetMagickResourceLimit(HeightResource, modules::kMaxSide);
  SetMagickResourceLimit(ReadResource, kMaxRead);
  SetMagickResourceLimit(DiskResource, 0);
  SetMagickResourceLimit(MapResource, 0);
  SetMagickResourceLimit(ThreadsResource, 1);
}

void Start() {
  static bool started = false;
  if (started) return;
  started = true;
  ExceptionInfo exception;
  GetExceptionInfo(&exception);
  InitializeMagickEx(nullptr, MAGICK_OPT_NO_SIGNAL_HANDER, &exception);
  DestroyExceptionInfo(&exception);
  SetErrorHandler(Ignore);
  SetWarningHandler(Ignore);
  SetFatalErrorHandler(Escape);
}

// A null `image_info` gives the defaults. The coder stands in both places, so that nothing else is asked.
ImageInfo* InfoFor(const MagickOptions& options) {
  ImageInfo* info = CloneImageInfo(nullptr);
  std::snprintf(info->magick, sizeof(info->magick), "%s", options.coder);
  std::snprintf(info->filename, sizeof(info->filename), "%s:", options.coder);
  if (options.wantedWidth != 0) {
    char size[32];
    std::snprintf(size, sizeof(size), "%ux%u", static_cast<unsigned>(options.wantedWidth),
                  static_cast<unsigned>(options.wantedHeight));
    CloneString(&info->size, size);
  }
  return info;
}

void Say(glib::ImageDataExchange& exchange, const ExceptionInfo& exception) {
  const char* reason = exception.reason != nullptr ? exception.reason : "The file is damaged";
  gen::Format(*exchange.message, "%s", reason);
}

// Frames without anything that a jump could leave behind: the library's objects are plain pointers.

std::uint32_t Read(const std::uint8_t* bytes, std::size_t size, const MagickOptions& options,
                   glib::ImageDataExchange& exchange) {
  ExceptionInfo exception;
  GetExceptionInfo(&exception);
  ImageInfo* info = InfoFor(options);
  Image* images = BlobToImage(info, bytes, size, &exception);
  DestroyImageInfo(info);
  if (images == nullptr || exception.severity >= ErrorException) Say(exchange, exception);
  bool fine = true;
  while (images != nullptr && fine) {
    Image* image = RemoveFirstImageFromList(&images);
    if (options.applyOrientation) {
      Image* upright = AutoOrientImage(image, image->orientation, &exception);
      if (upright != nullptr) {
        DestroyImage(image);
        image = upright;
      }
    }
    fine = magick::AppendPage(*image, options, exchange);
    DestroyImage(image);
  }
  if (images != nullptr) DestroyImageList(images);
  DestroyExceptionInfo(&exception);
  return exchange.pages.count != 0 ? glib::RCOK : glib::IERR;
}

std::uint32_t Ping(const std::uint8_t* bytes, std::size_t size, const MagickOptions& options, MagickSummary& found) {
  ExceptionInfo exception;
  GetExceptionInfo(&exception);
  ImageInfo* info = InfoFor(options);
  Image* images = PingBlob(info, bytes, size, &exception);
  DestroyImageInfo(info);
  DestroyExceptionInfo(&exception);
  if (images == nullptr) return glib::IERR;
  found.width = static_cast<std::uint32_t>(images->columns);
  found.height = static_cast<std::uint32_t>(images->rows);
  found.bits = magick::PageBits(*images, options, false);
  found.pages = static_cast<std::uint32_t>(GetImageListLength(images));
  found.dpiX = magick::DpiOf(images->x_resolution, images->units);
  found.dpiY = magick::DpiOf(images->y_resolution, images->units);
  DestroyImageList(images);
  return modules::SizeAllowed(found.width, found.height) ? glib::RCOK : glib::NSUP;
}

}  // namespace

ZEFA_HELPER_ENTRY(std::uint32_t)
MagickRead(const std::uint8_t* bytes, std::size_t size, const MagickOptions* options,
           glib::ImageDataExchange* exchange) {
  if (!broken && setjmp(escape) == 0) {
    Start();
    SetLimits();
    return Read(bytes, size, *options, *exchange);
  }
  broken = true;
  while (exchange->pages.count != 0) modules::DropLastPage(*exchange);
  return modules::Fail(*exchange, glib::IERR, "The image library ran out of memory");
}

ZEFA_HELPER_ENTRY(std::uint32_t)
MagickPing(const std::uint8_t* bytes, std::size_t size, const MagickOptions* options, MagickSummary* info) {
  if (!broken && setjmp(escape) == 0) {
    Start();
    SetLimits();
    return Ping(bytes, size, *options, *info);
  }
  broken = true;
  return glib::IERR;
}
