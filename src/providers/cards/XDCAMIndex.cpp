// SPDX-License-Identifier: MIT
#include "providers/cards/XDCAMIndex.h"

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

struct MaterialUris {
  std::shared_ptr<const MediaProfile> list;
  std::shared_ptr<const TextIndex> uris;
};

MaterialUris ReadMaterialUris(const std::string& path) {
  auto list = MediaProfile::Of(path);
  std::vector<std::string> uris;
  for (const Material& material : list->Materials()) uris.push_back(material.uri);
  return {std::move(list), std::make_shared<const TextIndex>(uris)};
}

struct ClipTable {
  bool readable = false;
  std::vector<IndexedClip> clips;
  std::shared_ptr<const TextIndex> ids;
};

// In 16-bit code units. The id is the name of a folder, and names aren't longer.
constexpr std::size_t kMaxClipIdLength = 255;

void AddFileOf(XercesElement element, IndexedClip& clip) {
  std::string file;
  GetElementAttribute(element, "file", file);
  if (!file.empty() && clip.files.size() < kMaxFilesOfClip) clip.files.push_back(std::move(file));
}

IndexedClip ReadClip(XercesElement element) {
  IndexedClip clip;
  GetElementAttribute(element, "clipId", clip.clipId);
  if (foundation::CountCodeUnits(clip.clipId) > kMaxClipIdLength) clip.clipId.clear();
  AddFileOf(element, clip);
  for (const char* name : {"subStream", "rtmeta"}) AddFileOf(FindChildElement(element, name), clip);
  for (const char* name : {"meta", "audio"}) {
    for (XercesElement child = FindChildElement(element, name); child;
         child = FindNextSiblingElement(child, name)) {
      AddFileOf(child, clip);
    }
  }
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
  const auto index = table->ids->FirstContainedIn(key);
  if (!index) return nullptr;
  return {table, &table->clips[*index]};
}

}  // namespace Sorvik::xdcam
