#include "modules/qjp2/jp2.h"

#include <algorithm>
#include <vector>

#include "modules/common/color_conversion.h"
#include "modules/qjp2/boxes.h"
#include "modules/qjp2/decoder.h"

namespace qjp2 {
namespace {

constexpr std::uint32_t kMaxPrecision = 16;
// The library takes up to some 12 bytes a sample. So many samples are no burden; of more, each byte of the file stands
// for as many as these at most, far beyond what pictures are packed to.
constexpr std::uint64_t kHarmlessSamples = std::uint64_t{1} << 24;
constexpr std::uint64_t kMaxSamplesPerByte = 4096;

// What the components mean.
struct Channels {
  std::uint32_t colours = 0;  // 1 (grey or index), 3 or 4 (ink)
  bool alpha = false;         // the one behind the colours
};

Channels ChannelsOf(std::uint32_t count, bool inks) {
  if (count <= 2) return {1, count == 2};
  if (count >= 4 && inks) return {4, count > 4};
  return {3, count > 3};
}

bool KeepsPalette(const Boxes& boxes, const opj_image_t& image) {
  return !boxes.palette.empty() && image.numcomps == 1 && image.comps[0].prec <= 8;
}

std::uint32_t PageBits(const Boxes& boxes, const opj_image_t& image) {
  if (KeepsPalette(boxes, image)) {
    return modules::IndexBits(std::size_t{1} << image.comps[0].prec);
  }
  const std::uint32_t count = boxes.paletteColumns != 0 ? boxes.paletteColumns : image.numcomps;
  const Channels channels = ChannelsOf(count, boxes.inks);
  if (channels.alpha) return 32;
  return channels.colours == 1 ? 8 : 24;
}

// Checks a header before anything of the picture's size is allocated.
modules::Verdict Check(const opj_image_t& image, std::size_t fileBytes) {
  if (image.numcomps == 0) return {glib::IERR, "The picture has no components"};
  if (!modules::SizeAllowed(image.comps[0].w, image.comps[0].h)) {
    return {glib::NSUP, "The picture has no pixels or too many"};
  }
  std::uint64_t samples = 0;
  for (std::uint32_t i = 0; i < image.numcomps; ++i) {
    const opj_image_comp_t& component = image.comps[i];
    if (component.prec == 0 || component.prec > kMaxPrecision) return {glib::NSUP, "The number of bits is unusual"};
    samples += std::uint64_t{component.w} * component.h;
  }
  if (samples > kHarmlessSamples && samples / kMaxSamplesPerByte > fileBytes) {
    return {glib::IERR, "The picture is larger than its data can be"};
  }
  return modules::kFine;
}

// The samples of one component in 8 bits, at the size of the first component.
class Component {
 public:
  Component(const opj_image_t& image, std::uint32_t index)
      : component_(image.comps[index]), first_(image.comps[0]), highest_((1 << component_.prec) - 1) {
    offset_ = component_.sgnd != 0 ? 1 << (component_.prec - 1) : 0;
  }

  bool Usable() const { return component_.data != nullptr && component_.w != 0 && component_.h != 0; }

  std::int32_t Raw(std::uint32_t x, std::uint32_t y) const {
    const std::uint64_t column = std::uint64_t{x} * first_.dx / component_.dx;
    const std::uint64_t row = std::uint64_t{y} * first_.dy / component_.dy;
    const std::size_t at = std::min<std::uint64_t>(row, component_.h - 1) * component_.w +
                           std::min<std::uint64_t>(column, component_.w - 1);
    const std::int64_t value = std::int64_t{component_.data[at]} + offset_;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, 0, highest_));
  }
  std::uint8_t At(std::uint32_t x, std::uint32_t y) const {
    const std::int32_t value = Raw(x, y);
    return static_cast<std::uint8_t>(highest_ == 255 ? value : (value * 255 + highest_ / 2) / highest_);
  }

 private:
  const opj_image_comp_t& component_;
  const opj_image_comp_t& first_;
  std::int32_t highest_;
  std::int32_t offset_ = 0;
};

struct Colour {
  std::int32_t red, green, blue;
};

