// SPDX-License-Identifier: MIT
#include "PictureCache.h"

#include <fcntl.h>
#include <glib.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "PictureScale.h"

namespace host {
namespace {

struct SizeClass {
  int side;
  const char* folder;
};
constexpr SizeClass kSizeClasses[] = {
    {128, "normal"}, {256, "large"}, {512, "x-large"}, {1024, "xx-large"}};

constexpr std::size_t kMaxFileBytes = std::size_t{16} << 20;
constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kChunkOverhead = 12;  // length, type and checksum

std::string CacheFolder() {
  const char* cache = std::getenv("XDG_CACHE_HOME");
  if (cache != nullptr && cache[0] == '/') return cache;
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? std::string(home) + "/.cache" : std::string();
}

std::string UriOf(const std::string& file) {
  const std::unique_ptr<char, decltype(&g_free)> uri(
      g_filename_to_uri(file.c_str(), nullptr, nullptr), &g_free);
  return uri ? uri.get() : "";
}

std::string NameOf(const std::string& uri) {
  const std::unique_ptr<char, decltype(&g_free)> sum(
      g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.c_str(), -1), &g_free);
  return std::string(sum.get()) + ".png";
}

// The texts by which a cached picture is recognised as that of the file as it is now.
using Texts = std::map<std::string, std::string>;
std::optional<Texts> TextsOf(const std::string& file) {
  struct stat facts;
  const std::string uri = UriOf(file);
  if (uri.empty() || stat(file.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
    return std::nullopt;
  }
  return Texts{{"Thumb::URI", uri},
               {"Thumb::MTime", std::to_string(facts.st_mtim.tv_sec)},
               {"Thumb::Size", std::to_string(facts.st_size)}};
}

std::string BigEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

std::uint32_t NumberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (const char c : bytes.substr(at, 4)) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

std::string TextChunk(const std::string& key, const std::string& text) {
  const std::string body = "tEXt" + key + '\0' + text;
  const auto* data = reinterpret_cast<const Bytef*>(body.data());
  const auto sum = crc32(crc32(0, nullptr, 0), data, static_cast<uInt>(body.size()));
  return BigEndian(static_cast<std::uint32_t>(body.size() - 4)) + body +
         BigEndian(static_cast<std::uint32_t>(sum));
}

// The texts of a PNG file in front of its pixels.
Texts ReadTexts(std::string_view png) {
  Texts texts;
  for (std::size_t at = kSignatureBytes; at + kChunkOverhead <= png.size();) {
    const std::size_t length = NumberAt(png, at);
    const std::string_view type = png.substr(at + 4, 4);
    if (type == "IDAT" || length > png.size() - at - kChunkOverhead) break;
    const std::string_view body = png.substr(at + 8, length);
    const std::size_t end = body.find('\0');
    if (type == "tEXt" && end != body.npos) {
      texts[std::string(body.substr(0, end))] = body.substr(end + 1);
    }
    at += length + kChunkOverhead;
  }
  return texts;
}

std::string ReadCached(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return {};
  struct stat facts;
  std::string bytes;
  if (fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) &&
      static_cast<std::size_t>(facts.st_size) <= kMaxFileBytes) {
    bytes.resize(static_cast<std::size_t>(facts.st_size));
    const ssize_t count = read(file, bytes.data(), bytes.size());
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  close(file);
  return bytes;
}

std::optional<Picture> DecodePng(const std::string& bytes, int maxSide) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
    return std::nullopt;
  }
  image.format = PNG_FORMAT_BGRA;
  const auto side = static_cast<png_uint_32>(maxSide);
  if (image.width > side || image.height > side) {
    png_image_free(&image);
    return std::nullopt;
  }
  Picture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
  picture.pixels.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
    return std::nullopt;
  }
  return picture;
}

// Creates the folder and its parents, for this user only.
void MakeFolders(const std::string& folder) {
  for (std::size_t end = folder.find('/', 1); end != folder.npos; end = folder.find('/', end + 1)) {
    mkdir(folder.substr(0, end).c_str(), 0700);
  }
  mkdir(folder.c_str(), 0700);
}

// Other programs never see an incomplete file.
void WriteAtomically(const std::string& path, const std::string& bytes) {
  std::string temporary = path + ".XXXXXX";
  const int file = mkostemp(temporary.data(), O_CLOEXEC);  // mode 0600
  if (file < 0) return;
  const ssize_t written = write(file, bytes.data(), bytes.size());
  const bool good = close(file) == 0 && written == static_cast<ssize_t>(bytes.size());
  if (!good || std::rename(temporary.c_str(), path.c_str()) != 0) unlink(temporary.c_str());
}

}  // namespace

PictureCache::PictureCache(int width, int height) {
  const int wanted = std::max(width, height);
  const std::string cache = CacheFolder();
  if (wanted < 1 || cache.empty()) return;
  const auto* const found = std::ranges::find_if(
      kSizeClasses, [wanted](const SizeClass& candidate) { return candidate.side >= wanted; });
  if (found == std::end(kSizeClasses)) return;
  side_ = found->side;
  folder_ = cache + "/thumbnails/" + found->folder;
}

std::optional<Picture> PictureCache::Find(const std::string& file) const {
  if (folder_.empty()) return std::nullopt;
  const auto wanted = TextsOf(file);
  if (!wanted) return std::nullopt;
  const std::string png = ReadCached(folder_ + "/" + NameOf(wanted->at("Thumb::URI")));
  const Texts texts = ReadTexts(png);
  for (const char* key : {"Thumb::URI", "Thumb::MTime"}) {
    const auto text = texts.find(key);
    if (text == texts.end() || text->second != wanted->at(key)) return std::nullopt;
  }
  return DecodePng(png, side_);
}

void PictureCache::Store(const std::string& file, const Picture& picture) const {
  // Pictures of the cache itself are never cached.
  if (folder_.empty() || picture.Empty() || file.starts_with(CacheFolder() + "/thumbnails/"))
    return;
  const auto texts = TextsOf(file);
  if (!texts) return;
  std::string png = EncodePng(ReducedTo(picture, side_, side_));
  std::string chunks = TextChunk("Software", "sorvik");
  for (const auto& [key, text] : *texts) chunks += TextChunk(key, text);
  const std::size_t headerEnd = kSignatureBytes + kChunkOverhead + NumberAt(png, kSignatureBytes);
  png.insert(headerEnd, chunks);
  MakeFolders(folder_);
  WriteAtomically(folder_ + "/" + NameOf(texts->at("Thumb::URI")), png);
}

}  // namespace host
