// SPDX-License-Identifier: MIT
// What the descriptions of cards have in common. Paths are UTF-8.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

#include "SorvikProvider/frame/FieldModel.h"
#include "frame/CardChecker.h"

namespace Sorvik {

// Adds the files of `folder` that have one of these names, ignoring case: copies of cards often
// spell them differently.
void AddStructureFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                       CardDescription& card);

// Adds the visible files below `folder`, at any depth. The contents of hidden folders are hidden.
void AddStructureFilesBelow(const std::string& folder, CardDescription& card);

// Adds the existing files of `folder` that have one of these names, ignoring case, as parts of the
// card that can't be empty.
void AddIndexFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                   CardDescription& card);

// The folder `name` of `parent`, in any case; empty if there is none or `parent` is empty.
std::string FindFolder(const std::string& parent, std::string_view name);

// The entry that a path belongs to, by the fields Path, ExtraPath and ProxyPath.
class EntryOfPath {
 public:
  // Keeps only paths with one of these extensions (dots included, case-insensitive).
  EntryOfPath(const ContentMap& entries, std::initializer_list<std::string_view> extensions);

  // The key of the first such entry; empty if there is none.
  std::string KeyOf(const std::string& path) const;

 private:
  std::unordered_map<std::string, std::string> keys_;
};

// The role of a file next to a clip of the same name, by its extension.
const char* RoleOfCompanion(std::string_view path);
// True if files of the role are probed by their container.
bool IsMediaRole(std::string_view role);

// {} for an empty key.
std::vector<std::string> KeyList(const std::string& key);

}  // namespace Sorvik
