#include "modules/qswf/movie.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/qswf/characters.h"
#include "modules/qswf/lzma.h"
#include "modules/qswf/stage.h"
#include "platform/metafile/player.h"

namespace qswf {
namespace {

constexpr std::size_t kMaxMovie = std::size_t{256} << 20;
constexpr std::int32_t kTwips = 20;
// Twice what the finest screens show. Fills of a larger stage would need hundreds of megabytes each.
constexpr std::uint64_t kMaxStage = std::uint64_t{1} << 24;
constexpr double kMaxSeconds = 3.0;  // of the processor, after which no further page is begun

// Hundredths of a second of so many frames.
std::uint32_t DelayOf(const MovieHeader& header, std::uint32_t frames) {
  if (header.framesPerSecond <= 0) return 10;
  return static_cast<std::uint32_t>(std::clamp(std::lround(100.0 * frames / header.framesPerSecond), 1L, 65535L));
}

// Plays the tags of a movie.
class Player {
 public:
  Player(const MovieHeader& header, std::span<const std::uint8_t> tags, glib::ImageDataExchange& exchange)
      : header_(header), tags_(tags), exchange_(exchange) {
    Tag tag;
    for (TagReader all(tags); all.Next(tag);) {
      if (tag.code == kVideoFrame) characters_.AddVideoFrame(tag);
    }
  }

  std::uint32_t Run();

 private:
  bool ShowFrame();
  bool DrawPage();
  std::uint32_t BitmapPages();
  std::uint32_t PaperWord() const {
    return 0xFF000000 | std::uint32_t{paper_.red} << 16 | std::uint32_t{paper_.green} << 8 | paper_.blue;
  }
  std::uint32_t Fail(std::uint32_t result, const char* cause) { return modules::Fail(exchange_, result, cause); }

