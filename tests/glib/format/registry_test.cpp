#include "glib/format/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "glib/format/catalogue.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/format_rows.h"
#include "tests/support/temporary_folder.h"

namespace glib {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test_support::TemporaryFolder;

constexpr const char* kNoModules = "no-such-folder";
constexpr const char* kFixtures = ZEFA_BUILD_FOLDER "/modules_fixture";

// The number of a row in the catalogue, from 1; 0 for null.
std::uint32_t Number(const FilterManager& registry, const FilterFormatDesc* desc) {
  for (std::uint32_t i = 0; i < registry.formats.count; ++i) {
    if (registry.formats.At(i) == desc) return i + 1;
  }
  return 0;
}

std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

struct Sample {
  std::uint32_t row;
  std::uint32_t tellingBytes;  // how many of the bytes can't be turned around
  std::string bytes;
};

// One beginning or more for each row, as real files have them.
std::vector<Sample> Samples() {
  const auto text = [](std::string_view bytes) { return std::string(bytes); };
  std::vector<Sample> samples = {
      {1, 2, "BM6\x03"},
      {2, 2, "P\xC3\x02"},
      {3, 4, "Rv60"},
      {4, 6, "GIF87a"},
      {4, 6, "GIF89a"},
      {5, 3, "\xFF\xD8\xFF\xE0"},
      {5, 3, "\xFF\xD8\xFF\xDB"},
      {6, 8, "RIFF\x24\x10..ACONLIST"},
      {7, 5, text("\0\0\2\0\1\0\x20\x20\0\0\x0A\0\x0A\0"sv)},
      {7, 5, text("\0\0\2\0\2\0\x20\x40\x10\0"sv)},
      {8, 4, text("\0\0\1\0\3\0\x10\x10\0\0\1\0\x20\0"sv)},
      {8, 5, text("\0\0\1\0\1\0\x30\x30\x04\0"sv)},
      {9, 4, text("\x0A\5\1\x08\0\0"sv)},
      {9, 4, text("\x0A\2\1\1\0\0"sv)},
      {9, 4, text("\x0A\3\1\4\0\0"sv)},
      {10, 4, "\xB1\x68\xDE\x3A\x04"},
      {11, 2, "P1\n"},
      {11, 2, "P4\n"},
      {12, 2, "P2 3 3"},
      {12, 2, "P5\n"},
      {13, 2, "P3\n"},
      {13, 2, "P6\n"},
      {14, 4, text("II*\0\x08\0\0\0"sv)},
      {14, 4, text("MM\0*\0\0\0\x08"sv)},
      {15, 8, text("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR"sv)},
      {16, 8, text("\x8AMNG\r\n\x1A\n\0\0\0\x1CMHDR"sv)},
      {17, 8, text("\x8BJNG\r\n\x1A\n\0\0\0\x10JHDR"sv)},
      {18, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"},
      {19, 39, std::string(32, '\xFF') + Zeros(2016) + "PCD_IPI"},
      {20, 4, text("8BPS\0\1"sv)},
      {21, 32, text("Paint Shop Pro Image File\n\x1A\0\0\0\0\0\3\0"sv)},
      {22, 6, text("\1\0\x09\0\0\3\x11\1\0\0\1\0\x0C\0\0\0\0\0\0\0\0\0"sv)},
      {22, 6, text("\0\0\x09\0\0\3\x11\1\0\0\1\0\x0C\0\0\0\0\0\0\0\0\0"sv)},
      {23, 6, text("\xD7\xCD\xC6\x9A\0\0\x10"sv)},
      {24, 10, text("\1\0\0\0\x6C\0\0\0"sv) + std::string(32, '\7') + " EMF" + text("\0\0\1\0"sv) + Zeros(12)},
      {25, 12, text("\0\0\0\x0CjP  \r\n\x87\n\0\0\0\x14"sv)},
      {25, 2, text("\xFFO\xFFQ\0\x2F\0\0\0\0\0\1"sv)},
      {26, 4, "%PDF-1.4"},
      {27, 4, "%!PS-Adobe-3.0"},
      {27, 4, text("\xC5\xD0\xD3\xC6\x20\0\0\0"sv)},
      {28, 4, text("\xFFWPC\x10\0"sv)},
      {29, 4, text("\0\0\2\0\0\0\0\0\0\0\0\0\x10\0\x10\0\x18\x20"sv)},
      {29, 4, text("\x12\1\x09\0\0\0\1\x18\0\0\0\0\x10\0\x10\0\x08\x00"sv)},
      {30, 2, text("\0\1\0\7\0\1\0\1\0\x55\0\x55"sv)},
      {31, 4, text("FORM\0\0\1\0ILBM"sv)},
      {32, 4, text("Y\xA6j\x95\0\0\0\x10"sv)},
      {33, 2, text("\1\xDA\1\1"sv)},
      {34, 7, "#define x_width 8"},
      {35, 9, "/* XPM */\nstatic"},
      {36, 2, text("R\xCC\0\0"sv)},
      {37, 0, "whatever no other row claims"},
  };
  return samples;
}

TEST(Registry, FindsEveryRowByWhatItsFilesBeginWith) {
  const FilterManager registry(kNoModules, true);
  std::vector<bool> found(38);
  for (const Sample& sample : Samples()) {
    const auto size = static_cast<std::uint32_t>(sample.bytes.size());
    const FilterFormatDesc* desc = registry.DetectBuffer(sample.bytes.data(), size, kAnyFormat);
    EXPECT_EQ(Number(registry, desc), sample.row) << sample.bytes;
    found[sample.row] = true;

    std::uint32_t telling = 0;
    for (std::size_t at = 0; at < sample.bytes.size(); ++at) {
      std::string other = sample.bytes;
      other[at] = static_cast<char>(~other[at]);
      telling += Number(registry, registry.DetectBuffer(other.data(), size, kAnyFormat)) != sample.row;
    }
    EXPECT_EQ(telling, sample.tellingBytes) << sample.bytes;
  }
  for (std::uint32_t row = 1; row <= 37; ++row) EXPECT_TRUE(found[row]) << "no sample for row " << row;
}

TEST(Registry, FoldsTheCaseOfLettersInSignatures) {
  const FilterManager registry(kNoModules, true);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("bm", 2, kAnyFormat)), 1U);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("gif89z", 6, kAnyFormat)), 4U);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("%pdf", 4, kAnyFormat)), 26U);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("GIF89A", 6, kAnyFormat)), 37U);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("GIF88a", 6, kAnyFormat)), 37U);
}

