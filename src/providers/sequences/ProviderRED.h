// SPDX-License-Identifier: MIT
// A folder of RED clips: below it, one folder for each clip (".RDC") with the numbered segments of
// the recording (".R3D") and their sidecars. Both spellings are exact.
#pragma once

#include <string>
#include <vector>

#include "frame/CardChecker.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderRED final : public ClipProvider, public CardChecker {
 public:
  ProviderRED();
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;
  Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width, int height,
                          ProviderRequest* request) const override;
  StructureFindings CheckStructure(const std::string& path) const override;

 private:
  static bool IsClipSegment(const UTF16String& name);
  // The visible segments' first in each sub-folder of `folder`, by path and by name.
  static void GetClips(const UTF16String& folder, std::vector<UTF16String>& paths,
                       std::vector<UTF16String>& names);
  static bool ContainsClips(const UTF16String& folder, bool& hasForeignFiles);
  // Sets ExtraPath to the other files of the clip folder whose titles begin with the folder's
  // title.
  static void AddClipFiles(FieldValueMap& fields, const std::string& filePath);
};

}  // namespace Sorvik
