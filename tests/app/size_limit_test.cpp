#include "app/size_limit.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "glib/module_api/save_settings.h"

namespace app {
namespace {

struct Case {
  std::string name;
  std::int32_t items;
  std::int32_t pages;
  bool nfi;
  std::int64_t size;
  std::int32_t limit;
  std::function<std::int64_t(std::int32_t items, bool nfi)> bytes;  // of a try; -1: it fails
  std::vector<std::pair<std::int32_t, bool>> tries;                 // palette entries and nfi, in order
  bool saved;
};

TEST(SearchColors, TriesWhatTheLinePromises) {
  const Case cases[] = {
      // slope (900 - 100) / 128 = 6.25, (500 - 100) / 6.25 + 2 = 66
      {"first estimate fits",
       130,
       1,
       false,
       900,
       500,
       [](int items, bool) { return items == 2 ? 100 : 480; },
       {{2, false}, {66, false}},
       true},
      // 66 gives 600: slope 500 / 64, 400 / 7.8125 + 2 = 53.2
      {"second estimate",
       130,
       1,
       false,
       900,
       500,
       [](int items, bool) { return items == 2    ? 100
                                    : items == 66 ? 600
                                                  : 499; },
       {{2, false}, {66, false}, {53, false}},
       true},
      // (501 - 100) / 8 = 50.125, 400 / 50.125 + 2 = 9.98: the same number could go on for ever without the step down
      {"step down by one",
       10,
       1,
       false,
       502,
       500,
       [](int items, bool) { return items == 2   ? 100
                                    : items == 9 ? 501
                                                 : 400; },
       {{2, false}, {9, false}, {8, false}},
       true},
      {"exactly the limit",
       130,
       1,
       false,
       900,
       500,
       [](int items, bool) { return items == 2 ? 500 : 500; },
       {{2, false}, {2, false}},
       true},
      {"two colours are too many", 256, 1, false, 900, 500, [](int, bool) { return 501; }, {{2, false}}, true},
      {"no room below two", 2, 1, false, 900, 500, [](int, bool) { return 1; }, {}, false},
      {"unset entries give no room", 0, 1, false, 900, 500, [](int, bool) { return 1; }, {}, false},
      {"pages first without colours", 256, 3, false, 900, 500, [](int, bool) { return 400; }, {{256, true}}, true},
      {"the flag stays for the search",
       130,
       3,
       false,
       2000,
       500,
       [](int items, bool) { return items == 130 ? 900
                                    : items == 2 ? 100
                                                 : 480; },
       {{130, true}, {2, true}, {66, true}},
       true},
      {"the flag was set already",
       130,
       3,
       true,
       900,
       500,
       [](int items, bool) { return items == 2 ? 100 : 480; },
       {{2, true}, {66, true}},
       true},
      {"two colours and pages", 2, 3, false, 900, 500, [](int, bool) { return 700; }, {{2, true}}, true},
      {"failing flag try", 256, 3, false, 900, 500, [](int, bool) { return -1; }, {{256, true}}, false},
      {"failing floor", 256, 1, false, 900, 500, [](int, bool) { return -1; }, {{2, false}}, false},
      {"failing estimate",
       130,
       1,
       false,
       900,
       500,
       [](int items, bool) { return items == 2 ? 100 : -1; },
       {{2, false}, {66, false}},
       false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    glib::GIFSave desc;
    desc.paletteItems = c.items;
    desc.nfi = c.nfi ? 1 : 0;
    std::vector<std::pair<std::int32_t, bool>> tries;
    const bool saved = SearchColors(desc, c.size, c.pages, c.limit, [&] {
      tries.emplace_back(desc.paletteItems, desc.nfi != 0);
      return c.bytes(desc.paletteItems, desc.nfi != 0);
    });
    EXPECT_EQ(saved, c.saved);
    EXPECT_EQ(tries, c.tries);
  }
}

// Whatever sizes come back, the tries go down and end.
TEST(SearchColors, EndsForSizesThatFollowNoLine) {
  std::uint32_t seed = 1;
  for (int run = 0; run < 200; ++run) {
    glib::GIFSave desc;
    desc.paletteItems = 256;
    std::int32_t before = 257;
    int tries = 0;
    SearchColors(desc, 2000000000, 1, 1000, [&]() -> std::int64_t {
      ++tries;
      if (desc.paletteItems == 2 && tries == 1) return 1000 - run % 3;
      EXPECT_LT(desc.paletteItems, before);
      EXPECT_GE(desc.paletteItems, 2);
      before = desc.paletteItems;
      seed = seed * 1664525 + 1013904223;
      return 1001 + (seed >> (run % 31));
    });
    EXPECT_LE(tries, 256);
  }
}

}  // namespace
}  // namespace app
