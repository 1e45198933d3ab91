// SPDX-License-Identifier: MIT
#include "FileGroups.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Paths.h"
#include "SorvikProvider/cardtools/FileGroup.h"
#include "Values.h"

namespace host {

using Sorvik::any_regular_t;

bool AddFileGroup(const std::string& file, Sorvik::FieldValueMap& fields) {
  const auto group = Sorvik::GetFileGroup(file);
  if (!group) return false;
  std::vector<std::string> files = group->AllFiles();
  if (files.size() < 2) return false;
  for (std::string& path : EntryPaths(fields)) {
    if (path != file && !std::ranges::count(files, path)) files.push_back(std::move(path));
  }
  const std::string main = group->parts.empty() ? file : group->parts.front();
  fields[Sorvik::kNameField] = any_regular_t(FileName(main));
  fields[Sorvik::kPathField] = any_regular_t(main);
  if (!group->proxy.empty()) fields[Sorvik::kProxyPathField] = any_regular_t(group->proxy);
  std::vector<any_regular_t> extra;
  for (std::string& path : files) {
    if (path != main) extra.emplace_back(std::move(path));
  }
  fields[Sorvik::kExtraPathField] = any_regular_t(std::move(extra));
  return true;
}

}  // namespace host
