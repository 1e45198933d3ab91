// SPDX-License-Identifier: MIT
#include <set>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;

const Sorvik::FieldNameList kPathFields = {Sorvik::kPathField, Sorvik::kExtraPathField,
                                           Sorvik::kProxyPathField};

// The files to copy without duplicates, in the order of the entries.
class FileList {
 public:
  void Add(const std::string& path) {
    if (seen_.insert(path).second) files_.push_back(path);
  }
  void AddEntry(const Sorvik::FieldValueMap& entry) {
    for (const std::string& path : EntryPaths(entry)) {
      // Clips of a card share most of their paths; each is examined once.
      if (examined_.insert(path).second && IsRegularFile(path)) Add(path);
    }
  }
  void AddFolders(const Sorvik::FieldValueMap& entry, const std::atomic<bool>& stop) {
    for (const std::string& path : FieldTexts(entry, Sorvik::kExtraPathField)) {
      if (!folders_.insert(path).second || !IsFolder(path)) continue;
      WalkFiles(path, stop, [this](const std::string& file) { Add(file); });
    }
  }
  std::vector<std::string> Take() { return std::move(files_); }

 private:
  std::set<std::string> examined_;
  std::set<std::string> seen_;
  std::set<std::string> folders_;
  std::vector<std::string> files_;
};

// With `folders` also the files below the folders that the entries list.
std::vector<std::string> FilesOfAllEntries(const std::vector<ContentMap>& contents, bool folders,
                                           const std::atomic<bool>& stop) {
  FileList list;
  for (const ContentMap& content : contents) {
    for (const auto& [key, entry] : content) list.AddEntry(entry);
    for (const auto& [key, entry] : content) {
      if (folders) list.AddFolders(entry, stop);
    }
  }
  return list.Take();
}

void WriteFiles(Context& context, const std::vector<std::string>& files) {
  Output& output = context.output;
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

}  // namespace

int RunFiles(Context& context) {
  const std::vector<std::string>& operands = context.options.operands;
  const std::string path = ResolvePath(operands[0]);
  const bool single = operands.size() > 1;
  std::vector<ContentMap> contents;
  if (single) {
    const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
    contents.push_back(
        {{operands[1], ReadEntry(context, provider, path, operands[1], kPathFields)}});
  } else {
    for (const Sorvik::FoundCard& card : CardsFor(context, path)) {
      contents.push_back(ListEntries(context, ProviderOf(card), card.path, kPathFields));
    }
    if (contents.empty()) {
      contents.push_back(ListEntries(context, ChooseProvider(context, path), path, kPathFields));
    }
  }
  // Examining the files can take as long as the listing.
  context.session.GetProgress().Begin("looking for files");
  const auto& stop = context.session.Stopped();
  WriteFiles(context, context.session.OnWorker<std::vector<std::string>>(
                          [contents = std::move(contents), single, &stop] {
                            return FilesOfAllEntries(contents, !single, stop);
                          }));
  return kDone;
}

}  // namespace host
