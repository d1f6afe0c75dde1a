#include "glib/format/registry.h"

#include <algorithm>
#include <cstring>

#include "glib/format/catalogue.h"
#include "glib/format/signature_pattern.h"
#include "glib/format/streams.h"
#include "glib/module_api/exchange.h"
#include "platform/library.h"
#include "platform/program.h"
#include "platform/source_file.h"

namespace glib {
namespace {

// What a module has to offer.
struct ModuleEntries {
  GetFilterInfoEntry getFilterInfo = nullptr;
  GetFileInfoEntry getFileInfo = nullptr;
  LoadImageDataEntry loadImageData = nullptr;
  SaveImageDataEntry saveImageData = nullptr;
  LoadImageThumbnailEntry loadImageThumbnail = nullptr;

  explicit ModuleEntries(void* module) {
    Find(module, "LoadImageData", loadImageData);
    Find(module, "SaveImageData", saveImageData);
    Find(module, "GetFileInfo", getFileInfo);
    Find(module, "GetFilterInfo", getFilterInfo);
    Find(module, "LoadImageThumbnail", loadImageThumbnail);
  }

  bool Complete() const { return loadImageData != nullptr && getFileInfo != nullptr && getFilterInfo != nullptr; }

  void GiveTo(FilterFormatDesc& desc) const {
    desc.loadImageThumbnail = loadImageThumbnail;
    desc.getFileInfo = getFileInfo;
    desc.loadImageData = loadImageData;
    desc.saveImageData = saveImageData;
    desc.readOnly = saveImageData == nullptr;
  }

