// SPDX-License-Identifier: MIT
// The base class of the providers for cameras that write a clip as a folder of one-frame files. A
// folder with at least one frame is a clip. Its head, the first frame in order of 16-bit code
// units, represents it. Numbers in names are ignored, and so are gaps.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/ClipProvider.h"

namespace Sorvik {

class ProviderFileSequenceBase : public ClipProvider {
 public:
  ContentMap GetContent(const std::string& path, const std::string& key,
                        const FieldNameSet& fields) const override;
  ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                        ProviderRequest* request) const override;
  int CanProvideFor(const std::string& path) const override;

  // True if the folder contains a frame. Other files are never counted as foreign: sets
  // `hasForeignFiles` to false.
  virtual bool ContainsSequence(const UTF16String& folder, bool& hasForeignFiles) const;
  // The path and the name of the folder's head, at most one of each. Clears `paths`; the caller
  // passes an empty `names`.
  virtual void GetSequence(const UTF16String& folder, std::vector<UTF16String>& paths,
                           std::vector<UTF16String>& names) const;
  // True if a file of that name is a frame.
  virtual bool IsSequenceFile(const UTF16String& name) const = 0;
  // Sets ExtraPath to the files that belong to the clip of `filePath`: all frames, and in derived
  // classes the sidecars after them. Leaves `fields` unchanged if the folder can't be listed.
  virtual void AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const;

 protected:
  // `frameNames` is the pattern of the names of frames, for a search for cards.
  ProviderFileSequenceBase(const char* identification, const char* uiString,
                           std::string_view frameNames);

  using PathValues = std::vector<any_regular_t>;

  // All frames in the folder of `filePath`, itself included: the files with the same extension,
  // ignoring case, hidden ones too. nullopt if the folder can't be listed.
  static std::optional<PathValues> ListFrames(const std::string& filePath);
  // Adds `path` if it exists, whatever its kind.
  static void AddIfExists(PathValues& values, const std::string& path);
  // Compares the extension of `name` with `extension` (its dot included), ignoring case.
  static bool HasExtension(const UTF16String& name, std::string_view extension);
};

}  // namespace Sorvik
