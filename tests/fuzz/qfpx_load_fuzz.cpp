#include "modules/common/byte_reader.h"
#include "modules/qfpx/tiles.h"
#include "tests/fuzz/fuzz_exchange.h"

// The container is not this code's: the input is the three streams, the first two with their lengths in front.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  modules::ByteReader in({data, size});
  qfpx::Streams streams;
  streams.contents = in.Take(in.Word());
  streams.header = in.Take(in.Word());
  streams.data = in.Take(in.Left());
  fuzz::Exchange exchange;
  exchange.Check(qfpx::LoadTiles(streams, exchange));
  return 0;
}
