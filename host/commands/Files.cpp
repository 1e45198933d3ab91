// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "FileGroups.h"
#include "Json.h"
#include "Keys.h"
#include "OfflineCatalogue.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::CardFile;
using Sorvik::CardFindings;
using Sorvik::ContentMap;
using Sorvik::FieldValueMap;
using Sorvik::Finding;

const Sorvik::FieldNameList kPathFields = {Sorvik::kPathField, Sorvik::kExtraPathField,
                                           Sorvik::kProxyPathField};

// Paths without duplicates, in the order in which they are added.
class FileList {
 public:
  void Add(const std::string& path) {
    if (seen_.insert(path).second) files_.push_back(path);
  }
  std::vector<std::string> Take() { return std::move(files_); }

 private:
  std::set<std::string> seen_;
  std::vector<std::string> files_;
};

void WriteFiles(Context& context, const std::string& root, std::vector<std::string> files) {
  Output& output = context.output;
  if (context.options.relative) {
    for (std::string& file : files) file = RelativePath(file, root);
  }
  if (context.options.json) {
    JsonWriter(output).Strings(files);
    return;
  }
  const bool zero = context.options.zero;
  for (const std::string& file : files) {
    output.Write(zero ? file : output.Shown(file));
    output.Write(zero ? std::string_view("\0", 1) : "\n");
  }
}

// Adds the files of the card that a copy needs. Returns false if something can't be read, so that
// the list may be incomplete.
bool AddCard(Context& context, const std::string& path, const CardFindings& card, FileList& list) {
  for (const CardFile& file : card.files) {
    const bool isBelow = RelativePath(file.path, path) != file.path;
    if (file.isPartOfCopy && (isBelow || context.options.allCards)) list.Add(file.path);
  }
  if (context.options.dirs) {
    for (const std::string& folder : card.emptyFolders) list.Add(folder);
  }
  bool readable = true;
  for (const Finding& finding : card.findings) {
    if (finding.kind != Finding::Kind::kUnreadable) continue;
    readable = false;
    WriteError(finding.path + ": cannot read (" + finding.detail + ")");
  }
  return readable;
}

// Writes the existing files of entries. Returns kFailed if a share with some of them doesn't
// answer.
int WriteFilesOfEntries(Context& context, const std::string& path, const ContentMap& content) {
  const auto& stop = context.session.Stopped();
  const auto found = context.session.OnWorker<Sorvik::EntryFiles>([&path, &content, &stop] {
    return Sorvik::FindEntryFiles(path, AllPaths(content), [&stop] { return stop.load(); });
  });
  std::vector<std::string> files;
  for (const Sorvik::EntryFile& file : found.files) files.push_back(file.path);
  WriteFiles(context, path, std::move(files));
  for (const std::string& file : found.unreachable) {
    WriteError(file + ": cannot access (the network share doesn't answer)");
  }
  return found.unreachable.empty() ? kDone : kFailed;
}

// The fields of the group of a loose file; empty if there is none, or if a card owns the file.
FieldValueMap GroupOf(Context& context, const std::string& file) {
  return context.session.OnWorker<FieldValueMap>([file] {
    FieldValueMap fields;
    if (!AddFileGroup(file, fields)) return fields;
    const Hestra::UTF16String path = Hestra::MakeString(file);
    Hestra::UTF16String key, folder, provider;
    Sorvik::GetRelatedFilesWithoutExtraFiles(path, key, folder, provider);
    return key == path ? fields : FieldValueMap();
  });
}

int WriteFilesOfCatalogue(Context& context, const std::string& path) {
  const auto cards = CataloguedCards(context, path);
  const std::vector<std::string>& operands = context.options.operands;
  FileList list;
  if (operands.size() > 1) {
    const auto [card, key] = FindCataloguedClip(cards, path, operands[1]);
    for (const CardFile& file : card->findings.files) {
      if (std::ranges::count(file.owners, key) > 0) list.Add(file.path);
    }
    WriteFiles(context, path, list.Take());
    return kDone;
  }
  bool readable = true;
  for (const Sorvik::CataloguedCard& card : cards) {
    readable = AddCard(context, card.path, card.findings, list) && readable;
  }
  WriteFiles(context, path, list.Take());
  return readable ? kDone : kFailed;
}

}  // namespace

int RunFiles(Context& context) {
  const std::vector<std::string>& operands = context.options.operands;
  const std::string path = ResolvePath(operands[0]);
  if (!context.options.catalog.empty()) return WriteFilesOfCatalogue(context, path);
  if (operands.size() > 1) {
    const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
    const std::string key = FindKey(context, provider, path, operands[1]);
    ContentMap content{{key, ReadEntry(context, provider, path, key, kPathFields)}};
    if (!IsStructure(provider)) content.emplace("", GroupOf(context, path + "/" + key));
    return WriteFilesOfEntries(context, path, content);
  }
  if (FieldValueMap group = GroupOf(context, path); !group.empty()) {
    const std::string folder = path.substr(0, path.rfind('/'));
    return WriteFilesOfEntries(context, folder, {{"", std::move(group)}});
  }
  const CardsOfPath found = CardsFor(context, path);
  const std::vector<Sorvik::FoundCard>& cards = found.cards;
  if (cards.empty()) {
    const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
    const int code =
        WriteFilesOfEntries(context, path, ListEntries(context, provider, path, kPathFields));
    return std::max(code, ReportUnreadable(context, found.unreadableFolders));
  }
  FileList list;
  bool readable = true;
  for (const Sorvik::FoundCard& card : cards) {
    const CardFindings findings =
        context.session.Check(card.path, card.identification, Sorvik::CheckDepth::kNames);
    readable = AddCard(context, card.path, findings, list) && readable;
  }
  for (const CardFile& file :
       MediumFiles(context, path, cards, Sorvik::MediumFileScope::kStructure)) {
    list.Add(file.path);
  }
  WriteFiles(context, path, list.Take());
  const int code = ReportUnreadable(context, found.unreadableFolders);
  return readable ? code : kFailed;
}

}  // namespace host
