#ifndef PLATFORM_LIBRARY_H_
#define PLATFORM_LIBRARY_H_

namespace platform {

// Loads a module by its name without extension. With an empty or null `folder` it is looked for in "modules" beside the
// program, then in "../lib/zefa" beside it, then by the system; never in the current folder. Otherwise in `folder`
// only. Null if it can't be loaded. Nothing is printed.
void* LoadModule(const char* folder, const char* name);
void* ModuleEntry(void* module, const char* name);  // null if the module has no such entry
void FreeModule(void* module);                      // null is ignored

// Loads `name` from the folder of helpers that belongs to what holds `code`: for a module "helpers" beside it, for a
// helper its own folder, for the library of the program that of its modules. Null if it can't be loaded. The name under
// which `code` was loaded is used, so a relative one goes wrong when the current folder has changed since.
void* LoadHelper(const void* code, const char* name);

}  // namespace platform

#endif  // PLATFORM_LIBRARY_H_
