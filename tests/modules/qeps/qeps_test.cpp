#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kPdfId = 0x10000023;
constexpr std::uint32_t kPsId = 0x10000022;

constexpr std::uint32_t kWhite = 0xFFFFFFFF;
constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string Object(int number, const std::string& body) {
  return std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
}

std::string Stream(int number, const std::string& content, const std::string& keys = "") {
  return Object(number, "<</Length " + std::to_string(content.size()) + keys + ">>stream\n" + content + "\nendstream");
}

struct PdfPage {
  std::string box;  // of the media
  std::string content;
  std::string keys = {};
};

// Without a table of objects: readers find them.
std::string MakePdf(const std::vector<PdfPage>& pages, const std::string& objects = "") {
  std::string kids;
  std::string rest;
  int number = 10;
  for (const PdfPage& page : pages) {
    kids += std::to_string(number) + " 0 R ";
    rest += Object(number, "<</Type/Page/Parent 2 0 R/MediaBox[" + page.box + "]/Contents " +
                               std::to_string(number + 1) + " 0 R" + page.keys + ">>");
    rest += Stream(number + 1, page.content);
    number += 2;
  }
  return "%PDF-1.4\n" + Object(1, "<</Type/Catalog/Pages 2 0 R>>") +
         Object(2, "<</Type/Pages/Kids[" + kids + "]/Count " + std::to_string(pages.size()) + ">>") + rest + objects +
         "trailer<</Root 1 0 R>>\n%%EOF\n";
}

const PdfPage kRedCorner{"0 0 40 20", "1 0 0 rg 0 0 10 10 re f"};  // at the bottom left
const PdfPage kBlueCorner{"0 0 30 60", "0 0 1 rg 20 50 10 10 re f"};

std::string RedCornerEps() {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 140 220\n%%EndComments\n"
         "1 0 0 setrgbcolor 100 200 10 10 rectfill\nshowpage\n";
}

void ExpectRedCorner(const Loaded& loaded) {
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 1U);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, 24);
  ASSERT_EQ(page.width, 40);
  ASSERT_EQ(page.height, 20);
  EXPECT_EQ(page.visible, 1);
  EXPECT_EQ(page.slideNumber, -1);
  EXPECT_EQ(page.dpiX, 72.0);
  EXPECT_EQ(PixelAt(page, 0, 19), kRed);
  EXPECT_EQ(PixelAt(page, 9, 10), kRed);
  EXPECT_EQ(PixelAt(page, 11, 19), kWhite);
  EXPECT_EQ(PixelAt(page, 0, 8), kWhite);
  EXPECT_EQ(PixelAt(page, 39, 0), kWhite);
}

std::vector<std::uint8_t> WithDosHeader(const std::string& script, std::span<const std::uint8_t> tiff) {
  ByteWriter out;
  const auto scriptSize = static_cast<std::uint32_t>(script.size());
  out.Long(0xC6D3D0C5).Long(30).Long(scriptSize).Long(0).Long(0);
  out.Long(30 + scriptSize).Long(static_cast<std::uint32_t>(tiff.size())).Word(0xFFFF);
  return out.Text(script).Bytes(tiff).bytes;
}

// 2 x 1 grey pixels.
std::vector<std::uint8_t> SmallTiff() {
  ByteWriter out;
  out.Text("II").Word(42).Long(8).Word(7);
  const std::uint32_t kEntries[][2] = {{256, 2}, {257, 1}, {258, 8}, {262, 1}, {273, 98}, {278, 1}, {279, 2}};
  for (const auto& entry : kEntries) out.Word(entry[0]).Word(4).Long(1).Long(entry[1]);
  return out.Long(0).Byte(0).Byte(255).bytes;
}

class Qeps : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Load(std::string_view text, std::uint32_t id, glib::BaseFormatDesc* loadWord = nullptr) const {
    return host_.Load(AsBytes(text), id, loadWord);
  }

  ModuleHost host_{"qeps"};
};

