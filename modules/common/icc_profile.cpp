#include "modules/common/icc_profile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>

#include "modules/common/byte_reader.h"

namespace modules {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderBytes = 128;
constexpr std::uint32_t kMostTags = 100;

constexpr std::uint32_t Name(const char (&text)[5]) {
  std::uint32_t name = 0;
  for (int i = 0; i < 4; ++i) name = name << 8 | static_cast<std::uint8_t>(text[i]);
  return name;
}

std::uint32_t LongAt(Bytes bytes, std::size_t at) {
  ByteReader in(bytes);
  in.Seek(at);
  return in.BigLong();
}

double Fixed(ByteReader& in) { return static_cast<std::int32_t>(in.BigLong()) / 65536.0; }

double EncodeSrgb(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

// A tone curve: the light of a sample, both from 0 to 1.
class Curve {
 public:
  explicit Curve(Bytes tag) : in_(tag) {
    const std::uint32_t kind = in_.BigLong();
    in_.Skip(4);
    if (kind == Name("curv")) {
      count_ = in_.BigLong();
      table_ = in_.Take(std::min<std::size_t>(in_.Left(), std::size_t{count_} * 2));
      // Without a table, or with one number that is an exponent, it is not that of sRGB.
      known_ = count_ >= 2 && table_.size() == std::size_t{count_} * 2;
    } else if (kind == Name("para") && in_.BigWord() == kSrgbFunction) {
      in_.Skip(2);
      for (double& number : numbers_) number = Fixed(in_);
      known_ = !in_.Failed();
    }
  }

  bool Known() const { return known_; }

  double At(double sample) const {
    if (count_ == 0) {
      const auto [power, slope, offset, straightSlope, knee] = numbers_;
      return sample >= knee ? std::pow(slope * sample + offset, power) : straightSlope * sample;
    }
    const double place = sample * (count_ - 1);
    const std::size_t left = std::min<std::size_t>(static_cast<std::size_t>(place), count_ - 2);
    const double share = place - static_cast<double>(left);
    return (Entry(left) * (1 - share) + Entry(left + 1) * share) / 65535;
  }

 private:
  static constexpr std::uint32_t kSrgbFunction = 3;  // a power with a straight beginning

  double Entry(std::size_t i) const { return table_[2 * i] * 256 + table_[2 * i + 1]; }

  ByteReader in_;
  bool known_ = false;
  std::uint32_t count_ = 0;
  Bytes table_;
  std::array<double, 5> numbers_{};
};

bool IsSrgbCurve(Bytes tag) {
  const Curve curve(tag);
  if (!curve.Known()) return false;
  for (int i = 0; i < 256; ++i) {
    const double sample = i / 255.0;
    if (!(std::abs(EncodeSrgb(curve.At(sample)) - sample) < 0.5 / 255)) return false;
  }
  return true;
}

bool IsNear(Bytes tag, const std::array<double, 3>& xyz) {
  ByteReader in(tag);
  if (in.BigLong() != Name("XYZ ")) return false;
  in.Skip(4);
  return std::all_of(xyz.begin(), xyz.end(), [&](double wanted) { return std::abs(Fixed(in) - wanted) < 0.001; });
}

std::map<std::uint32_t, Bytes> ReadTags(Bytes profile) {
  std::map<std::uint32_t, Bytes> tags;
  ByteReader in(profile);
  in.Skip(kHeaderBytes);
  const std::uint32_t count = std::min(in.BigLong(), kMostTags);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t name = in.BigLong();
    const std::size_t at = in.BigLong();
    const std::size_t size = in.BigLong();
    if (in.Failed() || at > profile.size()) break;
    tags[name] = profile.subspan(at, std::min(size, profile.size() - at));
  }
  return tags;
}

}  // namespace

bool IsIccProfileOf(Bytes profile, IccSpace space) {
  constexpr std::size_t kClassAt = 12;
  constexpr std::size_t kSpaceAt = 16;
  constexpr std::size_t kSignatureAt = 36;
  if (profile.size() <= kHeaderBytes || LongAt(profile, kSignatureAt) != Name("acsp")) return false;
  const std::uint32_t kind = LongAt(profile, kClassAt);
  const bool picture = kind == Name("scnr") || kind == Name("mntr") || kind == Name("prtr") || kind == Name("spac");
  return picture && LongAt(profile, kSpaceAt) == static_cast<std::uint32_t>(space);
}

bool IsSrgb(Bytes profile) {
  if (!IsIccProfileOf(profile, IccSpace::kRgb)) return false;
  auto tags = ReadTags(profile);
  // Tables would come before primaries and curves.
  for (const auto& [name, data] : tags) {
    if (name == Name("A2B0") || name == Name("A2B1") || name == Name("D2B0") || name == Name("D2B1")) return false;
  }
  constexpr struct {
    std::uint32_t primary, curve;
    std::array<double, 3> xyz;  // for the white of the profile's side, D50
  } kChannels[] = {{Name("rXYZ"), Name("rTRC"), {0.4361, 0.2225, 0.0139}},
                   {Name("gXYZ"), Name("gTRC"), {0.3851, 0.7169, 0.0971}},
                   {Name("bXYZ"), Name("bTRC"), {0.1431, 0.0606, 0.7141}}};
  Bytes checked;
  for (const auto& channel : kChannels) {
    if (!IsNear(tags[channel.primary], channel.xyz)) return false;
    const Bytes curve = tags[channel.curve];
    const bool same = curve.data() == checked.data() && curve.size() == checked.size();
    if (!same && !IsSrgbCurve(curve)) return false;
    checked = curve;
  }
  return true;
}

}  // namespace modules
