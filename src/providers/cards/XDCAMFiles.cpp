// SPDX-License-Identifier: MIT
#include "providers/cards/XDCAMFiles.h"

#include <memory>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "providers/cards/XDCAMIndex.h"

namespace Sorvik::xdcam {
namespace {

using formats::sony::Material;
using formats::sony::MaterialPart;
using foundation::CardFolder;
using foundation::ExistsOnCard;
using foundation::FileName;
using foundation::JoinPath;
using foundation::Lookup;
using foundation::ParentFolder;

using Paths = std::vector<std::string>;

void AddPathIfExists(std::string path, Paths& paths) {
  if (ExistsOnCard(path, Lookup::kListing)) paths.push_back(std::move(path));
}

void Append(Paths more, Paths& paths) {
  for (std::string& path : more) paths.push_back(std::move(path));
}

Paths PathsIn(const CardFolder& folder, const std::vector<std::string>& names) {
  Paths paths;
  paths.reserve(names.size());
  for (const std::string& name : names) paths.push_back(folder.PathOf(name));
  return paths;
}

Paths FilesIn(const std::string& path) {
  const auto folder = CardFolder::Of(path);
  return PathsIn(*folder, folder->Files());
}

Paths VisibleFilesIn(const std::string& path) {
  const auto folder = CardFolder::Of(path);
  return PathsIn(*folder, folder->VisibleFiles());
}

Paths VisibleFilesBelow(const std::string& path) {
  Paths files = foundation::ListFilesBelow(path);
  std::erase_if(files, foundation::IsHidden);
  return files;
}

// A uri of the material list as a path relative to the root: without a leading "." and separators.
std::string_view CleanRelativeUri(std::string_view uri) {
  if (uri.starts_with('.')) uri.remove_prefix(1);
  while (uri.starts_with(platform::kSeparator)) uri.remove_prefix(1);
  return uri;
}

std::shared_ptr<const Material> MaterialOf(const std::string& root, const std::string& xmlPath) {
  return FindMaterial(root, FileName(EssenceForClipXml(xmlPath, Lookup::kListing)));
}

// The XMP sidecar of a clip XML, or that of the clip's essence; empty if there is none.
std::string SidecarForClipXml(const std::string& xmlPath) {
  const auto end = xmlPath.rfind(kClipXmlEnd);
  if (end == xmlPath.npos) return {};
  for (std::string path : {xmlPath.substr(0, end) + "M01.XMP",
                           EssenceForClipXml(xmlPath, Lookup::kListing) + ".XMP"}) {
    if (ExistsOnCard(path, Lookup::kListing)) return path;
  }
  return {};
}

// The planning files; if there are none, the deepest existing folder of their path.
void AddPlanning(const std::string& root, Paths& paths) {
  const std::string general = JoinPath(root, "General");
  const std::string sony = JoinPath(general, "Sony");
  const std::string planning = JoinPath(sony, "Planning");
  if (ExistsOnCard(planning, Lookup::kListing)) {
    Paths files = FilesIn(planning);
    if (files.empty()) files.push_back(planning);
    return Append(std::move(files), paths);
  }
  for (const std::string& folder : {sony, general}) {
    if (!ExistsOnCard(folder, Lookup::kListing)) continue;
    paths.push_back(folder);
    return;
  }
}

// The part of the list that is the same for all clips of a medium.
struct DiscPaths {
  Paths paths;
};

DiscPaths ListDisc(const std::string& root) {
  Paths paths;
  for (const char* name :
       {"INDEX.XML", "MEDIAPRO.XML", "DISCMETA.XML", "ALIAS.XML", "SYSPRO.XML"}) {
    AddPathIfExists(JoinPath(root, name), paths);
  }
  Append(FilesIn(JoinPath(root, "Edit")), paths);
  for (const char* name : {"CUEUP.XML", "Edit", "Sub"}) {
    AddPathIfExists(JoinPath(root, name), paths);
  }
  AddPlanning(root, paths);
  for (const char* name : {"UserData", "Take"}) AddPathIfExists(JoinPath(root, name), paths);
  return {std::move(paths)};
}

void AddMaterialFiles(const std::string& root, const Material& material, Paths& paths) {
  std::size_t infos = 0;
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo) continue;
    if (++infos > kMaxFilesOfClip) break;
    const auto path = PathOfUri(root, part.uri);
    if (!path) continue;
    AddPathIfExists(*path, paths);
    if (part.type != "XML") continue;
    if (std::string sidecar = SidecarForClipXml(*path); !sidecar.empty()) {
      paths.push_back(std::move(sidecar));
    }
  }
  if (const MaterialPart* proxy = material.First(MaterialPart::Kind::kProxy)) {
    if (const auto path = PathOfUri(root, proxy->uri)) AddPathIfExists(*path, paths);
  }
}

