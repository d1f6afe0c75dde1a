#include "app/command_line.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "glib/module_api/save_settings.h"
#include "glib/tasks/auto_crop_task.h"
#include "glib/tasks/color_effect_task.h"
#include "glib/tasks/crop_task.h"
#include "glib/tasks/filter_task.h"
#include "glib/tasks/mirror_task.h"
#include "glib/tasks/palette_task.h"
#include "glib/tasks/rotate_task.h"
#include "glib/tasks/stretch_task.h"
#include "glib/tasks/transparency_task.h"
#include "platform/current_folder.h"
#include "tests/support/temporary_folder.h"

namespace {

// The records that one command line gives.
struct Parsed {
  app::ConvertSettings settings;
  glib::GIFSave gif;
  glib::BaseFormatDesc* format = &gif;
};

std::unique_ptr<Parsed> ParseWords(std::vector<std::string> words) {
  auto parsed = std::make_unique<Parsed>();
  words.insert(words.begin(), "zefa");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  app::ParseCommandLine(parsed->format, parsed->settings, static_cast<int>(argv.size()), argv.data());
  return parsed;
}

// Words with blanks between them.
std::unique_ptr<Parsed> Parse(const std::string& line) {
  std::istringstream stream(line);
  return ParseWords({std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()});
}

// The chain in words: one piece a step, with the fields of its record.
std::string Describe(const glib::TASK& task) {
  std::ostringstream out;
  if (task.handler == glib::TaskCrop) {
    const auto& p = *static_cast<const glib::CropParams*>(task.params);
    EXPECT_TRUE(p.leftIsPercent == p.topIsPercent && p.leftIsPercent == p.rightIsPercent &&
                p.leftIsPercent == p.bottomIsPercent);
    out << (p.margins != 0 ? "cropm" : "crop") << (p.leftIsPercent != 0 ? "% " : " ") << p.left << ' ' << p.top << ' '
        << p.right << ' ' << p.bottom;
  } else if (task.handler == glib::TaskStretch) {
    const auto& p = *static_cast<const glib::StretchParams*>(task.params);
    out << "stretch " << p.width << (p.widthIsPercent != 0 ? "% " : " ") << p.height
        << (p.heightIsPercent != 0 ? "%" : "") << (p.smooth != 0 ? " smooth" : "")
        << (p.proportional != 0 ? " prop" : "") << (p.fill != 0 ? " fill" : "");
    if (p.condition != 0) out << " if " << p.condition;
  } else if (task.handler == glib::TaskRotate) {
    const auto& p = *static_cast<const glib::RotateParams*>(task.params);
    out << "rotate " << p.angle << (p.interpolate != 0 ? " smooth" : "");
  } else if (task.handler == glib::TaskFilter) {
    out << "filter " << static_cast<const glib::FilterParams*>(task.params)->filter;
  } else if (task.handler == glib::TaskMirror) {
    const auto& p = *static_cast<const glib::MirrorParams*>(task.params);
    out << "mirror " << p.horizontal << ' ' << p.vertical;
  } else if (task.handler == glib::TaskColorEffect) {
    out << "effect";
    for (const double value : static_cast<const glib::ColorEffectParams*>(task.params)->values) out << ' ' << value;
  } else if (task.handler == glib::TaskPalette) {
    const auto& p = *static_cast<const glib::PaletteParams*>(task.params);
    out << "palette " << p.mode << ' ' << p.file;
  } else if (task.handler == glib::TaskTransparency) {
    const auto& p = *static_cast<const glib::TransparencyParams*>(task.params);
    out << "transparent" << std::hex;
    for (std::int32_t i = 0; i < p.count; ++i) out << ' ' << p.Colors()[i];
  } else if (task.handler == glib::TaskAutoCrop) {
    out << "autocrop " << std::hex << static_cast<const glib::AutoCropParams*>(task.params)->color;
  } else {
    out << "unknown";
  }
  return out.str();
}

std::string Chain(const std::string& line) {
  const auto parsed = Parse(line);
  std::string chain;
  for (std::uint32_t i = 0; i < parsed->settings.tasks.count; ++i) {
    if (i != 0) chain += ", ";
    chain += Describe(*parsed->settings.tasks.At(i));
  }
  return chain;
}

TEST(CommandLine, LeavesAllToTheSourceWithoutOptions) {
  const auto p = Parse("anything");
  EXPECT_EQ(p->settings.sourceFolder, "");
  EXPECT_EQ(p->settings.destFolder, "");
  EXPECT_EQ(p->settings.outExt, ".gif");
  EXPECT_EQ(p->settings.logPath, "\\ZEFA.log");
  EXPECT_EQ(p->settings.background, 0x00FFFFFFU);
  EXPECT_FALSE(p->settings.log);
  EXPECT_EQ(p->settings.tasks.count, 0U);
  EXPECT_EQ(p->gif.id, glib::kGifFormatId);
  EXPECT_EQ(p->gif.width, 0);
  EXPECT_EQ(p->gif.height, 0);
  EXPECT_EQ(p->gif.depth, 0);
  EXPECT_EQ(p->gif.dpiX, 0.0);
  EXPECT_EQ(p->gif.dpiY, 0.0);
  EXPECT_EQ(p->gif.firstSlide, 0U);
  EXPECT_EQ(p->gif.slideCount, glib::kAllSlides);
  EXPECT_EQ(p->gif.dither, 0);
  EXPECT_EQ(p->gif.grayscale, 0);
  EXPECT_EQ(p->gif.quantize, 0);
  EXPECT_EQ(p->gif.paletteItems, 0);
  EXPECT_EQ(p->gif.interlace, 0);
  EXPECT_EQ(p->gif.nfi, 0);
}

TEST(CommandLine, TakesTheLastPartOfTheSourceAsMask) {
  struct {
    const char *word, *folder, *mask;
  } const cases[] = {
      {"s=c:\\pics\\*.jpg", "c:\\pics", "*.jpg"}, {"s=c:\\pics", "c:\\", "pics"},
      {"s=c:\\pics\\", "c:\\pics", "*.*"},        {"s=/home/me/*.png", "\\home\\me", "*.png"},
      {"S=D:\\Pics\\*.JPG", "D:\\Pics", "*.JPG"}, {"s=pics/a?.gif", "pics", "a?.gif"},
      {"s=c:\\a=b\\s=x", "c:\\a=b", "s=x"},       {"s=a\\\\b", "a\\", "b"},
  };
  for (const auto& c : cases) {
    const auto p = Parse(c.word);
    EXPECT_STREQ(p->settings.sourceFolder.c_str(), c.folder) << c.word;
    EXPECT_STREQ(p->settings.mask.c_str(), c.mask) << c.word;
    EXPECT_STREQ(p->settings.destFolder.c_str(), c.folder) << c.word;
  }
}

TEST(CommandLine, TakesTheCurrentFolderForABareMask) {
  for (const char* word : {"s=*.jpg", "s=/*.jpg", "s=\\*.jpg"}) {
    const auto p = Parse(word);
    EXPECT_EQ(p->settings.sourceFolder.c_str(), platform::CurrentFolder()) << word;
    EXPECT_STREQ(p->settings.mask.c_str(), "*.jpg") << word;
  }
}

TEST(CommandLine, CountsEmptySourceAndOutputFileAsAbsent) {
  const auto p = Parse("s=c:\\in\\*.jpg d=c:\\out s= df=");
  EXPECT_EQ(p->settings.sourceFolder, "c:\\in");
  EXPECT_EQ(p->settings.mask, "*.jpg");
  EXPECT_EQ(p->settings.destFolder, "c:\\out");
  EXPECT_EQ(p->settings.destFile, "");
}

TEST(CommandLine, CleansTheOutputFolder) {
  struct {
    const char *line, *folder, *file;
  } const cases[] = {
      {"d=c:\\out", "c:\\out", ""},
      {"d=c:\\out\\", "c:\\out", ""},
      {"d=c:\\", "c:\\", ""},
      {"d=c:", "c:\\", ""},
      {"d=/tmp/Out//", "\\tmp\\Out\\", ""},
      {"d=out", "out", ""},
      {"d= s=x\\*", "x", ""},
      {"df=c:\\out\\a.gif", "c:\\out", "c:\\out\\a.gif"},
      {"df=c:\\a.gif", "c:\\", "c:\\a.gif"},
      {"df=a.gif", ".", "a.gif"},
      {"d=c:\\one df=c:\\two\\a.gif", "c:\\two", "c:\\two\\a.gif"},
      {"df=c:\\two\\a.gif d=c:\\one", "c:\\one", "c:\\two\\a.gif"},
  };
  for (const auto& c : cases) {
    const auto p = Parse(c.line);
    EXPECT_STREQ(p->settings.destFolder.c_str(), c.folder) << c.line;
    EXPECT_STREQ(p->settings.destFile.c_str(), c.file) << c.line;
    EXPECT_EQ(std::string(p->settings.logPath.c_str()), std::string(c.folder) + "\\ZEFA.log") << c.line;
  }
}

TEST(CommandLine, SetsFlagsByPrefixInEitherCase) {
  struct {
    const char* word;
    std::function<bool(const Parsed&)> isSet;
  } const cases[] = {
      {"-sf", [](const Parsed& p) { return p.settings.recurse; }},
      {"-ov", [](const Parsed& p) { return p.settings.overwrite; }},
      {"-log", [](const Parsed& p) { return p.settings.log; }},
      {"-notransp", [](const Parsed& p) { return p.settings.flattenAlpha; }},
      {"-remsrc", [](const Parsed& p) { return p.settings.removeSources; }},
      {"-?", [](const Parsed& p) { return p.settings.helpRequested; }},
      {"-sep", [](const Parsed& p) { return p.settings.separatePages; }},
      {"-g", [](const Parsed& p) { return p.gif.grayscale == 1; }},
      {"-dither", [](const Parsed& p) { return p.gif.dither == 1; }},
      {"-i", [](const Parsed& p) { return p.gif.interlace == 1; }},
      {"-nfi", [](const Parsed& p) { return p.gif.nfi == 1; }},
      {"-sortlstaz", [](const Parsed& p) { return p.settings.sortOrder == 1; }},
      {"-sortlstza", [](const Parsed& p) { return p.settings.sortOrder == 2; }},
  };
  for (const auto& c : cases) {
    std::string upper = c.word;
    for (char& letter : upper) letter = static_cast<char>(std::toupper(letter));
    EXPECT_FALSE(c.isSet(*Parse("-zzz"))) << c.word;
    EXPECT_TRUE(c.isSet(*Parse(c.word))) << c.word;
    EXPECT_TRUE(c.isSet(*Parse(upper))) << upper;
    EXPECT_TRUE(c.isSet(*Parse(upper + "xyz"))) << upper;
    EXPECT_FALSE(c.isSet(*Parse("x" + upper))) << upper;
  }
}

TEST(CommandLine, SetsNumbers) {
  struct {
    const char* line;
    std::function<double(const Parsed&)> field;
    double value;
  } const cases[] = {
      {"-cd4", [](const Parsed& p) { return p.gif.depth; }, 4},
      {"-cdx", [](const Parsed& p) { return p.gif.depth; }, 0},
      {"-quantize12", [](const Parsed& p) { return p.gif.quantize; }, 12},
      {"-quantize-1", [](const Parsed& p) { return p.gif.quantize; }, -1},
      {"-quantize5 -quantize", [](const Parsed& p) { return p.gif.quantize; }, 5},
      {"-dpiver96,5", [](const Parsed& p) { return p.gif.dpiY; }, 96.5},
      {"-dpihor300", [](const Parsed& p) { return p.gif.dpiX; }, 300},
      {"-dpihor300 -dpihor", [](const Parsed& p) { return p.gif.dpiX; }, 0},
      {"-dpihor300", [](const Parsed& p) { return p.gif.dpiY; }, 0},
      {"-palitems16", [](const Parsed& p) { return p.gif.paletteItems; }, 16},
      {"-palitems", [](const Parsed& p) { return p.gif.paletteItems; }, 0},
      {"-delay50", [](const Parsed& p) { return p.settings.delay; }, 50},
      {"-w100", [](const Parsed& p) { return p.gif.width; }, 100},
      {"-w=99,9", [](const Parsed& p) { return p.gif.width; }, 99},
      {"-w%50", [](const Parsed& p) { return p.gif.width; }, 0},
      {"-h7", [](const Parsed& p) { return p.gif.height; }, 7},
      {"-w1e20", [](const Parsed& p) { return p.gif.width; }, 0},
      {"-max5", [](const Parsed& p) { return p.settings.maxBytes; }, 5},
      {"-max100k", [](const Parsed& p) { return p.settings.maxBytes; }, 102400},
      {"-max100kb", [](const Parsed& p) { return p.settings.maxBytes; }, 102400},
      {"-MAX100K", [](const Parsed& p) { return p.settings.maxBytes; }, 102400},
      {"-max1m", [](const Parsed& p) { return p.settings.maxBytes; }, 1048576},
      {"-max1g", [](const Parsed& p) { return p.settings.maxBytes; }, 1073741824},
      {"-max2g", [](const Parsed& p) { return p.settings.maxBytes; }, -2147483648.0},
      {"-max4g", [](const Parsed& p) { return p.settings.maxBytes; }, 0},
      {"-max100kbyte", [](const Parsed& p) { return p.settings.maxBytes; }, 100},
      {"-max10mk", [](const Parsed& p) { return p.settings.maxBytes; }, 10240},
      {"-max10 -max", [](const Parsed& p) { return p.settings.maxBytes; }, 10},
      {"-collage(3;2)", [](const Parsed& p) { return p.settings.collageColumns; }, 3},
      {"-collage(3,2,1,5,6)", [](const Parsed& p) { return p.settings.collageRows; }, 2},
      {"-collage(3,2,1,5,6)", [](const Parsed& p) { return p.settings.collageFlag; }, 1},
      {"-collage(3,2,1,5,6)", [](const Parsed& p) { return p.settings.collageGapX; }, 5},
      {"-collage(3,2,1,5,6)", [](const Parsed& p) { return p.settings.collageGapY; }, 6},
      {"-collage(3;2)", [](const Parsed& p) { return p.settings.collage; }, 1},
      {"-collage(3;0)", [](const Parsed& p) { return p.settings.collage; }, 0},
      {"-collage(3;2) -collage(0", [](const Parsed& p) { return p.settings.collage; }, 0},
      {"-collage(-3;-2)", [](const Parsed& p) { return p.settings.collage; }, 0},
      {"-sep(2;3)", [](const Parsed& p) { return p.gif.firstSlide; }, 2},
      {"-sep(2;3)", [](const Parsed& p) { return p.gif.slideCount; }, 3},
      {"-sep(2,3)", [](const Parsed& p) { return p.gif.slideCount; }, 3},
      {"-sep(2)", [](const Parsed& p) { return p.gif.slideCount; }, 4294967295.0},
      {"-sep(2;3) -sep(1", [](const Parsed& p) { return p.gif.slideCount; }, 3},
      {"-sep(2;3) -sep(1", [](const Parsed& p) { return p.gif.firstSlide; }, 1},
      {"-sep(2;3) -sep", [](const Parsed& p) { return p.gif.slideCount; }, 4294967295.0},
      {"-sep(2;3) -sep", [](const Parsed& p) { return p.gif.firstSlide; }, 0},
      {"-sep2", [](const Parsed& p) { return p.gif.firstSlide; }, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(c.field(*Parse(c.line)), c.value) << c.line;
}

TEST(CommandLine, ReadsBackgrounds) {
  struct {
    const char* line;
    std::uint32_t colour;
  } const cases[] = {
      {"-bc255", 0xFF},
      {"-bchff", 0xFF},
      {"-bcm(255;0;0)", 0xFF},
      {"-bchFF8040", 0xFF8040},
      {"-bcm(1,2,3)", 0x030201},
      {"-bcm(1", 1},
      {"-bcm(", 0},
      {"-bcm(257;-1;512)", 0xFF01},
      {"-bcx", 0xFFFFFF},
      {"-bchxyz", 0xFFFFFF},
      {"-bc-1", 0xFFFFFFFF},
      {"-bc4294967295", 0xFFFFFFFF},
      {"-bc1 -bc2", 2},
      {"-bcm255;0;0)", 0xFFFFFF},
  };
  for (const auto& c : cases) EXPECT_EQ(Parse(c.line)->settings.background, c.colour) << c.line;
}

TEST(CommandLine, UnitesUnderTheNameAsTyped) {
  const auto p = Parse("-Unite:My/All.Gif");
  EXPECT_TRUE(p->settings.unite);
  EXPECT_EQ(p->settings.uniteName, "My\\All.Gif");
}

TEST(CommandLine, BuildsTheChain) {
  struct {
    const char *line, *chain;
  } const cases[] = {
      {"-w100", "stretch 100 0"},
      {"-W100", "stretch 100 0"},
      {"-w=12,5", "stretch 12.5 0"},
      {"-w12.5", "stretch 12.5 0"},
      {"-w 100", "stretch 0 0"},
      {"-help", "stretch 0 0"},
      {"-winfinity", "stretch 0 0"},
      {"-w%50 -h=%25", "stretch 50% 25%"},
      {"-w50%", "stretch 50 0"},
      {"-w%50 -w30", "stretch 30 0"},
      {"-w30 -w%", "stretch 30% 0"},
      {"-prop", ""},
      {"-prop&fill -sm1 -scust2", ""},
      {"-prop -w10", "stretch 10 0 prop"},
      {"-w10 -prop&fill -scust1 -sm2", "stretch 10 0 smooth prop fill if 1"},
      {"-w10 -sm1 -sm", "stretch 10 0 smooth"},
      {"-w10 -sm1 -sm0", "stretch 10 0"},
      {"-w10 -scust-5", "stretch 10 0 if -5"},
      {"-w50 -rot90 -h50", "stretch 50 50, rotate 90"},
      {"-rot90 -w100", "rotate 90, stretch 100 0"},
      {"-rot0", ""},
      {"-rot", ""},
      {"-roti-12,5", "rotate -12.5 smooth"},
      {"-rot1 -rot1", "rotate 1, rotate 1"},
      {"-rot=90", ""},
      {"-crop(1;2;3;4)", "crop 1 2 3 4"},
      {"-crop%(1,2,3.5,4)", "crop% 1 2 3.5 4"},
      {"-cropm(10;10;5;5)", "cropm 10 10 5 5"},
      {"-cropm%(10;10;5;5)", "cropm% 10 10 5 5"},
      {"-crop(10;10;5;5)", ""},
      {"-crop(10;10;15;5)", "crop 10 10 15 5"},
      {"-crop(10;1;5;5)", "crop 10 1 5 5"},
      {"-crop10;10;20;20", ""},
      {"-cropm", "cropm 0 0 0 0"},
      {"-filter3", "filter 3"},
      {"-filter-1", ""},
      {"-filter", ""},
      {"-filter0 -filter99", "filter 0, filter 99"},
      {"-mirror(1;0)", "mirror 1 0"},
      {"-mirror(1,0)", "mirror 1 0"},
      {"-mirror(0;2)", "mirror 0 2"},
      {"-mirror(1", "mirror 1 0"},
      {"-mirror(0;0)", ""},
      {"-coleff(3)", "effect 3 0 0 0 0 0 0 0"},
      {"-coleff(4;1;-2;x)", "effect 4 1 -2 0 0 0 0 0"},
      {"-coleff(4;;;9)", "effect 4 0 0 9 0 0 0 0"},
      {"-coleff(", ""},
      {"-coleff()", "effect 0 0 0 0 0 0 0 0"},
      {"-coleff(1,2;3,4;5;6;7;8;9)", "effect 1 2 3 4 5 6 7 8"},
      {"-palfile1=c:\\Pal\\Web.ACT", "palette 1 c:\\pal\\web.act"},
      {"-palfile2=/no/Such.pal", "palette 2 \\no\\such.pal"},
      {"-palfile1=", ""},
      {"-palfile1", ""},
      {"-palfile", ""},
      {"-palfile=ab", "palette 0 b"},
      {"-palfile01=ab", "palette 1 =ab"},
      {"-palfile-3=ab", "palette -3 ab"},
      {"-acrop255", "autocrop ff"},
      {"-acrophff00ff", "autocrop ff00ff"},
      {"-acropm(1;2;3;255)", "autocrop ff030201"},
      {"-acropm(1", "autocrop 1"},
      {"-acrop", "autocrop 0"},
      {"-acrophz", "autocrop 0"},
      {"-acrop4294967295", "autocrop ffffffff"},
      {"-totransp255 -rot90", "rotate 90, transparent ff"},
      {"-totransp255 -totransph0", "transparent ff 0"},
      {"-totranspm(1;2;3) -totransp -totranspm(", "transparent 30201 0 0"},
      {"-totransph80FF00FF", "transparent 80ff00ff"},
      {"rot90 w100 --rot90 =", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Chain(c.line), c.chain) << c.line;
}

TEST(CommandLine, GivesThePaletteTaskTheFormat) {
  const auto p = Parse("-palfile1=x");
  EXPECT_EQ(static_cast<const glib::PaletteParams*>(p->settings.tasks.At(0)->params)->format, p->format);
}

TEST(CommandLine, FindsAPaletteThatOnlyStandsAsTyped) {
  const test_support::TemporaryFolder tree;
  tree.Write("Web.ACT");
  tree.Write("lower.act");
  const std::string folder = tree.path().string();
  const auto p = Parse("-palfile1=" + folder + "/Web.ACT");
  const auto* params = static_cast<const glib::PaletteParams*>(p->settings.tasks.At(0)->params);
  EXPECT_EQ(params->file, tree.Text("Web.ACT"));
}

// Only the first pass cuts at quotes.
TEST(CommandLine, TakesQuotedWordsWholeInTheSecondPass) {
  const auto p = ParseWords({"s=c:\\in\\\" d=c:\\out -w100 -palitems16", "-delay7\" -palitems32"});
  EXPECT_EQ(p->settings.sourceFolder, "c:\\in");
  EXPECT_EQ(p->settings.destFolder, "c:\\out");
  EXPECT_EQ(p->gif.width, 100);
  EXPECT_EQ(p->gif.paletteItems, 0);
  EXPECT_EQ(p->settings.delay, 7);
}

TEST(CommandLine, SurvivesValuesOfAnyLength) {
  const std::string digits(100000, '9');
  for (const char* option :
       {"-cd",       "-w",       "-h",        "-sep(",     "-rot",       "-crop(",      "-sm",
        "-quantize", "-dpiver",  "-dpihor",   "-bch",      "-bcm(",      "-bc",         "-filter",
        "-mirror(",  "-scust",   "-collage(", "-palfile",  "-totransph", "-totranspm(", "-totransp",
        "-acroph",   "-acropm(", "-acrop",    "-palitems", "-delay",     "-max"}) {
    ParseWords({option + digits});
    ParseWords({option + digits + ";" + digits + ";" + digits});
  }
  std::string numbers = "-coleff(7";
  for (int i = 0; i < 5000; ++i) numbers += ";1";
  EXPECT_EQ(ParseWords({numbers})->settings.tasks.count, 1U);
  std::vector<std::string> colours(3000, "-totransp1");
  const auto p = ParseWords(colours);
  EXPECT_EQ(static_cast<const glib::TransparencyParams*>(p->settings.tasks.At(0)->params)->count, 3000);
}

}  // namespace
