// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Environment.h"

#include <map>
#include <utility>

#include "foundation/Published.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/tarnwick/Catalogue.h"

namespace {

using Hestra::UTF16String;
namespace PathUtils = Hestra::PathUtils;

// Everything that a host may set.
struct Settings {
  UTF16String resources;
  std::map<std::string, UTF16String, std::less<>> directories;
  std::map<int, std::set<UTF16String>> importable{
      {Fenwold::ImportableFileTypeUtils::kVideoFileTypes,
       {u"3GP",  u"ARI", u"ASF", u"AVI", u"CRM", u"DNG", u"DV",   u"FLV",  u"M2T",
        u"M2TS", u"M2V", u"M4V", u"MKV", u"MOV", u"MP4", u"MPE",  u"MPEG", u"MPG",
        u"MTS",  u"MXF", u"R3D", u"RMF", u"TS",  u"VOB", u"WEBM", u"WMV"}}};
};

// Never destroyed: workers may still read it while the process exits.
Sorvik::foundation::Published<Settings>& GetSettings() {
  static auto& settings = *new Sorvik::foundation::Published<Settings>;
  return settings;
}

// In a build tree the resources are next to the library; in an installation at a relative path that
// was set at build time.
UTF16String FindOwnResources() {
  const UTF16String library =
      PathUtils::ToNormalizedPath(Hestra::MakeString(Sorvik::platform::OwnLibraryPath()));
  const UTF16String folder = PathUtils::GetDirectoryPart(library);
  const UTF16String ofBuildTree = folder + u"resources";
  if (PathUtils::IsDirectory(ofBuildTree)) return ofBuildTree;
  return PathUtils::ToNormalizedPath(folder +
                                     tarnwick::utility::AsciiToUTF16(SORVIK_INSTALLED_RESOURCES));
}

}  // namespace

namespace tarnwick::filesupport::commondirs {

UTF16String ResourcesDir() {
  // Never destroyed: workers may still use it while the process exits.
  static const UTF16String& own = *new UTF16String(FindOwnResources());
  const UTF16String& set = GetSettings().Get().resources;
  return set.empty() ? own : set;
}

void SetResourcesDir(std::u16string_view folder) {
  GetSettings().Update([folder](Settings& settings) {
    settings.resources = PathUtils::RemoveTrailingSlash(folder);
  });
  config::ReloadCatalogue();
}

}  // namespace tarnwick::filesupport::commondirs

namespace Hestra::DirectoryRegistry {

UTF16String FindDirectory(std::string_view name) {
  const auto& directories = GetSettings().Get().directories;
  if (const auto found = directories.find(name); found != directories.end()) return found->second;
  if (name != "document.templates") return {};
  return tarnwick::filesupport::commondirs::ResourcesDir() + u"/templates/";
}

void RegisterDirectory(std::string_view name, std::u16string_view folder) {
  GetSettings().Update([name, folder](Settings& settings) {
    settings.directories.insert_or_assign(std::string(name), PathUtils::AddTrailingSlash(folder));
  });
}

}  // namespace Hestra::DirectoryRegistry

namespace Fenwold::ImportableFileTypeUtils {

void GetImportableFileExtensions(int kind, std::set<Hestra::UTF16String>& extensions) {
  const auto& importable = GetSettings().Get().importable;
  const auto found = importable.find(kind);
  extensions = found == importable.end() ? std::set<UTF16String>() : found->second;
}

void SetImportableFileExtensions(int kind, std::set<Hestra::UTF16String> extensions) {
  GetSettings().Update([kind, &extensions](Settings& settings) {
    settings.importable.insert_or_assign(kind, std::move(extensions));
  });
}

}  // namespace Fenwold::ImportableFileTypeUtils
