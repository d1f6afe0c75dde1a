#include "modules/helpers/dxf_reader/groups.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace dxf {
namespace {

struct Vector {
  double x, y, z;
};

Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// Length 1; false for none.
bool Normalize(Vector& vector) {
  const double length = std::hypot(vector.x, vector.y, vector.z);
  if (!std::isfinite(length) || !(length > 0)) return false;
  vector = {vector.x / length, vector.y / length, vector.z / length};
  return true;
}

}  // namespace

double ToNumber(const std::string& text) {
  const double number = std::strtod(text.c_str(), nullptr);
  return std::isfinite(number) ? number : 0;
}

const std::string* Groups::Find(int code) const {
  const auto found = std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == code; });
  return found == pairs.end() ? nullptr : &found->second;
}

std::string Groups::Text(int code) const {
  const std::string* found = Find(code);
  return found == nullptr ? std::string() : *found;
}

std::optional<double> Groups::Number(int code) const {
  const std::string* found = Find(code);
  if (found == nullptr) return std::nullopt;
  return ToNumber(*found);
}

int Groups::Flags(int code) const {
  const std::string* found = Find(code);
  return found == nullptr ? 0 : std::atoi(found->c_str());
}

platform::Transform Groups::Plane() const {
  Vector normal{NumberOr(210, 0), NumberOr(220, 0), NumberOr(230, 1)};
  if (!Normalize(normal)) return {};
  const double height = Number(38).value_or(NumberOr(30, 0));
  // The plane's own x: level where the plane is not.
  constexpr double kNearlyUp = 1.0 / 64;
  const bool nearlyUp = std::abs(normal.x) < kNearlyUp && std::abs(normal.y) < kNearlyUp;
  Vector x = Cross(nearlyUp ? Vector{0, 1, 0} : Vector{0, 0, 1}, normal);
  if (!Normalize(x)) return {};
  const Vector y = Cross(normal, x);
  return {x.x, x.y, y.x, y.y, normal.x * height, normal.y * height};
}

void GroupRecorder::Take(int code, const std::string& value) {
  if (code == 0) {
    now_.kind = value;
    now_.pairs.clear();
  } else if (now_.pairs.size() < kMaxPairs) {
    now_.pairs.emplace_back(code, value);
  }
}

std::string NameKey(const std::string& name) {
  std::string key = name;
  for (char& c : key) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return key;
}

}  // namespace dxf
