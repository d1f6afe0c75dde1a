#include <gtest/gtest.h>

#include <map>

#include "tests/support/corpus.h"
#include "tests/support/module_host.h"

namespace {

// Where the programs that the looks come from leave things out: the second letter of a text that goes on at the current
// position; a turned bitmap and the gradients.
const std::map<std::string, double> kOwnLimits = {{"lo-tdf39894.wmf", 0.75}, {"w2s-fulltest.emf", 8.0}};

TEST(QwmfCorpus, FilesLookAsOthersDrawThem) {
  const tests::ModuleHost host("qwmf");
  ASSERT_TRUE(host.Ok());
  bool found = false;
  for (const auto& [folder, id] :
       std::map<std::string, std::uint32_t>{{"wmf", 0x80001001}, {"apm", 0x80001002}, {"emf", 0x80001003}}) {
    for (tests::Expected file : tests::CorpusFiles(folder)) {
      found = true;
      if (const auto own = kOwnLimits.find(file.name); own != kOwnLimits.end()) file.limit = own->second;
      const tests::Loaded loaded = host.Load(file.path, id);
      tests::DrawMetafiles(loaded);
      EXPECT_EQ(tests::Compare(file, loaded), "") << folder << "/" << file.name;
    }
  }
  if (!found) GTEST_SKIP() << "no corpus";
}

}  // namespace