// Brightness and two differences, with factors of 2^16.
Colour FromYcc(std::int32_t y, std::int32_t cb, std::int32_t cr) {
  constexpr std::int32_t kHalf = 1 << 15;
  cb -= 128;
  cr -= 128;
  const auto clip = [](std::int32_t value) { return std::clamp(value >> 16, 0, 255); };
  y = (y << 16) + kHalf;
  return {clip(y + 91881 * cr), clip(y - 22554 * cb - 46802 * cr), clip(y + 116130 * cb)};
}

Colour FromInk(const std::uint8_t* ink) {
  const auto paper = [&](int i) { return ((255 - ink[i]) * (255 - ink[3]) + 127) / 255; };
  return {paper(0), paper(1), paper(2)};
}

class PixelReader {
 public:
  PixelReader(const opj_image_t& image, bool inks)
      : channels_(ChannelsOf(image.numcomps, inks)), space_(image.color_space) {
    const std::uint32_t count = channels_.colours + (channels_.alpha ? 1U : 0U);
    for (std::uint32_t i = 0; i < count; ++i) components_.emplace_back(image, i);
    if (channels_.alpha) multiplied_ = image.comps[count - 1].alpha == 2;
  }

  bool Usable() const {
    return std::all_of(components_.begin(), components_.end(), [](const Component& c) { return c.Usable(); });
  }

  // Four bytes a pixel, and the alpha to where a pixel of 32 bits has it.
  void ReadInks(std::uint32_t y, std::uint32_t width, std::uint8_t* inks, std::uint8_t* target) const {
    for (std::uint32_t x = 0; x < width; ++x, inks += 4) {
      for (std::size_t i = 0; i < 4; ++i) inks[i] = components_[i].At(x, y);
      if (channels_.alpha) target[x * std::size_t{4} + 3] = components_[4].At(x, y);
    }
  }

  // Writes a pixel of 8, 24 or 32 bits.
  void Write(std::uint32_t x, std::uint32_t y, std::uint32_t bits, std::uint8_t* target) const {
    std::uint8_t sample[5] = {};
    for (std::size_t i = 0; i < components_.size(); ++i) sample[i] = components_[i].At(x, y);
    Colour colour{sample[0], sample[0], sample[0]};
    if (channels_.colours == 4) {
      colour = FromInk(sample);
    } else if (channels_.colours == 3) {
      const bool ycc = space_ == OPJ_CLRSPC_SYCC || space_ == OPJ_CLRSPC_EYCC;
      colour = ycc ? FromYcc(sample[0], sample[1], sample[2]) : Colour{sample[0], sample[1], sample[2]};
    }
    if (bits == 8) {
      target[0] = sample[0];
      return;
    }
    const std::uint8_t alpha = sample[channels_.colours];
    const auto straight = [&](std::int32_t value) {
      if (!multiplied_ || alpha == 0) return static_cast<std::uint8_t>(value);
      return static_cast<std::uint8_t>(std::min(255, (value * 255 + alpha / 2) / alpha));
    };
    target[0] = straight(colour.blue);
    target[1] = straight(colour.green);
    target[2] = straight(colour.red);
    if (bits == 32) target[3] = alpha;
  }

 private:
  Channels channels_;
  OPJ_COLOR_SPACE space_;
  bool multiplied_ = false;
  std::vector<Component> components_;
};

void WriteIndices(const opj_image_t& image, modules::Page& page) {
  const Component indices(image, 0);
  const auto bits = static_cast<std::uint32_t>(page.bits);
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    std::uint8_t* const row = modules::Row(page, y);
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      modules::PutIndex(row, bits, x, static_cast<std::uint32_t>(indices.Raw(x, y)));
    }
  }
}

void WritePixels(const PixelReader& pixels, modules::Page& page) {
  const auto bits = static_cast<std::uint32_t>(page.bits);
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    std::uint8_t* target = modules::Row(page, y);
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x, target += bits / 8) {
      pixels.Write(x, y, bits, target);
    }
  }
}

