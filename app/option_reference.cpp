#include "app/option_reference.h"

namespace app {

const char* const kOptionReference =
    R"(
zefa s=FOLDER/MASK [d=FOLDER | df=FILE] [options]

Converts the images that the mask finds to GIF. Options are single words: the value follows its option without a blank.
Upper and lower case are the same. Image operations run in the order in which they stand. Words that hold "(", ">", "?"
or "*" want quotes around them in most shells.

Sources and outputs
  s=FOLDER/MASK       where the sources are; the last part is the mask, "*.*" when it is empty
  -sf                 search the subfolders too and repeat them below the output folder
  -sortlstaz          sources in ascending order of their paths
  -sortlstza          sources in descending order
  d=FOLDER            output folder; without it the outputs go to the source folder
  df=FILE             path of the output file
  -ov                 replace outputs that exist; otherwise a number is added to the name
  -remsrc             delete each source when it has been converted
  -sep, -sep(N), -sep(N;COUNT)
                      one file a page: all pages, those from page N on (counted from 0), or COUNT of them
  -unite:NAME         all sources into one file of several pages
  -collage(COLUMNS;ROWS;EACH;GAPX;GAPY)
                      sources side by side on sheets; EACH not 0: sheets of their own for each source
  -log                keep the messages in ZEFA.log in the output folder

Size
  -wN, -w%N           width in pixels, or in percent of the present one
  -hN, -h%N           height
  -prop               keep the proportions and fit into the width and height
  -prop&fill          the same, centred on a canvas of exactly that size
  -smN                1: interpolate when resizing
  -scustN             1: only enlarge; 2: only reduce

Geometry
  -rotN               turn clockwise by N degrees
  -rotiN              the same with interpolation
  -mirror(H;V)        H not 0: exchange top and bottom; V not 0: exchange left and right
  -crop(LEFT;TOP;RIGHT;BOTTOM), -crop%(...)
                      keep a rectangle, in pixels or in percent
  -cropm(LEFT;TOP;RIGHT;BOTTOM), -cropm%(...)
                      cut off margins
  -acropN, -acrophHEX, -acropm(B;G;R;A)
                      cut off a border of one colour, given as its number, in hexadecimal, or as its four bytes

Filters and colours
  -filterN            0 blur, 1 sharpen, 2 emboss, 3 despeckle and sharpen, 4 median, 5 lighten, 6 darken
  -coleff(0;N)        brightness, -255 to 255
  -coleff(1;N)        contrast, -255 to 255
  -coleff(2)          automatic levels
  -coleff(3;N)        gamma
  -coleff(4;B;G;R)    shift the channels
  -coleff(5)          negative
  -coleff(6;W;H)      mosaic of blocks
  -coleff(7;N)        gray, N 0: weighted, 1: plain mean
  -palfileN=FILE      colours of a palette file (.act or RIFF); N 1: nearest colours of an adaptive palette,
                      others: error diffusion

Transparency and background
  -totranspN, -totransphHEX, -totranspm(R;G;B)
                      make the pixels of a colour transparent; any number of these words
  -notransp           lay transparent pixels on the background
  -bcN, -bchHEX, -bcm(R;G;B)
                      background colour, white without it; red is the lowest byte of the number

GIF
  -palitemsN          number of colours; otherwise as many as the source has
  -dither             diffuse the error when colours are reduced
  -quantizeN          how colours are reduced
  -g                  gray
  -i                  interlaced
  -nfi                store only what changes from page to page
  -delayN             delay of every page in hundredths of a second
  -maxN, -maxNk, -maxNm, -maxNg
                      limit of the size of an output in bytes, KB, MB or GB, kept by fewer colours
  -dpihorN, -dpiverN  resolution in dots per inch; otherwise that of the source
  -cdN                bits a pixel, which the number of colours overrides

  -?                  this text

Exit status: 0 done, 1 out of memory, 253 failed, 254 no sources found, 255 no arguments.)";

}  // namespace app
