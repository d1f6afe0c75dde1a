// Takes whatever bytes come as a command line, a word a line, and runs its chain over a small film. The first three
// bytes are the film: what its slides and layers are, their width and their height.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/converter.h"
#include "app/settings.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/model/layer.h"
#include "glib/model/slide.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

namespace {

constexpr std::size_t kFilmBytes = 3;

// Numbers beyond three digits, or with an exponent, make rasters that only take time.
bool AsksForMuch(const std::string& text) {
  int digits = 0;
  for (const char c : text) {
    const bool exponent = digits > 0 && (c == 'e' || c == 'E');
    digits = std::isdigit(static_cast<unsigned char>(c)) != 0 ? digits + 1 : exponent ? digits + 3 : 0;
    if (digits > 3) return true;
  }
  return false;
}

std::vector<std::string> WordsOf(const std::uint8_t* data, std::size_t size) {
  std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<std::string> words{"zefa"};
  // A word ends at a zero here as in a real command line.
  for (std::string word; std::getline(text, word);) words.emplace_back(word.c_str());
  return words;
}

void AddLayer(glib::Slide& slide, std::uint32_t width, std::uint32_t height, std::uint32_t bits, std::uint32_t step) {
  auto* layer = new glib::Layer(&slide);
  std::uint8_t* pixels = glib::AllocateRaster(width, height, bits);
  if (pixels == nullptr) std::abort();
  const std::size_t bytes = glib::PaddedStride(width, bits) * height;
  for (std::size_t i = 0; i < bytes; ++i) pixels[i] = static_cast<std::uint8_t>(i * step);
  layer->SetRaster(static_cast<std::int32_t>(step % 5), static_cast<std::int32_t>(step % 3),
                   static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), pixels, nullptr,
                   static_cast<std::int32_t>(bits));
  slide.AddLayer(layer);
}

void Fill(glib::Film& film, std::uint32_t kind, std::uint32_t width, std::uint32_t height) {
  constexpr std::uint32_t kDepths[] = {1, 4, 8, 24, 32};
  for (std::uint32_t i = 0; i <= kind % 3; ++i) {
    auto* slide = new glib::Slide(glib::RGB32(255, 255, 255, 0));
    AddLayer(*slide, width + i, height, kDepths[kind % 5], kind / 8);
    if (kind >= 128) AddLayer(*slide, height, width + i, kDepths[(kind + i) % 5], kind / 4 + 1);
    film.body().AddSlide(slide);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;  // the status texts
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kFilmBytes) return 0;
  std::vector<std::string> words = WordsOf(data + kFilmBytes, size - kFilmBytes);
  std::vector<char*> arguments;
  for (std::string& word : words) {
    if (AsksForMuch(word)) return 0;
    arguments.push_back(word.data());
  }

  app::ConvertSettings settings;
  glib::GIFSave gif;
  glib::BaseFormatDesc* format = &gif;
  app::ParseCommandLine(format, settings, static_cast<int>(arguments.size()), arguments.data());
  if (settings.destFolder.IsEmpty() && !settings.sourceFolder.IsEmpty()) std::abort();

  glib::Film film("", true);
  Fill(film, data[0], 1 + data[1] % 40, 1 + data[2] % 40);
  app::Converter converter;
  if (!converter.RunChain(&film, &settings)) std::abort();
  for (std::uint32_t i = 0; i < film.Count(); ++i) {
    for (std::int32_t layer = 0; layer < film.LayerCount(i); ++layer) {
      const glib::RasterBlock& raster = film.body().GetSlide(i)->GetLayer(static_cast<std::uint32_t>(layer))->raster;
      if (raster.pixels == nullptr || raster.width <= 0 || raster.height <= 0) std::abort();
    }
  }
  return 0;
}
