#include "modules/vector/child_drawing.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "glib/module_api/result_values.h"
#include "modules/common/dib.h"
#include "modules/common/helper.h"
#include "platform/child_process.h"

namespace modules {
namespace {

constexpr std::uint64_t kMaxRecords = std::uint64_t{512} << 20;
constexpr std::size_t kMaxCause = 200;

enum class Kind : std::uint32_t { kRecords, kDib, kFailure };

struct Head {
  Kind kind;
  std::uint32_t result;
  std::uint64_t bytes;  // of the records, or of the cause
};

void Write(int output, Kind kind, std::uint32_t result, const void* bytes, std::size_t size) {
  Head head{};
  head.kind = kind;
  head.result = result;
  head.bytes = size;
  if (platform::WriteAll(output, &head, sizeof(head))) platform::WriteAll(output, bytes, size);
}

}  // namespace

void HandOver(int output, std::span<const std::uint8_t> records) {
  Write(output, Kind::kRecords, glib::RCOK, records.data(), records.size());
}

void HandOverDib(int output, std::span<const std::uint8_t> dib) {
  Write(output, Kind::kDib, glib::RCOK, dib.data(), dib.size());
}

void HandOverFailure(int output, std::uint32_t result, const char* cause) {
  Write(output, Kind::kFailure, result, cause, std::min(std::strlen(cause), kMaxCause));
}

std::uint32_t LoadChildDrawing(std::span<const std::uint8_t> file, const char* helper, const char* entry,
                               glib::ImageDataExchange& exchange) {
  auto* record = HelperFunction<RecordDrawingEntry>(helper, entry);
  if (record == nullptr) return MissingHelper(exchange, helper);
  auto child = platform::ChildProcess::Copy([&](int output) { record(file.data(), file.size(), output); }, {});
  Head head;
  if (child.Read(&head, sizeof(head)) != sizeof(head) || head.bytes > kMaxRecords) {
    return Fail(exchange, glib::IERR,
                child.TimedOut() ? "The drawing takes too long to read" : "The drawing is damaged");
  }
  std::vector<std::uint8_t> bytes(head.bytes + 1);
  const bool whole = child.Read(bytes.data(), head.bytes) == head.bytes;
  if (!whole) return Fail(exchange, glib::IERR, "The drawing breaks off");
  bytes[head.bytes] = 0;
  if (head.kind != Kind::kRecords && head.kind != Kind::kDib) {
    return Fail(exchange, head.result == glib::NSUP ? glib::NSUP : glib::IERR,
                reinterpret_cast<const char*>(bytes.data()));
  }
  bytes.pop_back();
  if (head.kind == Kind::kDib) return LoadDib(bytes, 0, exchange);
  return AddMetafilePage(exchange, bytes) != nullptr ? glib::RCOK : glib::IERR;
}

}  // namespace modules
