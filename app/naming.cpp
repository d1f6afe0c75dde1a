#include <cstdint>
#include <vector>

#include "app/converter.h"
#include "gen/array_ptr.h"
#include "platform/current_folder.h"
#include "platform/file_operations.h"
#include "platform/folder_walk.h"

namespace app {
namespace {

using Text = Converter::Text;

// -1 also in an empty text.
std::int32_t LastPosition(const Text& text, char c) { return text.IsEmpty() ? -1 : text.ReverseFind(c); }

bool EndsWith(const Text& text, char c) { return !text.IsEmpty() && text.c_str()[text.Length() - 1] == c; }

// Takes the last part of `rest` away, with the backslash before it, and gives it.
Text SplitLastPart(Text& rest) {
  const std::int32_t slash = LastPosition(rest, '\\');
  const std::uint32_t start = slash < 0 ? 0 : static_cast<std::uint32_t>(slash);
  const Text part = rest.Right(rest.Length() - start);
  rest = rest.Left(start);
  return part;
}

}  // namespace

void Converter::ChangeExtension(Text& path, const Text& name, const Text& ext) {
  if (!name.IsEmpty() && LastPosition(name, '.') != 0) {
    const std::int32_t dot = LastPosition(path, '.');
    if (dot > 0) path = path.Left(static_cast<std::uint32_t>(dot));
  }
  path.Append(ext);
}

void Converter::CleanName(Text& path) {
  for (const char* forbidden : {"*", "?", "\"", "<", ">", "|"}) path.ReplaceAll(forbidden, "_");
  path.ReplaceAll(":\\\\", ":\\");
}

Converter::Text Converter::NameOf(const Text& path) {
  return path.Right(path.Length() - static_cast<std::uint32_t>(LastPosition(path, '\\') + 1));
}

Converter::Text Converter::FolderOf(const Text& path) {
  const std::int32_t slash = LastPosition(path, '\\');
  if (slash < 0) return ".";
  return path.Left(slash == 0 ? 1 : static_cast<std::uint32_t>(slash));
}

bool Converter::EnsureFolder(const Text& folder) {
  if (folder.IsEmpty() || platform::Exists(folder.c_str())) return true;
  gen::array_ptr<Text> parts;
  Text rest = folder;
  // An empty rest is where every path begins: the root, or for a relative one the current folder.
  while (!rest.IsEmpty() && !platform::Exists(rest.c_str())) {
    // A drive can't be made, nor is it a folder of that name.
    if (EndsWith(rest, ':')) return false;
    parts.Append(new Text(SplitLastPart(rest)));
  }
  for (std::uint32_t i = parts.count; i-- != 0;) {
    rest.Append(*parts.At(i));
    // It is there already when a separator stood twice, or when somebody else was faster.
    const bool there = platform::CreateFolder(rest.c_str()) || platform::IsFolder(rest.c_str());
    if (!there || !platform::Writable(rest.c_str())) return false;
  }
  return platform::Writable(folder.c_str());
}

Converter::Text Converter::FreeName(const Text& path, const Text& ext) {
  if (!platform::Exists(path.c_str())) return path;
  const std::int32_t dot = LastPosition(path, '.');
  const Text base = dot < 0 ? path : path.Left(static_cast<std::uint32_t>(dot));
  Text number;
  for (int i = 1;; ++i) {
    gen::Format(number, "(%d)", i);
    const Text candidate = base + number + ext;
    if (!platform::Exists(candidate.c_str())) return candidate;
  }
}

bool Converter::RemoveFile(Text path) try {
  if (path.IsEmpty()) return false;
  if (!platform::Exists(path.c_str())) return true;
  return platform::Deletable(path.c_str()) && platform::DeleteFile(path.c_str());
} catch (...) {
  return false;
}

std::vector<Text> Converter::ListMatching(Text folder, Text pattern) {
  // A relative folder is meant from the folder where the run stands, so the paths are for use after the way back.
  const platform::CurrentFolderKeeper keeper;
  std::vector<Text> paths;
  if (!EnterFolder(folder.c_str())) return paths;
  for (const platform::FolderEntry& entry : platform::ListCurrentFolder(pattern.c_str())) {
    if (!entry.isFolder) paths.push_back(folder + "\\" + entry.name.c_str());
  }
  return paths;
}

}  // namespace app
