// SPDX-License-Identifier: MIT
#include "filesystem/DirectoryFields.h"

#include <algorithm>
#include <string_view>

#include "foundation/platform/FolderView.h"

namespace Sorvik {

namespace attribute = platform::attribute;

constexpr std::array<DirectoryField, kDirectoryFieldCount> kDirectoryFields = {{
    {"Name", "$$$/Ortlane/Provider/WinDirectory/Column/Name=Name", DirectoryValue::kName},
    {"Path", "$$$/Ortlane/Provider/WinDirectory/Column/ActualPath=UNC Path", DirectoryValue::kPath},
    {"ExtraPath", "$$$/Ortlane/Provider/WinDirectory/Column/ExtraPath=Additional UNC Path",
     DirectoryValue::kExtraPath},
    {"02", "$$$/Ortlane/Provider/WinDirectory/Column/DisplayFilePath=File Path",
     DirectoryValue::kDisplayPath},
    {"03", "$$$/Ortlane/Provider/WinDirectory/Column/Archive=Archive", DirectoryValue::kAttribute,
     attribute::kArchive, "A"},
    {"04", "$$$/Ortlane/Provider/WinDirectory/Column/Compressed=Compressed",
     DirectoryValue::kAttribute, attribute::kCompressed, "C"},
    {"05", "$$$/Ortlane/Provider/WinDirectory/Column/Device=Device", DirectoryValue::kAttribute,
     attribute::kDevice, "Device"},
    {"06", "$$$/Ortlane/Provider/WinDirectory/Column/Directory=Directory",
     DirectoryValue::kAttribute, attribute::kDirectory, "D"},
    {"07", "$$$/Ortlane/Provider/WinDirectory/Column/Encrypted=Encrypted",
     DirectoryValue::kAttribute, attribute::kEncrypted, "Encrypted"},
    {"08", "$$$/Ortlane/Provider/WinDirectory/Column/Hidden=Hidden", DirectoryValue::kAttribute,
     attribute::kHidden, "H"},
    {"09", "$$$/Ortlane/Provider/WinDirectory/Column/NormalFile=Normal File",
     DirectoryValue::kAttribute, attribute::kNormal, "Normal"},
    {"10", "$$$/Ortlane/Provider/WinDirectory/Column/NotContentIndexed=Not Content Indexed",
     DirectoryValue::kAttribute, attribute::kNotIndexed, "Not Content Indexed"},
    {"11", "$$$/Ortlane/Provider/WinDirectory/Column/Offline=Offline", DirectoryValue::kAttribute,
     attribute::kOffline, "Offline"},
    {"12", "$$$/Ortlane/Provider/WinDirectory/Column/ReadOnly=Read Only",
     DirectoryValue::kAttribute, attribute::kReadOnly, "R"},
    {"13", "$$$/Ortlane/Provider/WinDirectory/Column/ReparsePoint=Reparse Point",
     DirectoryValue::kAttribute, attribute::kLink, "Reparse Point"},
    {"14", "$$$/Ortlane/Provider/WinDirectory/Column/SparseFile=Sparse File",
     DirectoryValue::kAttribute, attribute::kSparse, "Sparse File"},
    {"15", "$$$/Ortlane/Provider/WinDirectory/Column/System=System", DirectoryValue::kAttribute,
     attribute::kSystem, "S"},
    {"16", "$$$/Ortlane/Provider/WinDirectory/Column/Temporary=Temporary",
     DirectoryValue::kAttribute, attribute::kTemporary, "Temporary"},
    {"18", "$$$/Ortlane/Provider/WinDirectory/Column/AlternativeFileName=Alternative File Name",
     DirectoryValue::kShortName},
    {"19", "$$$/Ortlane/Provider/WinDirectory/Column/CreationDate=Date Created",
     DirectoryValue::kCreated},
    {"20", "$$$/Ortlane/Provider/WinDirectory/Column/LastAccessDate=Date Last Accessed",
     DirectoryValue::kAccessed},
    {"21", "$$$/Ortlane/Provider/WinDirectory/Column/LastWriteDate=Date Last Written",
     DirectoryValue::kWritten},
    {"26", "$$$/Ortlane/Provider/WinDirectory/Column/Size=Size", DirectoryValue::kSize},
}};

DirectoryFieldChoice::DirectoryFieldChoice(const FieldNameSet& wanted) {
  for (const DirectoryField& field : kDirectoryFields) {
    if (wanted.contains(field.name)) fields_.push_back(&field);
  }
  std::sort(fields_.begin(), fields_.end(), [](const DirectoryField* a, const DirectoryField* b) {
    return std::string_view(a->name) < std::string_view(b->name);
  });
}

bool DirectoryFieldChoice::Has(DirectoryValue value) const noexcept {
  return std::any_of(fields_.begin(), fields_.end(),
                     [&](const DirectoryField* field) { return field->value == value; });
}

bool DirectoryFieldChoice::NeedsFacts() const noexcept {
  return std::any_of(fields_.begin(), fields_.end(), [](const DirectoryField* field) {
    return field->value >= DirectoryValue::kAttribute;
  });
}

bool DirectoryFieldChoice::NeedsTarget() const noexcept {
  return Has(DirectoryValue::kName) || Has(DirectoryValue::kPath) ||
         Has(DirectoryValue::kDisplayPath);
}

}  // namespace Sorvik
