#include "glib/module_api/format_rows.h"

#include <cstddef>
#include <string_view>

#include "glib/module_api/result_values.h"

namespace glib {
namespace {

consteval FormatRow::Pattern Text(const char* bytes) { return {bytes, kTextPattern}; }

// A pattern that may hold NUL bytes.
template <std::size_t kSize>
consteval FormatRow::Pattern Binary(const char (&bytes)[kSize]) {
  return {bytes, kSize - 1};
}

// The letters "a" and "A" of a pattern stand for any letter of their case.
constexpr FormatRow kRows[] = {
    {0x00000002, 2, Text("BM"), "bmp\ndib\nrle", "|BMP - Windows Bitmap|*.bmp;*.dib", "qbmp", false},
    {0x1000001F, 2, Text("P\xC3"), "clp", "|CLP - Windows Clipboard File|*.clp", "qbmp", false},
    {0x70000001, 4, Text("Rv60"), "qflm", "|FLM - Orvane Film|*.qflm", nullptr, false},
    {0x30000003, 6, Text("GIF8{7,9}a"), "gif", "|GIF - Compuserve GIF|*.gif", "qgif", false},
    {0x00000004, 3, Text("\xFF\xD8\xFF"), "jpg\njpeg\njpe\njfif", "|JPG - JPEG File Format|*.jpg;*.jpeg", "qjpg",
     false},
    {0x30000005, 12, Text("RIFF????ACON"), "ani", "|ANI - Windows Cursor|*.ani", "qani", false},
    {0x20000007, 9, Binary("\x00\x00\x02\x00~\x00?~\x00~\x00{\x00,\x02,\x10}"), "cur", "|CUR - Windows Cursor|*.cur",
     "qani", false},
    {0x20000006, 9, Binary("\x00\x00\x01\x00~\x00?~\x00~\x00{\x00,\x02,\x04,\x10,\xFF}"), "ico",
     "|ICO - Windows Icon|*.ico", "qani", false},
    {0x00000008, 4, Text("\n{\x02,\x03,\x05}\x01{\x01,\x02,\x04,\x08}"), "pcx\npcc", "|PCX - ZSoft Paintbrush|*.pcx",
     "qpcx", false},
    {0x10000009, 4, Text("\xB1h\xDE:"), "dcx", "|DCX - Multipage PCX|*.dcx", "qpcx", false},
    {0x0000000A, 2, Text("P{1,4}"), "pbm", "|PBM - Portable Bitmap|*.pbm", "qppm", false},
    {0x0000000B, 2, Text("P{2,5}"), "pgm", "|PGM - Portable Graymap|*.pgm", "qppm", false},
    {0x0000000C, 2, Text("P{3,6}"), "ppm", "|PPM - Portable Pixelmap|*.ppm", "qppm", false},
    {0x3000000E, 4, Binary("{II\\*\x00,MM\x00\\*}"), "tif\ntiff", "|TIF - Tagged Image File Format|*.tif;*.tiff",
     "qtif", false},
    {0x20000010, 8, Text("\x89PNG\r\n\x1A\n"), "png", "|PNG - Portable Network Graphic|*.png", "qpng", false},
    {0x3000001D, 8, Text("\x8AMNG\r\n\x1A\n"), "mng", "|MNG - Multiple Network Graphic|*.mng", "qmng", false},
    {0x3000001E, 8, Text("\x8BJNG\r\n\x1A\n"), "jng", "|JNG - JPEG Network Graphic|*.jng", "qmng", false},
    {0x00000011, 8, Text("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"), "fpx", "|FPX - FlashPix|*.fpx", "qfpx", true},
    {0x0000000F, 2055, Text("*32\xFF*2016?PCD_IPI"), "pcd", "|PCD - Kodak Photo CD|*.pcd", "qpcd", false},
    {0x00000019, 4, Text("8BPS"), "psd\npdd", "|PSD - Adobe Photoshop|*.psd;*.pdd", "qpsd", false},
    {0x2000001A, 32, Binary("Paint Shop Pro Image File\n\x1A\x00\x00\x00\x00\x00"), "psp",
     "|PSP - Paint Shop Pro|*.psp", "qpsp", false},
    {0x80001001, 22, Binary("{\x00,\x01}\x00\x09\x00*16?*2\x00"), "wmf", "|WMF - Windows Metafile|*.wmf", "qwmf",
     false},
    {0x80001002, 6, Binary("\xD7\xCD\xC6\x9A*2\x00"), "apm", "|APM - Aldus Metafile|*.apm", "qwmf", false},
    {0x80001003, 60, Binary("\x01*3\x00*36? EMF*14?\x00\x00"), "emf", "|EMF - Enhanced Metafile|*.emf", "qwmf", false},
    {0x20000024, 12, Binary("{\xFFO*10?,\x00\x00\x00\x0CjP  \r\n\x87\n}"), "jp2\njpc\nj2k\njpx\nj2c",
     "|JP2 - JPEG 2000|*.jp2;*.jpc;*.j2k;*.jpx;*.j2c", "qjp2", false},
    {0x10000023, 4, Text("%PDF"), "pdf", "|PDF - Adobe Acrobat Document|*.pdf", "qeps", false},
    {0x10000022, 4, Binary("{%!PS,\xC5\xD0\xD3\xC6}"), "eps\nepi\nps",
     "|EPS - Adobe Encapsulated Post Script|*.eps;*.epi;*.ps", "qeps", false},
    {0x80001005, 4, Text("\xFFWPC"), "wpg", "|WPG - WordPerfect Graphics|*.wpg", "qwpg", false},
    {0x2000000D, 17,
     Binary("?{\x00,\x01}{\x00,\x01,\x02,\x03,\x09,\n,\x0B}*4?{\x00,\x08,\x0F,\x10,\x18, }*8?{\x08,\x0F,\x10,\x18, }"),
     "tga\nvst\nvda\nicb\ntpic", "|TGA - Truevision Targa|*.tga", "qtga", false},
    {0x00000013, 2, Binary("\x00\x01"), "img\ngem", "|IMG - GEM Bit image|*.img;*.gem", "qimg", true},
    {0x00000014, 4, Text("FORM"), "iff\nlbm", "|IFF - Amiga Interchange File Format|*.iff;*.lbm", "qimg", false},
    {0x00000015, 4, Text("Y\xA6j\x95"), "ras\nsun", "|SUN - SUN Raster File|*.ras;*.sun", "qimg", false},
    {0x00000016, 2, Text("\x01\xDA"), "sgi\nrgb", "|SGI - Silicon Graphics Image|*.sgi;*.rgb", "qimg", false},
    {0x00000017, 7, Text("\\#define"), "xbm", "|X11 bitmap|*.xbm", "qimg", false},
    {0x00000018, 9, Text("/\\* XPM \\*/"), "xpm", "|X11 pixmap|*.xpm", "qimg", false},
    {0x0000001C, 2, Text("R\xCC"), "rle", "|RLE - Utah Raster|*.rle", "qimg", false},
    {0x00000020, 2, Binary("*9"), "cut", "|CUT - Dr. Halo|*.cut", "qimg", true},
    {0x3000001B, 3, Text("FWS"), "swf", "|SWF - Macromedia flash|*.swf", "qswf", false},
    {0x00000012, 3, Binary("\x00\x00~\x00"), "wbmp\nwbm", "|WBMP - Wireless Mono Bitmap|*.wbmp;*.wbm", "qwbm", true},
    {0x00000021, 2, Binary("?~\x00"), "otb\ngsm", "|OTB - Nokia Logo Bitmap|*.otb;*.gsm", "qwbm", true},
    {0x80001004, 520, Binary("*518?{~\x00?,?~\x00}"), "pict\npic\npct", "|PCT - Macintosh picture|*.pict;*.pic;*.pct",
     "qpct", true},
    {0x80001006, 25, Text("  0\r\nSECTION\r\n  2\r\nHEADER"), "dxf", "|DXF - Drawing Interchange Format|*.dxf", "qdxf",
     false},
    {0x80001007, 1, Text("?"), "hpg\nhpgl", "|HGPL - HP Graphic Language|*.hpg;*.hpgl", "qhpg", true},
};

}  // namespace

std::span<const FormatRow> FormatRows() { return kRows; }

FilterFormatDesc* AppendRow(const FormatRow& row, CreateFormatDescFunction create,
                            gen::array_ptr<FilterFormatDesc>& formats) {
  FilterFormatDesc* desc = create(row.id, row.signatureLength, row.pattern.length, row.pattern.bytes, row.extensions,
                                  row.description, row.moduleName);
  desc->confirmByExtension = row.confirmByExtension;
  formats.Append(desc);
  return desc;
}

std::uint32_t RegisterRows(const char* moduleName, CreateFormatDescFunction create,
                           gen::array_ptr<FilterFormatDesc>* formats) {
  const std::string_view name = moduleName;
  for (const FormatRow& row : kRows) {
    if (row.moduleName != nullptr && name == row.moduleName) AppendRow(row, create, *formats);
  }
  return RCOK;
}

}  // namespace glib
