#include "modules/common/helper.h"

#include <string>

#include "glib/module_api/result_values.h"
#include "modules/common/page_builder.h"
#include "platform/library.h"

namespace modules {
namespace {

// Its address tells where this module lies: the common code is linked into each of them.
const char kThisModule = 0;

constexpr const char* kFolder = "/helpers";

}  // namespace

void* HelperEntry(const char* helper, const char* entry) {
  std::string folder = platform::FolderOfCode(&kThisModule);
  if (folder.empty()) return nullptr;
  // A helper finds others beside itself.
  if (!folder.ends_with(kFolder)) folder += kFolder;
  // To open a library again only counts a reference; none is given back, so that the helper stays.
  void* library = platform::LoadModule(folder.c_str(), helper);
  return library == nullptr ? nullptr : platform::ModuleEntry(library, entry);
}

std::uint32_t MissingHelper(glib::ImageDataExchange& exchange, const char* helper) {
  return Fail(exchange, glib::NSUP, ("The helper " + std::string(helper) + " can't be loaded").c_str());
}

}  // namespace modules