TEST(Registry, DecidesByNameWhereTheSignatureProvesNothing) {
  const FilterManager registry(kNoModules, true);
  const TemporaryFolder folder;
  const std::string gem = "\0\1\0\7"s, compound = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
  const struct {
    const char* name;
    std::string bytes;
    std::uint32_t row;
  } cases[] = {
      {"gif.bmp", "GIF89a", 4},
      {"gif", "GIF89a", 4},
      {"gem.img", gem, 30},
      {"gem.pic", gem, 41},
      {"gem.GEM", gem, 30},
      {"gem.dat", gem, 0},
      {"gem", gem, 0},
      {"x.fpx", compound, 18},
      {"x.doc", compound, 0},
      {"x.cut", "", 37},
      {"x.wbmp", "", 39},
      {"x.unknown", "", 0},
      {"x.gif", "", 4},
      {"x.swf", "FWS\x06", 38},
      {"x.dat", "FWS\x06", 0},
      {"x.wbm", "\0\0\x10\x10"s, 39},
      {"x.otb", "\0\x48\x1C"s, 40},
      {"x.pict", Zeros(522) + "\0\x11\2\xFF"s, 41},
      {"x.PCT", Zeros(522), 41},
      {"x.dxf", "  0\r\nSECTION\r\n  2\r\nHEADER", 42},
      {"x.hpgl", "IN;SP1;", 43},
      {"x.rle", "neither", 1},
      {"x.rle", "R\xCC", 36},
  };
  for (const auto& c : cases) {
    const std::string path = folder.Write(c.name, c.bytes);
    EXPECT_EQ(Number(registry, registry.DetectFile(path.c_str())), c.row) << c.name;
  }
}

TEST(Registry, DetectsNothingWhereThereIsNoFile) {
  const FilterManager registry(kNoModules, true);
  const TemporaryFolder folder;
  EXPECT_EQ(registry.DetectFile(nullptr), nullptr);
  EXPECT_EQ(registry.DetectFile(""), nullptr);
  EXPECT_EQ(registry.DetectFile(folder.Text("missing.gif").c_str()), nullptr);
  ASSERT_EQ(mkdir((folder.path() / "folder.gif").c_str(), 0700), 0);
  EXPECT_EQ(registry.DetectFile(folder.Text("folder.gif").c_str()), nullptr);
  ASSERT_EQ(mkfifo((folder.path() / "pipe.gif").c_str(), 0600), 0);
  EXPECT_EQ(registry.DetectFile(folder.Text("pipe.gif").c_str()), nullptr);
}

