#include "modules/helpers/color_management/entries.h"

#include <lcms2.h>

#include <memory>

#include "modules/common/helper.h"
#include "modules/helpers/color_management/matrix_conversion.h"

namespace {

using modules::SampleForm;
using modules::Samples;

struct Close {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, Close>;

cmsUInt32Number FormatOf(const SampleForm& form) {
  switch (form.samples) {
    case Samples::kGrey:
      return TYPE_GRAY_8;
    case Samples::kColours:
      return form.alpha ? TYPE_BGRA_8 : TYPE_BGR_8;
    case Samples::kInks:
      return TYPE_CMYK_8;
    default:
      return TYPE_CMYK_8_REV;
  }
}

// Of so many pixels on, tables cost less than they save: they take some 2 and, of four inks, 27 ms to build.
std::uint64_t WorthTables(Samples samples) {
  return samples == Samples::kInks || samples == Samples::kInvertedInks ? 100'000 : 12'000;
}

// One that is equal to the pixel before is not worked out again, which only slows the fast way with tables down.
cmsUInt32Number FlagsFor(const SampleForm& form, std::uint64_t pixels) {
  const bool tables = pixels >= WorthTables(form.samples);
  return cmsFLAGS_BLACKPOINTCOMPENSATION | (tables ? cmsFLAGS_NOCACHE : cmsFLAGS_NOOPTIMIZE);
}

class LibraryConversion final : public modules::ColorConversion {
 public:
  explicit LibraryConversion(cmsHTRANSFORM transform) : transform_(transform) {}
  LibraryConversion(const LibraryConversion&) = delete;
  LibraryConversion& operator=(const LibraryConversion&) = delete;
  ~LibraryConversion() override { cmsDeleteTransform(transform_); }

  void Convert(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const override {
    cmsDoTransform(transform_, from, to, static_cast<cmsUInt32Number>(count));
  }

 private:
  cmsHTRANSFORM transform_;
};

}  // namespace

ZEFA_HELPER_ENTRY(modules::ColorConversion*)
OpenConversion(const std::uint8_t* bytes, std::size_t size, const SampleForm* form, std::uint64_t pixels) {
  const Profile from(cmsOpenProfileFromMem(bytes, static_cast<cmsUInt32Number>(size)));
  const Profile to(cmsCreate_sRGBProfile());
  if (from == nullptr || to == nullptr) return nullptr;
  if (form->samples == Samples::kColours) {
    if (auto conversion = color_management::MatrixConversion::Make(from.get(), to.get(), form->alpha)) {
      return conversion.release();
    }
  }
  // Colours that both sides have stay as they are, and black becomes black: what viewers do.
  const cmsHTRANSFORM transform =
      cmsCreateTransform(from.get(), FormatOf(*form), to.get(), form->alpha ? TYPE_BGRA_8 : TYPE_BGR_8,
                         INTENT_RELATIVE_COLORIMETRIC, FlagsFor(*form, pixels));
  return transform == nullptr ? nullptr : new LibraryConversion(transform);
}