TEST_F(Qeps, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kPdfId, kPsId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qeps, DrawsPdfAndPostScriptOnWhite) {
  ExpectRedCorner(Load(MakePdf({kRedCorner}), kPdfId));
  ExpectRedCorner(Load(RedCornerEps(), kPsId));
  ExpectRedCorner(host_.Load(WithDosHeader(RedCornerEps(), SmallTiff()), kPsId));
  ExpectRedCorner(
      Load("%!PS-Adobe-3.0\n<</PageSize [40 20]>> setpagedevice 1 0 0 setrgbcolor 0 0 10 10 rectfill showpage", kPsId));
}

TEST_F(Qeps, ContentDecidesBetweenTheTwo) {
  ExpectRedCorner(Load(MakePdf({kRedCorner}), kPsId));
  ExpectRedCorner(Load(RedCornerEps(), kPdfId));
}

TEST_F(Qeps, EveryPageIsASlide) {
  const Loaded pdf = Load(MakePdf({kRedCorner, kBlueCorner}), kPdfId);
  ASSERT_EQ(pdf.result, glib::RCOK) << pdf.message;
  ASSERT_EQ(pdf.PageCount(), 2U);
  EXPECT_EQ(pdf.PageAt(1).width, 30);
  EXPECT_EQ(pdf.PageAt(1).height, 60);
  EXPECT_EQ(PixelAt(pdf.PageAt(1), 29, 0), kBlue);
  const Loaded ps = Load(
      "%!PS\n<</PageSize [30 60]>> setpagedevice 3 {0 0 1 setrgbcolor 20 50 10 10 rectfill showpage} repeat", kPsId);
  ASSERT_EQ(ps.result, glib::RCOK) << ps.message;
  ASSERT_EQ(ps.PageCount(), 3U);
  EXPECT_EQ(PixelAt(ps.PageAt(2), 29, 0), kBlue);
  EXPECT_EQ(PixelAt(ps.PageAt(2), 0, 0), kWhite);
}

TEST_F(Qeps, TheBoxMayStandAtTheEnd) {
  const std::string eps =
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: (atend)\n%%EndComments\n1 0 0 setrgbcolor 100 200 10 10 rectfill\n"
      "showpage\n%%Trailer\n%%BoundingBox: 100 200 140 220\n%%EOF\n";
  ExpectRedCorner(Load(eps, kPsId));
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("file", eps), kPsId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, 40);
  EXPECT_EQ(info->height, 20);
}

TEST_F(Qeps, WhatSwitchesPrintersIsPassedOver) {
  ExpectRedCorner(Load("\x04" + RedCornerEps(), kPsId));
  ExpectRedCorner(Load("\x1B%-12345X@PJL JOB\n@PJL ENTER LANGUAGE=POSTSCRIPT\n" + RedCornerEps(), kPsId));
}

TEST_F(Qeps, SettingsGiveTheResolution) {
  glib::GIFSave settings;
  settings.dpiX = 144.0;
  settings.dpiY = 216.0;
  for (const auto& [file, id] : {std::pair{MakePdf({kRedCorner}), kPdfId}, {RedCornerEps(), kPsId}}) {
    const Loaded loaded = Load(file, id, &settings);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    EXPECT_EQ(page.width, 80);
    EXPECT_EQ(page.height, 60);
    EXPECT_EQ(page.dpiX, 144.0);
    EXPECT_EQ(page.dpiY, 216.0);
    EXPECT_EQ(PixelAt(page, 19, 59), kRed);
    EXPECT_EQ(PixelAt(page, 19, 31), kRed);
    EXPECT_EQ(PixelAt(page, 21, 59), kWhite);
  }
}

