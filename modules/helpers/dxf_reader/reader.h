#ifndef MODULES_HELPERS_DXF_READER_READER_H_
#define MODULES_HELPERS_DXF_READER_READER_H_

#include <cstdint>
#include <span>
#include <string>

#include "modules/common/byte_reader.h"
#include "modules/helpers/dxf_reader/collector.h"

namespace dxf {

// The groups of a file, in lines of text or in the binary form.
class GroupReader {
 public:
  explicit GroupReader(std::span<const std::uint8_t> file);

  // False at the end.
  bool Next(int& code, std::string& value);

 private:
  bool NextLine(std::string& line);
  bool NextBinary(int& code, std::string& value);

  modules::ByteReader in_;
  bool binary_ = false;
  bool wideCodes_ = false;
  char lineEnd_ = '\n';
};

// Gives the collector all that the file holds.
void ReadDxf(std::span<const std::uint8_t> file, Collector& collector);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_READER_H_
