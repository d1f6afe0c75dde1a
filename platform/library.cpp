#include "platform/library.h"

#include <dlfcn.h>

#include <string>

#include "platform/native_path.h"
#include "platform/program.h"

namespace platform {
namespace {

constexpr const char* kExtension = ".so";

void* Open(const std::string& file) { return dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL); }

// Without a trailing slash; empty if it can't be found out.
std::string FolderOfCode(const void* code) {
  Dl_info info{};
  if (dladdr(code, &info) == 0 || info.dli_fname == nullptr) return {};
  const std::string file = info.dli_fname;
  const std::size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string() : file.substr(0, slash);
}

}  // namespace

void* LoadModule(const char* folder, const char* name) {
  if (name == nullptr || *name == '\0') return nullptr;
  const std::string file = NativePath(name) + kExtension;
  if (folder != nullptr && *folder != '\0') return Open(NativePath(folder) + "/" + file);

  const std::string& beside = ProgramFolder();
  if (!beside.empty()) {
    if (void* module = Open(beside + "/modules/" + file)) return module;
    if (void* module = Open(beside + "/../lib/zefa/" + file)) return module;
  }
  // A name with a slash would be looked up from the current folder.
  return file.find('/') == std::string::npos ? Open(file) : nullptr;
}

void* ModuleEntry(void* module, const char* name) { return dlsym(module, name); }

void FreeModule(void* module) {
  if (module != nullptr) dlclose(module);
}

void* LoadHelper(const void* code, const char* name) {
  const std::string folder = FolderOfCode(code);
  if (folder.empty()) return nullptr;
  if (folder.ends_with("/helpers")) return LoadModule(folder.c_str(), name);
  // As built the modules have a folder of their own; installed they lie beside the library.
  for (const char* helpers : {"/helpers", "/modules/helpers"}) {
    if (void* helper = LoadModule((folder + helpers).c_str(), name)) return helper;
  }
  return nullptr;
}

}  // namespace platform
