// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderFileSequenceBase.h"

#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/Recognition.h"

namespace Sorvik {

using foundation::CardFolder;
using Hestra::MakeStdString;
using Hestra::MakeString;

ProviderFileSequenceBase::ProviderFileSequenceBase(const char* identification, const char* uiString,
                                                   std::string_view frameNames)
    : ClipProvider({.identification = identification,
                    .uiString = uiString,
                    .defaultFields = {kNameField, kPathField},
                    .labelFields = {kNameField, kPathField},
                    .layout = {.rootNames = {frameNames}}}) {}

int ProviderFileSequenceBase::CanProvideFor(const std::string& path) const {
  bool hasForeignFiles = false;
  if (!foundation::IsValidPath(path) || !ContainsSequence(MakeString(path), hasForeignFiles)) {
    return ScoreOf(Recognition::kNone);
  }
  return ScoreOf(Recognized(!hasForeignFiles));
}

bool ProviderFileSequenceBase::ContainsSequence(const UTF16String& folder,
                                                bool& hasForeignFiles) const {
  hasForeignFiles = false;
  return CardFolder::Of(MakeStdString(folder))
      ->FindVisibleFile(
          [this](const std::string& name) { return IsSequenceFile(MakeString(name)); })
      .has_value();
}

void ProviderFileSequenceBase::GetSequence(const UTF16String& folder,
                                           std::vector<UTF16String>& paths,
                                           std::vector<UTF16String>& names) const {
  paths.clear();
  const std::string path = MakeStdString(folder);
  const auto head = CardFolder::Of(path)->FindVisibleFile(
      [this](const std::string& name) { return IsSequenceFile(MakeString(name)); });
  if (!head) return;
  paths.push_back(MakeString(foundation::JoinPath(path, *head)));
  names.push_back(MakeString(*head));
}

ContentMap ProviderFileSequenceBase::GetContent(const std::string& path, const FieldNameSet& fields,
                                                ProviderRequest* request) const {
  const foundation::CallScope scope;
  ContentMap content;
  std::vector<UTF16String> paths;
  std::vector<UTF16String> names;
  GetSequence(MakeString(path), paths, names);
  const XMPSupport::XMPFieldBits bits = XMPSupport::ParseFields(fields);
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    const std::string head = MakeStdString(paths[i]);
    FieldValueMap values = XMPSupport::MakeValue(head, bits);
    values[kNameField] = any_regular_t(MakeStdString(names[i]));
    values[kPathField] = any_regular_t(head);
    if (fields.contains(kExtraPathField)) AddExtraPaths(values, head);
    content[head] = std::move(values);
  }
  return content;
}

ContentMap ProviderFileSequenceBase::GetContent(const std::string& path, const std::string& key,
                                                const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  FieldValueMap values = XMPSupport::MakeValue(key, XMPSupport::ParseFields(fields));
  if (foundation::ExistsOnDisk(path)) {
    values[kPathField] = any_regular_t(key);
    // The name of the folder; a listing gives the name of the head.
    values[kNameField] = any_regular_t(std::string(foundation::FileStem(path)));
  }
  if (fields.contains(kExtraPathField)) AddExtraPaths(values, key);
  return {{key, std::move(values)}};
}

void ProviderFileSequenceBase::AddExtraPaths(FieldValueMap& fields,
                                             const std::string& filePath) const {
  if (auto frames = ListFrames(filePath)) {
    fields[kExtraPathField] = any_regular_t(std::move(*frames));
  }
}

std::optional<ProviderFileSequenceBase::PathValues> ProviderFileSequenceBase::ListFrames(
    const std::string& filePath) {
  if (!foundation::IsValidPath(filePath)) return std::nullopt;
  const auto folder = CardFolder::Of(foundation::ParentFolder(filePath));
  if (!folder->IsReadable()) return std::nullopt;
  const std::string_view headName = foundation::FileName(filePath);
  const std::string_view extension = foundation::FileExtension(filePath);
  const std::string prefix = filePath.substr(0, filePath.size() - headName.size());
  PathValues values;
  for (const std::string& name : folder->Files()) {
    if (foundation::HasExtension(name, extension)) values.emplace_back(prefix + name);
  }
  return values;
}

void ProviderFileSequenceBase::AddIfExists(PathValues& values, const std::string& path) {
  if (foundation::ExistsOnDisk(path)) values.emplace_back(path);
}

bool ProviderFileSequenceBase::HasExtension(const UTF16String& name, std::string_view extension) {
  return foundation::HasExtension(MakeStdString(name), extension);
}

}  // namespace Sorvik
