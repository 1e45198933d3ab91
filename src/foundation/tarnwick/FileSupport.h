// SPDX-License-Identifier: MIT
// Files and folders as objects with a path.
#pragma once

#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::filesupport {

using Hestra::UTF16String;

class Dir;

// A file path. Only Exists accesses the disk.
class File {
 public:
  explicit File(UTF16String path) : path_(std::move(path)) {}

  const UTF16String& FullPath() const noexcept { return path_; }
  Dir Parent() const;
  UTF16String GetName() const;
  // The name without its extension.
  UTF16String GetTitle() const;
  // With its dot; converted to lower case if `lowerCase`.
  UTF16String GetExtension(bool lowerCase) const;
  bool Exists() const;

 private:
  UTF16String path_;
};

class Dir {
 public:
  explicit Dir(UTF16String path);

  const UTF16String& FullPath() const noexcept { return path_; }
  UTF16String GetName() const;
  bool Exists() const;
  bool IsTopLevelDir() const;
  // The parent folder. For "/", a Dir that doesn't exist.
  Dir Parent() const;

 private:
  UTF16String path_;  // empty for the parent of "/"
};

// Compares file names case-insensitively, as camera file systems do: 0 if equal, else the order of
// their case-folded forms.
int CompareFileNames(std::u16string_view a, std::u16string_view b);

}  // namespace tarnwick::filesupport
