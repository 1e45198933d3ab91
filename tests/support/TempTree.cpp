// SPDX-License-Identifier: MIT
#include "support/TempTree.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace sorvik_test {

namespace fs = std::filesystem;

TempTree::TempTree() : root_((fs::temp_directory_path() / "sorvik-test-XXXXXX").string()) {
  if (mkdtemp(root_.data()) == nullptr) throw std::runtime_error("no temporary folder");
  root_ = fs::canonical(root_).string();
}

TempTree::~TempTree() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

std::string TempTree::Path(std::string_view relative) const {
  return relative.empty() ? root_ : root_ + "/" + std::string(relative);
}

std::string TempTree::File(std::string_view relative, std::string_view content) const {
  const std::string path = Path(relative);
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream stream(path, std::ios::binary);
  stream.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!stream) throw std::runtime_error("cannot write " + path);
  return path;
}

std::string TempTree::Folder(std::string_view relative) const {
  const std::string path = Path(relative);
  fs::create_directories(path);
  return path;
}

}  // namespace sorvik_test
