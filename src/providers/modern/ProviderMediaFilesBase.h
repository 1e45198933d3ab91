// SPDX-License-Identifier: MIT
// Base class of providers whose entries are media files that are connected by their names only: no
// index lists them. A derived class finds the entries; this class makes their fields and describes
// their files.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/PartLister.h"
#include "frame/Recognition.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

struct MediaFile {
  std::string path;
  const char* role;  // one of card_role
};

struct MediaEntry {
  std::string key;
  std::string name;
  // The essence, in order: the first one is the path of the entry, and durations are added.
  std::vector<std::string> parts;
  const char* partRole = card_role::kEssence;
  std::vector<MediaFile> files = {};  // all others that belong to it
  std::string camera = {};            // by the name of the clip; used if the metadata has none
};

struct MediaList {
  std::vector<MediaEntry> entries;
  std::vector<std::string> cardFiles;  // of no single entry
  bool hasForeignMedia = false;

  // The entry with that key; null if there is none.
  const MediaEntry* Find(std::string_view key) const;
};

class ProviderMediaFilesBase : public ClipProvider, public CardChecker, public PartLister {
 public:
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const final;
  // Empty if aborted.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const final;
  int CanProvideFor(const std::string& path) const final;
  // The desktop's icon for the file.
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const final;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const final;

 protected:
  using ClipProvider::ClipProvider;

  // Reads the files and folders that ListOf() needs into the call scope, until the request is
  // aborted. By default ListOf() needs none.
  virtual void ReadFiles(const std::string& /*root*/, ProviderRequest* /*request*/) const {}
  // The entries of the folder at `root`, once within a call scope. `root` has no trailing
  // separator.
  virtual std::shared_ptr<const MediaList> ListOf(const std::string& root) const = 0;
  virtual Recognition Recognize(const std::string& root) const = 0;
  // The parts of an entry, which is one of the list: by default its essence, and files in the role
  // of a span.
  virtual std::vector<ListedPart> PartsOf(const MediaList& list, const MediaEntry& entry) const;
  // Facts that aren't in the list of files.
  virtual void DescribeMore(const std::string& root, const MediaList& list,
                            CardDescription& card) const = 0;
};

}  // namespace Sorvik
