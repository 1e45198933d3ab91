// SPDX-License-Identifier: MIT
#include "c/Operations.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>
#include <utility>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/cardtools/Catalogue.h"
#include "SorvikProvider/cardtools/ClipPicture.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/MachineValues.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "SorvikProvider/metadata/ValueSources.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/ShareAccess.h"
#include "thumbnails/OwnedBitplate.h"

namespace Sorvik::c {
namespace {

// True for "provider.name.ProviderP2" and "ProviderP2", in any case.
bool IsNamed(const std::string& identification, const std::string& name) {
  const std::string_view last =
      std::string_view(identification).substr(identification.rfind('.') + 1);
  return foundation::EqualIgnoringCase(identification, name) ||
         foundation::EqualIgnoringCase(last, name);
}

const ProviderWrapper* FindProvider(const std::string& name) {
  for (const ProviderWrapper* provider : ProviderHost::GetAllProviders()) {
    if (IsNamed(provider->GetIdentification(), name)) return provider;
  }
  return nullptr;
}

Outcome UnknownProvider(const Place& place) {
  return {SORVIK_INVALID_ARGUMENT, place.path, "unknown provider '" + place.provider + "'"};
}

// Why `path` can't be read; SORVIK_OK if it can, and for the browse roots.
Outcome AccessProblem(const std::string& path) {
  if (!path.starts_with(platform::kSeparator)) return {};
  const platform::ShareScope shares(path);
  const std::string error = platform::ReadError(path);
  if (error.empty()) return {};
  const auto is = [&error](int number) { return error == std::generic_category().message(number); };
  const bool missing = is(ENOENT) || is(ENOTDIR) || is(ENAMETOOLONG);
  return {missing ? SORVIK_MISSING : SORVIK_UNREADABLE, path, error};
}

Outcome NoProvider(const std::string& path, const char* text) {
  Outcome problem = AccessProblem(path);
  return problem.Ok() ? Outcome{SORVIK_NO_PROVIDER, path, text} : problem;
}

Outcome NoEntry(const Place& place, const std::string& key) {
  Outcome problem = AccessProblem(place.path);
  return problem.Ok() ? Outcome{SORVIK_NO_ENTRY, place.path, "no entry '" + key + "'"} : problem;
}

std::unique_ptr<sorvik_card> MakeCard(const std::string& path, const ProviderWrapper& provider,
                                      int score) {
  auto card = std::make_unique<sorvik_card>();
  *card = {path, provider.GetIdentification(), provider.GetUIString(), score};
  return card;
}

FieldNameSet FieldsOf(const ProviderWrapper& provider, const FieldChoice& choice) {
  FieldNameSet fields = choice.names;
  if (choice.defaults || choice.all) {
    for (const std::string& name : provider.GetDefaultFieldList()) fields.insert(name);
  }
  if (choice.all) fields.merge(provider.GetFieldList());
  return fields;
}

std::unique_ptr<sorvik_listing> MakeListing(const std::string& path,
                                            const ProviderWrapper& provider, ContentMap content) {
  return std::make_unique<sorvik_listing>(path, provider.GetIdentification(), std::move(content),
                                          &provider);
}

// Calls `receive` with each card until it returns false.
void ForEachFoundCard(TaskRequest& request, const std::string& path,
                      const std::function<bool(const FoundCard&, const ProviderWrapper&)>& receive,
                      SearchDirection direction) {
  const auto receiveFound = [&](const FoundCard& found) {
    const ProviderWrapper* provider = FindProvider(found.identification);
    return provider == nullptr || receive(found, *provider);
  };
  ForEachCard(path, direction, receiveFound, &request);
}

// Adds the paths that a field holds: a text or a list of texts.
void AddPaths(const FieldValueMap& fields, const char* name, std::vector<std::string>& paths) {
  const auto field = fields.find(name);
  if (field == fields.end()) return;
  if (const auto* text = field->second.get_if<std::string>()) paths.push_back(*text);
  if (const auto* list = field->second.get_if<std::vector<any_regular_t>>()) {
    for (const any_regular_t& item : *list) {
      if (const auto* text = item.get_if<std::string>()) paths.push_back(*text);
    }
  }
}

FieldNameSet PathFields() { return {kPathField, kExtraPathField, kProxyPathField}; }

// The existing files of the entries of a place that isn't a card.
std::vector<CardFile> FilesOfEntries(const std::string& path, const ContentMap& content,
                                     TaskRequest& request) {
  std::map<std::string, std::vector<std::string>> owners;
  std::vector<std::string> paths;
  for (const auto& [key, fields] : content) {
    std::vector<std::string> own;
    for (const char* name : {kPathField, kExtraPathField, kProxyPathField}) {
      AddPaths(fields, name, own);
    }
    for (std::string& file : own) {
      owners[file].push_back(key);
      paths.push_back(std::move(file));
    }
  }
  std::vector<CardFile> files;
  const auto found = FindEntryFiles(path, paths, [&request] { return request.TestAborted(); });
  for (const EntryFile& file : found.files) {
    files.push_back({file.path, CardFileRole::kClip, file.bytes, {}, owners[file.path]});
  }
  return files;
}

bool Contains(const std::vector<std::string>& keys, const std::string& key) {
  return key.empty() || std::ranges::find(keys, key) != keys.end();
}

std::unique_ptr<sorvik_files> FilesOfCard(CardFindings findings, const std::string& key) {
  std::erase_if(findings.files,
                [&key](const CardFile& file) { return !Contains(file.owners, key); });
  auto files = std::make_unique<sorvik_files>(std::move(findings.files));
  for (const Finding& finding : findings.findings) {
    // The path of a finding is the id of a clip if the place of the clip is unknown.
    if (finding.kind != Finding::Kind::kMissing || !foundation::IsValidPath(finding.path)) continue;
    if (Contains(finding.entryKeys, key)) files->AddMissing(finding);
  }
  return files;
}

}  // namespace

Outcome Open(TaskRequest& request, const Place& place, sorvik_open_mode mode) {
  if (Outcome problem = AccessProblem(place.path); problem.status == SORVIK_MISSING) return problem;
  bool found = false;
  if (mode == SORVIK_OPEN_NEARBY && place.provider.empty()) {
    const auto receive = [&](const FoundCard& card, const ProviderWrapper& provider) {
      found = request.Send(MakeCard(card.path, provider, card.score));
      return false;
    };
    ForEachFoundCard(request, place.path, receive, SearchDirection::kNearby);
    if (found || request.TestAborted()) return {};
  }
  for (const ProviderWrapper* provider : ProviderHost::GetProviderList(place.path)) {
    if (!place.provider.empty() && !IsNamed(provider->GetIdentification(), place.provider))
      continue;
    request.Send(MakeCard(place.path, *provider, provider->CanProvideFor(place.path)));
    return {};
  }
  if (place.provider.empty()) return NoProvider(place.path, "no provider for this path");
  if (FindProvider(place.provider) == nullptr) return UnknownProvider(place);
  return NoProvider(place.path, "not supported by this provider");
}

Outcome List(TaskRequest& request, const Place& place, const FieldChoice& fields) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const platform::ShareScope shares(place.path);
  const MachineValueScope typed;
  ContentMap content = provider->GetContent(place.path, FieldsOf(*provider, fields), &request);
  if (content.empty()) {
    if (Outcome problem = AccessProblem(place.path); !problem.Ok()) return problem;
  }
  request.Send(MakeListing(place.path, *provider, std::move(content)));
  return {};
}

