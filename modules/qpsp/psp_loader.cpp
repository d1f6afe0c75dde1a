#include "modules/qpsp/psp_loader.h"

#include "modules/qpsp/composite.h"
#include "modules/qpsp/layers.h"
#include "modules/qpsp/psp_file.h"

namespace qpsp {

std::uint32_t LoadPsp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  PspFile psp;
  const modules::Verdict verdict = ReadPspFile(file, psp);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const Composite composite = FindComposite(psp);
  if (composite.found && LoadComposite(psp, composite, exchange) == glib::RCOK) return glib::RCOK;
  return LoadLayers(psp, exchange);
}

}  // namespace qpsp
