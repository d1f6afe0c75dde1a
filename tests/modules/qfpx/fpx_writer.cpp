#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-utils.h>
#include <stdio.h>

#include <jpeglib.h>

#include <cstdlib>
#include <string>

#include "tests/modules/qfpx/fpx_writer.h"
#include "tests/support/byte_writer.h"

namespace tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Property {
  std::uint32_t id;
  Bytes value;
};

Bytes Number(std::uint32_t number) { return ByteWriter().Long(0x13).Long(number).bytes; }

Bytes Blob(const Bytes& bytes) {
  return ByteWriter().Long(0x41).Long(static_cast<std::uint32_t>(bytes.size())).Bytes(bytes).bytes;
}

ByteWriter StreamHeader() {
  ByteWriter out;
  out.Word(0xFFFE).Zeros(22).Long(1);
  return out;
}

Bytes Contents(const FpxSpec& spec) {
  const std::uint32_t level = spec.resolutions == 0 ? 0 : (spec.resolutions - 1) << 16;
  ByteWriter colour;
  colour.Long(1).Long(static_cast<std::uint32_t>(spec.channels.size()));
  for (const std::uint32_t channel : spec.channels) colour.Long(channel);
  std::vector<Property> properties = {
      {0x01000000, Number(spec.resolutions)},
      {0x01000002, Number(spec.width)},
      {0x01000003, Number(spec.height)},
      {0x02000002 + level, Blob(colour.bytes)},
      {0x02000003 + level, ByteWriter().Long(0x1013).Long(1).Long(spec.sampleFormat).bytes}};
  if (!spec.tables.empty()) properties.push_back({0x03030001, Blob(spec.tables)});
  ByteWriter index;
  ByteWriter values;
  const auto count = static_cast<std::uint32_t>(properties.size());
  index.Long(0).Long(count);
  for (const Property& property : properties) {
    index.Long(property.id).Long(8 + 8 * count + static_cast<std::uint32_t>(values.bytes.size()));
    values.Bytes(property.value);
  }
  ByteWriter out = StreamHeader();
  return out.Zeros(16).Long(48).Bytes(index.bytes).Bytes(values.bytes).bytes;
}

void AddStream(GsfOutfile* folder, const char* name, const Bytes& bytes) {
  GsfOutput* stream = gsf_outfile_new_child(folder, name, FALSE);
  gsf_output_write(stream, bytes.size(), bytes.data());
  gsf_output_close(stream);
  g_object_unref(stream);
}

}  // namespace

Bytes MakeFpx(const FpxSpec& spec) {
  gsf_init();
  ByteWriter header = StreamHeader();
  header.Long(36).Long(spec.width).Long(spec.height).Long(static_cast<std::uint32_t>(spec.tiles.size()));
  header.Long(spec.tileSide)
      .Long(spec.tileSide)
      .Long(static_cast<std::uint32_t>(spec.channels.size()))
      .Long(36)
      .Long(16);
  ByteWriter data = StreamHeader();
  for (const FpxTile& tile : spec.tiles) {
    header.Long(static_cast<std::uint32_t>(data.bytes.size() - 28)).Long(static_cast<std::uint32_t>(tile.data.size()));
    header.Long(tile.compression).Long(tile.subtype);
    data.Bytes(tile.data);
  }

  GsfOutput* memory = gsf_output_memory_new();
  GsfOutfile* root = gsf_outfile_msole_new(memory);
  GsfOutput* picture = gsf_outfile_new_child(root, "Data Object Store 000001", TRUE);
  AddStream(GSF_OUTFILE(picture), "\005Image Contents", Contents(spec));
  const std::string level = "Resolution 000" + std::to_string(spec.resolutions == 0 ? 0 : spec.resolutions - 1);
  GsfOutput* resolution = gsf_outfile_new_child(GSF_OUTFILE(picture), level.c_str(), TRUE);
  AddStream(GSF_OUTFILE(resolution), "Subimage 0000 Header", header.bytes);
  AddStream(GSF_OUTFILE(resolution), "Subimage 0000 Data", data.bytes);
  for (GsfOutput* folder : {resolution, picture, GSF_OUTPUT(root)}) {
    gsf_output_close(folder);
    g_object_unref(folder);
  }
  const guint8* bytes = gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory));
  const Bytes file(bytes, bytes + gsf_output_size(memory));
  g_object_unref(memory);
  return file;
}

Bytes MakeJpeg(std::uint32_t side, std::uint32_t channels, bool converted, const Bytes& samples, Bytes* tables) {
  jpeg_compress_struct encoder;
  jpeg_error_mgr errors;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  encoder.image_width = encoder.image_height = side;
  encoder.input_components = static_cast<int>(channels);
  encoder.in_color_space = channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&encoder);
  if (channels == 3) jpeg_set_colorspace(&encoder, converted ? JCS_YCbCr : JCS_RGB);
  for (int i = 0; i < encoder.num_components; ++i) {
    encoder.comp_info[i].component_id = i + 1;  // and not the letters that would tell the colours
    encoder.comp_info[i].h_samp_factor = encoder.comp_info[i].v_samp_factor = 1;
  }
  encoder.write_JFIF_header = FALSE;
  encoder.write_Adobe_marker = FALSE;
  jpeg_set_quality(&encoder, 100, TRUE);

  const auto encode = [&](auto write) {
    unsigned char* block = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &block, &size);
    write();
    const Bytes bytes(block, block + size);
    std::free(block);
    return bytes;
  };
  if (tables != nullptr) *tables = encode([&] { jpeg_write_tables(&encoder); });
  const Bytes jpeg = encode([&] {
    jpeg_start_compress(&encoder, tables == nullptr ? TRUE : FALSE);
    for (std::uint32_t y = 0; y < side; ++y) {
      auto* row = const_cast<JSAMPROW>(samples.data() + std::size_t{y} * side * channels);
      jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
  });
  jpeg_destroy_compress(&encoder);
  return jpeg;
}

}  // namespace tests
