#ifndef MODULES_QJP2_DECODER_H_
#define MODULES_QJP2_DECODER_H_

#include <openjpeg.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace qjp2 {

// The library around one file in memory. It prints nothing; what it complains of stays in `Complaint`.
class Decoder {
 public:
  // With `rawIndices` a palette in the file is not applied.
  Decoder(std::span<const std::uint8_t> file, bool rawIndices);
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  // Sizes and components without samples; null if the header makes no sense.
  const opj_image_t* ReadHeader();
  // After ReadHeader: gives up resolutions as long as the picture still has at least these sides; 0 for a side asks
  // nothing of it.
  void ReduceTo(std::uint32_t width, std::uint32_t height);
  // After ReadHeader: the samples as far as the file has them; null if there are none.
  const opj_image_t* Decode();

  const std::string& Complaint() const { return complaint_; }

 private:
  struct Free {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
  };
  struct FreeStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
  };

  static OPJ_SIZE_T Read(void* target, OPJ_SIZE_T count, void* self);
  static OPJ_OFF_T Skip(OPJ_OFF_T count, void* self);
  static OPJ_BOOL Seek(OPJ_OFF_T position, void* self);
  static void Complain(const char* text, void* self);

  std::span<const std::uint8_t> file_;
  std::size_t position_ = 0;
  std::string complaint_;
  std::unique_ptr<opj_codec_t, Free> codec_;
  std::unique_ptr<opj_stream_t, FreeStream> stream_;
  std::unique_ptr<opj_image_t, Free> image_;
};

}  // namespace qjp2

#endif  // MODULES_QJP2_DECODER_H_
