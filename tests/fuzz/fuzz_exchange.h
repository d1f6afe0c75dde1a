#ifndef TESTS_FUZZ_FUZZ_EXCHANGE_H_
#define TESTS_FUZZ_FUZZ_EXCHANGE_H_

#include <cstdint>
#include <cstdlib>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"

namespace fuzz {

// An exchange for one load of a fuzz target. Rasters above 16 million bytes count as no memory: zeroing them is all
// that a run would do otherwise.
class Exchange : public glib::ImageDataExchange {
 public:
  Exchange() {
    message = &text_;
    AllocateRaster = [](std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
      const bool small = std::uint64_t{width} * height * bits < std::uint64_t{1} << 27;
      return small ? glib::AllocateRaster(width, height, bits) : nullptr;
    };
    FreeRaster = glib::FreeRaster;
  }

  // What holds for every load: one of three results, pages on success only, and each with what it says it has.
  void Check(std::uint32_t result) const {
    if (result != glib::RCOK && result != glib::IERR && result != glib::NSUP) std::abort();
    if ((result == glib::RCOK) != (pages.count != 0)) std::abort();
    for (std::uint32_t i = 0; i < pages.count; ++i) {
      const Page& page = *pages.At(i);
      if (page.bits == 0 ? page.metafile == nullptr : page.pixels == nullptr) std::abort();
    }
  }

 private:
  gen::basic_string<char> text_;
};

}  // namespace fuzz

#endif  // TESTS_FUZZ_FUZZ_EXCHANGE_H_