Outcome ReadEntry(TaskRequest& request, const Place& place, const std::string& key,
                  const FieldChoice& fields) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const platform::ShareScope shares(place.path);
  const MachineValueScope typed;
  ContentMap content = provider->GetContent(place.path, key, FieldsOf(*provider, fields));
  if (!content.contains(key)) return NoEntry(place, key);
  request.Send(MakeListing(place.path, *provider, std::move(content)));
  return {};
}

Outcome ListFiles(TaskRequest& request, const Place& place, const std::string& key) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const std::string identification = provider->GetIdentification();
  std::unique_ptr<sorvik_files> files;
  if (CanCheckCard(place.path, identification)) {
    files = FilesOfCard(CheckCard(place.path, identification, CheckDepth::kNames, &request), key);
  } else {
    const platform::ShareScope shares(place.path);
    const ContentMap content = key.empty()
                                   ? provider->GetContent(place.path, PathFields(), &request)
                                   : provider->GetContent(place.path, key, PathFields());
    files = std::make_unique<sorvik_files>(FilesOfEntries(place.path, content, request));
  }
  files->Complete();
  if (files->files.empty()) {
    if (Outcome problem = AccessProblem(place.path); !problem.Ok()) return problem;
  }
  request.Send(std::move(files));
  return {};
}

Outcome ReadSources(TaskRequest& request, const Place& place, const std::string& key) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const platform::ShareScope shares(place.path);
  FieldChoice all;
  all.all = true;
  const ContentMap content = provider->GetContent(place.path, key, FieldsOf(*provider, all));
  const auto entry = content.find(key);
  if (entry == content.end()) return NoEntry(place, key);
  std::vector<std::string> paths;
  AddPaths(entry->second, kPathField, paths);
  XMPSupport::SourcedValueMap sources;
  if (!paths.empty()) sources = XMPSupport::GetValueSources(paths.front());
  XMPSupport::AddProviderValues(entry->second, sources);
  request.Send(std::make_unique<sorvik_sources>(std::move(sources)));
  return {};
}

Outcome ListParts(TaskRequest& request, const Place& place, const std::string& key) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  ShotParts shot = GetShotParts(place.path, provider->GetIdentification(), key, &request);
  if (shot.parts.empty()) return NoEntry(place, key);
  request.Send(std::make_unique<sorvik_parts>(std::move(shot)));
  return {};
}

