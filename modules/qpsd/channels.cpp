#include "modules/qpsd/channels.h"

#include <algorithm>
#include <vector>

#include "modules/common/pixel_rows.h"
#include "modules/qpsd/srgb_curve.h"

namespace qpsd {
namespace {

// To linear light of sRGB from XYZ with the white of daylight at 5000 K.
constexpr float kFromXyz[3][3] = {{3.1338561F, -1.6168667F, -0.4906146F},
                                  {-0.9787684F, 1.9161415F, 0.0334540F},
                                  {0.0719453F, -0.2289914F, 1.4052427F}};
constexpr float kWhite[3] = {0.9642F, 1.0F, 0.8249F};

// The inverse of the cube root of Lab, which has a straight part near black.
float Uncurve(float value) {
  constexpr float kDelta = 6.0F / 29.0F;
  return value > kDelta ? value * value * value : 3 * kDelta * kDelta * (value - 4.0F / 29.0F);
}

void LabToColour(std::uint8_t* pixel, const std::vector<std::uint8_t>& curve) {
  const float y = (static_cast<float>(pixel[2]) * (100.0F / 255.0F) + 16) / 116;
  const float x = y + (static_cast<float>(pixel[1]) - 128) / 500;
  const float z = y - (static_cast<float>(pixel[0]) - 128) / 200;
  const float xyz[3] = {kWhite[0] * Uncurve(x), kWhite[1] * Uncurve(y), kWhite[2] * Uncurve(z)};
  for (int i = 0; i < 3; ++i) {
    const float light = kFromXyz[i][0] * xyz[0] + kFromXyz[i][1] * xyz[1] + kFromXyz[i][2] * xyz[2];
    pixel[2 - i] = OnCurve(curve, light);
  }
}

template <typename Change>
void ChangePixels(modules::Page& page, Change change) {
  const auto count = static_cast<std::size_t>(page.width);
  const auto step = static_cast<std::size_t>(page.bits) / 8;
  for (std::int32_t y = 0; y < page.height; ++y) {
    std::uint8_t* row = modules::Row(page, static_cast<std::uint32_t>(y));
    for (std::size_t x = 0; x < count; ++x) change(row + x * step);
  }
}

// Rows of channels that stand side by side, joined to rows of pixels.
class RowJoiner {
 public:
  RowJoiner(const PsdFile& psd, const modules::Page& page)
      : width_(static_cast<std::size_t>(page.width)),
        alpha_(page.bits == 32),
        grey_(ColourChannels(psd) == 1),
        black_(ColourChannels(psd) == 4) {
    if (!black_) return;
    joined_.resize(width_ * 4);
    conversion_ = modules::ConversionToSrgb(psd.profile, {modules::Samples::kInvertedInks, alpha_},
                                            std::uint64_t{width_} * static_cast<std::uint64_t>(page.height));
  }

  // `rows` by their channel.
  void Join(const std::uint8_t* const (&rows)[kChannels], std::uint8_t* target) {
    const auto row = [&](Channel channel) { return rows[static_cast<std::size_t>(channel)]; };
    const std::uint8_t* red = row(Channel::kRed);
    const std::uint8_t* green = grey_ ? red : row(Channel::kGreen);
    const std::uint8_t* blue = grey_ ? red : row(Channel::kBlue);
    if (black_ && conversion_ != nullptr) {
      modules::JoinFour(red, green, blue, row(Channel::kBlack), width_, joined_.data());
      conversion_->Convert(joined_.data(), target, width_);
      for (std::size_t x = 0; alpha_ && x < width_; ++x) target[4 * x + 3] = row(Channel::kAlpha)[x];
      return;
    }
    if (alpha_) {
      modules::JoinFour(blue, green, red, row(Channel::kAlpha), width_, target);
    } else {
      modules::JoinThree(blue, green, red, width_, target);
    }
    if (black_) Darken(row(Channel::kBlack), target);
  }

