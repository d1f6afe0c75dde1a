#ifndef PLATFORM_PENDING_FILE_H_
#define PLATFORM_PENDING_FILE_H_

#include <string>

namespace platform {

// A file that has no name before it is complete. Until then it can be written and read by `Path`; it is gone with the
// object, and with the process, however that ends. Where the file system can't hold a file without a name, a hidden
// name (".zefa-" and digits) in the same folder takes its place, which only a process that is killed outright leaves
// behind.
class PendingFile {
 public:
  enum class Kind { kBest, kHiddenName };
  enum class Outcome {
    kDone,
    kTaken,  // there is something of that name, which stays as it is; another name can be tried
    kFailed,
  };

  // `folder` is where the file will have its name. Nothing is thrown: see IsOpen.
  explicit PendingFile(const char* folder, Kind kind = Kind::kBest);
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  ~PendingFile();

  bool IsOpen() const { return descriptor >= 0; }

  // A path for every use of the content before it has its name. Text with backslashes, for this process only.
  const char* Path() const { return pathText.c_str(); }

  // Gives the file its name, in the folder of the constructor, once. Commit never touches what is there;
  // CommitReplacing puts the file in the place of a file or link in one step, without a moment in which neither stands,
  // and fails for a folder. A file that isn't open fails.
  Outcome Commit(const char* path);
  Outcome CommitReplacing(const char* path);

  // Waits until the content is on the disk. False: it may never get there.
  bool Flush();

 private:
  bool OpenNameless(const std::string& folder);
  bool OpenHidden(const std::string& folder);
  bool LinkTo(const std::string& target, int& error) const;
  Outcome CommitHidden(const std::string& target);
  void DropHidden();
  void ForgetHidden();

  int descriptor = -1;
  std::string folderNative;
  std::string hiddenName;  // native path; empty without such a name
  std::string pathText;
};

// Writes the content of one file over that of another, which keeps its name and needs no more room than before if it
// gets shorter. On false the target may hold anything.
bool OverwriteContent(const char* from, const char* to);

}  // namespace platform

#endif  // PLATFORM_PENDING_FILE_H_
