#include "tests/support/module_host.h"

#include <dlfcn.h>

#include <cstring>

namespace tests {
namespace {

template <typename Function>
Function Entry(void* module, const char* name) {
  return module == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(module, name));
}

// Holds the message that it points to.
class HostExchange : public glib::ImageDataExchange {
 public:
  HostExchange() {
    message = &text_;
    AllocateRaster = glib::AllocateRaster;
    FreeRaster = glib::FreeRaster;
  }

 private:
  gen::basic_string<char> text_;
};

glib::FilterFormatDesc* CreateFormatDesc(std::uint32_t id, std::uint32_t signatureLength, std::uint32_t patternLength,
                                         const char* pattern, const char* extensions, const char* description,
                                         const char* moduleName) {
  auto* row = new glib::FilterFormatDesc;
  row->id = id;
  row->signatureLength = signatureLength;
  row->patternLength = patternLength;
  if (patternLength == glib::kTextPattern) {
    row->pattern.Assign(pattern);
  } else {
    row->pattern.Assign(pattern, patternLength);
  }
  row->extensions.Assign(extensions);
  row->description.Assign(description);
  row->moduleName.Assign(moduleName);
  return row;
}

}  // namespace

Loaded EmptyExchange() {
  Loaded loaded;
  loaded.exchange = std::make_unique<HostExchange>();
  return loaded;
}

ModuleHost::ModuleHost(const std::string& name)
    : module_(dlopen((std::string(ZEFA_BUILD_FOLDER "/modules/") + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL)),
      register_(Entry<glib::GetFilterInfoEntry>(module_, "GetFilterInfo")),
      load_(Entry<glib::LoadImageDataEntry>(module_, "LoadImageData")),
      info_(Entry<glib::GetFileInfoEntry>(module_, "GetFileInfo")) {}

ModuleHost::~ModuleHost() {
  if (module_ != nullptr) dlclose(module_);
}

bool ModuleHost::HasEntry(const char* name) const { return Entry<void*>(module_, name) != nullptr; }

Loaded ModuleHost::Load(const std::string& path, std::uint32_t id) const {
  Loaded loaded = EmptyExchange();
  loaded.exchange->id = id;
  loaded.result = load_(path.c_str(), loaded.exchange.get(), nullptr);
  loaded.message = loaded.exchange->message->c_str();
  return loaded;
}

Loaded ModuleHost::Load(std::span<const std::uint8_t> bytes, std::uint32_t id, glib::BaseFormatDesc* loadWord) const {
  // In a block of exactly this size the address sanitizer sees a read past the end.
  const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[bytes.size()]);
  if (!bytes.empty()) std::memcpy(exact.get(), bytes.data(), bytes.size());
  Loaded loaded = EmptyExchange();
  loaded.exchange->id = id;
  loaded.exchange->sourceSize = static_cast<std::uint32_t>(bytes.size());
  loaded.result = load_(reinterpret_cast<const char*>(exact.get()), loaded.exchange.get(), loadWord);
  loaded.message = loaded.exchange->message->c_str();
  return loaded;
}

Loaded ModuleHost::LoadThumbnail(const std::string& path, std::uint32_t width, std::uint32_t height) const {
  Loaded loaded = EmptyExchange();
  loaded.exchange->thumbnailWidth = width;
  loaded.exchange->thumbnailHeight = height;
  const auto load = Entry<glib::LoadImageThumbnailEntry>(module_, "LoadImageThumbnail");
  loaded.result = load(path.c_str(), loaded.exchange.get());
  loaded.message = loaded.exchange->message->c_str();
  return loaded;
}

std::unique_ptr<glib::FileInfo> ModuleHost::Info(const std::string& path, std::uint32_t id,
                                                 std::uint32_t* result) const {
  glib::FileInfo* info = nullptr;
  const std::uint32_t got = info_(path.c_str(), id, &info);
  if (result != nullptr) *result = got;
  return std::unique_ptr<glib::FileInfo>(info);
}

std::uint32_t ModuleHost::Save(const std::string& path, glib::ImageDataExchange& exchange,
                               glib::BaseFormatDesc& settings) const {
  return Entry<glib::SaveImageDataEntry>(module_, "SaveImageData")(path.c_str(), &exchange, &settings);
}

std::vector<std::uint32_t> ModuleHost::Ids() const {
  gen::array_ptr<glib::FilterFormatDesc> rows(gen::kInitialSize, gen::kGrowBy, true);
  register_(CreateFormatDesc, &rows);
  std::vector<std::uint32_t> ids;
  for (std::uint32_t i = 0; i < rows.count; ++i) ids.push_back(rows.At(i)->id);
  return ids;
}

std::uint32_t IndexAt(const glib::ImageDataExchange::Page& page, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* row = page.pixels + y * page.Stride();
  switch (page.bits) {
    case 1:
      return static_cast<std::uint32_t>(row[x / 8]) >> (7 - x % 8) & 1U;
    case 4:
      return static_cast<std::uint32_t>(row[x / 2]) >> (x % 2 == 0 ? 4 : 0) & 15U;
    default:
      return row[x];
  }
}

std::uint32_t PixelAt(const glib::ImageDataExchange::Page& page, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* row = page.pixels + y * page.Stride();
  if (page.bits == 32) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, row + x * std::size_t{4}, sizeof(pixel));
    return pixel;
  }
  if (page.bits == 24) {
    const std::uint8_t* bytes = row + x * std::size_t{3};
    return 0xFF000000U | static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[1]) << 8 |
           bytes[0];
  }
  return page.palette[IndexAt(page, x, y)];
}

}  // namespace tests
