#ifndef PLATFORM_LIBRARY_H_
#define PLATFORM_LIBRARY_H_

#include <string>

namespace platform {

// Loads a module by its name without extension. With an empty or null `folder` it is looked for in "modules" beside the
// program, then in "../lib/zefa" beside it, then by the system; never in the current folder. Otherwise in `folder`
// only. Null if it can't be loaded. Nothing is printed.
void* LoadModule(const char* folder, const char* name);
void* ModuleEntry(void* module, const char* name);  // null if the module has no such entry
void FreeModule(void* module);                      // null is ignored

// Folder of the program or module that holds `code`, without a trailing slash; empty if it can't be found out. The name
// is that under which it was loaded, so a relative one goes wrong when the current folder has changed since.
std::string FolderOfCode(const void* code);

}  // namespace platform

#endif  // PLATFORM_LIBRARY_H_
