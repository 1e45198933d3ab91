// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Commands.h"
#include "Failure.h"
#include "FileGroups.h"
#include "Json.h"
#include "OfflineCatalogue.h"
#include "Paths.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "Table.h"
#include "Values.h"

namespace host {
namespace {

using Hestra::UTF16String;

struct Owner {
  UTF16String entryKey;
  UTF16String folderPath;
  UTF16String providerId;
  Sorvik::FieldValueMap fields;
  std::string typedFields;  // from a catalogue: a JSON object
  std::string error;        // why there is no result; empty on success
};

// False for a file that no entry owns, whose provider is that of plain folders or none.
bool IsOfCard(const UTF16String& providerId) {
  const auto& providers = Sorvik::ProviderHost::GetAllProviders();
  return std::ranges::any_of(providers, [&providerId](const Sorvik::ProviderWrapper* provider) {
    return Hestra::MakeString(provider->GetIdentification()) == providerId &&
           !provider->ShouldCheckFilter();
  });
}

Owner FindOwner(const std::string& path, bool clipsOnly) {
  Owner owner;
  const UTF16String file = Hestra::MakeString(path);
  const auto find = clipsOnly ? Sorvik::GetRelatedFilesWithoutExtraFiles : Sorvik::GetRelatedFiles;
  owner.fields = find(file, owner.entryKey, owner.folderPath, owner.providerId);
  // A missing file can still belong to a clip.
  if (owner.entryKey != file || IsOfCard(owner.providerId)) return owner;
  if (!Exists(path)) {
    owner.error = DescribePathError(path, "cannot access");
  } else if (!clipsOnly && AddFileGroup(path, owner.fields)) {
    owner.entryKey = Hestra::MakeString(*owner.fields[Sorvik::kPathField].get_if<std::string>());
  } else {
    owner.error = "belongs to no clip";
  }
  return owner;
}

void WriteJson(Output& output, const Owner& owner) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("path");
  json.String(owner.folderPath);
  json.Key("provider");
  json.String(owner.providerId);
  json.Key("key");
  json.String(owner.entryKey);
  json.Key("fields");
  if (owner.typedFields.empty()) {
    json.Fields(owner.fields);
  } else {
    json.Json(owner.typedFields);
  }
  json.EndObject();
}

Sorvik::FieldLabelMap LabelsOf(const std::string& providerId) {
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    if (provider->GetIdentification() == providerId) return provider->GetFieldLabelList();
  }
  return {};
}

void WriteText(Output& output, const Owner& owner) {
  Table table({"", ""});
  table.Add({Translated("$$$/Sorvik/Column/Key=Key"), Hestra::MakeStdString(owner.entryKey)});
  table.Add(
      {Translated("$$$/Sorvik/Column/Folder=Folder"), Hestra::MakeStdString(owner.folderPath)});
  table.Add(
      {Translated("$$$/Sorvik/Column/Provider=Provider"), Hestra::MakeStdString(owner.providerId)});
  table.Write(output);
  output.Write("\n");
  WriteFieldLines(output, LabelsOf(Hestra::MakeStdString(owner.providerId)), {Sorvik::kNameField},
                  owner.fields);
}

Owner FindOwnerInCatalogue(Context& context, const std::string& path) {
  const auto [card, file] = FindCataloguedFile(context, path);
  const std::string& key = file.owners.front();
  const auto clip = std::ranges::find(card.clips, key, &Sorvik::CataloguedCard::Clip::key);
  Owner owner;
  owner.entryKey = Hestra::MakeString(key);
  owner.folderPath = Hestra::MakeString(card.path);
  owner.providerId = Hestra::MakeString(card.identification);
  owner.typedFields = clip == card.clips.end() ? "{}" : clip->fields;
  return owner;
}

void RunOne(Context& context, const std::string& file) {
  const std::string path = ResolvePath(file);
  context.session.GetProgress().Begin("looking");
  const bool clipsOnly = context.options.clipsOnly;
  const Owner owner = context.options.catalog.empty()
                          ? context.session.OnWorker<Owner>(
                                [path, clipsOnly] { return FindOwner(path, clipsOnly); })
                          : FindOwnerInCatalogue(context, path);
  if (!owner.error.empty()) throw Failure(kFailed, path, owner.error + NearbyCard(context, path));
  if (context.options.json) {
    WriteJson(context.output, owner);
  } else {
    WriteText(context.output, owner);
  }
}

}  // namespace

int RunOwner(Context& context) {
  return ForEachOperand(context, context.options.operands,
                        [&](const std::string& file) { RunOne(context, file); });
}

}  // namespace host
