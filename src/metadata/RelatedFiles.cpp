// SPDX-License-Identifier: MIT
#include "SorvikProvider/metadata/RelatedFiles.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderWrapper.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik {
namespace {

namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::AsciiToUTF16;
using tarnwick::utility::FoldCase;

constexpr int kMaxFolders = 4;
constexpr int kScorePlainDirectory = 30;
constexpr char kDirectoryProvider[] = "com.halvane.Merisk.WinProviderDirectory";

struct Owner {
  std::string entryKey;
  std::string folder;
  std::string providerId;
  FieldValueMap fields;
};

// Returns the parent folder; empty for a root.
UTF16String GetParentFolder(const UTF16String& path) {
  UTF16String drive;
  UTF16String folder;
  UTF16String title;
  PathUtils::SplitPath(PathUtils::RemoveTrailingSlash(PathUtils::Win::StripUNC(path)), drive,
                       folder, title);
  if (title.empty()) return {};
  return PathUtils::ToNormalizedPath(PathUtils::RemoveTrailingSlash(drive + folder));
}

// Whether the entry contains the file whose case-folded path is `target`. The entry's path is
// normalised first; extra paths are compared unmodified.
bool Matches(const FieldValueMap& fields, const UTF16String& target, bool withExtraFiles) {
  if (const auto path = fields.find(kPathField); path != fields.end()) {
    const auto* text = path->second.get_if<std::string>();
    if (text != nullptr &&
        FoldCase(PathUtils::ToNormalizedPath(Hestra::MakeString(*text))) == target) {
      return true;
    }
  }
  if (!withExtraFiles) return false;
  const auto extra = fields.find(kExtraPathField);
  if (extra == fields.end()) return false;
  bool found = false;
  extra->second.for_each_item([&](const any_regular_t& item) {
    const auto* text = found ? nullptr : item.get_if<std::string>();
    found = found || (text != nullptr && FoldCase(Hestra::MakeString(*text)) == target);
  });
  return found;
}

std::optional<Owner> ScanFolder(const std::vector<ProviderWrapper*>& providers,
                                const std::string& folder, const FieldNameSet& fieldSet,
                                const UTF16String& target) {
  for (const ProviderWrapper* provider : providers) {
    if (provider->CanProvideFor(folder) == kScorePlainDirectory) continue;
    const ContentMap content = provider->GetContent(folder, fieldSet, nullptr);
    for (const auto& [key, fields] : content) {
      if (Matches(fields, target, fieldSet.contains(kExtraPathField))) {
        return Owner{key, folder, provider->GetIdentification(), fields};
      }
    }
  }
  return std::nullopt;
}

// Searches the structures of the parent folders. Plain folders are skipped without a listing.
std::optional<Owner> SearchParents(const UTF16String& path, const FieldNameSet& fieldSet) {
  UTF16String current = PathUtils::ToNormalizedPath(path);
  const UTF16String target = FoldCase(current);
  for (int level = 0; level < kMaxFolders; ++level) {
    current = GetParentFolder(current);
    if (current.empty()) return std::nullopt;
    const std::string folder = Hestra::MakeStdString(current);
    const std::vector<ProviderWrapper*> providers = ProviderHost::GetProviderList(folder);
    if (providers.empty()) return std::nullopt;
    if (providers.front()->CanProvideFor(folder) <= kScorePlainDirectory) continue;
    if (auto owner = ScanFolder(providers, folder, fieldSet, target)) return owner;
  }
  return std::nullopt;
}

// Returns the directory provider's ExtraPath of the file; nullopt if it doesn't list the file.
std::optional<any_regular_t> SidecarOf(const UTF16String& path) {
  const auto& all = ProviderHost::GetAllProviders();
  const auto directory = std::find_if(all.begin(), all.end(), [](const ProviderWrapper* provider) {
    return provider->GetIdentification() == kDirectoryProvider;
  });
  if (directory == all.end()) return std::nullopt;
  const ContentMap content =
      (*directory)
          ->GetContent(Hestra::MakeStdString(GetParentFolder(PathUtils::ToNormalizedPath(path))),
                       Hestra::MakeStdString(PathUtils::GetFullFilePart(path)),
                       FieldNameSet{kExtraPathField});
  if (content.empty()) return std::nullopt;
  const FieldValueMap& fields = content.begin()->second;
  const auto extra = fields.find(kExtraPathField);
  return extra == fields.end() ? any_regular_t() : extra->second;
}

// The result for a file that no structure claims, with the path as passed by the caller.
FieldValueMap PlainFileResult(const UTF16String& path, UTF16String& entryKey,
                              UTF16String& folderPath) {
  FieldValueMap fields;
  fields[kNameField] = any_regular_t(Hestra::MakeStdString(PathUtils::GetFullFilePart(path)));
  fields[kPathField] = any_regular_t(Hestra::MakeStdString(path));
  entryKey = path;
  folderPath = PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(path));
  return fields;
}

FieldValueMap OwnerResult(Owner owner, UTF16String& entryKey, UTF16String& folderPath,
                          UTF16String& providerId) {
  entryKey = Hestra::MakeString(owner.entryKey);
  folderPath = Hestra::MakeString(owner.folder);
  providerId = Hestra::MakeString(owner.providerId);
  return std::move(owner.fields);
}

}  // namespace

FieldValueMap GetRelatedFiles(const UTF16String& path, UTF16String& entryKey,
                              UTF16String& folderPath, UTF16String& providerId) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(Hestra::MakeStdString(path));
  if (auto owner = SearchParents(path, {kNameField, kPathField, kExtraPathField})) {
    return OwnerResult(std::move(*owner), entryKey, folderPath, providerId);
  }
  FieldValueMap fields = PlainFileResult(path, entryKey, folderPath);
  if (auto sidecar = SidecarOf(path)) fields[kExtraPathField] = std::move(*sidecar);
  providerId = AsciiToUTF16(kDirectoryProvider);
  return fields;
}

FieldValueMap GetRelatedFilesWithoutExtraFiles(const UTF16String& path, UTF16String& entryKey,
                                               UTF16String& folderPath, UTF16String& providerId) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(Hestra::MakeStdString(path));
  if (auto owner = SearchParents(path, {kNameField, kPathField})) {
    return OwnerResult(std::move(*owner), entryKey, folderPath, providerId);
  }
  return PlainFileResult(path, entryKey, folderPath);
}

}  // namespace Sorvik
