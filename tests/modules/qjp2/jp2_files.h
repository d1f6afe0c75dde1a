#ifndef TESTS_MODULES_QJP2_JP2_FILES_H_
#define TESTS_MODULES_QJP2_JP2_FILES_H_

#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"

namespace tests {

// What the library packs without loss: samples component by component.
struct Samples {
  std::uint32_t width = 2;
  std::uint32_t height = 2;
  std::uint32_t precision = 8;
  bool isSigned = false;
  std::vector<std::vector<std::int32_t>> components;
  std::uint32_t chromaStep = 1;  // of the second and third, both ways
  int resolutions = 1;
};

// A code stream, with nothing around it.
inline std::vector<std::uint8_t> CodeStream(const Samples& samples) {
  std::vector<opj_image_cmptparm_t> parameters(samples.components.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const std::uint32_t step = i == 1 || i == 2 ? samples.chromaStep : 1;
    parameters[i] = {};
    parameters[i].dx = parameters[i].dy = step;
    parameters[i].w = (samples.width + step - 1) / step;
    parameters[i].h = (samples.height + step - 1) / step;
    parameters[i].prec = samples.precision;
    parameters[i].sgnd = samples.isSigned ? 1 : 0;
  }
  opj_image_t* image =
      opj_image_create(static_cast<OPJ_UINT32>(parameters.size()), parameters.data(), OPJ_CLRSPC_UNSPECIFIED);
  image->x1 = samples.width;
  image->y1 = samples.height;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    std::copy(samples.components[i].begin(), samples.components[i].end(), image->comps[i].data);
  }
  opj_cparameters_t settings;
  opj_set_default_encoder_parameters(&settings);
  settings.tcp_numlayers = 1;
  settings.cp_disto_alloc = 1;
  settings.numresolution = samples.resolutions;
  settings.tcp_mct = 0;
  opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
  opj_setup_encoder(codec, &settings, image);

  struct Target {
    std::vector<std::uint8_t> bytes;
    std::size_t position = 0;
  } target;
  opj_stream_t* stream = opj_stream_default_create(OPJ_FALSE);
  opj_stream_set_user_data(stream, &target, nullptr);
  opj_stream_set_write_function(stream, [](void* data, OPJ_SIZE_T count, void* user) {
    auto& to = *static_cast<Target*>(user);
    to.bytes.resize(std::max(to.bytes.size(), to.position + count));
    std::memcpy(to.bytes.data() + to.position, data, count);
    to.position += count;
    return count;
  });
  opj_stream_set_seek_function(stream, [](OPJ_OFF_T position, void* user) {
    static_cast<Target*>(user)->position = static_cast<std::size_t>(position);
    return OPJ_TRUE;
  });
  opj_start_compress(codec, image, stream);
  opj_encode(codec, stream);
  opj_end_compress(codec, stream);
  opj_stream_destroy(stream);
  opj_destroy_codec(codec);
  opj_image_destroy(image);
  return target.bytes;
}

inline std::vector<std::uint8_t> Box(std::string_view kind, std::span<const std::uint8_t> data) {
  ByteWriter out;
  return out.BigLong(static_cast<std::uint32_t>(data.size() + 8)).Text(kind).Bytes(data).bytes;
}

// The boxes around a code stream; `more` stands in the header's box, a profile in the place of the colour space.
inline std::vector<std::uint8_t> Boxed(const Samples& samples, std::uint32_t colourSpace,
                                       std::span<const std::uint8_t> more = {},
                                       std::span<const std::uint8_t> profile = {}) {
  ByteWriter header;
  header.BigLong(samples.height).BigLong(samples.width);
  header.BigWord(static_cast<std::uint32_t>(samples.components.size()));
  header.Byte((samples.precision - 1) | (samples.isSigned ? 0x80U : 0U)).Byte(7).Byte(0).Byte(0);
  ByteWriter colours;
  if (profile.empty()) {
    colours.Byte(1).Byte(0).Byte(0).BigLong(colourSpace);
  } else {
    colours.Byte(3).Byte(0).Byte(0).Bytes(profile);
  }
  ByteWriter inner;
  inner.Bytes(Box("ihdr", header.bytes)).Bytes(Box("colr", colours.bytes)).Bytes(more);
  ByteWriter out;
  out.Bytes(Box("jP  ", ByteWriter().Text("\r\n\x87\n").bytes));
  out.Bytes(Box("ftyp", ByteWriter().Text("jp2 ").BigLong(0).Text("jp2 ").bytes));
  return out.Bytes(Box("jp2h", inner.bytes)).Bytes(Box("jp2c", CodeStream(samples))).bytes;
}

}  // namespace tests

#endif  // TESTS_MODULES_QJP2_JP2_FILES_H_