  MovieHeader header_;
  TagReader tags_;
  glib::ImageDataExchange& exchange_;
  Characters characters_;
  DisplayList list_;
  Color paper_{255, 255, 255, 255};
  DrawingBudget budget_;
  std::clock_t start_ = std::clock();
  bool placedAny_ = false;
  bool changed_ = true;
  std::uint32_t framesOfPage_ = 0;
};

bool Player::DrawPage() {
  const std::uint64_t area = std::uint64_t{header_.width} * header_.height;
  // The first page is drawn whatever it takes, within the limits of a page.
  const bool late = static_cast<double>(std::clock() - start_) > kMaxSeconds * CLOCKS_PER_SEC;
  if (exchange_.pages.count != 0 && (late || area > budget_.pagePixels)) return false;
  budget_.pagePixels -= std::min(area, budget_.pagePixels);
  Stage stage(header_.stage, paper_, characters_, budget_);
  stage.Draw(list_);
  const std::unique_ptr<platform::Metafile> metafile(stage.Recorder().Close());
  const std::size_t pixels = std::size_t{header_.width} * header_.height;
  modules::Page* page = modules::AddPage(exchange_, header_.width, header_.height, 24);
  if (page == nullptr) return false;
  const std::unique_ptr<std::uint32_t[]> words(new std::uint32_t[pixels]());
  if (!platform::PlayEnhMetaFile(metafile.get(), page->width, page->height, PaperWord(), words.get())) {
    modules::DropLastPage(exchange_);
    Fail(glib::NSUP, "The helper metafile_player can't draw the movie");
    return false;
  }
  for (std::uint32_t y = 0; y < header_.height; ++y) {
    std::uint8_t* row = modules::Row(*page, y);
    const std::uint32_t* from = &words[std::size_t{y} * header_.width];
    for (std::uint32_t x = 0; x < header_.width; ++x, row += 3) {
      const std::uint32_t word = from[x] >> 24 != 0 ? from[x] : PaperWord();
      std::memcpy(row, &word, 3);
    }
  }
  return true;
}

// A frame that looks as the one before makes that last longer.
bool Player::ShowFrame() {
  if (!changed_) {
    ++framesOfPage_;
  } else {
    if (!DrawPage()) return false;
    changed_ = false;
    framesOfPage_ = 1;
  }
  exchange_.pages.At(exchange_.pages.count - 1)->delay = DelayOf(header_, framesOfPage_);
  return budget_.edges != 0 && budget_.objects != 0 && budget_.fillPixels != 0;
}

std::uint32_t Player::BitmapPages() {
  for (const std::uint16_t number : characters_.Bitmaps()) {
    const modules::Picture* picture = characters_.FindBitmap(number);
    if (picture == nullptr) continue;
    modules::Page* page = modules::AddPicturePage(exchange_, *picture);
    if (page == nullptr) break;
    page->delay = DelayOf(header_, 1);
  }
  if (exchange_.pages.count != 0) return glib::RCOK;
  return Fail(glib::NSUP, "The movie shows nothing that can be drawn");
}

std::uint32_t Player::Run() {
  Tag tag;
  std::uint32_t shown = 0;
  bool stopped = false;
  // Frames before anything is placed are only worth a page if nothing comes at all.
  while (!stopped && tags_.Next(tag)) {
    if (tag.code == kShowFrame) {
      ++shown;
      if (placedAny_) stopped = !ShowFrame();
    } else if (tag.code == kSetBackgroundColor) {
      BitReader in(tag.data);
      paper_ = ReadColor(in, false);
      changed_ = true;
    } else if (Place(tag, list_)) {
      placedAny_ = placedAny_ || !list_.empty();
      changed_ = true;
    } else {
      characters_.Define(tag);
    }
  }
  if (!placedAny_ && !characters_.Bitmaps().empty()) return BitmapPages();
  // A cut movie, or one of a background alone.
  if (exchange_.pages.count == 0 && !stopped && (placedAny_ || shown != 0)) stopped = !ShowFrame();
  if (exchange_.pages.count == 0) {
    return stopped ? glib::NSUP : Fail(glib::IERR, "The movie has no frame");
  }
  if (stopped) Fail(glib::RCOK, "Not all frames can be drawn");
  return glib::RCOK;
}

}  // namespace

modules::Verdict UnpackMovie(std::span<const std::uint8_t> file, std::size_t limit, std::vector<std::uint8_t>& movie) {
  constexpr std::size_t kSignature = 8;
  if (file.size() < kSignature) return {glib::IERR, "The file is cut off within its header"};
  const auto body = file.subspan(kSignature);
  const bool named = file[1] == 'W' && file[2] == 'S';
  if (named && file[0] == 'F') {
    movie.assign(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(std::min(limit, body.size())));
    return modules::kFine;
  }
  if (!named || (file[0] != 'C' && file[0] != 'Z')) return {glib::IERR, "The file is no movie"};
  movie = file[0] == 'C' ? Inflate(body, std::min(limit, kMaxMovie)) : UnpackLzma(body, std::min(limit, kMaxMovie));
  if (movie.empty()) return {glib::IERR, "The movie can't be unpacked"};
  return modules::kFine;
}

modules::Verdict ReadMovieHeader(std::span<const std::uint8_t> movie, MovieHeader& header) {
  BitReader in(movie);
  header.stage = ReadRect(in);
  header.framesPerSecond = in.Word() / 256.0;
  header.frames = in.Word();
  if (in.Failed()) return {glib::IERR, "The file is cut off within its header"};
  header.size = in.Aligned().Position();
  const auto pixels = [](std::int32_t from, std::int32_t to) {
    const std::int64_t length = std::int64_t{to} - from;
    return length <= 0 ? std::int64_t{0} : (length + kTwips - 1) / kTwips;
  };
  const std::int64_t width = pixels(header.stage.left, header.stage.right);
  const std::int64_t height = pixels(header.stage.top, header.stage.bottom);
  if (width == 0 || height == 0) return {glib::IERR, "The movie has no size"};
  const bool allowed = modules::SizeAllowed(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
  if (!allowed || static_cast<std::uint64_t>(width * height) > kMaxStage) {
    return {glib::NSUP, "The movie is too large"};
  }
  header.width = static_cast<std::uint32_t>(width);
  header.height = static_cast<std::uint32_t>(height);
  // Whole pixels, so that a page's pixels are the stage's; and near enough to the middle for sums to fit.
  constexpr std::int32_t kFarthest = 1 << 24;
  header.stage.left = std::clamp(header.stage.left, -kFarthest, kFarthest);
  header.stage.top = std::clamp(header.stage.top, -kFarthest, kFarthest);
  header.stage.right = header.stage.left + static_cast<std::int32_t>(width) * kTwips;
  header.stage.bottom = header.stage.top + static_cast<std::int32_t>(height) * kTwips;
  return modules::kFine;
}

std::uint32_t LoadMovie(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  std::vector<std::uint8_t> movie;
  modules::Verdict verdict = UnpackMovie(file, kMaxMovie, movie);
  MovieHeader header;
  if (verdict.result == glib::RCOK) verdict = ReadMovieHeader(movie, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  return Player(header, std::span<const std::uint8_t>(movie).subspan(header.size), exchange).Run();
}

}  // namespace qswf
