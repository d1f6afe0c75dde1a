#ifndef MODULES_COMMON_HELPER_H_
#define MODULES_COMMON_HELPER_H_

#include <cstdint>

#include "glib/module_api/exchange.h"

// The entries of a helper, each defined as `ZEFA_HELPER_ENTRY(std::uint32_t) ReadSomething(...)`.
#define ZEFA_HELPER_ENTRY(Result) extern "C" __attribute__((visibility("default"))) Result

namespace modules {

// A helper is a shared object around one library that is too slow to load for every run: `helpers/<name>.so` beside the
// module that asks. It is opened when an entry is asked for the first time and stays open until the process ends.

// The address of an entry, or null: the helper is missing, or a library that it needs is, or it has no such entry.
void* HelperEntry(const char* helper, const char* entry);

// The same as a function to call: `HelperFunction<decltype(ReadSomething)>("name", "ReadSomething")`.
template <typename Function>
Function* HelperFunction(const char* helper, const char* entry) {
  return reinterpret_cast<Function*>(HelperEntry(helper, entry));
}

// Says in the message which helper is missing; gives NSUP back.
std::uint32_t MissingHelper(glib::ImageDataExchange& exchange, const char* helper);

}  // namespace modules

#endif  // MODULES_COMMON_HELPER_H_