 private:
  template <typename Entry>
  static void Find(void* module, const char* name, Entry& entry) {
    entry = reinterpret_cast<Entry>(platform::ModuleEntry(module, name));
  }
};

void RefuseModule(void* module, const gen::basic_string<char>& shownName) {
  gen::basic_string<char> message;
  gen::Format(message, "Bad format for '%s'", shownName.c_str());
  platform::ErrorMessage(message.c_str());
  platform::FreeModule(module);
}

// The text behind the last dot of the last part of a path; null if it has no dot.
const char* ExtensionOf(const char* path) {
  const char* extension = nullptr;
  for (; *path != '\0'; ++path) {
    if (*path == '\\' || *path == '/') extension = nullptr;
    if (*path == '.') extension = path + 1;
  }
  return extension;
}

}  // namespace

FilterFormatDesc* CreateFormatDesc(std::uint32_t id, std::uint32_t signatureLength, std::uint32_t patternLength,
                                   const char* pattern, const char* extensions, const char* description,
                                   const char* moduleName) {
  auto* desc = new FilterFormatDesc;
  desc->id = id;
  desc->signatureLength = signatureLength;
  desc->patternLength = patternLength;
  if (patternLength == kTextPattern || pattern == nullptr) {
    desc->pattern.Assign(pattern);
  } else {
    desc->pattern.Assign(pattern, patternLength);
  }
  desc->extensions.Assign(extensions);
  desc->description.Assign(description);
  desc->moduleName.Assign(moduleName);
  return desc;
}

FilterManager::FilterManager(const char* moduleFolder, bool useCatalogue) {
  folder.Assign(moduleFolder);
  if (!folder.IsEmpty() && folder.At(folder.Length() - 1) == '\\') folder.Resize(folder.Length() - 1);
  if (useCatalogue) {
    AppendCatalogue(formats);
  } else {
    for (const char* name : ModuleNames()) AddModule(name);
  }
  RebuildExtensionList();
}

FilterManager::~FilterManager() = default;

bool FilterManager::AddModule(const char* name) {
  void* module = platform::LoadModule(folder.c_str(), name);
  if (module == nullptr) return false;
  const ModuleEntries entries(module);
  if (!entries.Complete()) {
    RefuseModule(module, name);
    return false;
  }
  const std::uint32_t before = formats.count;
  entries.getFilterInfo(CreateFormatDesc, &formats);
  for (std::uint32_t i = before; i < formats.count; ++i) {
    FilterFormatDesc& desc = *formats.At(i);
    desc.moduleHandle = i == before ? module : nullptr;
    entries.GiveTo(desc);
  }
  return true;
}

FilterFormatDesc* FilterManager::BindFormat(FilterFormatDesc* desc) {
  if (desc == nullptr || !desc->loadPending) return desc;
  std::uint32_t first = 0;
  while (first < formats.count && formats.At(first) != desc && !(formats.At(first)->moduleName == desc->moduleName)) {
    ++first;
  }
  void* module = platform::LoadModule(folder.c_str(), desc->moduleName.c_str());
  if (module == nullptr) return nullptr;
  const ModuleEntries entries(module);
  if (!entries.Complete()) {
    RefuseModule(module, folder.IsEmpty() ? desc->moduleName : folder + "\\" + desc->moduleName);
    return nullptr;
  }
  formats.At(first)->moduleHandle = module;
  for (std::uint32_t i = first; i < formats.count && formats.At(i)->moduleName == desc->moduleName; ++i) {
    entries.GiveTo(*formats.At(i));
    formats.At(i)->loadPending = false;
  }
  RebuildExtensionList();
  return desc;
}

void FilterManager::RebuildExtensionList() {
  extensions.Clear();
  for (std::uint32_t i = 0; i < formats.count; ++i) {
    FilterFormatDesc* desc = formats.At(i);
    const char* rest = desc->extensions.c_str();
    for (;;) {
      if (*rest == '\n') ++rest;
      if (*rest == '\0') break;
      const auto length = static_cast<std::uint32_t>(std::strcspn(rest, "\n"));
      auto* item = new ExtItem;
      item->Assign(rest, length);
      item->format = desc;
      extensions.Append(item);
      rest += length;
    }
  }
}

FilterFormatDesc* FilterManager::FindBySignature(const std::uint8_t* buffer) const {
  SignaturePattern pattern;
  for (std::uint32_t i = 0; i < formats.count; ++i) {
    FilterFormatDesc* desc = formats.At(i);
    if (desc->signatureLength > kSignatureWindow) continue;  // can't be told from a window of this size
    const bool text = desc->patternLength == kTextPattern;
    pattern.SetPattern(desc->pattern.c_str(),
                       text ? kTextPattern : std::min(desc->patternLength, desc->pattern.Length()));
    if (pattern.Match(buffer, desc->signatureLength)) return desc;
  }
  return nullptr;
}

FilterFormatDesc* FilterManager::FindByExtension(const char* path) const {
  const char* text = path == nullptr ? nullptr : ExtensionOf(path);
  if (text == nullptr) return nullptr;
  gen::basic_string<char> extension(text);
  extension.ToLower();
  for (std::uint32_t i = 0; i < extensions.count; ++i) {
    if (*extensions.At(i) == extension) return extensions.At(i)->format;
  }
  return nullptr;
}

FilterFormatDesc* FilterManager::DetectFile(const char* path) const {
  VStdioFileStream stream(platform::OpenSource(path));
  if (stream.IsClosed()) return nullptr;
  std::uint8_t window[kSignatureWindow] = {};
  stream.Read(window, 1, sizeof(window));
  FilterFormatDesc* desc = FindBySignature(window);
  return desc != nullptr && desc->confirmByExtension ? FindByExtension(path) : desc;
}

FilterFormatDesc* FilterManager::DetectBuffer(const void* buffer, std::uint32_t size, std::uint32_t formatId) const {
  if (formatId == kAnyFormat) {
    if (buffer == nullptr) return nullptr;
    std::uint8_t window[kSignatureWindow] = {};
    std::memcpy(window, buffer, size < sizeof(window) ? size : sizeof(window));
    if (FilterFormatDesc* desc = FindBySignature(window)) return desc;
  }
  return FindById(formatId);
}

FilterFormatDesc* FilterManager::FindById(std::uint32_t id) const {
  for (std::uint32_t i = 0; i < formats.count; ++i) {
    if (formats.At(i)->id == id) return formats.At(i);
  }
  return nullptr;
}

}  // namespace glib
