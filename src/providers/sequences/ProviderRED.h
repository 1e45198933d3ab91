// SPDX-License-Identifier: MIT
// A folder of RED clips: it has one folder for each clip (".RDC") with the numbered segments of the
// recording (".R3D") and their sidecars. Both extensions are case-sensitive.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderRED final : public ClipProvider,
                          public CardChecker,
                          public PartLister,
                          public FileGrouper {
 public:
  ProviderRED();
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // The segments of a clip, with files of its name.
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;

 private:
  static bool IsClipSegment(std::string_view name);
  // The first visible segment of each subfolder of `folder`, as a path.
  static std::vector<std::string> GetClips(const std::string& folder,
                                           ProviderRequest* request = nullptr);
  static bool ContainsClips(const std::string& folder, bool& hasForeignFiles);
  // Sets ExtraPath to the other files of the clip folder whose titles begin with the folder's
  // title.
  static void AddClipFiles(FieldValueMap& fields, const std::string& filePath);
};

}  // namespace Sorvik
