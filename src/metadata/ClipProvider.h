// SPDX-License-Identifier: MIT
// Base class of the clip providers: all fields of the field table are available, entries are files,
// and file type filters don't apply.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

// Where a search for cards finds a structure. A pattern is a name, or "*" and the end of a name;
// names are compared ignoring case (ASCII).
struct CardLayout {
  // A folder can only be the structure's root if it contains at least one of these names.
  std::vector<std::string_view> rootNames = {};
  // Folders of the root that contain nothing but the structure. Empty: only files belong to it.
  std::vector<std::string_view> ownFolders = {};
  // The identification of another provider that lists the same clips of a root.
  std::string_view alternativeTo = {};
  // Names show whether there are clips: a search needs no metadata for that.
  bool hasClipsByName = false;
};

class ClipProvider : public Provider {
 public:
  FieldNameSet GetFieldList() const final;
  FieldNameList GetDefaultFieldList() const final;
  FieldLabelMap GetFieldLabelList() const final;
  std::string GetIdentification() const final;
  std::string GetUIString() const final;
  int GetMaximumThumbnailHeight(int height) const final;
  bool ShouldCheckFilter() const final;
  bool IsFileBased() const final;

  // Valid as long as the provider.
  const CardLayout& GetLayout() const noexcept { return facts_.layout; }

 protected:
  // The height of the static pictures and icons of most structures.
  static constexpr int kIconHeight = 16;

  struct Facts {
    const char* identification;
    const char* uiString;  // localised in GetUIString()
    FieldNameList defaultFields;
    FieldNameSet labelFields;  // fields with a label
    CardLayout layout;
    int maxThumbnailHeight = kIconHeight;
  };
  explicit ClipProvider(Facts facts);

 private:
  const Facts facts_;
};

}  // namespace Sorvik
