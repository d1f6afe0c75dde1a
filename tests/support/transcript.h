#ifndef TESTS_SUPPORT_TRANSCRIPT_H_
#define TESTS_SUPPORT_TRANSCRIPT_H_

#include <string>

namespace test_support {

// What a run says, piece by piece. Small sources make no reports of their own, so that each call of a module is two
// dots: a load and the look at the file's format are four.

inline std::string Found(int count) { return " " + std::to_string(count) + " graphic files found\n\n"; }
inline std::string LoadedOk(const std::string& name) { return " " + name + "......Ok\r\n"; }
inline std::string LoadingFailed(const std::string& name) { return " " + name + "....Loading failed\n"; }
inline std::string Processed(const std::string& dots = "") { return "   Processing" + dots + "..Ok\r\n"; }
inline std::string Saved() { return "   Saving....Ready\n"; }
inline std::string SaveFailed() { return "   Saving....Converting failed\n"; }
inline std::string Finished() { return "Task finished\n"; }
inline std::string FolderFailed(const std::string& folder) {
  return "\nCannot create folder " + folder + "\n or it is not available for writing\nConverting failed\n";
}
// A good source with one output.
inline std::string Converted(const std::string& name) { return LoadedOk(name) + Processed() + Saved(); }

}  // namespace test_support

#endif  // TESTS_SUPPORT_TRANSCRIPT_H_