TEST_F(Qeps, ShapesThatAbutShowNoSeam) {
  const Loaded loaded = Load(
      "%!PS\n<</PageSize [20 20]>> setpagedevice 0 setgray 0 0 7.37 20 rectfill 7.37 0 20 20 rectfill showpage", kPsId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  for (std::uint32_t x = 0; x < 20; ++x) EXPECT_EQ(PixelAt(loaded.PageAt(0), x, 10), 0xFF000000U) << x;
}

TEST_F(Qeps, InformationNeedsNoDrawing) {
  const test_support::TemporaryFolder folder;
  const struct {
    std::string file;
    std::uint32_t id;
    std::int32_t width, height, pages;
  } kCases[] = {
      {MakePdf({kRedCorner, kBlueCorner}), kPdfId, 40, 20, 2},
      {MakePdf({{"0 0 40 20", "", "/Rotate 90"}}), kPdfId, 20, 40, 1},
      {RedCornerEps(), kPsId, 40, 20, 1},
      {"%!PS-Adobe-3.0\n%%Pages: 7\n{} loop", kPsId, 0, 0, 7},
      {"%!PS-Adobe-3.0\n%%Page: 1 1\nshowpage\n%%Page: 2 2\n(%%Page: no page) pop showpage", kPsId, 0, 0, 2},
  };
  for (const auto& c : kCases) {
    const auto info = host_.Info(folder.Write("file", c.file), c.id);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->bits(), 24);
    EXPECT_EQ(info->width, c.width);
    EXPECT_EQ(info->height, c.height);
    EXPECT_EQ(info->pages, c.pages);
    EXPECT_EQ(info->size, static_cast<std::int32_t>(c.file.size()));
  }
  std::uint32_t result = 0;
  EXPECT_EQ(host_.Info(folder.Write("file", "%PDF-nothing"), kPdfId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
}

TEST_F(Qeps, LockedDocumentsAreNotSupported) {
  const std::string zeros(64, '0');
  std::string file =
      MakePdf({kRedCorner}, Object(5, "<</Filter/Standard/V 1/R 2/P -4/O<" + zeros + ">/U<" + zeros + ">>>"));
  const std::size_t trailer = file.rfind("/Root");
  file.insert(trailer, "/Encrypt 5 0 R/ID[<00><00>]");
  const Loaded loaded = Load(file, kPdfId);
  EXPECT_EQ(loaded.result, glib::NSUP);
  EXPECT_NE(loaded.message.find("locked"), std::string::npos) << loaded.message;
}

TEST_F(Qeps, EndlessScriptsAreStoppedAndShownPagesKept) {
  const Loaded endless = Load("%!PS\n{} loop", kPsId);
  EXPECT_EQ(endless.result, glib::IERR);
  EXPECT_NE(endless.message, "");
  const Loaded later = Load("%!PS\n<</PageSize [8 8]>> setpagedevice showpage {} loop", kPsId);
  EXPECT_EQ(later.result, glib::RCOK);
  EXPECT_EQ(later.PageCount(), 1U);
  EXPECT_NE(later.message, "");
}

TEST_F(Qeps, EndlessPagesEndAtTheLimit) {
  const Loaded loaded = Load("%!PS\n<</PageSize [1 1]>> setpagedevice {showpage} loop", kPsId);
  EXPECT_EQ(loaded.result, glib::RCOK);
  EXPECT_LE(loaded.PageCount(), 4096U);
  EXPECT_NE(loaded.message, "");
}

TEST_F(Qeps, PdfThatDrawsForEverIsStopped) {
  // Forms that each draw the next one twenty times.
  std::string forms;
  constexpr int kDepth = 12;
  for (int i = 0; i < kDepth; ++i) {
    std::string content;
    for (int k = 0; k < 20; ++k) content += i + 1 < kDepth ? "/F Do " : "0 0 1 1 re f ";
    forms += Stream(
        100 + i, content,
        "/Type/XObject/Subtype/Form/BBox[0 0 40 20]/Resources<</XObject<</F " + std::to_string(101 + i) + " 0 R>>>>");
  }
  const std::string file =
      MakePdf({kRedCorner, {"0 0 40 20", "/F Do", "/Resources<</XObject<</F 100 0 R>>>>"}, kRedCorner}, forms);
  const Loaded loaded = Load(file, kPdfId);
  EXPECT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(loaded.PageCount(), 1U);  // what was there before
  EXPECT_NE(loaded.message, "");
}

TEST_F(Qeps, PagesOverTheLimitsAreNotDrawn) {
  for (const char* box : {"0 0 70000 10", "0 0 60000 60000", "0 0 0 0", "0 0 1e30 1e30"}) {
    const Loaded loaded = Load(MakePdf({{box, "1 0 0 rg 0 0 10 10 re f"}}), kPdfId);
    CheckOutcome(loaded);  // a box without an area is replaced by the library
  }
  for (const char* size : {"70000 10", "60000 60000", "1e9 1e9"}) {
    // The interpreter may fall back to a page of its own choice.
    const Loaded loaded = Load("%!PS\n<</PageSize [" + std::string(size) + "]>> setpagedevice showpage", kPsId);
    CheckOutcome(loaded);
    if (loaded.PageCount() != 0) {
      EXPECT_LT(loaded.PageAt(0).width, 2000);
    }
  }
}

TEST_F(Qeps, ScriptsReachNothingOutside) {
  const test_support::TemporaryFolder folder;
  folder.Write("secret", "1 0 0 setrgbcolor 0 0 10 10 rectfill");
  const std::string secret = (folder.path() / "secret").string();
  const std::string made = (folder.path() / "made").string();
  const std::string begin = "%!PS\n<</PageSize [10 10]>> setpagedevice {";
  const std::string end = "} stopped pop showpage";
  for (const std::string& act : std::initializer_list<std::string>{
           "(" + secret + ") run",
           "(" + secret + ") (r) file cvx exec",
           "(" + made + ") (w) file dup (x) writestring closefile",
           "(%pipe%touch " + made + ") (w) file closefile",
           "(" + secret + ") deletefile",
           "(" + secret + ") (" + made + ") renamefile",
           "<</OutputFile (" + made + ")>> setpagedevice showpage",
           "(/etc/passwd) (r) file pop 1 0 0 setrgbcolor 0 0 10 10 rectfill",
           "(%pipe%id) (r) file pop 1 0 0 setrgbcolor 0 0 10 10 rectfill",
           "(/etc/passwd) /PermitFileReading .addcontrolpath (/etc/passwd) (r) file pop 1 0 0 setrgbcolor 0 0 10 10 "
           "rectfill",
           "(/etc/*) {pop 1 0 0 setrgbcolor 0 0 10 10 rectfill} 255 string filenameforall",
           "(" + folder.path().string() + "/*) {pop 1 0 0 setrgbcolor 0 0 10 10 rectfill} 255 string filenameforall",
       }) {
    const Loaded loaded = Load(begin + act + end, kPsId);
    EXPECT_EQ(folder.Contents(), (std::vector<std::string>{"secret"})) << act;
    if (loaded.result != glib::RCOK) continue;
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 5, 5), kWhite) << act;
  }
}

