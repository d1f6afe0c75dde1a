#ifndef PLATFORM_PROGRAM_H_
#define PLATFORM_PROGRAM_H_

#include <string>

namespace platform {

// Folder of the running program as the system has it, without a trailing slash; empty if it can't be found out.
const std::string& ProgramFolder();

// Puts the null device where a standard stream came closed: otherwise the next file that is opened would take its
// number, and what is said to the stream would go into that file.
void FillStandardStreams();

// Lets a write fail, instead of ending the program, that nobody reads any more or that would make a file larger than
// the system allows this process.
void LetWritesFail();

// Lets the heap keep what it has once got from the system, up to some tens of megabytes: from file to file much the
// same sizes are asked for, and new pages cost more than the work on them. Larger blocks still come and go.
void KeepFreedMemory();

// To the system's log at debug level; neither standard output nor standard error sees it.
void DebugMessage(const char* text);

// The text on standard error, with a line end: what a message box would show.
void ErrorMessage(const char* text);

}  // namespace platform

#endif  // PLATFORM_PROGRAM_H_
