#include "tests/support/corpus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "glib/format/depth_conversion.h"
#include "glib/module_api/result_values.h"

namespace tests {
namespace {

using glib::ImageDataExchange;
using nlohmann::json;

constexpr std::size_t kSide = 16;

Expected ExpectedFrom(const json& file, const std::string& folder) {
  Expected expected;
  expected.name = file.at("file").get<std::string>();
  expected.path = std::string(ZEFA_CORPUS_FOLDER) + "/" + folder + "/" + expected.name;
  expected.proportionsOnly = file.at("size_rule") == "aspect";
  expected.tolerance = file.value("tol", 0.0);
  expected.sizes = file.at("sizes").get<std::vector<std::array<std::uint32_t, 2>>>();
  expected.pages = file.value("pages", std::vector<std::uint32_t>());
  expected.anyPage = file.value("match", "") == "any";
  expected.crop = file.value("crop", false);
  expected.ink = file.value("metric", "") == "ink";
  expected.limit = expected.ink ? file.at("limit").get<double>() : file.value("thr", 12.0);
  expected.looks = file.at("thumbs").get<std::vector<Look>>();
  return expected;
}

// Red, green and blue over white.
std::array<double, 3> OverWhite(std::uint32_t pixel) {
  const double alpha = (pixel >> 24) / 255.0;
  std::array<double, 3> colour{};
  for (std::uint32_t i = 0; i < 3; ++i) {
    const double value = pixel >> (16 - 8 * i) & 255U;
    colour[i] = value * alpha + 255.0 * (1.0 - alpha);
  }
  return colour;
}

struct Box {
  std::uint32_t left, top, right, bottom;
};

Box WholeOf(const ImageDataExchange::Page& page) {
  return {0, 0, static_cast<std::uint32_t>(page.width), static_cast<std::uint32_t>(page.height)};
}

// The smallest box around all pixels that aren't nearly white.
Box InkedBox(const ImageDataExchange::Page& page) {
  constexpr double kPaper = 250.0;
  const Box whole = WholeOf(page);
  Box box{whole.right, whole.bottom, 0, 0};
  for (std::uint32_t y = 0; y < whole.bottom; ++y) {
    for (std::uint32_t x = 0; x < whole.right; ++x) {
      const auto colour = OverWhite(PixelAt(page, x, y));
      if (std::min({colour[0], colour[1], colour[2]}) >= kPaper) continue;
      box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1), std::max(box.bottom, y + 1)};
    }
  }
  return box.left < box.right ? box : whole;
}

// The pixels of one axis that a cell is the mean of: all whose middle lies within it, and the nearest one where pixels
// are larger than cells.
struct Span {
  std::uint32_t begin, end;
};

Span PixelsOf(std::size_t cell, std::uint32_t length) {
  const double scale = static_cast<double>(length) / kSide;
  const double middle = (static_cast<double>(cell) + 0.5) * scale;
  const double reach = std::max(scale, 1.0) / 2;
  const auto begin = static_cast<std::uint32_t>(std::max(middle - reach + 0.5, 0.0));
  const auto end = std::min(static_cast<std::uint32_t>(middle + reach + 0.5), length);
  return {begin, std::max(end, begin + 1)};
}

double MeanDifference(const Look& left, const Look& right) {
  double sum = 0;
  for (std::size_t i = 0; i < left.size(); ++i) sum += std::abs(left[i] - right[i]);
  return sum / static_cast<double>(left.size());
}

std::array<double, kLookCells> InkOf(const Look& look) {
  std::array<double, kLookCells> ink{};
  double sum = 0;
  for (std::size_t i = 0; i < kLookCells; ++i) {
    const double mean = (look[3 * i] + look[3 * i + 1] + look[3 * i + 2]) / 3;
    ink[i] = std::max(0.0, 255.0 - mean - 1.0);
    sum += ink[i];
  }
  for (double& share : ink) share = sum > 0 ? share / sum : 0;
  return ink;
}

double InkDifference(const Look& left, const Look& right) {
  const auto a = InkOf(left);
  const auto b = InkOf(right);
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum / 2;
}

