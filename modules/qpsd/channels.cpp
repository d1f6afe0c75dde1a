#include "modules/qpsd/channels.h"

#include <algorithm>
#include <cstring>
#include <vector>

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

template <std::size_t kStep>
void Scatter(const std::uint8_t* samples, std::uint8_t* target, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) target[kStep * x] = samples[x];
}

void ScatterTo(const std::uint8_t* samples, std::uint8_t* row, std::size_t place, std::size_t count, bool alpha) {
  alpha ? Scatter<4>(samples, row + place, count) : Scatter<3>(samples, row + place, count);
}

}  // namespace

Channel ChannelAt(const PsdFile& psd, std::uint32_t index, std::uint32_t pageBits) {
  constexpr Channel kColours[] = {Channel::kRed, Channel::kGreen, Channel::kBlue, Channel::kBlack};
  const std::uint32_t colours = ColourChannels(psd);
  if (index == colours && pageBits == 32) return Channel::kAlpha;
  if (index >= colours) return Channel::kNone;
  if (pageBits <= 8) return Channel::kIndex;
  return colours == 1 ? Channel::kGrey : kColours[index];
}

void PutRow(Channel channel, const std::uint8_t* samples, modules::Page& page, std::uint32_t y) {
  std::uint8_t* row = modules::Row(page, y);
  const auto count = static_cast<std::size_t>(page.width);
  const bool alpha = page.bits == 32;
  switch (channel) {
    case Channel::kNone:
      break;
    case Channel::kIndex:
      std::memcpy(row, samples, page.bits == 1 ? (count + 7) / 8 : count);
      break;
    case Channel::kGrey:
      for (std::size_t place = 0; place < 3; ++place) ScatterTo(samples, row, place, count, alpha);
      break;
    case Channel::kRed:
      ScatterTo(samples, row, 2, count, alpha);
      break;
    case Channel::kGreen:
      ScatterTo(samples, row, 1, count, alpha);
      break;
    case Channel::kBlue:
      ScatterTo(samples, row, 0, count, alpha);
      break;
    case Channel::kAlpha:
      Scatter<4>(samples, row + 3, count);
      break;
    case Channel::kBlack:
      for (std::size_t x = 0; x < count; ++x, row += alpha ? 4 : 3) {
        for (int i = 0; i < 3; ++i) row[i] = static_cast<std::uint8_t>((row[i] * samples[x] + 127) / 255);
      }
      break;
  }
}

void FinishColours(const PsdFile& psd, modules::Page& page) {
  if (psd.mode != ColourMode::kLab) return;
  const std::vector<std::uint8_t> curve = SrgbCurve();
  ChangePixels(page, [&](std::uint8_t* pixel) { LabToColour(pixel, curve); });
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

void MakeOpaqueIfEmpty(modules::Page& page) {
  std::uint8_t any = 0;
  ChangePixels(page, [&](std::uint8_t* pixel) { any = static_cast<std::uint8_t>(any | pixel[3]); });
  if (any == 0) SetAlpha(page, 255);
}

void SetAlpha(modules::Page& page, std::uint8_t alpha) {
  ChangePixels(page, [=](std::uint8_t* pixel) { pixel[3] = alpha; });
}

}  // namespace qpsd
