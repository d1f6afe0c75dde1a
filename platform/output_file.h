#ifndef PLATFORM_OUTPUT_FILE_H_
#define PLATFORM_OUTPUT_FILE_H_

#include <cstddef>
#include <string>

namespace platform {

// A file that is written from its beginning to its end. Unless Close says that all of it stands there, a file that Open
// made is removed again, be it by Close or by the destructor.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() { Abandon(); }

  // Makes the file, or empties it if there is one. `path` is text with backslashes. False: it can't be written.
  bool Open(const char* path);

  // Writes all of the bytes. False, from the first failure on.
  bool Write(const void* bytes, std::size_t size);

  // True: everything was written and the system has taken it.
  bool Close();

 private:
  void Abandon();

  int file_ = -1;
  bool failed_ = false;
  std::string created_;  // native path, if there was no such file before
};

}  // namespace platform

#endif  // PLATFORM_OUTPUT_FILE_H_