bool SizeFits(const Expected& expected, std::int32_t width, std::int32_t height) {
  return std::any_of(expected.sizes.begin(), expected.sizes.end(), [&](const auto& size) {
    if (!expected.proportionsOnly) {
      return width == static_cast<std::int32_t>(size[0]) && height == static_cast<std::int32_t>(size[1]);
    }
    const double wanted = static_cast<double>(size[0]) / size[1];
    return std::abs(static_cast<double>(width) / height / wanted - 1) <= expected.tolerance;
  });
}

// Both as far as a page can miss its limit.
struct Distance {
  bool size = false;
  double look = HUGE_VAL;
};

Distance DistanceOf(const Expected& expected, const ImageDataExchange::Page& page) {
  Distance distance;
  distance.size = SizeFits(expected, page.width, page.height);
  const Look look = LookOf(page, expected.crop);
  for (const Look& wanted : expected.looks) {
    distance.look = std::min(distance.look, expected.ink ? InkDifference(look, wanted) : MeanDifference(look, wanted));
  }
  return distance;
}

}  // namespace

std::vector<Expected> CorpusFiles(const std::string& folder) {
  std::vector<Expected> files;
  std::ifstream stream(std::string(ZEFA_CORPUS_FOLDER) + "/manifest.json");
  if (!stream) return files;
  const json manifest = json::parse(stream);
  for (const json& file : manifest.at("files")) {
    if (file.at("row") == folder) files.push_back(ExpectedFrom(file, folder));
  }
  return files;
}

Look LookOf(const ImageDataExchange::Page& page, bool crop) {
  const Box box = crop ? InkedBox(page) : WholeOf(page);
  Look look{};
  for (std::size_t cell = 0; cell < kLookCells; ++cell) {
    const Span rows = PixelsOf(cell / kSide, box.bottom - box.top);
    const Span columns = PixelsOf(cell % kSide, box.right - box.left);
    const double count = static_cast<double>(rows.end - rows.begin) * (columns.end - columns.begin);
    for (std::uint32_t y = rows.begin; y < rows.end; ++y) {
      for (std::uint32_t x = columns.begin; x < columns.end; ++x) {
        const auto colour = OverWhite(PixelAt(page, box.left + x, box.top + y));
        for (std::size_t i = 0; i < 3; ++i) look[3 * cell + i] += colour[i] / count;
      }
    }
  }
  return look;
}

std::string Compare(const Expected& expected, const Loaded& loaded) {
  std::ostringstream wrong;
  if (loaded.result != glib::RCOK) {
    wrong << "result " << std::hex << loaded.result << " (" << loaded.message << ")";
    return wrong.str();
  }
  const std::uint32_t count = loaded.PageCount();
  if (count == 0) return "no pages";
  if (!expected.pages.empty() && std::count(expected.pages.begin(), expected.pages.end(), count) == 0) {
    wrong << count << " pages; ";
  }
  Distance best;
  for (std::uint32_t i = 0; i < (expected.anyPage ? count : 1); ++i) {
    const ImageDataExchange::Page& page = loaded.PageAt(i);
    if (page.bits <= 0 || page.pixels == nullptr) return wrong.str() + "no raster";
    const Distance distance = DistanceOf(expected, page);
    best.size = best.size || distance.size;
    best.look = std::min(best.look, distance.look);
  }
  if (!best.size) wrong << "size " << loaded.PageAt(0).width << "x" << loaded.PageAt(0).height << "; ";
  if (best.look > expected.limit) wrong << "look differs by " << best.look << ", allowed " << expected.limit;
  return wrong.str();
}

void DrawMetafiles(const Loaded& loaded) {
  for (std::uint32_t i = 0; i < loaded.PageCount(); ++i) {
    ImageDataExchange::Page& page = *loaded.exchange->pages.At(i);
    if (page.bits == 0) glib::ToDepth32(page, page.dpiY, page.dpiX);
  }
}

bool CheckCorpus(const std::string& folder, const ModuleHost& host, std::uint32_t id) {
  const auto files = CorpusFiles(folder);
  for (const Expected& file : files) {
    const Loaded loaded = host.Load(file.path, id);
    DrawMetafiles(loaded);
    const std::string wrong = Compare(file, loaded);
    EXPECT_EQ(wrong, "") << folder << "/" << file.name;
  }
  return !files.empty();
}

}  // namespace tests
