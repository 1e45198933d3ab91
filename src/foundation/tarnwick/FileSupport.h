// SPDX-License-Identifier: MIT
// Files and folders as objects that know their own path.
#pragma once

#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::filesupport {

using Hestra::UTF16String;

class Dir;

// A file by its path; whether it is there is asked of the disk by Exists alone.
class File {
 public:
  explicit File(UTF16String path) : path_(std::move(path)) {}

  const UTF16String& FullPath() const noexcept { return path_; }
  Dir Parent() const;
  UTF16String GetName() const;
  // The name without its extension.
  UTF16String GetTitle() const;
  // With its dot; in lower case if `lowerCase`.
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
  // The folder above; of the top folder, a Dir that doesn't exist.
  Dir Parent() const;
  // The folder or file `name` in this folder.
  Dir SubDir(std::u16string_view name) const;
  File FileNamed(std::u16string_view name) const;

  // The direct children in order of 16-bit code units.
  std::vector<Dir> Subdirs() const;
  std::vector<File> Files() const;

 private:
  UTF16String path_;  // empty for the parent of the top
};

// How two names of files or folders compare on file systems of cameras: 0 if alike regardless of
// case, else the order of their folded forms.
int CompareFileNames(std::u16string_view a, std::u16string_view b);

}  // namespace tarnwick::filesupport
