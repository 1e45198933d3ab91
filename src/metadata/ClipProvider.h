// SPDX-License-Identifier: MIT
// What the providers of clips have in common: any row of the field table can be asked for, entries
// are files, and no filter of file types applies to them.
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
  // The height of the fixed pictures and icons of most structures.
  static constexpr int kIconHeight = 16;

  struct Facts {
    const char* identification;
    const char* uiString;  // localised when it is asked for
    FieldNameList defaultFields;
    FieldNameSet labelFields;  // those that have a label
    int tallestThumbnail = kIconHeight;
  };
  explicit ClipProvider(Facts facts);

 private:
  const Facts facts_;
};

}  // namespace Sorvik
