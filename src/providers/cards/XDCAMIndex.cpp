// SPDX-License-Identifier: MIT
#include "providers/cards/XDCAMIndex.h"

#include <utility>

#include "formats/XercesDocument.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/PathUtils.h"

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

MaterialUris ReadMaterialUris(const UTF16String& path) {
  auto list = MediaProfile::Of(path);
  std::vector<UTF16String> uris;
  for (const Material& material : list->Materials()) uris.push_back(material.uri);
  return {std::move(list), std::make_shared<const TextIndex>(std::move(uris))};
}

struct ClipTable {
  bool readable = false;
  std::vector<IndexedClip> clips;
  std::shared_ptr<const TextIndex> ids;
};

// A folder bears the id, and no longer name can be one.
constexpr std::size_t kMaxClipIdLength = 255;

void AddFileOf(XercesElement element, IndexedClip& clip) {
  UTF16String file;
  GetElementAttribute(element, u"file", file);
  if (!file.empty() && clip.files.size() < kMaxFilesOfClip) clip.files.push_back(std::move(file));
}

IndexedClip ReadClip(XercesElement element) {
  IndexedClip clip;
  GetElementAttribute(element, u"clipId", clip.clipId);
  if (clip.clipId.size() > kMaxClipIdLength) clip.clipId.clear();
  AddFileOf(element, clip);
  for (const char16_t* name : {u"subStream", u"rtmeta"}) {
    AddFileOf(FindChildElement(element, name), clip);
  }
  for (const char16_t* name : {u"meta", u"audio"}) {
    for (XercesElement child = FindChildElement(element, name); child;
         child = FindNextSiblingElement(child, name)) {
      AddFileOf(child, clip);
    }
  }
  return clip;
}

ClipTable ReadClipTable(const UTF16String& path) {
  ClipTable table;
  std::vector<UTF16String> ids;
  if (const auto document = XercesDocument::ReadFile(path)) {
    const XercesElement element = FindChildElement(document->Root(), u"clipTable");
    table.readable = static_cast<bool>(element);
    for (XercesElement clip = FindChildElement(element, u"clip"); clip;
         clip = FindNextSiblingElement(clip, u"clip")) {
      table.clips.push_back(ReadClip(clip));
      ids.push_back(table.clips.back().clipId);
    }
  }
  table.ids = std::make_shared<const TextIndex>(std::move(ids));
  return table;
}

std::shared_ptr<const ClipTable> TableOf(const UTF16String& path) {
  return CallScope::Remember<ClipTable>(Hestra::MakeStdString(path),
                                        [&path] { return ReadClipTable(path); });
}

}  // namespace

std::shared_ptr<const Material> FindMaterial(const UTF16String& root,
                                             std::u16string_view essenceFile) {
  const UTF16String path = Hestra::PathUtils::CombinePaths(root, u"MEDIAPRO.XML");
  const auto record = CallScope::Remember<MaterialUris>(Hestra::MakeStdString(path),
                                                        [&path] { return ReadMaterialUris(path); });
  const auto place = record->uris->FirstHolding(essenceFile);
  if (!place) return nullptr;
  return {record->list, &record->list->Materials()[*place]};
}

std::shared_ptr<const std::vector<IndexedClip>> IndexedClips(const UTF16String& path) {
  const auto table = TableOf(path);
  if (!table->readable) return nullptr;
  return {table, &table->clips};
}

std::shared_ptr<const IndexedClip> FindIndexedClip(const UTF16String& path,
                                                   std::u16string_view key) {
  const auto table = TableOf(path);
  const auto place = table->ids->FirstHeldBy(key);
  if (!place) return nullptr;
  return {table, &table->clips[*place]};
}

}  // namespace Sorvik::xdcam
