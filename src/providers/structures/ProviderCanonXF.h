// SPDX-License-Identifier: MIT
// A Canon XF card: CONTENTS/CLIPS001 has a folder for each clip, with one MXF file for each span of
// the recording and sidecars next to them. One entry for each clip; its key is the title of its
// first span.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "frame/FileGrouper.h"
#include "frame/PartLister.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderCanonXF final : public ClipProvider,
                              public CardChecker,
                              public PartLister,
                              public FileGrouper {
 public:
  ProviderCanonXF();
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  // Ignores an abort of the request.
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  void DescribeCard(const std::string& path, const ContentMap& entries,
                    CardDescription& card) const override;
  std::vector<ListedPart> ListParts(const std::string& path, const std::string& key) const override;
  // The files of a clip: those with its id, spans with two more digits.
  std::optional<FileGroup> GroupOf(const std::string& folder,
                                   const std::string& name) const override;
};

}  // namespace Sorvik