 private:
  void Darken(const std::uint8_t* black, std::uint8_t* pixel) const {
    for (std::size_t x = 0; x < width_; ++x, pixel += alpha_ ? 4 : 3) {
      for (int i = 0; i < 3; ++i) pixel[i] = static_cast<std::uint8_t>((pixel[i] * black[x] + 127) / 255);
    }
  }

  std::size_t width_;
  bool alpha_;
  bool grey_;
  bool black_;
  std::unique_ptr<modules::ColorConversion> conversion_;
  std::vector<std::uint8_t> joined_;  // four inks a pixel
};

}  // namespace

Channel ChannelAt(const PsdFile& psd, std::uint32_t index, std::uint32_t pageBits) {
  const std::uint32_t colours = ColourChannels(psd);
  if (index == colours && pageBits == 32) return Channel::kAlpha;
  return index < colours ? static_cast<Channel>(index) : Channel::kNone;
}

RowCounts ReadPlanes(const PsdFile& psd, std::vector<ChannelPlane>& planes, modules::Page& page) {
  const auto height = static_cast<std::uint32_t>(page.height);
  std::vector<std::uint8_t> samples[kChannels];
  const std::uint8_t* rows[kChannels];
  for (std::size_t i = 0; i < kChannels; ++i) {
    const bool full = i >= static_cast<std::size_t>(Channel::kBlack);
    samples[i].assign(static_cast<std::size_t>(page.width), full ? 255 : 0);
    rows[i] = samples[i].data();
  }
  RowJoiner joiner(psd, page);
  std::vector<std::uint32_t> counts(planes.size());
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* target = modules::Row(page, y);
    bool any = false;
    for (std::size_t i = 0; i < planes.size(); ++i) {
      const auto place = static_cast<std::size_t>(planes[i].channel);
      if (counts[i] != y) continue;
      std::uint8_t* row = page.bits <= 8 ? target : samples[place].data();
      if (planes[i].rows.Next(row, planes[i].channel != Channel::kAlpha)) {
        ++counts[i];
        any = true;
      } else if (page.bits > 8) {
        const bool full = place >= static_cast<std::size_t>(Channel::kBlack);
        std::fill(samples[place].begin(), samples[place].end(), full ? std::uint8_t{255} : std::uint8_t{0});
      }
    }
    if (!any) break;
    if (page.bits > 8) joiner.Join(rows, target);
  }
  if (counts.empty()) return {0, 0};
  const auto [fewest, most] = std::minmax_element(counts.begin(), counts.end());
  return {*fewest, *most};
}

void TakeWhiteOut(modules::Page& page) {
  ChangePixels(page, [](std::uint8_t* pixel) {
    const int alpha = pixel[3];
    if (alpha == 0 || alpha == 255) return;
    for (int i = 0; i < 3; ++i) {
      const int colour = ((pixel[i] - (255 - alpha)) * 255 + alpha / 2) / alpha;
      pixel[i] = static_cast<std::uint8_t>(std::clamp(colour, 0, 255));
    }
  });
}

void FinishLab(const PsdFile& psd, modules::Page& page) {
  if (psd.mode != ColourMode::kLab) return;
  const std::vector<std::uint8_t> curve = SrgbCurve();
  ChangePixels(page, [&](std::uint8_t* pixel) { LabToColour(pixel, curve); });
}

void ApplyProfile(const PsdFile& psd, modules::Page& page) {
  // Light in 32 bits has been given the curve of sRGB already; the profile's curve would be one too many.
  if (psd.depth == 32) return;
  if (psd.mode == ColourMode::kGrey) modules::ConvertPage(psd.profile, modules::Samples::kGrey, page);
  if (psd.mode == ColourMode::kRgb || psd.mode == ColourMode::kIndexed) {
    modules::ConvertPage(psd.profile, modules::Samples::kColours, page);
  }
}

}  // namespace qpsd
