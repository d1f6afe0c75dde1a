#include "modules/common/source.h"

namespace modules {

Source::Source(const char* source, const glib::ImageDataExchange& exchange) {
  if (exchange.sourceSize != glib::kSourceIsPath) {
    bytes_ = {reinterpret_cast<const std::uint8_t*>(source), exchange.sourceSize};
    ok_ = source != nullptr;
    return;
  }
  *this = Source(source);
}

Source::Source(const char* path, std::size_t limit)
    : file_(platform::ReadSource(path, limit)), bytes_(file_.data.get(), file_.size), ok_(file_.data != nullptr) {}

}  // namespace modules
