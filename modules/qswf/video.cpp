#include "modules/qswf/video.h"

#include "modules/common/byte_reader.h"
#include "modules/common/helper.h"

namespace qswf {
namespace {

// All frames of a film together may take so many milliseconds.
constexpr std::uint32_t kAllFrames = 30000;
constexpr std::size_t kMaxFrames = 16384;

// As the files number them.
std::optional<modules::VideoCodec> CodecOf(std::uint32_t number) {
  using modules::VideoCodec;
  constexpr VideoCodec kCodecs[] = {VideoCodec::kSorenson, VideoCodec::kScreen, VideoCodec::kVp6, VideoCodec::kVp6Alpha,
                                    VideoCodec::kScreen2};
  constexpr std::uint32_t kFirst = 2;
  if (number < kFirst || number - kFirst >= std::size(kCodecs)) return std::nullopt;
  return kCodecs[number - kFirst];
}

}  // namespace

Video::Video(std::span<const std::uint8_t> data, VideoBudget& budget) : budget_(budget) {
  modules::ByteReader in(data);
  in.Skip(2);
  width_ = in.Word();
  height_ = in.Word();
  in.Skip(1);
  codec_ = in.Byte();
}

void Video::AddFrame(std::span<const std::uint8_t> data) {
  modules::ByteReader in(data);
  const std::uint16_t number = in.Word();
  if (in.Failed() || frames_.size() >= kMaxFrames) return;
  frames_[number] = in.Take(in.Left());
}

void Video::Start() {
  const auto codec = CodecOf(codec_);
  auto* decode = modules::HelperFunction<decltype(DecodeVideo)>("video_decoder", "DecodeVideo");
  if (!codec || decode == nullptr || budget_.starts == 0 || frames_.empty()) return;
  --budget_.starts;
  packets_.clear();
  for (const auto& [number, packet] : frames_) packets_.push_back(packet);
  next_ = frames_.cbegin();
  shown_ = 0;
  any_ = false;
  decoder_.reset();
  decoder_.emplace(
      platform::ChildProcess::Copy([&](int output) { decode(*codec, packets_.data(), packets_.size(), output); }, {}));
}

bool Video::Advance() {
  modules::VideoFrameHead head{};
  if (decoder_->Read(&head, sizeof(head)) != sizeof(head)) {
    if (decoder_->TimedOut()) budget_.starts = 0;
    return false;
  }
  if (head.width == 0 || head.height == 0) return true;
  const std::uint64_t pixels = std::uint64_t{head.width} * head.height;
  if (pixels > budget_.pixels) return false;
  budget_.pixels -= pixels;
  if (!any_ || head.width != picture_.width || head.height != picture_.height) {
    if (!picture_.Allocate(head.width, head.height, 32)) return false;
  }
  any_ = decoder_->Read(picture_.rows.data(), picture_.rows.size()) == picture_.rows.size();
  decoder_->ExtendTime(kAllFrames);
  return any_;
}

const modules::Picture* Video::Show(std::uint32_t number) {
  if (!decoder_ || number < shown_) Start();
  while (next_ != frames_.cend() && next_->first <= number) {
    shown_ = next_->first;
    ++next_;
    if (!Advance()) next_ = frames_.cend();
  }
  return any_ ? &picture_ : nullptr;
}

}  // namespace qswf