// Adds `files`, or the folder itself if there are none.
void AddFilesOrFolder(Paths files, const std::string& folder, Paths& paths) {
  if (files.empty()) return AddPathIfExists(folder, paths);
  Append(std::move(files), paths);
}

// The part of the list that is the same for all clips of a medium.
struct ProavPaths {
  Paths paths;
};

ProavPaths ListProav(const std::string& root) {
  Paths paths;
  const std::string proav = JoinPath(root, kProav);
  const std::string general = JoinPath(root, "General");
  AddFilesOrFolder(VisibleFilesBelow(general), general, paths);
  for (const char* name :
       {"DISCINFO.BUP", "DISCINFO.XML", "INDEX.BUP", "DISCMETA.XML", "INDEX.XML"}) {
    AddPathIfExists(JoinPath(proav, name), paths);
  }
  for (const char* name : {"EDTR", "USERDATA"}) {
    const std::string folder = JoinPath(proav, name);
    AddFilesOrFolder(VisibleFilesIn(folder), folder, paths);
  }
  return {std::move(paths)};
}

void AddClipFilesFromIndex(const std::string& root, const std::string& xmlPath, Paths& paths) {
  const std::string proav = JoinPath(root, kProav);
  const auto clip = FindIndexedClip(JoinPath(proav, "INDEX.XML"), xmlPath);
  if (!clip) return;
  const std::string folder = JoinPath(JoinPath(proav, kClpr), clip->clipId);
  for (const IndexedFile& file : clip->files) {
    std::string path = JoinPath(folder, file.name);
    if (foundation::IsInside(path, root)) AddPathIfExists(std::move(path), paths);
  }
}

}  // namespace

bool HasClipFolder(const std::string& root) {
  return foundation::IsValidPath(root) && platform::KindOf(JoinPath(root, kClipFolder));
}

std::optional<std::string> PathOfUri(const std::string& root, std::string_view uri) {
  std::string path = JoinPath(root, CleanRelativeUri(uri));
  if (!foundation::IsInside(path, root)) return std::nullopt;
  return path;
}

bool IsInDiscLayout(std::string_view xmlPath) {
  return FileName(ParentFolder(xmlPath)) == kClipFolder;
}

std::string EssenceForClipXml(std::string_view xmlPath, Lookup lookup) {
  const auto end = xmlPath.rfind(kClipXmlEnd);
  if (end == xmlPath.npos) return {};
  const std::string stem(xmlPath.substr(0, end));
  if (IsInDiscLayout(xmlPath)) return stem + ".MXF";
  std::string video = stem + "V01.MXF";
  return ExistsOnCard(video, lookup) ? video : stem + "A01.MXF";
}

std::optional<std::string> ProxyPathOf(const std::string& root, const std::string& xmlPath) {
  const auto material = MaterialOf(root, xmlPath);
  if (!material) return std::nullopt;
  const MaterialPart* proxy = material->First(MaterialPart::Kind::kProxy);
  return proxy == nullptr ? std::nullopt : PathOfUri(root, proxy->uri);
}

std::optional<ClipFiles> DiscExtraPaths(const std::string& root, const std::string& xmlPath) {
  const auto material = MaterialOf(root, xmlPath);
  if (!material) return std::nullopt;
  const auto disc =
      foundation::CallScope::Remember<DiscPaths>(root, [&root] { return ListDisc(root); });
  ClipFiles files{disc->paths, material->title};
  AddMaterialFiles(root, *material, files.extraPaths);
  return files;
}

std::vector<std::string> ProavExtraPaths(const std::string& root, const std::string& xmlPath) {
  const auto proav =
      foundation::CallScope::Remember<ProavPaths>(root, [&root] { return ListProav(root); });
  Paths paths = proav->paths;
  AddClipFilesFromIndex(root, xmlPath, paths);
  return paths;
}

}  // namespace Sorvik::xdcam
