#ifndef PLATFORM_FILE_OPERATIONS_H_
#define PLATFORM_FILE_OPERATIONS_H_

#include <cstdio>
#include <string>

namespace platform {

// Paths are text with backslashes. A null or empty path names nothing: the answer is false.

bool Exists(const char* path);  // the name is taken, even by a link that leads nowhere
bool IsFolder(const char* path);
bool Readable(const char* path);
// What has no write permission for anybody is write-protected for the superuser too.
bool Writable(const char* path);

// A regular file, or a link to one, that isn't write-protected, in a folder from which it can be deleted. A device, a
// pipe or the name of a standard stream is nothing to replace: the superuser could, and the system would miss it.
bool Deletable(const char* path);

bool CreateFolder(const char* path);  // one level; false also if the name is taken
bool DeleteFile(const char* path);    // a link goes itself, a folder stays
// A taken `to` gives false and stays. Between devices the file is copied and then deleted; on any failure `from` is
// whole and `to` isn't there.
bool MoveFile(const char* from, const char* to);
// Replaces a file at `to`, at once when the copy is complete. A failure leaves `to` as it was.
bool CopyFile(const char* from, const char* to);

// Opens a text file to be written in fopen's `mode`. Null also for what is write-protected and for what exists and is
// no regular file, since a pipe without a reader would make the program wait.
std::FILE* OpenText(const char* path, const char* mode);

std::string TemporaryFolder();  // the system's, without a trailing backslash
// Makes an empty file with a new name in the temporary folder; empty if that fails. The caller deletes it.
std::string CreateTemporaryFile();

bool OutputIsTerminal();  // standard output goes to a terminal

}  // namespace platform

#endif  // PLATFORM_FILE_OPERATIONS_H_
