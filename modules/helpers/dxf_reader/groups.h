#ifndef MODULES_HELPERS_DXF_READER_GROUPS_H_
#define MODULES_HELPERS_DXF_READER_GROUPS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/metafile/geometry.h"

namespace dxf {

// The codes and values of one entity as the file holds them, for what the library leaves out.
struct Groups {
  std::string kind;
  std::vector<std::pair<int, std::string>> pairs;

  // The first value of a code.
  const std::string* Find(int code) const;
  std::string Text(int code) const;
  std::optional<double> Number(int code) const;
  double NumberOr(int code, double otherwise) const { return Number(code).value_or(otherwise); }
  int Flags(int code) const;

  // From the entity's own plane, which its normal gives, to that of the drawing, at the entity's elevation.
  platform::Transform Plane() const;
};

double ToNumber(const std::string& text);  // 0 for what is none

// Takes all groups of a file. An entity is told of when the first group of the next one is read, before that is taken.
class GroupRecorder {
 public:
  void Take(int code, const std::string& value);
  const Groups& Now() const { return now_; }

 private:
  static constexpr std::size_t kMaxPairs = std::size_t{1} << 20;

  Groups now_;
};

// Names differ by their letters only, not by these being small or capital.
std::string NameKey(const std::string& name);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_GROUPS_H_
