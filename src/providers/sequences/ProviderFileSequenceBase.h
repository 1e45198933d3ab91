// SPDX-License-Identifier: MIT
// The common base of the providers for cameras that write a clip as a folder of one-frame files. A
// folder with at least one frame is a clip; the first frame in order of 16-bit code units, the
// head, stands for it. Numbers in names mean nothing here and gaps are no fault.
#pragma once

#include <optional>
#include <string>
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

  // True if the folder holds a frame. `hasForeignFiles` is part of the shape that providers of
  // structures share; a folder of frames is never held against what else lies in it.
  virtual bool ContainsSequence(const UTF16String& folder, bool& hasForeignFiles) const;
  // The path and the name of the folder's head, at most one of each. `paths` is emptied first,
  // `names` is handed in empty.
  virtual void GetSequence(const UTF16String& folder, std::vector<UTF16String>& paths,
                           std::vector<UTF16String>& names) const;
  // Whether a file of that name is a frame.
  virtual bool IsSequenceFile(const UTF16String& name) const = 0;
  // Sets ExtraPath to the files that belong to the clip of `filePath`: all frames, and in derived
  // classes the sidecars behind them. Leaves `fields` alone if the folder can't be listed.
  virtual void AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const;

 protected:
  ProviderFileSequenceBase(const char* identification, const char* uiString);

  using PathValues = std::vector<any_regular_t>;

  // Every frame beside `filePath`, itself included: the files whose extension is the same
  // regardless of case, hidden ones too. Nothing if its folder is none.
  static std::optional<PathValues> ListFrames(const std::string& filePath);
  static void AddIfExists(PathValues& values, const UTF16String& path);
  // Whether the extension of `name`, its dot included, folds to `folded`.
  static bool HasExtension(const UTF16String& name, std::u16string_view folded);
};

}  // namespace Sorvik
