// SPDX-License-Identifier: MIT
#include "providers/cards/XDCAMIndex.h"

#include <unordered_map>
#include <utility>

#include "formats/XercesDocument.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"

namespace Sorvik::xdcam {
namespace {

using formats::FindChildElement;
using formats::FindNextSiblingElement;
using formats::GetElementAttribute;
using formats::TextIndex;
using formats::XercesDocument;
using formats::XercesElement;
using formats::sony::Material;
using formats::sony::MediaProfile;
using foundation::CallScope;

using FirstIndexes = std::unordered_map<std::string, std::size_t>;

struct MaterialUris {
  std::shared_ptr<const MediaProfile> list;
  FirstIndexes fileNames;
  std::shared_ptr<const TextIndex> uris;
};

MaterialUris ReadMaterialUris(const std::string& path) {
  auto list = MediaProfile::Of(path);
  std::vector<std::string> uris;
  FirstIndexes fileNames;
  for (const Material& material : list->Materials()) {
    fileNames.emplace(foundation::FileName(material.uri), uris.size());
    uris.push_back(material.uri);
  }
  return {std::move(list), std::move(fileNames), std::make_shared<const TextIndex>(uris)};
}

struct ClipTable {
  bool readable = false;
  std::vector<IndexedClip> clips;
  FirstIndexes byId;
  std::shared_ptr<const TextIndex> ids;
};

// In 16-bit code units. The id is the name of a folder, and names aren't longer.
constexpr std::size_t kMaxClipIdLength = 255;

std::string FileOf(XercesElement element) {
  std::string file;
  GetElementAttribute(element, "file", file);
  return file;
}

void AddFileOf(XercesElement element, IndexedFile::Kind kind, IndexedClip& clip) {
  std::string file = FileOf(element);
  if (file.empty() || clip.files.size() >= kMaxFilesOfClip) return;
  clip.files.push_back({kind, std::move(file)});
}

// Calls `visit` with the children of that name.
template <class Visit>
void ForEachChild(XercesElement element, const char* name, const Visit& visit) {
  for (XercesElement child = FindChildElement(element, name); child;
       child = FindNextSiblingElement(child, name)) {
    visit(child);
  }
}

IndexedClip ReadClip(XercesElement element) {
  IndexedClip clip;
  GetElementAttribute(element, "clipId", clip.clipId);
  if (foundation::CountCodeUnits(clip.clipId) > kMaxClipIdLength) clip.clipId.clear();
  using Kind = IndexedFile::Kind;
  AddFileOf(element, Kind::kPlaylist, clip);
  AddFileOf(FindChildElement(element, "subStream"), Kind::kSubStream, clip);
  AddFileOf(FindChildElement(element, "rtmeta"), Kind::kRealTimeMeta, clip);
  const auto addAll = [&](const char* name, Kind kind) {
    ForEachChild(element, name,
                 [&clip, kind](XercesElement child) { AddFileOf(child, kind, clip); });
  };
  addAll("meta", Kind::kMeta);
  addAll("audio", Kind::kSound);
  ForEachChild(element, "video", [&clip](XercesElement child) {
    std::string file = FileOf(child);
    if (!file.empty() && clip.pictures.size() < kMaxFilesOfClip) {
      clip.pictures.push_back(std::move(file));
    }
  });
  return clip;
}

ClipTable ReadClipTable(const std::string& path) {
  ClipTable table;
  std::vector<std::string> ids;
  if (const auto document = XercesDocument::ReadFile(path)) {
    const XercesElement element = FindChildElement(document->Root(), "clipTable");
    table.readable = static_cast<bool>(element);
    for (XercesElement clip = FindChildElement(element, "clip"); clip;
         clip = FindNextSiblingElement(clip, "clip")) {
      table.clips.push_back(ReadClip(clip));
      table.byId.emplace(table.clips.back().clipId, ids.size());
      ids.push_back(table.clips.back().clipId);
    }
  }
  table.ids = std::make_shared<const TextIndex>(ids);
  return table;
}

std::shared_ptr<const ClipTable> TableOf(const std::string& path) {
  return CallScope::Remember<ClipTable>(path, [&path] { return ReadClipTable(path); });
}

}  // namespace

std::shared_ptr<const Material> FindMaterial(const std::string& root,
                                             std::string_view essenceFile) {
  const std::string path = foundation::JoinPath(root, "MEDIAPRO.XML");
  const auto record =
      CallScope::Remember<MaterialUris>(path, [&path] { return ReadMaterialUris(path); });
  if (const auto exact = record->fileNames.find(std::string(essenceFile));
      exact != record->fileNames.end() && !essenceFile.empty()) {
    return {record->list, &record->list->Materials()[exact->second]};
  }
  const auto index = record->uris->FirstContaining(essenceFile);
  if (!index) return nullptr;
  return {record->list, &record->list->Materials()[*index]};
}

std::shared_ptr<const std::vector<IndexedClip>> IndexedClips(const std::string& path) {
  const auto table = TableOf(path);
  if (!table->readable) return nullptr;
  return {table, &table->clips};
}

std::shared_ptr<const IndexedClip> FindIndexedClip(const std::string& path, std::string_view key) {
  const auto table = TableOf(path);
  const std::string folder(foundation::FileName(foundation::ParentFolder(key)));
  if (const auto exact = table->byId.find(folder); exact != table->byId.end() && !folder.empty()) {
    return {table, &table->clips[exact->second]};
  }
  const auto index = table->ids->FirstContainedIn(key);
  if (!index) return nullptr;
  return {table, &table->clips[*index]};
}

}  // namespace Sorvik::xdcam
