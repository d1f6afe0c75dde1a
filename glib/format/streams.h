#ifndef GLIB_FORMAT_STREAMS_H_
#define GLIB_FORMAT_STREAMS_H_

#include <cstdint>
#include <cstdio>

namespace glib {

// A stream of bytes with numbers in it. Numbers are stored with their lowest byte first, or highest first if
// `swapBytes` is set; plain reads and writes and text are not affected.
//
// Nothing throws. A number that can't be read whole is unspecified: IsEof and HasError tell.
class VStream {
 public:
  VStream() = default;
  VStream(const VStream&) = delete;
  VStream& operator=(const VStream&) = delete;
  virtual ~VStream();

  virtual bool Seek(std::int32_t offset, int whence) = 0;  // `whence` as for fseek
  virtual bool IsEof() const = 0;
  virtual bool IsClosed() const = 0;
  virtual bool HasError() const;
  virtual std::int32_t Tell() const = 0;    // -1: unknown, or beyond 31 bits
  virtual std::int32_t Length() const = 0;  // bytes; -1 as for Tell
  virtual std::int32_t GetByte() = 0;       // -1 at the end
  virtual std::uint16_t GetWord() = 0;
  virtual std::uint32_t GetLong() = 0;
  virtual std::uint64_t GetQuad() = 0;
  // Give the number of whole items of `size` bytes.
  virtual std::uint32_t Read(void* buffer, std::uint32_t size, std::uint32_t count) = 0;
  // As fgets: at most `limit` - 1 characters up to and with a line end; null if there are none.
  virtual char* GetLine(char* buffer, std::int32_t limit) = 0;
  virtual std::int32_t PutByte(std::int32_t value) = 0;  // the byte written, or -1
  // Give 1, or 0 on failure.
  virtual std::uint32_t PutWord(std::uint32_t value) = 0;
  virtual std::uint32_t PutLong(std::uint32_t value) = 0;
  virtual std::uint32_t PutQuad(std::uint64_t value) = 0;
  virtual std::uint32_t Write(const void* buffer, std::uint32_t size, std::uint32_t count) = 0;
  // Give a negative value on failure.
  virtual std::int32_t PutText(const char* text) = 0;
  virtual std::int32_t Print(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;

  bool swapBytes = false;
};

// A stream over a file of the standard library, which it owns. Without one it is closed, and only IsClosed may be
// asked.
class VStdioFileStream : public VStream {
 public:
  explicit VStdioFileStream(std::FILE* openFile) : file(openFile) {}
  ~VStdioFileStream() override;

  bool Seek(std::int32_t offset, int whence) override;
  bool IsEof() const override;
  bool IsClosed() const override;
  bool HasError() const override;
  std::int32_t Tell() const override;
  std::int32_t Length() const override;
  std::int32_t GetByte() override;
  std::uint16_t GetWord() override;
  std::uint32_t GetLong() override;
  std::uint64_t GetQuad() override;
  std::uint32_t Read(void* buffer, std::uint32_t size, std::uint32_t count) override;
  char* GetLine(char* buffer, std::int32_t limit) override;
  std::int32_t PutByte(std::int32_t value) override;
  std::uint32_t PutWord(std::uint32_t value) override;
  std::uint32_t PutLong(std::uint32_t value) override;
  std::uint32_t PutQuad(std::uint64_t value) override;
  std::uint32_t Write(const void* buffer, std::uint32_t size, std::uint32_t count) override;
  std::int32_t PutText(const char* text) override;
  std::int32_t Print(const char* format, ...) override __attribute__((format(printf, 2, 3)));

  std::FILE* file;  // may be null
};

}  // namespace glib

#endif  // GLIB_FORMAT_STREAMS_H_
