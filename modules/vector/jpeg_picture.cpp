#include "modules/common/jpeg_reader.h"
#include "modules/vector/picture.h"

namespace modules {

bool DecodeJpeg(std::span<const std::uint8_t> bytes, Picture& picture) {
  JpegReader reader(bytes);
  if (!reader.ReadHeader()) return false;
  if (!picture.Allocate(reader.Width(), reader.Height(), reader.Bits()) || !reader.Start()) return false;
  if (picture.bits == 8) picture.SetGrays();
  std::uint32_t done = 0;
  while (done < picture.height && reader.ReadRow(picture.Row(done))) ++done;
  return done != 0 && !reader.WithoutRows();
}

}  // namespace modules