TEST(Registry, ReadsExtensionsBehindTheLastDotOfTheName) {
  const FilterManager registry(kNoModules, true);
  const struct {
    const char* path;
    std::uint32_t row;
  } cases[] = {
      {"c:\\x\\a.gif", 4}, {"A.GIF", 4},        {"a.b.Tiff", 14}, {"a.gif.", 0},  {"gif", 0},    {"x.gif\\file", 0},
      {"x.gif/file", 0},   {"x.gif\\b.jpe", 5}, {".gif", 4},      {"a.gi", 0},    {"a.giff", 0}, {"a. gif", 0},
      {"a.rle", 1},        {"a.pic", 41},       {"", 0},          {"a.hpgl", 43},
  };
  for (const auto& c : cases) EXPECT_EQ(Number(registry, registry.FindByExtension(c.path)), c.row) << c.path;
  EXPECT_EQ(registry.FindByExtension(nullptr), nullptr);
}

TEST(Registry, ListsExtensionsInOrderOfTheRows) {
  FilterManager registry(kNoModules, true);
  std::uint32_t at = 0;
  for (const FormatRow& row : FormatRows()) {
    std::string joined;
    for (; at < registry.extensions.count && registry.extensions.At(at)->format->id == row.id; ++at) {
      joined += (joined.empty() ? "" : "\n") + std::string(registry.extensions.At(at)->c_str());
    }
    EXPECT_EQ(joined, row.extensions);
  }
  EXPECT_EQ(at, registry.extensions.count);

  registry.formats.Clear();
  for (const char* texts : {"\nx\n\ny\n", "", "\n", "one"}) {
    registry.formats.Append(CreateFormatDesc(1, 1, kTextPattern, "?", texts, nullptr, nullptr));
  }
  registry.RebuildExtensionList();
  std::string joined;
  for (std::uint32_t i = 0; i < registry.extensions.count; ++i) {
    joined += std::string(registry.extensions.At(i)->c_str()) + "|";
  }
  EXPECT_EQ(joined, "x||y|one|");
}

TEST(Registry, StoresTheFolderWithoutOneBackslash) {
  const struct {
    const char* given;
    const char* stored;
  } cases[] = {{nullptr, ""}, {"", ""}, {"x", "x"}, {"x\\", "x"}, {"x\\\\", "x\\"}, {"\\", ""}, {"x/", "x/"}};
  for (const auto& c : cases) EXPECT_STREQ(FilterManager(c.given, true).folder.c_str(), c.stored);
}

TEST(Registry, MakesRowsFromTextsAndBytes) {
  const auto make = [](std::uint32_t length, const char* pattern) {
    return std::unique_ptr<FilterFormatDesc>(CreateFormatDesc(7, 9, length, pattern, "x\ny", nullptr, "module"));
  };
  const auto text = make(kTextPattern, "BM\0X");
  EXPECT_EQ(text->patternLength, kTextPattern);
  EXPECT_EQ(text->pattern.Length(), 2U);
  const auto bytes = make(3, "\0\1\0\2");
  EXPECT_EQ(bytes->patternLength, 3U);
  EXPECT_EQ(std::string_view(bytes->pattern.c_str(), bytes->pattern.Length() + 1), "\0\1\0\0"sv);
  EXPECT_EQ(make(kTextPattern, nullptr)->pattern.Length(), 0U);
  EXPECT_EQ(bytes->id, 7U);
  EXPECT_EQ(bytes->signatureLength, 9U);
  EXPECT_STREQ(bytes->extensions.c_str(), "x\ny");
  EXPECT_STREQ(bytes->description.c_str(), "");
  EXPECT_STREQ(bytes->moduleName.c_str(), "module");
  EXPECT_FALSE(bytes->confirmByExtension || bytes->readOnly || bytes->loadPending);
  EXPECT_EQ(bytes->moduleHandle, nullptr);
}

