#include "modules/common/dib.h"

#include "tests/fuzz/fuzz_exchange.h"

// The first byte leads to the rows (0: behind the palette), the bitmap follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::span<const std::uint8_t> dib(data + 1, size - 1);
  fuzz::Exchange exchange;
  exchange.Check(modules::LoadDib(dib, data[0] * std::size_t{4}, exchange));

  modules::DibHeader header;
  modules::DibPlan plan;
  if (modules::ReadDibHeader(dib, modules::DibForm::kPictureAndMask, header).result != glib::RCOK) return 0;
  if (modules::PlanDib(dib, header, data[0], plan).result != glib::RCOK) return 0;
  if (plan.maskOffset > dib.size()) std::abort();
  return 0;
}
