#ifndef TESTS_MODULES_FIXTURE_SCRIPT_H_
#define TESTS_MODULES_FIXTURE_SCRIPT_H_

#include <cstdint>

#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

// Modules that do what a source tells them, for tests of whoever loads and saves through modules. They stand in
// ZEFA_BUILD_FOLDER "/modules_fixture" and carry names of real modules, so that a registry or a film with that folder
// loads these and nothing else:
//
//   qgif  every entry; the row of GIF: a source begins with the line "GIF89a"
//   qbmp  no SaveImageData, no LoadImageThumbnail; the rows of BMP ("BM", which this reads) and CLP
//   qjpg  no GetFileInfo, so it is refused with a message
//   qpng  registers no row
//
// A source is text: the signature line, then a command a line. Words are separated by blanks, `key=value` words come in
// any order and may be left out.
//
//   page bits=8 width=2 height=2 fill=0 slide=-1 x=0 y=0 delay=10 dpix=72 dpiy=72 visible=1 owned=1 name=
//        background=RRGGBB entries=256 gray=0 count=1 frame= static=0
//        Appends `count` pages. Every byte of the raster is `fill` (decimal), or its own position with fill=count.
//        Entry i of the palette is opaque and (i, 255 - i, i). The defaults are these, with the background of the
//        exchange. bits=0 makes a page of a metafile whose frame is frame=RIGHTxBOTTOM (0.01 mm), from 0, 0; without a
//        frame the metafile is null. bits=-1 makes a page with nothing. static=1 takes the pixels from memory that must
//        not be freed.
//   message TEXT       leaves TEXT in the exchange's message
//   show               leaves in the message what the exchange and the load word held:
//                      "id=30000003 size=ffffffff word=none film=0 callback=0 background=ffffff raster=1"; `word` is
//                      the id of the load word as 8 hexadecimal digits, the others are 0 or 1
//   report N TOTAL     reports progress; if it is answered with 0, loading ends here with "STOP"
//   result LETTERS     the result of loading, four letters; RCOK without this command
//   thumbnail LETTERS  the result of loading a thumbnail
//   info bits=8 width=2 height=2 pages=1 dpix=72 dpiy=72 result=RCOK
//        the file information; without RCOK no record is made
//
// LoadImageThumbnail appends one page of 8 bits with the size that the exchange asks for and the name "thumbnail", or
// "flagged thumbnail" if the exchange's flag is set.
//
// SaveImageData writes what it got, in lines:
//
//   settings id=30000003 width=0 height=0 depth=8 first=0 count=4294967295 dither=1 grayscale=0 quantize=8
//       paletteItems=256 transparentIndex=-1 interlace=0 nfi=0 dpi=0x0                      (one line)
//   exchange id=ffffffff size=ffffffff pages=1 film=0 callback=0 raster=1
//   page bits=8 width=2 height=2 owned=0 aligned=1 slide=-1 x=0 y=0 delay=10 dpi=72x72 visible=1 name=
//       background=ffffff entries=256 pixels=00010203 palette=ff00ff00                      (one line)
//
// `pixels` are the rows without padding, `palette` the first entries (at most 4) as words. A metafile page has
// frame=RIGHTxBOTTOM in their place. A path that holds "refuse-LETTERS" gives that result and writes nothing.

namespace modules_fixture {

std::uint32_t Load(const char* source, glib::ImageDataExchange& exchange, const glib::BaseFormatDesc* loadWord);
std::uint32_t LoadThumbnail(const char* path, glib::ImageDataExchange& exchange);
std::uint32_t Info(const char* path, std::uint32_t id, glib::FileInfo*& info);
std::uint32_t Save(const char* path, const glib::ImageDataExchange& exchange, const glib::BaseFormatDesc& settings);

}  // namespace modules_fixture

#endif  // TESTS_MODULES_FIXTURE_SCRIPT_H_
