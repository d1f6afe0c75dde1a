#include <algorithm>
#include <cstdint>
#include <string_view>

#include "app/converter.h"
#include "gen/array_ptr.h"
#include "platform/current_folder.h"
#include "platform/file_operations.h"
#include "platform/folder_walk.h"

namespace app {
namespace {

using Text = Converter::Text;

int Lower(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

// By bytes with ASCII letters as lower case. What is equal but for the case is told apart by its bytes, so that a run
// repeats itself.
bool Before(const Text& left, const Text& right) {
  const char* a = left.c_str();
  const char* b = right.c_str();
  while (*a != '\0' && Lower(*a) == Lower(*b)) ++a, ++b;
  if (Lower(*a) != Lower(*b)) return Lower(*a) < Lower(*b);
  return std::string_view(left.c_str()) < std::string_view(right.c_str());
}

void Sort(gen::array_ptr<Text>& paths, std::int32_t order) {
  Text** const end = paths.data + paths.count;
  if (order == 1) std::sort(paths.data, end, [](const Text* a, const Text* b) { return Before(*a, *b); });
  if (order == 2) std::sort(paths.data, end, [](const Text* a, const Text* b) { return Before(*b, *a); });
}

void AppendPath(gen::array_ptr<Text>& paths, const Text& folder, const platform::FolderEntry& entry) {
  paths.Append(new Text(folder + "\\" + entry.name.c_str()));
}

}  // namespace

void Converter::FindSources(ConvertSettings& settings) { ScanFolder(settings.sourceFolder, settings); }

bool Converter::EnterFolder(const char* path) { return platform::Readable(path) && platform::SetCurrentFolder(path); }

void Converter::ScanFolder(Text folder, ConvertSettings& settings) {
  const platform::CurrentFolderKeeper keeper;
  if (!EnterFolder(folder.c_str())) return;

  gen::array_ptr<Text> matches;
  gen::array_ptr<Text> folders;
  const char* mask = settings.mask.c_str();
  for (const platform::FolderEntry& entry : platform::ListCurrentFolder(settings.recurse ? "*.*" : mask)) {
    if (!entry.isFolder) {
      if (platform::MatchesMask(entry.name.c_str(), mask)) AppendPath(matches, folder, entry);
    } else if (!entry.isLink) {
      // Links are not followed: they could lead round in circles, or to the same files twice.
      AppendPath(folders, folder, entry);
    }
  }
  if (matches.count != 0) {
    Sort(matches, settings.sortOrder);
    settings.files.AppendAll(matches);
  }
  if (!settings.recurse) return;

  Sort(folders, settings.sortOrder);
  for (std::uint32_t i = 0; i < folders.count; ++i) ScanFolder(*folders.At(i), settings);
}

}  // namespace app
