// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Localizer.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/tarnwick/Catalogue.h"

namespace tarnwick::config {
namespace {

constexpr std::string_view kNoLanguage = "x-default";

// "de_DE.UTF-8@euro" and a list "de_DE:de" give "de-DE".
std::string TagOfLocale(std::string_view locale) {
  std::string tag(locale.substr(0, locale.find_first_of(".@:")));
  std::replace(tag.begin(), tag.end(), '_', '-');
  return tag == "C" || tag == "POSIX" ? std::string() : tag;
}

std::string TagOfEnvironment() {
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return TagOfLocale(value);
  }
  return {};
}

// A tag becomes part of a path, so nothing but a tag's own characters is taken.
bool IsTag(std::string_view tag) {
  return !tag.empty() && std::all_of(tag.begin(), tag.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
  });
}

std::string OwnCatalogueFolder() {
  return Hestra::MakeStdString(filesupport::commondirs::ResourcesDir()) + "/locale";
}

// "de-DE" is looked for as de-DE, de_DE and de.
Catalogue LoadCatalogue(const std::string& folder, const std::string& tag) {
  if (!IsTag(tag)) return {};
  std::string underscored = tag;
  std::replace(underscored.begin(), underscored.end(), '-', '_');
  for (const std::string& name : {tag, underscored, tag.substr(0, tag.find('-'))}) {
    Catalogue catalogue = Catalogue::FromFile(folder + "/" + name + "/sorvik.mo");
    if (!catalogue.Empty()) return catalogue;
  }
  return {};
}

// What the localiser was told, and the catalogue that it last used. The lock is held for a moment;
// a catalogue is read from disk once for each language.
struct State {
  std::mutex mutex;
  std::string language;  // as set by the host
  std::string folder;    // as set by the host
  std::string loadedTag;
  std::string loadedFolder;
  std::shared_ptr<const Catalogue> catalogue;
};

State& GetState() {
  static State state;
  return state;
}

std::string CurrentTag() {
  State& state = GetState();
  const std::lock_guard lock(state.mutex);
  return state.language.empty() ? TagOfEnvironment() : state.language;
}

std::shared_ptr<const Catalogue> CurrentCatalogue() {
  State& state = GetState();
  const std::lock_guard lock(state.mutex);
  const std::string tag = state.language.empty() ? TagOfEnvironment() : state.language;
  const std::string folder = state.folder.empty() ? OwnCatalogueFolder() : state.folder;
  if (!state.catalogue || state.loadedTag != tag || state.loadedFolder != folder) {
    state.catalogue = std::make_shared<const Catalogue>(LoadCatalogue(folder, tag));
    state.loadedTag = tag;
    state.loadedFolder = folder;
  }
  return state.catalogue;
}

}  // namespace

Localizer& Localizer::Get() {
  static Localizer localizer;
  return localizer;
}

std::string Localizer::GetUTF8String(std::string_view key) const {
  const auto equals = key.find('=');
  if (equals == key.npos) return std::string(key);
  const std::string_view text = key.substr(equals + 1);
  return CurrentCatalogue()->Find(key.substr(0, equals), text).value_or(std::string(text));
}

UTF16String Localizer::GetString(std::string_view key) const {
  return Hestra::MakeString(GetUTF8String(key));
}

void Localizer::SetLanguage(std::string_view tag) {
  State& state = GetState();
  const std::lock_guard lock(state.mutex);
  state.language = tag;
}

void Localizer::SetCatalogueFolder(std::string_view folder) {
  State& state = GetState();
  const std::lock_guard lock(state.mutex);
  state.folder = folder;
}

}  // namespace tarnwick::config

namespace Hestra {

UTF16String GetLanguageString() {
  const std::string tag = tarnwick::config::CurrentTag();
  return MakeString(tag.empty() ? tarnwick::config::kNoLanguage : std::string_view(tag));
}

}  // namespace Hestra
