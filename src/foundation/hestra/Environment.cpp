// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Environment.h"

#include <map>
#include <mutex>
#include <utility>

#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"

namespace {

using Hestra::UTF16String;
namespace PathUtils = Hestra::PathUtils;

// All that a host may set. Read on any thread, so a lock guards it for the moment of a copy.
struct Settings {
  std::mutex mutex;
  UTF16String resources;
  std::map<std::string, UTF16String, std::less<>> directories;
  std::map<int, std::set<UTF16String>> importable{
      {Fenwold::ImportableFileTypeUtils::kVideoFileTypes,
       {u"3GP",  u"ARI", u"ASF", u"AVI", u"CRM", u"DNG", u"DV",   u"FLV",  u"M2T",
        u"M2TS", u"M2V", u"M4V", u"MKV", u"MOV", u"MP4", u"MPE",  u"MPEG", u"MPG",
        u"MTS",  u"MXF", u"R3D", u"RMF", u"TS",  u"VOB", u"WEBM", u"WMV"}}};
};

Settings& GetSettings() {
  static Settings settings;
  return settings;
}

// In a build tree the resources lie beside the library; installed, where the build was told that
// they would be.
UTF16String FindOwnResources() {
  const UTF16String library =
      PathUtils::ToNormalizedPath(Hestra::MakeString(Sorvik::platform::OwnLibraryPath()));
  const UTF16String folder = PathUtils::GetDirectoryPart(library);
  const UTF16String beside = folder + u"resources";
  if (PathUtils::IsDirectory(beside)) return beside;
  return PathUtils::ToNormalizedPath(folder +
                                     tarnwick::utility::AsciiToUTF16(SORVIK_INSTALLED_RESOURCES));
}

}  // namespace

namespace tarnwick::filesupport::commondirs {

UTF16String ResourcesDir() {
  static const UTF16String own = FindOwnResources();
  Settings& settings = GetSettings();
  const std::lock_guard lock(settings.mutex);
  return settings.resources.empty() ? own : settings.resources;
}

void SetResourcesDir(std::u16string_view folder) {
  Settings& settings = GetSettings();
  const std::lock_guard lock(settings.mutex);
  settings.resources = PathUtils::RemoveTrailingSlash(folder);
}

}  // namespace tarnwick::filesupport::commondirs

namespace Hestra::DirectoryRegistry {

UTF16String FindDirectory(std::string_view name) {
  Settings& settings = GetSettings();
  {
    const std::lock_guard lock(settings.mutex);
    const auto found = settings.directories.find(name);
    if (found != settings.directories.end()) return found->second;
  }
  if (name != "document.templates") return {};
  return tarnwick::filesupport::commondirs::ResourcesDir() + u"/templates/";
}

void RegisterDirectory(std::string_view name, std::u16string_view folder) {
  Settings& settings = GetSettings();
  const std::lock_guard lock(settings.mutex);
  settings.directories.insert_or_assign(std::string(name), PathUtils::AddTrailingSlash(folder));
}

}  // namespace Hestra::DirectoryRegistry

namespace Fenwold::ImportableFileTypeUtils {

void GetImportableFileExtensions(int kind, std::set<Hestra::UTF16String>& extensions) {
  Settings& settings = GetSettings();
  const std::lock_guard lock(settings.mutex);
  const auto found = settings.importable.find(kind);
  extensions = found == settings.importable.end() ? std::set<UTF16String>() : found->second;
}

void SetImportableFileExtensions(int kind, std::set<Hestra::UTF16String> extensions) {
  Settings& settings = GetSettings();
  const std::lock_guard lock(settings.mutex);
  settings.importable.insert_or_assign(kind, std::move(extensions));
}

}  // namespace Fenwold::ImportableFileTypeUtils