TEST_F(Qeps, WordsOfAScriptAreNoPixels) {
  ExpectRedCorner(
      Load("%!PS\n(P6 1 1 255 abc) print flush <</PageSize [40 20]>> setpagedevice "
           "1 0 0 setrgbcolor 0 0 10 10 rectfill showpage (more) print flush",
           kPsId));
}

TEST_F(Qeps, WithoutTheInterpreterThePreviewIsShown) {
  const char* path = std::getenv("PATH");
  const std::string before = path != nullptr ? path : "";
  setenv("PATH", "/nowhere", 1);
  const Loaded preview = host_.Load(WithDosHeader(RedCornerEps(), SmallTiff()), kPsId);
  const Loaded none = Load(RedCornerEps(), kPsId);
  setenv("PATH", before.c_str(), 1);
  ASSERT_EQ(preview.result, glib::RCOK) << preview.message;
  EXPECT_EQ(preview.PageAt(0).width, 2);
  EXPECT_EQ(PixelAt(preview.PageAt(0), 1, 0), kWhite);
  EXPECT_EQ(none.result, glib::NSUP);
  EXPECT_NE(none.message, "");
}

TEST_F(Qeps, CutFilesEndCleanly) {
  const std::string pdf = MakePdf({kRedCorner});
  for (std::size_t size = 0; size < pdf.size(); size += 7) CheckOutcome(Load(pdf.substr(0, size), kPdfId));
  const auto eps = WithDosHeader(RedCornerEps(), {});
  for (std::size_t size = 0; size < eps.size(); size += size < 32 ? 1 : 17) {
    CheckOutcome(host_.Load(std::span(eps).first(size), kPsId));
  }
}

TEST_F(Qeps, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("pdf", host_, kPdfId) || !CheckCorpus("eps", host_, kPsId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