TEST(Registry, DetectsBlocksByIdOrSignature) {
  const FilterManager registry(kNoModules, true);
  EXPECT_EQ(registry.DetectBuffer(nullptr, 0, kAnyFormat), nullptr);
  EXPECT_EQ(Number(registry, registry.DetectBuffer(nullptr, 0, 0x20000010)), 15U);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("BM", 2, 0x20000010)), 15U);
  EXPECT_EQ(registry.DetectBuffer("BM", 2, 0x12345), nullptr);
  EXPECT_EQ(Number(registry, registry.DetectBuffer("\0\1", 2, kAnyFormat)), 30U);  // no name to confirm by
  EXPECT_EQ(Number(registry, registry.DetectBuffer("", 0, kAnyFormat)), 37U);

  // Bytes beyond the given size play no part.
  EXPECT_EQ(Number(registry, registry.DetectBuffer("BM", 1, kAnyFormat)), 37U);
  const std::string large = "BM" + std::string(5000, 'x');
  EXPECT_EQ(Number(registry, registry.DetectBuffer(large.data(), 5002, kAnyFormat)), 1U);

  const FilterManager empty(kNoModules, false);
  EXPECT_EQ(empty.formats.count, 0U);
  EXPECT_EQ(empty.DetectBuffer("BM", 2, kAnyFormat), nullptr);
}

// Rows of modules may hold anything.
TEST(Registry, StandsRowsWithSenselessPatterns) {
  FilterManager registry(kNoModules, false);
  FilterFormatDesc* beyondWindow =
      CreateFormatDesc(1, FilterManager::kSignatureWindow + 1, kTextPattern, "*?", "", "", "");
  FilterFormatDesc* longerThanItsBytes = CreateFormatDesc(2, 2, 2, "BM", "", "", "");
  longerThanItsBytes->patternLength = 1U << 30;
  FilterFormatDesc* invalid = CreateFormatDesc(3, 2, kTextPattern, "[", "", "", "");
  FilterFormatDesc* empty = CreateFormatDesc(4, 2, 0, nullptr, "", "", "");
  FilterFormatDesc* last = CreateFormatDesc(5, FilterManager::kSignatureWindow, kTextPattern, "*?", "", "", "");
  for (FilterFormatDesc* desc : {beyondWindow, longerThanItsBytes, invalid, empty, last}) registry.formats.Append(desc);
  EXPECT_EQ(registry.DetectBuffer("BM", 2, kAnyFormat), longerThanItsBytes);
  EXPECT_EQ(registry.DetectBuffer("XY", 2, kAnyFormat), last);
}

TEST(Registry, CatalogueWaitsForItsModules) {
  const FilterManager registry(kNoModules, true);
  ASSERT_EQ(registry.formats.count, 43U);
  std::vector<std::uint32_t> confirmed;
  for (std::uint32_t i = 0; i < registry.formats.count; ++i) {
    const FilterFormatDesc& desc = *registry.formats.At(i);
    EXPECT_TRUE(desc.loadPending);
    EXPECT_EQ(desc.moduleHandle, nullptr);
    if (desc.confirmByExtension) confirmed.push_back(i + 1);
  }
  EXPECT_EQ(confirmed, (std::vector<std::uint32_t>{18, 30, 37, 39, 40, 41, 43}));
}

TEST(Registry, RowsFollowTheOrderOfTheModules) {
  ASSERT_EQ(ModuleNames().size(), 25U);
  const FilterManager registry(kNoModules, true);
  std::vector<std::string> inRows;
  for (std::uint32_t i = 0; i < registry.formats.count; ++i) {
    const std::string name = registry.formats.At(i)->moduleName.c_str();
    if (!name.empty() && (inRows.empty() || inRows.back() != name)) inRows.push_back(name);
  }
  std::vector<std::string> inList;
  for (const char* name : ModuleNames()) {
    if (name != "qflm"sv) inList.push_back(name);
  }
  EXPECT_EQ(inRows, inList);
}

