#include "modules/helpers/structured_storage/entries.h"

#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-utils.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "platform/source_file.h"

namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unref>;

// The library says on the standard error stream what it thinks of damaged files.
void Start() {
  static const bool started = [] {
    gsf_init();
    g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
    return true;
  }();
  static_cast<void>(started);
}

// The library closes the stream with its input.
Owned<GsfInput> OpenInput(const StorageFile& file) {
  if (file.name == nullptr) {
    return Owned<GsfInput>(gsf_input_memory_new(file.bytes, static_cast<gsf_off_t>(file.size), FALSE));
  }
  std::FILE* stream = platform::OpenSource(file.name);
  return Owned<GsfInput>(stream == nullptr ? nullptr : gsf_input_stdio_new_FILE("file", stream, FALSE));
}

}  // namespace

ZEFA_HELPER_ENTRY(bool)
ReadStorageStream(const StorageFile* file, const char* const* path, std::size_t depth, TakeStreamFunction take,
                  void* context) {
  Start();
  const Owned<GsfInput> input = OpenInput(*file);
  if (input == nullptr) return false;
  const auto size = static_cast<std::size_t>(std::max<gsf_off_t>(gsf_input_size(input.get()), 0));
  Owned<GsfInput> place(reinterpret_cast<GsfInput*>(gsf_infile_msole_new(input.get(), nullptr)));
  for (std::size_t i = 0; i < depth && place != nullptr; ++i) {
    if (!GSF_IS_INFILE(place.get())) return false;
    place.reset(gsf_infile_child_by_name(GSF_INFILE(place.get()), path[i]));
  }
  if (place == nullptr) return false;
  const auto length = static_cast<std::size_t>(std::max<gsf_off_t>(gsf_input_size(place.get()), 0));
  const std::size_t count = std::min(length, size);
  const guint8* bytes = count == 0 ? nullptr : gsf_input_read(place.get(), count, nullptr);
  if (bytes == nullptr) return false;
  take(context, bytes, count);
  return true;
}
