// SPDX-License-Identifier: MIT
#include "CopyComparison.h"

#define XXH_STATIC_LINKING_ONLY  // for a state on the stack
#include <xxhash.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// nullopt if the file can't be read to its end.
std::optional<XXH128_hash_t> HashOf(const std::string& path, const std::atomic<bool>& stop) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (!file) return std::nullopt;
  XXH3_state_t state;
  XXH3_128bits_reset(&state);
  std::vector<char> block(kBlockBytes);
  while (!stop) {
    const std::size_t bytes = std::fread(block.data(), 1, block.size(), file.get());
    XXH3_128bits_update(&state, block.data(), bytes);
    if (bytes == block.size()) continue;
    if (std::ferror(file.get()) != 0) return std::nullopt;
    return XXH3_128bits_digest(&state);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> CompareSize(const Sorvik::CardFile& file, const std::string& copyPath) {
  std::error_code error;
  if (!fs::is_regular_file(copyPath, error)) return "missing in the copy";
  const auto bytes = fs::file_size(copyPath, error);
  if (error) return "the copy can't be read (" + error.message() + ")";
  if (bytes == file.bytes) return std::nullopt;
  return std::to_string(bytes) + " bytes in the copy, " + std::to_string(file.bytes) +
         " on the card";
}

std::optional<std::string> CompareContents(const std::string& path, const std::string& copyPath,
                                           const std::atomic<bool>& stop) {
  const auto own = HashOf(path, stop);
  if (!own) return "can't be read";
  const auto copy = HashOf(copyPath, stop);
  if (!copy) return "the copy can't be read";
  if (XXH128_isEqual(*own, *copy) != 0) return std::nullopt;
  return "the copy has other contents";
}

Sorvik::Finding MakeDifference(const Sorvik::CardFile& file, std::string detail) {
  return {Sorvik::Finding::Kind::kDiffers,
          Sorvik::Finding::Severity::kError,
          file.part,
          file.path,
          file.owners,
          std::move(detail)};
}

}  // namespace host
