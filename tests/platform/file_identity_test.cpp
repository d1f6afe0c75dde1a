#include "platform/file_identity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace platform {
namespace {

namespace fs = std::filesystem;

TEST(FileIdentity, TellsNamesFromFiles) {
  std::string pattern = (fs::temp_directory_path() / "identity_XXXXXX").string();
  const fs::path folder = mkdtemp(pattern.data());
  for (const char* name : {"alone", "linked", "other"}) std::ofstream(folder / name) << name;
  fs::create_hard_link(folder / "linked", folder / "second");
  fs::create_symlink("alone", folder / "pointer");
  fs::create_directory(folder / "sub");
  fs::create_directory_symlink(".", folder / "round");

  struct Case {
    const char* first;
    const char* second;
    bool sameFile;
    bool sameName;
  };
  const Case cases[] = {
      {"alone", "alone", true, true},   {"alone", "sub\\..\\alone", true, true}, {"alone", "round\\alone", true, true},
      {"linked", "linked", true, true}, {"linked", "second", true, false},       {"alone", "pointer", true, false},
      {"alone", "other", false, false}, {"alone", "none", false, false},         {"none", "none", false, false},
      {"sub", "sub", true, true},       {"sub", "sub\\..\\sub", true, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.first) + " and " + c.second);
    const std::string first = folder.string() + "\\" + c.first;
    const std::string second = folder.string() + "\\" + c.second;
    FileSet set;
    EXPECT_TRUE(set.IsEmpty());
    set.Add((folder.string() + "\\sub").c_str());
    set.Add(first.c_str());
    EXPECT_EQ(set.Holds(second.c_str()), c.sameFile);
    EXPECT_EQ(IsSameName(first.c_str(), second.c_str()), c.sameName);
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace platform