bool ConvertInks(const PixelReader& pixels, std::span<const std::uint8_t> profile, modules::Page& page) {
  const auto width = static_cast<std::uint32_t>(page.width);
  const auto height = static_cast<std::uint32_t>(page.height);
  const auto conversion =
      modules::ConversionToSrgb(profile, {modules::Samples::kInks, page.bits == 32}, std::uint64_t{width} * height);
  if (conversion == nullptr) return false;
  std::vector<std::uint8_t> inks(std::size_t{width} * 4);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* const row = modules::Row(page, y);
    pixels.ReadInks(y, width, inks.data(), row);
    conversion->Convert(inks.data(), row, width);
  }
  return true;
}

std::uint32_t PageOf(const opj_image_t& image, const Boxes& boxes, glib::ImageDataExchange& exchange) {
  const bool indexed = KeepsPalette(boxes, image);
  const PixelReader pixels(image, boxes.inks);
  if (!pixels.Usable()) return modules::Fail(exchange, glib::IERR, "The picture lacks components");
  const Channels channels = ChannelsOf(image.numcomps, boxes.inks);
  const std::uint32_t plainBits = channels.alpha ? 32 : channels.colours == 1 ? 8 : 24;
  const std::uint32_t bits = indexed ? PageBits(boxes, image) : plainBits;
  modules::Page* page = modules::AddPage(exchange, image.comps[0].w, image.comps[0].h, bits);
  if (page == nullptr) return glib::NSUP;
  page->dpiX = boxes.dpiX;
  page->dpiY = boxes.dpiY;
  if (indexed) {
    std::copy(boxes.palette.begin(), boxes.palette.end(), page->palette);
    page->paletteEntries = static_cast<std::uint32_t>(boxes.palette.size());
    WriteIndices(image, *page);
    modules::ConvertPage(boxes.profile, modules::Samples::kColours, *page);
    return glib::RCOK;
  }
  if (channels.colours == 4 && ConvertInks(pixels, boxes.profile, *page)) return glib::RCOK;
  if (bits == 8) modules::SetGrayRamp(*page, 256);
  WritePixels(pixels, *page);
  if (channels.colours == 4) return glib::RCOK;
  modules::ConvertPage(boxes.profile, channels.colours == 1 ? modules::Samples::kGrey : modules::Samples::kColours,
                       *page);
  return glib::RCOK;
}

}  // namespace

modules::Verdict ReadJp2Info(std::span<const std::uint8_t> file, Jp2Info& info) {
  const Boxes boxes = ReadBoxes(file);
  Decoder decoder(file, !boxes.palette.empty());
  const opj_image_t* const image = decoder.ReadHeader();
  if (image == nullptr) return {glib::IERR, "The header makes no sense"};
  const modules::Verdict verdict = Check(*image, static_cast<std::size_t>(-1));
  if (verdict.result != glib::RCOK) return verdict;
  info = {image->comps[0].w, image->comps[0].h, PageBits(boxes, *image), boxes.dpiX, boxes.dpiY};
  return modules::kFine;
}

std::uint32_t LoadJp2(std::span<const std::uint8_t> file, bool reduced, glib::ImageDataExchange& exchange) {
  const Boxes boxes = ReadBoxes(file);
  Decoder decoder(file, !boxes.palette.empty());
  const opj_image_t* image = decoder.ReadHeader();
  if (image == nullptr) return modules::Fail(exchange, glib::IERR, "The header makes no sense");
  const modules::Verdict verdict = Check(*image, file.size());
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  if (reduced) decoder.ReduceTo(exchange.thumbnailWidth, exchange.thumbnailHeight);
  image = decoder.Decode();
  if (image == nullptr) return modules::Fail(exchange, glib::IERR, "The picture can't be decoded");
  // A palette or the like may have changed the components.
  const modules::Verdict after = Check(*image, static_cast<std::size_t>(-1));
  if (after.result != glib::RCOK) return modules::Fail(exchange, after);
  const std::uint32_t result = PageOf(*image, boxes, exchange);
  if (result == glib::RCOK && !decoder.Complaint().empty()) exchange.message->Assign(decoder.Complaint().c_str());
  return result;
}

}  // namespace qjp2
