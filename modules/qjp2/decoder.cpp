#include "modules/qjp2/decoder.h"

#include <algorithm>
#include <cstring>

#include "modules/qjp2/boxes.h"

namespace qjp2 {
namespace {

// Below this a second thread costs more than it saves.
constexpr std::size_t kLargeFile = std::size_t{256} << 10;

}  // namespace

Decoder::Decoder(std::span<const std::uint8_t> file, bool rawIndices)
    : file_(file),
      codec_(opj_create_decompress(IsCodeStream(file) ? OPJ_CODEC_J2K : OPJ_CODEC_JP2)),
      stream_(opj_stream_default_create(OPJ_TRUE)) {
  if (!codec_ || !stream_) return;
  opj_set_error_handler(codec_.get(), Complain, this);
  opj_set_warning_handler(codec_.get(), Complain, this);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  if (rawIndices) parameters.flags |= OPJ_DPARAMETERS_IGNORE_PCLR_CMAP_CDEF_FLAG;
  opj_setup_decoder(codec_.get(), &parameters);
  opj_decoder_set_strict_mode(codec_.get(), OPJ_FALSE);
  if (file.size() >= kLargeFile) opj_codec_set_threads(codec_.get(), std::min(opj_get_num_cpus(), 2));
  opj_stream_set_read_function(stream_.get(), Read);
  opj_stream_set_skip_function(stream_.get(), Skip);
  opj_stream_set_seek_function(stream_.get(), Seek);
  opj_stream_set_user_data(stream_.get(), this, nullptr);
  opj_stream_set_user_data_length(stream_.get(), file.size());
}

const opj_image_t* Decoder::ReadHeader() {
  if (!codec_ || !stream_) return nullptr;
  opj_image_t* image = nullptr;
  const bool read = opj_read_header(stream_.get(), codec_.get(), &image) == OPJ_TRUE;
  image_.reset(image);
  return read ? image : nullptr;
}

void Decoder::ReduceTo(std::uint32_t width, std::uint32_t height) {
  if (!image_ || image_->numcomps == 0 || (width == 0 && height == 0)) return;
  opj_codestream_info_v2_t* stream = opj_get_cstr_info(codec_.get());
  if (stream == nullptr) return;
  std::uint32_t resolutions = 1;
  if (stream->m_default_tile_info.tccp_info != nullptr) {
    resolutions = stream->m_default_tile_info.tccp_info[0].numresolutions;
    for (std::uint32_t i = 1; i < stream->nbcomps; ++i) {
      resolutions = std::min<std::uint32_t>(resolutions, stream->m_default_tile_info.tccp_info[i].numresolutions);
    }
  }
  opj_destroy_cstr_info(&stream);
  const auto fits = [&](std::uint32_t factor) {
    return image_->comps[0].w >> factor >= std::max(width, 1U) && image_->comps[0].h >> factor >= std::max(height, 1U);
  };
  std::uint32_t factor = 0;
  while (factor + 1 < resolutions && factor + 1 < 32 && fits(factor + 1)) ++factor;
  if (factor != 0) opj_set_decoded_resolution_factor(codec_.get(), factor);
}

const opj_image_t* Decoder::Decode() {
  if (!image_ || opj_decode(codec_.get(), stream_.get(), image_.get()) != OPJ_TRUE) return nullptr;
  return image_.get();
}

OPJ_SIZE_T Decoder::Read(void* target, OPJ_SIZE_T count, void* self) {
  auto& decoder = *static_cast<Decoder*>(self);
  const std::size_t got = std::min<std::size_t>(count, decoder.file_.size() - decoder.position_);
  if (got == 0) return static_cast<OPJ_SIZE_T>(-1);  // the end, as the library has it
  std::memcpy(target, decoder.file_.data() + decoder.position_, got);
  decoder.position_ += got;
  return got;
}

OPJ_OFF_T Decoder::Skip(OPJ_OFF_T count, void* self) {
  auto& decoder = *static_cast<Decoder*>(self);
  const std::size_t left = decoder.file_.size() - decoder.position_;
  if (count < 0 || left == 0) return -1;
  const std::size_t skipped = std::min(static_cast<std::size_t>(count), left);
  decoder.position_ += skipped;
  return static_cast<OPJ_OFF_T>(skipped);
}

OPJ_BOOL Decoder::Seek(OPJ_OFF_T position, void* self) {
  auto& decoder = *static_cast<Decoder*>(self);
  if (position < 0 || static_cast<std::size_t>(position) > decoder.file_.size()) return OPJ_FALSE;
  decoder.position_ = static_cast<std::size_t>(position);
  return OPJ_TRUE;
}

void Decoder::Complain(const char* text, void* self) {
  auto& decoder = *static_cast<Decoder*>(self);
  if (!decoder.complaint_.empty()) return;  // the first one is the cause of the others
  decoder.complaint_ = text;
  while (!decoder.complaint_.empty() && decoder.complaint_.back() == '\n') decoder.complaint_.pop_back();
}

}  // namespace qjp2
