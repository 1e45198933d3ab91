// SPDX-License-Identifier: MIT
#include "Paths.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Failure.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {
namespace {

namespace fs = std::filesystem;

bool IsBrowseRoot(std::string_view argument) {
  return argument.starts_with(Sorvik::kVolumeListPath) ||
         argument.starts_with(Sorvik::kSDKNetworkVolumeListPath) ||
         argument.starts_with(Sorvik::kSDKEAServerListPath);
}

std::string CurrentFolder() {
  std::error_code error;
  const fs::path folder = fs::current_path(error);
  if (error)
    throw Failure(kFailed, "cannot determine the current directory (" + error.message() + ")");
  return folder.string();
}

std::string Normalised(std::string_view path) {
  std::vector<std::string_view> parts;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string_view part = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
  }
  std::string normalised;
  for (const std::string_view part : parts) normalised.append("/").append(part);
  return normalised.empty() ? "/" : normalised;
}

}  // namespace

std::string ResolvePath(std::string_view argument) {
  if (argument.empty()) throw Failure(kUsageError, "PATH must not be empty (try 'sorvik --help')");
  if (IsBrowseRoot(argument)) return std::string(argument);
  if (argument.front() == '/') return Normalised(argument);
  return Normalised(CurrentFolder() + "/" + std::string(argument));
}

std::string FileName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash + 1 == path.size()) return std::string(path);
  return std::string(path.substr(slash + 1));
}

std::string RelativePath(const std::string& path, const std::string& folder) {
  const std::string prefix = folder == "/" ? folder : folder + "/";
  return path.starts_with(prefix) ? path.substr(prefix.size()) : path;
}

bool IsRegularFile(const std::string& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

bool IsFolder(const std::string& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool Exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

bool IsSameFile(const std::string& one, const std::string& other) {
  std::error_code ignored;
  return fs::equivalent(one, other, ignored);
}

std::string DescribePathError(const std::string& path, const std::string& fallback) {
  if (IsBrowseRoot(path)) return fallback;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) {
    std::error_code ignored;
    const bool link = fs::is_symlink(fs::symlink_status(path, ignored));
    return link ? "dangling symbolic link" : "No such file or directory";
  }
  if (error) return "cannot access (" + error.message() + ")";
  const bool opens = fs::is_regular_file(status) || fs::is_directory(status);
  if (opens && access(path.c_str(), R_OK) != 0) {
    return "cannot read (" + std::generic_category().message(errno) + ")";
  }
  return fallback;
}

std::string DescribeUnclaimedPath(const std::string& path) {
  if (!IsBrowseRoot(path) && Exists(path) && !IsFolder(path)) return "Not a directory";
  return DescribePathError(path, "no provider for this path");
}

std::string ListingError(const std::string& path) {
  if (IsBrowseRoot(path) || !IsFolder(path)) return {};
  std::error_code error;
  const fs::directory_iterator listing(path, error);
  return error ? error.message() : std::string();
}

}  // namespace host
