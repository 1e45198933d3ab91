// SPDX-License-Identifier: MIT
// Base class of the clip providers: all fields of the field table are available, entries are files,
// and file type filters don't apply.
#pragma once

#include <string>

#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

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

 protected:
  // The height of the static pictures and icons of most structures.
  static constexpr int kIconHeight = 16;

  struct Facts {
    const char* identification;
    const char* uiString;  // localised in GetUIString()
    FieldNameList defaultFields;
    FieldNameSet labelFields;  // fields with a label
    int maxThumbnailHeight = kIconHeight;
  };
  explicit ClipProvider(Facts facts);

 private:
  const Facts facts_;
};

}  // namespace Sorvik
