extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <cstring>
#include <memory>
#include <vector>

#include "modules/common/helper.h"
#include "modules/common/limits.h"
#include "modules/common/video_decoder.h"
#include "platform/child_process.h"

namespace {

using modules::VideoCodec;
using modules::VideoFrameHead;
using modules::VideoPacket;

// A film on a stage is not larger than the stage; the decoder keeps several frames.
constexpr std::int64_t kMaxFramePixels = std::int64_t{1} << 24;

template <auto Free>
struct Freed {
  template <typename T>
  void operator()(T* object) const {
    Free(&object);
  }
};

using Context = std::unique_ptr<AVCodecContext, Freed<avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Freed<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, Freed<av_frame_free>>;

AVCodecID IdOf(VideoCodec codec) {
  switch (codec) {
    case VideoCodec::kSorenson:
      return AV_CODEC_ID_FLV1;
    case VideoCodec::kScreen:
      return AV_CODEC_ID_FLASHSV;
    case VideoCodec::kVp6:
      return AV_CODEC_ID_VP6F;
    case VideoCodec::kVp6Alpha:
      return AV_CODEC_ID_VP6A;
    case VideoCodec::kScreen2:
      return AV_CODEC_ID_FLASHSV2;
  }
  return AV_CODEC_ID_NONE;
}

Context Open(VideoCodec codec) {
  const AVCodec* decoder = avcodec_find_decoder(IdOf(codec));
  Context context(decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr);
  if (context == nullptr) return nullptr;
  context->thread_count = 1;
  context->max_pixels = kMaxFramePixels;
  return avcodec_open2(context.get(), decoder, nullptr) == 0 ? std::move(context) : nullptr;
}

bool Decode(AVCodecContext& context, VideoPacket bytes, AVFrame& frame) {
  const Packet packet(av_packet_alloc());
  if (packet == nullptr || bytes.empty() || bytes.size() > INT32_MAX / 2) return false;
  if (av_new_packet(packet.get(), static_cast<int>(bytes.size())) != 0) return false;
  std::memcpy(packet->data, bytes.data(), bytes.size());
  return avcodec_send_packet(&context, packet.get()) == 0 && avcodec_receive_frame(&context, &frame) == 0;
}

// Frames of one stream as pixels, blue first.
class PixelWriter {
 public:
  explicit PixelWriter(int output) : output_(output) {}
  ~PixelWriter() { sws_freeContext(scaler_); }
  PixelWriter(const PixelWriter&) = delete;
  PixelWriter& operator=(const PixelWriter&) = delete;

  // False when nobody reads any more.
  bool Write(const AVFrame& frame) {
    const int width = frame.width;
    const int height = frame.height;
    if (width <= 0 || height <= 0 || std::int64_t{width} * height > kMaxFramePixels) return WriteNone();
    scaler_ = sws_getCachedContext(scaler_, width, height, static_cast<AVPixelFormat>(frame.format), width, height,
                                   AV_PIX_FMT_BGRA, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
                                   nullptr, nullptr);
    if (scaler_ == nullptr) return WriteNone();
    pixels_.resize(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::uint8_t* const rows[] = {pixels_.data()};
    const int strides[] = {4 * width};
    if (sws_scale(scaler_, frame.data, frame.linesize, 0, height, rows, strides) != height) return WriteNone();
    const VideoFrameHead head{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    return platform::WriteAll(output_, &head, sizeof(head)) &&
           platform::WriteAll(output_, pixels_.data(), pixels_.size());
  }
  bool WriteNone() {
    const VideoFrameHead none{};
    return platform::WriteAll(output_, &none, sizeof(none));
  }

 private:
  int output_;
  SwsContext* scaler_ = nullptr;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace

ZEFA_HELPER_ENTRY(void) DecodeVideo(VideoCodec codec, const VideoPacket* packets, std::size_t count, int output) {
  av_log_set_level(AV_LOG_QUIET);
  const Context context = Open(codec);
  const Frame frame(av_frame_alloc());
  if (context == nullptr || frame == nullptr) return;
  PixelWriter writer(output);
  for (std::size_t i = 0; i < count; ++i) {
    const bool shown = Decode(*context, packets[i], *frame);
    if (!(shown ? writer.Write(*frame) : writer.WriteNone())) return;
  }
}