Outcome Join(TaskRequest& request, const Place& place, const std::string& key,
             const JoinOptions& options) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  JoinResult joined =
      MakeJoinLists(place.path, provider->GetIdentification(), key, options, &request);
  if (joined.status == JoinStatus::kDone) {
    request.Send(std::make_unique<sorvik_join_lists>(std::move(joined)));
    return {};
  }
  if (joined.status == JoinStatus::kNoEntry) return NoEntry(place, key);
  if (Outcome problem = AccessProblem(place.path); !problem.Ok()) return problem;
  return {SORVIK_FAILED, joined.problem.path, joined.problem.text};
}

Outcome Check(TaskRequest& request, const Place& place, CheckDepth depth) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const std::string identification = provider->GetIdentification();
  if (!CanCheckCard(place.path, identification)) {
    return NoProvider(place.path, "not a camera card or clip folder");
  }
  CardFindings findings = CheckCard(place.path, identification, depth, &request);
  request.Send(std::make_unique<sorvik_report>(place.path, identification, std::move(findings)));
  return {};
}

Outcome FindOwner(TaskRequest& request, const std::string& path) {
  UTF16String key;
  UTF16String folder;
  UTF16String identification;
  const UTF16String file = Hestra::MakeString(path);
  FieldValueMap fields = GetRelatedFiles(file, key, folder, identification);
  // A missing file can still belong to a clip. Without an owning clip the file must exist.
  if (key == file) {
    if (Outcome problem = AccessProblem(path); problem.status == SORVIK_MISSING) return problem;
  }
  const std::string provider = Hestra::MakeStdString(identification);
  if (provider.empty()) return NoProvider(path, "no entry owns this file");
  ContentMap content;
  content.emplace(Hestra::MakeStdString(key), std::move(fields));
  request.Send(std::make_unique<sorvik_listing>(Hestra::MakeStdString(folder), provider,
                                                std::move(content), FindProvider(provider)));
  return {};
}

namespace {

Outcome SendPicture(TaskRequest& request, const Place& place, const std::string& key,
                    Bitplate** picture) {
  const OwnedBitplate plate(picture);
  if (!plate) {
    Outcome problem = AccessProblem(place.path);
    return problem.Ok() ? Outcome{SORVIK_NO_PICTURE, place.path, "no picture of '" + key + "'"}
                        : problem;
  }
  request.Send(std::make_unique<sorvik_picture>(plate.get()));
  return {};
}

}  // namespace

Outcome RenderThumbnail(TaskRequest& request, const Place& place, const std::string& key, int width,
                        int height) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  const platform::ShareScope shares(place.path);
  return SendPicture(request, place, key,
                     provider->GetThumbnail(place.path, key, width, height, &request));
}

Outcome RenderPicture(TaskRequest& request, const Place& place, const std::string& key, int width,
                      int height) {
  const ProviderWrapper* provider = FindProvider(place.provider);
  if (provider == nullptr) return UnknownProvider(place);
  return SendPicture(
      request, place, key,
      RenderClipPicture(place.path, provider->GetIdentification(), key, width, height, &request));
}

namespace {

// Sends the listing of a card, or a problem if it can't be listed.
void SendListing(TaskRequest& request, const Place& place, const FieldChoice& fields) {
  Outcome outcome;
  try {
    outcome = List(request, place, fields);
  } catch (...) {
    outcome = DescribeException();
  }
  if (outcome.Ok()) return;
  auto problem = std::make_unique<sorvik_event>();
  outcome.path = place.path;
  problem->outcome = std::move(outcome);
  problem->isProblem = true;
  request.Send(std::move(problem));
}

}  // namespace

Outcome Scan(TaskRequest& request, const std::string& path, unsigned flags,
             const FieldChoice& fields) {
  bool found = false;
  const auto receive = [&](const FoundCard& card, const ProviderWrapper& provider) {
    found = true;
    if (!request.Send(MakeCard(card.path, provider, card.score))) return false;
    if ((flags & SORVIK_SCAN_ENTRIES) != 0) {
      SendListing(request, {card.path, card.identification}, fields);
    }
    return !request.TestAborted();
  };
  const bool isNearby = (flags & SORVIK_SCAN_NEARBY) != 0;
  ForEachFoundCard(request, path, receive,
                   isNearby ? SearchDirection::kNearby : SearchDirection::kDeep);
  return found ? Outcome() : NoProvider(path, "no card found");
}

Outcome WriteCatalogueLines(const std::vector<std::string>& paths,
                            const std::function<bool(std::string_view)>& receive,
                            const std::function<bool()>& isStopped) {
  CatalogueOptions options;
  options.tool = std::string("sorvik ") + sorvik_version();
  const CatalogueResult result = WriteCatalogue(paths, options, receive, isStopped);
  if (result.aborted) return {SORVIK_ABORTED, {}, "aborted"};
  if (result.cards != 0 || paths.empty()) return {};
  return NoProvider(paths.front(), "no card found");
}

}  // namespace Sorvik::c
