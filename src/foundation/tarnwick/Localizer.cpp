// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Localizer.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/Published.h"
#include "foundation/tarnwick/Catalogue.h"

namespace tarnwick::config {
namespace {

constexpr std::string_view kNoLanguage = "x-default";

// Converts "de_DE.UTF-8@euro" to "de-DE".
std::string TagOfLocale(std::string_view locale) {
  std::string tag(locale.substr(0, locale.find_first_of(".@")));
  std::replace(tag.begin(), tag.end(), '_', '-');
  return tag == "C" || tag == "POSIX" ? std::string() : tag;
}

// The languages of a list such as "de_AT:de:fr", by preference. Empty items are skipped; C and
// POSIX, which select the default texts, are empty tags.
std::vector<std::string> TagsOfList(std::string_view list) {
  std::vector<std::string> tags;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    if (end != 0) tags.push_back(TagOfLocale(list.substr(0, end)));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return tags;
}

std::vector<std::string> TagsOfEnvironment() {
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr) continue;
    auto tags = TagsOfList(value);
    if (!tags.empty()) return tags;
  }
  return {};
}

// The tag becomes part of a path, so only the characters of language tags are accepted.
bool IsTag(std::string_view tag) {
  return !tag.empty() && std::all_of(tag.begin(), tag.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
  });
}

std::string OwnCatalogueFolder() {
  return Hestra::MakeStdString(filesupport::commondirs::ResourcesDir()) + "/locale";
}

// Tries the folders de-DE, de_DE and de for the tag "de-DE".
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

// Returns the catalogue of the first language that has one. The default texts are English.
Catalogue LoadFirstCatalogue(const std::string& folder, const std::vector<std::string>& tags) {
  for (const std::string& tag : tags) {
    Catalogue catalogue = LoadCatalogue(folder, tag);
    if (!catalogue.Empty()) return catalogue;
    if (tag.empty() || tag == "en" || tag.starts_with("en-")) break;
  }
  return {};
}

struct State {
  std::string language;  // as set by the host
  std::string folder;    // as set by the host
  std::string tag;       // of the current language; empty if there is none
  std::shared_ptr<const Catalogue> catalogue;
};

void Load(State& state) {
  const std::vector<std::string> tags =
      state.language.empty() ? TagsOfEnvironment() : std::vector<std::string>{state.language};
  state.tag = tags.empty() ? std::string() : tags.front();
  const std::string folder = state.folder.empty() ? OwnCatalogueFolder() : state.folder;
  state.catalogue = std::make_shared<const Catalogue>(LoadFirstCatalogue(folder, tags));
}

// Never destroyed: workers may still read it while the process exits.
Sorvik::foundation::Published<State>& GetState() {
  static auto& state = *[] {
    State initial;
    Load(initial);
    return new Sorvik::foundation::Published<State>(std::move(initial));
  }();
  return state;
}

}  // namespace

Localizer& Localizer::Get() {
  static Localizer localizer;
  GetState();
  return localizer;
}

void ReloadCatalogue() { GetState().Update(Load); }

std::string Localizer::GetUTF8String(std::string_view key) const {
  const auto equals = key.find('=');
  if (equals == key.npos) return std::string(key);
  const std::string_view text = key.substr(equals + 1);
  const Catalogue& catalogue = *GetState().Get().catalogue;
  return catalogue.Find(key.substr(0, equals), text).value_or(std::string(text));
}

UTF16String Localizer::GetString(std::string_view key) const {
  return Hestra::MakeString(GetUTF8String(key));
}

void Localizer::SetLanguage(std::string_view tag) {
  GetState().Update([tag](State& state) {
    state.language = tag;
    Load(state);
  });
}

void Localizer::SetCatalogueFolder(std::string_view folder) {
  GetState().Update([folder](State& state) {
    state.folder = folder;
    Load(state);
  });
}

}  // namespace tarnwick::config

namespace Hestra {

UTF16String GetLanguageString() {
  const std::string& tag = tarnwick::config::GetState().Get().tag;
  return MakeString(tag.empty() ? tarnwick::config::kNoLanguage : std::string_view(tag));
}

}  // namespace Hestra
