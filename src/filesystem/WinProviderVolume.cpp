// SPDX-License-Identifier: MIT
#include "filesystem/WinProviderVolume.h"

#include <array>
#include <bitset>

#include "SorvikProvider/foundation/Localizer.h"
#include "foundation/CallScope.h"
#include "foundation/Mounts.h"

namespace Sorvik {
namespace {

using platform::Volume;
using platform::VolumeKind;

constexpr char kIdentification[] = "com.halvane.Merisk.WinProviderVolume";
constexpr char kUIString[] = "$$$/Ortlane/Libraries/Sorvik/WinVolumeUIString=Volume";
constexpr int kScoreOwnRoot = 100;

// Indices of kRows and bits of FieldMask.
enum : std::size_t { kNameBit, kPathBit, kExtraPathBit, kFieldCount };
struct Row {
  const char* const& name;
  const char* label;
};
const std::array<Row, kFieldCount> kRows = {{
    {kNameField, "$$$/Ortlane/Provider/WinVolume/Column/Name=Name"},
    {kPathField, "$$$/Ortlane/Provider/WinVolume/Column/Path=Path"},
    {kExtraPathField, "$$$/Ortlane/Provider/WinVolume/Column/ExtraPath=Additional Path"},
}};
using FieldMask = std::bitset<kFieldCount>;

FieldMask MaskOf(const FieldNameSet& fields) {
  FieldMask mask;
  for (std::size_t i = 0; i < kRows.size(); ++i) mask[i] = fields.contains(kRows[i].name);
  return mask;
}

const char* KeyOfKind(VolumeKind kind) {
  switch (kind) {
    case VolumeKind::kUnknown:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Unknown=Unknown";
    case VolumeKind::kInvalid:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Invalid=Invalid";
    case VolumeKind::kRemovable:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Removable=Removable";
    case VolumeKind::kFixed:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Fixed=Local Disk";
    case VolumeKind::kRemote:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Remote=Network";
    case VolumeKind::kOptical:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/CDROM=CD-ROM";
    case VolumeKind::kRAMDisk:
      return "$$$/Ortlane/Sorvik/WinProvider/DriveType/RAMDisk=RAM Disk";
  }
  return "$$$/Ortlane/Sorvik/WinProvider/DriveType/Error=error";
}

std::string NameOf(const Volume& volume) {
  if (volume.isNetwork && !volume.hasLocalName) return volume.remoteName;
  std::string detail = volume.isNetwork ? volume.remoteName : volume.label;
  if (detail.empty()) {
    detail = tarnwick::config::Localizer::Get().GetUTF8String(KeyOfKind(volume.kind));
  }
  return volume.mountPoint + " (" + detail + ")";
}

FieldValueMap EntryOf(const Volume& volume, const FieldMask& mask) {
  FieldValueMap entry;
  if (mask[kNameBit]) entry[kNameField] = any_regular_t(NameOf(volume));
  if (mask[kPathBit]) entry[kPathField] = any_regular_t(volume.mountPoint);
  if (mask[kExtraPathBit]) entry[kExtraPathField] = any_regular_t();
  return entry;
}

}  // namespace

ContentMap ContentOfVolumes(const std::vector<Volume>& volumes, const FieldNameSet& fields) {
  const FieldMask mask = MaskOf(fields);
  ContentMap content;
  for (const Volume& volume : volumes) {
    content.insert_or_assign(volume.mountPoint, EntryOf(volume, mask));
  }
  return content;
}

ContentMap WinProviderVolume::GetContent(const std::string& path, const std::string& key,
                                         const FieldNameSet& fields) const {
  ContentMap content = GetContent(path, fields, nullptr);
  std::erase_if(content, [&](const auto& entry) { return entry.first != key; });
  return content;
}

ContentMap WinProviderVolume::GetContent(const std::string& path, const FieldNameSet& fields,
                                         ProviderRequest*) const {
  if (path != kVolumeListPath) return {};
  const foundation::CallScope scope;
  return ContentOfVolumes(foundation::ListVolumes(), fields);
}

FieldNameSet WinProviderVolume::GetFieldList() const {
  FieldNameSet names;
  for (const Row& row : kRows) names.insert(row.name);
  return names;
}

FieldNameList WinProviderVolume::GetDefaultFieldList() const { return {kNameField, kPathField}; }

FieldLabelMap WinProviderVolume::GetFieldLabelList() const {
  FieldLabelMap labels;
  for (const Row& row : kRows) labels.emplace(row.name, row.label);
  return labels;
}

int WinProviderVolume::CanProvideFor(const std::string& path) const {
  return path == kVolumeListPath ? kScoreOwnRoot : 0;
}

std::string WinProviderVolume::GetIdentification() const { return kIdentification; }

std::string WinProviderVolume::GetUIString() const {
  return tarnwick::config::Localizer::Get().GetUTF8String(kUIString);
}

}  // namespace Sorvik
