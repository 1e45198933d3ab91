// SPDX-License-Identifier: MIT
// A temporary folder that is removed at the end of the test.
#pragma once

#include <string>
#include <string_view>

namespace sorvik_test {

class TempTree {
 public:
  TempTree();
  ~TempTree();
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  // The folder's path, without a trailing separator.
  const std::string& Root() const noexcept { return root_; }
  // The full path of `relative`.
  std::string Path(std::string_view relative) const;
  // Create a file or folder and its parent folders. Both return the full path.
  std::string File(std::string_view relative, std::string_view content = {}) const;
  std::string Folder(std::string_view relative) const;

 private:
  std::string root_;
};

}  // namespace sorvik_test