TEST(Registry, LoadsTheModulesOfItsFolder) {
  testing::internal::CaptureStderr();
  const FilterManager registry(kFixtures, false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Bad format for 'qjpg'\n");

  ASSERT_EQ(registry.formats.count, 3U);  // BMP and CLP, then GIF
  const FilterFormatDesc& bmp = *registry.formats.At(0);
  const FilterFormatDesc& clp = *registry.formats.At(1);
  const FilterFormatDesc& gif = *registry.formats.At(2);
  EXPECT_EQ(bmp.id, 0x00000002U);
  EXPECT_EQ(clp.id, 0x1000001FU);
  EXPECT_EQ(gif.id, 0x30000003U);
  EXPECT_NE(bmp.moduleHandle, nullptr);
  EXPECT_EQ(clp.moduleHandle, nullptr);
  EXPECT_NE(gif.moduleHandle, nullptr);
  EXPECT_TRUE(bmp.readOnly && clp.readOnly);
  EXPECT_FALSE(gif.readOnly);
  EXPECT_EQ(clp.loadImageData, bmp.loadImageData);
  EXPECT_EQ(bmp.saveImageData, nullptr);
  EXPECT_EQ(bmp.loadImageThumbnail, nullptr);
  EXPECT_NE(gif.saveImageData, nullptr);
  EXPECT_NE(gif.loadImageThumbnail, nullptr);
  EXPECT_FALSE(bmp.loadPending || clp.loadPending || gif.loadPending);
  EXPECT_EQ(registry.FindByExtension("x.gif"), &gif);
  EXPECT_EQ(registry.FindByExtension("x.jpg"), nullptr);
}

TEST(Registry, AddsModulesByName) {
  FilterManager registry(kFixtures, true);
  EXPECT_TRUE(registry.AddModule("qgif"));
  ASSERT_EQ(registry.formats.count, 44U);
  EXPECT_NE(registry.formats.At(43)->moduleHandle, nullptr);
  EXPECT_TRUE(registry.AddModule("qpng"));  // brings no rows
  EXPECT_FALSE(registry.AddModule("qtif"));
  EXPECT_FALSE(registry.AddModule(""));
  EXPECT_FALSE(registry.AddModule(nullptr));
  EXPECT_EQ(registry.formats.count, 44U);
}

TEST(Registry, BindsAllRowsOfAModule) {
  FilterManager registry(kFixtures, true);
  FilterFormatDesc* bmp = registry.formats.At(0);
  FilterFormatDesc* clp = registry.formats.At(1);
  EXPECT_EQ(registry.BindFormat(nullptr), nullptr);
  EXPECT_EQ(registry.BindFormat(clp), clp);
  EXPECT_FALSE(bmp->loadPending || clp->loadPending);
  EXPECT_NE(bmp->moduleHandle, nullptr);
  EXPECT_EQ(clp->moduleHandle, nullptr);
  EXPECT_EQ(bmp->loadImageData, clp->loadImageData);
  EXPECT_TRUE(bmp->readOnly && clp->readOnly);
  EXPECT_TRUE(registry.formats.At(2)->loadPending);
  void* handle = bmp->moduleHandle;
  EXPECT_EQ(registry.BindFormat(bmp), bmp);
  EXPECT_EQ(bmp->moduleHandle, handle);
  EXPECT_EQ(Number(registry, registry.FindByExtension("x.clp")), 2U);
}

TEST(Registry, LeavesRowsPendingThatCannotBeBound) {
  FilterManager registry(kFixtures, true);
  FilterFormatDesc* film = registry.formats.At(2);  // names no module
  FilterFormatDesc* jpeg = registry.formats.At(4);
  FilterFormatDesc* ani = registry.formats.At(5);
  testing::internal::CaptureStderr();
  EXPECT_EQ(registry.BindFormat(film), nullptr);
  EXPECT_EQ(registry.BindFormat(ani), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(registry.BindFormat(jpeg), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("Bad format for '") + kFixtures + "\\qjpg'\n");
  EXPECT_TRUE(film->loadPending && jpeg->loadPending && ani->loadPending);
  EXPECT_EQ(jpeg->moduleHandle, nullptr);
}

// The modules that have been built, whichever they are, bring the rows that the catalogue has under their names.
TEST(Registry, ModulesBringTheRowsOfTheCatalogue) {
  FilterManager registry(ZEFA_BUILD_FOLDER "/modules", false);
  if (registry.formats.count == 0) GTEST_SKIP() << "no module has been built";
  std::uint32_t at = 0;
  for (const FormatRow& row : FormatRows()) {
    if (at == registry.formats.count) break;
    const FilterFormatDesc& desc = *registry.formats.At(at);
    if (desc.id != row.id) continue;  // its module isn't there
    EXPECT_STREQ(desc.moduleName.c_str(), row.moduleName);
    EXPECT_STREQ(desc.extensions.c_str(), row.extensions);
    EXPECT_EQ(desc.signatureLength, row.signatureLength);
    EXPECT_EQ(desc.patternLength, row.pattern.length);
    EXPECT_EQ(desc.confirmByExtension, row.confirmByExtension);
    ++at;
  }
  EXPECT_EQ(at, registry.formats.count) << "a row is none of the catalogue's or stands out of order";
}

}  // namespace
}  // namespace glib
