// SPDX-License-Identifier: MIT
#include "providers/cards/XDCAMFiles.h"

#include <memory>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/cards/XDCAMIndex.h"

namespace Sorvik::xdcam {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using formats::sony::Material;
using formats::sony::MaterialPart;
using foundation::IsPresent;
using foundation::Lookup;
using PathUtils::CombinePaths;

using Paths = std::vector<UTF16String>;

void AddPathIfExists(UTF16String path, Paths& paths) {
  if (IsPresent(path, Lookup::kListing)) paths.push_back(std::move(path));
}

void Append(Paths more, Paths& paths) {
  for (UTF16String& path : more) paths.push_back(std::move(path));
}

// A uri of the material list as it hangs below the root: without a leading "." and separators.
std::u16string_view CleanRelativeUri(std::u16string_view uri) {
  if (uri.starts_with(u'.')) uri.remove_prefix(1);
  while (uri.starts_with(PathUtils::kSeparator)) uri.remove_prefix(1);
  return uri;
}

std::shared_ptr<const Material> MaterialOf(const UTF16String& root, const UTF16String& xmlPath) {
  return FindMaterial(root,
                      PathUtils::GetFullFilePart(EssenceForClipXml(xmlPath, Lookup::kListing)));
}

// The XMP beside a clip XML, or named for the clip's essence; empty if there is none.
UTF16String SidecarForClipXml(const UTF16String& xmlPath) {
  const auto end = xmlPath.rfind(kClipXmlEnd);
  if (end == xmlPath.npos) return {};
  for (UTF16String path : {xmlPath.substr(0, end) + u"M01.XMP",
                           EssenceForClipXml(xmlPath, Lookup::kListing) + u".XMP"}) {
    if (IsPresent(path, Lookup::kListing)) return path;
  }
  return {};
}

// The planning files, or the deepest folder on the way to them that is there.
void AddPlanning(const UTF16String& root, Paths& paths) {
  const UTF16String general = CombinePaths(root, u"General");
  const UTF16String sony = CombinePaths(general, u"Sony");
  const UTF16String planning = CombinePaths(sony, u"Planning");
  if (IsPresent(planning, Lookup::kListing)) {
    Paths files = Directory::GetContainedFilePaths(planning);
    if (files.empty()) files.push_back(planning);
    return Append(std::move(files), paths);
  }
  for (const UTF16String& folder : {sony, general}) {
    if (!IsPresent(folder, Lookup::kListing)) continue;
    paths.push_back(folder);
    return;
  }
}

// The part of the list that is the same for all clips of a medium.
struct DiscPaths {
  Paths paths;
};

DiscPaths ListDisc(const UTF16String& root) {
  Paths paths;
  for (const char16_t* name :
       {u"INDEX.XML", u"MEDIAPRO.XML", u"DISCMETA.XML", u"ALIAS.XML", u"SYSPRO.XML"}) {
    AddPathIfExists(CombinePaths(root, name), paths);
  }
  Append(Directory::GetContainedFilePaths(CombinePaths(root, u"Edit")), paths);
  for (const char16_t* name : {u"CUEUP.XML", u"Edit", u"Sub"}) {
    AddPathIfExists(CombinePaths(root, name), paths);
  }
  AddPlanning(root, paths);
  for (const char16_t* name : {u"UserData", u"Take"}) {
    AddPathIfExists(CombinePaths(root, name), paths);
  }
  return {std::move(paths)};
}

void AddMaterialFiles(const UTF16String& root, const Material& material, Paths& paths) {
  std::size_t infos = 0;
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo) continue;
    if (++infos > kMaxFilesOfClip) break;
    const auto path = PathOfUri(root, part.uri);
    if (!path) continue;
    AddPathIfExists(*path, paths);
    if (part.type != u"XML") continue;
    if (UTF16String sidecar = SidecarForClipXml(*path); !sidecar.empty()) {
      paths.push_back(std::move(sidecar));
    }
  }
  if (const MaterialPart* proxy = material.First(MaterialPart::Kind::kProxy)) {
    if (const auto path = PathOfUri(root, proxy->uri)) {
      AddPathIfExists(*path, paths);
    }
  }
}

