#ifndef TESTS_SUPPORT_FILE_INFO_CHECK_H_
#define TESTS_SUPPORT_FILE_INFO_CHECK_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "glib/module_api/result_values.h"
#include "tests/support/corpus.h"
#include "tests/support/module_host.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {

// What a module tells of a file must be what its load gives.
inline void CheckFileInfo(const ModuleHost& host, const std::string& path, std::uint32_t id) {
  SCOPED_TRACE(path);
  const Loaded loaded = host.Load(path, id);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto info = host.Info(path, id);
  ASSERT_NE(info, nullptr);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(info->id, id);
  EXPECT_EQ(info->width, page.width);
  EXPECT_EQ(info->height, page.height);
  EXPECT_EQ(info->bits(), page.bits);
  EXPECT_EQ(info->pages, static_cast<std::int32_t>(loaded.PageCount()));
  EXPECT_EQ(info->dpiX, page.dpiX);
  EXPECT_EQ(info->dpiY, page.dpiY);
  std::string native = path;
  for (char& c : native) c = c == '\\' ? '/' : c;
  EXPECT_EQ(info->size, static_cast<std::int32_t>(std::filesystem::file_size(native)));
}

// The same for made files.
inline void CheckFileInfos(const ModuleHost& host, const std::vector<PictureCase>& pictures, std::uint32_t id) {
  const test_support::TemporaryFolder folder;
  for (const PictureCase& c : pictures) {
    const std::string_view text(reinterpret_cast<const char*>(c.file.data()), c.file.size());
    CheckFileInfo(host, folder.Write(c.name, text), id);
  }
}

// The same, and the look, for all files of a corpus folder. False if there is no corpus.
inline bool CheckCorpusAndInfo(const std::string& folder, const ModuleHost& host, std::uint32_t id) {
  const bool present = CheckCorpus(folder, host, id);
  for (const Expected& file : CorpusFiles(folder)) CheckFileInfo(host, file.path, id);
  return present;
}

}  // namespace tests

#endif  // TESTS_SUPPORT_FILE_INFO_CHECK_H_
