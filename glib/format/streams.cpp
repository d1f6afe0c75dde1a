#include "glib/format/streams.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <iterator>
#include <limits>

#include "platform/source_file.h"

namespace glib {
namespace {

std::int32_t Within31Bits(std::int64_t value) {
  return value > std::numeric_limits<std::int32_t>::max() ? -1 : static_cast<std::int32_t>(value);
}

template <typename Number>
Number GetNumber(VStream& stream) {
  std::uint8_t bytes[sizeof(Number)] = {};
  stream.Read(bytes, sizeof(bytes), 1);
  if (!stream.swapBytes) std::reverse(std::begin(bytes), std::end(bytes));
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return static_cast<Number>(value);
}

template <typename Number>
std::uint32_t PutNumber(VStream& stream, Number value) {
  std::uint8_t bytes[sizeof(Number)];
  std::uint64_t rest = value;
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(rest);
    rest >>= 8;
  }
  if (stream.swapBytes) std::reverse(std::begin(bytes), std::end(bytes));
  return stream.Write(bytes, sizeof(bytes), 1);
}

}  // namespace

VStream::~VStream() = default;

bool VStream::HasError() const { return false; }

VStdioFileStream::~VStdioFileStream() {
  if (file != nullptr) std::fclose(file);
}

bool VStdioFileStream::Seek(std::int32_t offset, int whence) { return std::fseek(file, offset, whence) == 0; }

bool VStdioFileStream::IsEof() const { return std::feof(file) != 0; }

bool VStdioFileStream::IsClosed() const { return file == nullptr; }

bool VStdioFileStream::HasError() const { return std::ferror(file) != 0; }

std::int32_t VStdioFileStream::Tell() const { return Within31Bits(std::ftell(file)); }

std::int32_t VStdioFileStream::Length() const { return Within31Bits(platform::OpenFileSize(file)); }

std::int32_t VStdioFileStream::GetByte() { return std::fgetc(file); }

std::uint16_t VStdioFileStream::GetWord() { return GetNumber<std::uint16_t>(*this); }

std::uint32_t VStdioFileStream::GetLong() { return GetNumber<std::uint32_t>(*this); }

std::uint64_t VStdioFileStream::GetQuad() { return GetNumber<std::uint64_t>(*this); }

std::uint32_t VStdioFileStream::Read(void* buffer, std::uint32_t size, std::uint32_t count) {
  return static_cast<std::uint32_t>(std::fread(buffer, size, count, file));
}

char* VStdioFileStream::GetLine(char* buffer, std::int32_t limit) { return std::fgets(buffer, limit, file); }

std::int32_t VStdioFileStream::PutByte(std::int32_t value) { return std::fputc(value & 0xFF, file); }

std::uint32_t VStdioFileStream::PutWord(std::uint32_t value) {
  return PutNumber(*this, static_cast<std::uint16_t>(value));
}

std::uint32_t VStdioFileStream::PutLong(std::uint32_t value) { return PutNumber(*this, value); }

std::uint32_t VStdioFileStream::PutQuad(std::uint64_t value) { return PutNumber(*this, value); }

std::uint32_t VStdioFileStream::Write(const void* buffer, std::uint32_t size, std::uint32_t count) {
  return static_cast<std::uint32_t>(std::fwrite(buffer, size, count, file));
}

std::int32_t VStdioFileStream::PutText(const char* text) { return std::fputs(text, file); }

std::int32_t VStdioFileStream::Print(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vfprintf(file, format, arguments);
  va_end(arguments);
  return written;
}

}  // namespace glib