// The files directly in `folder`, hidden ones left out, or the folder itself if it has none.
void AddFilesOrFolder(const UTF16String& folder, bool recursive, Paths& paths) {
  Paths files = Directory::GetContainedFilePaths(folder, {}, recursive);
  PathUtils::FilterHiddenFiles(files);
  if (files.empty()) return AddPathIfExists(folder, paths);
  Append(std::move(files), paths);
}

struct ProavPaths {
  Paths paths;
};

ProavPaths ListProav(const UTF16String& root) {
  Paths paths;
  const UTF16String proav = CombinePaths(root, kProav);
  AddFilesOrFolder(CombinePaths(root, u"General"), true, paths);
  for (const char16_t* name :
       {u"DISCINFO.BUP", u"DISCINFO.XML", u"INDEX.BUP", u"DISCMETA.XML", u"INDEX.XML"}) {
    AddPathIfExists(CombinePaths(proav, name), paths);
  }
  AddFilesOrFolder(CombinePaths(proav, u"EDTR"), false, paths);
  AddFilesOrFolder(CombinePaths(proav, u"USERDATA"), false, paths);
  return {std::move(paths)};
}

void AddClipFilesFromIndex(const UTF16String& root, const UTF16String& xmlPath, Paths& paths) {
  const UTF16String proav = CombinePaths(root, kProav);
  const auto clip = FindIndexedClip(CombinePaths(proav, u"INDEX.XML"), xmlPath);
  if (!clip) return;
  const UTF16String folder = CombinePaths(CombinePaths(proav, kClpr), clip->clipId);
  for (const UTF16String& file : clip->files) {
    UTF16String path = CombinePaths(folder, file);
    if (foundation::IsWithin(path, root)) AddPathIfExists(std::move(path), paths);
  }
}

}  // namespace

std::optional<UTF16String> PathOfUri(const UTF16String& root, std::u16string_view uri) {
  UTF16String path = CombinePaths(root, CleanRelativeUri(uri));
  if (!foundation::IsWithin(path, root)) return std::nullopt;
  return path;
}

bool IsInDiscLayout(std::u16string_view xmlPath) {
  const UTF16String folder =
      PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(xmlPath));
  return PathUtils::GetFullFilePart(folder) == kClipFolder;
}

UTF16String EssenceForClipXml(const UTF16String& xmlPath, Lookup lookup) {
  const auto end = xmlPath.rfind(kClipXmlEnd);
  if (end == xmlPath.npos) return {};
  const UTF16String stem = xmlPath.substr(0, end);
  if (IsInDiscLayout(xmlPath)) return stem + u".MXF";
  UTF16String video = stem + u"V01.MXF";
  return IsPresent(video, lookup) ? video : stem + u"A01.MXF";
}

std::optional<UTF16String> ProxyPathOf(const UTF16String& root, const UTF16String& xmlPath) {
  const auto material = MaterialOf(root, xmlPath);
  if (!material) return std::nullopt;
  const MaterialPart* proxy = material->First(MaterialPart::Kind::kProxy);
  return proxy == nullptr ? std::nullopt : PathOfUri(root, proxy->uri);
}

std::optional<ClipFiles> DiscExtraPaths(const UTF16String& root, const UTF16String& xmlPath) {
  const auto material = MaterialOf(root, xmlPath);
  if (!material) return std::nullopt;
  const auto disc = foundation::CallScope::Remember<DiscPaths>(Hestra::MakeStdString(root),
                                                               [&root] { return ListDisc(root); });
  ClipFiles files{disc->paths, material->title};
  AddMaterialFiles(root, *material, files.extraPaths);
  return files;
}

std::vector<UTF16String> ProavExtraPaths(const UTF16String& root, const UTF16String& xmlPath) {
  const auto proav = foundation::CallScope::Remember<ProavPaths>(
      Hestra::MakeStdString(root), [&root] { return ListProav(root); });
  Paths paths = proav->paths;
  AddClipFilesFromIndex(root, xmlPath, paths);
  return paths;
}

}  // namespace Sorvik::xdcam
