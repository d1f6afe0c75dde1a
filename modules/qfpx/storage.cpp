#include "modules/qfpx/storage.h"

#include <cstdio>

#include "modules/common/helper.h"
#include "modules/qfpx/image_contents.h"
#include "modules/qfpx/tiles.h"

namespace qfpx {
namespace {

constexpr char kHelper[] = "structured_storage";
constexpr char kFirstPicture[] = "Data Object Store 000001";

auto* ReadFunction() { return modules::HelperFunction<decltype(ReadStorageStream)>(kHelper, "ReadStorageStream"); }

}  // namespace

Storage::Storage(std::span<const std::uint8_t> file)
    : file_{.bytes = file.data(), .size = file.size()}, found_(ReadFunction() != nullptr) {}

Storage::Storage(const char* path) : file_{.name = path}, found_(ReadFunction() != nullptr) {}

const char* Storage::HelperName() { return kHelper; }

std::vector<std::uint8_t> Storage::Read(std::initializer_list<const char*> path) const {
  std::vector<std::uint8_t> stream;
  if (!found_) return stream;
  std::vector<const char*> names{kFirstPicture};
  names.insert(names.end(), path);
  const TakeStreamFunction take = [](void* context, const std::uint8_t* bytes, std::size_t size) {
    static_cast<std::vector<std::uint8_t>*>(context)->assign(bytes, bytes + size);
  };
  ReadFunction()(&file_, names.data(), names.size(), take, &stream);
  return stream;
}

std::uint32_t LoadFlashPix(const Storage& storage, glib::ImageDataExchange& exchange) {
  if (!storage.HelperFound()) return modules::MissingHelper(exchange, Storage::HelperName());
  const std::vector<std::uint8_t> contents = storage.ReadContents();
  if (contents.empty()) return modules::Fail(exchange, glib::IERR, "The file holds no picture");
  ImageContents known;
  const modules::Verdict verdict = ReadImageContents(PropertySet(contents), known);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  char folder[32];
  std::snprintf(folder, sizeof(folder), "Resolution %04u", static_cast<unsigned>(known.resolution));
  const std::vector<std::uint8_t> header = storage.Read({folder, "Subimage 0000 Header"});
  const std::vector<std::uint8_t> data = storage.Read({folder, "Subimage 0000 Data"});
  return LoadTiles({contents, header, data}, exchange);
}

}  // namespace qfpx
