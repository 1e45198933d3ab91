// SPDX-License-Identifier: MIT
#include <array>
#include <optional>

#include "formats/probe/Probes.h"

// Facts: ISO/IEC 14496-12 and the QuickTime file format. A file is a chain of boxes; the sample
// tables in the box "moov" contain the offsets of the chunks of media.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

constexpr int kMaxBoxes = 4096;  // at the top level; fragmented files have two per fragment
constexpr std::size_t kMaxMovieBytes = std::size_t{32} << 20;
constexpr int kMaxDepth = 8;

struct Box {
  std::string_view type;
  std::uint64_t bodyAt;
  std::uint64_t end;
};

// `limit` is the end of what contains the box, which a size of 0 means.
std::optional<Box> BoxAt(ByteReader head, std::uint64_t at, std::uint64_t limit) {
  const auto size = head.U32BE(0);
  if (!size || !head.Holds(0, 8)) return std::nullopt;
  Box box{head.TextAt(4, 4), at + 8, limit};
  if (*size == 1) {
    const auto large = head.U64BE(8);
    if (!large || *large < 16) return std::nullopt;
    box.bodyAt = at + 16;
    box.end = *large > UINT64_MAX - at ? UINT64_MAX : at + *large;
  } else if (*size != 0) {
    if (*size < 8) return std::nullopt;
    box.end = at + *size;
  }
  return box;
}

bool IsBoxType(std::string_view type) {
  return type.size() == 4 && std::ranges::all_of(type, [](char c) {
           return (c >= 0x20 && c < 0x7F) || static_cast<unsigned char>(c) == 0xA9;
         });
}

// The largest chunk offset in the sample tables of a movie, among media in the same file.
class ChunkSearch {
 public:
  explicit ChunkSearch(ByteReader movie) : movie_(movie) {}

  std::uint64_t LastChunk() {
    Visit(0, movie_.Size(), 0);
    return last_;
  }

 private:
  void Visit(std::uint64_t at, std::uint64_t end, int depth) {
    if (depth > kMaxDepth) return;
    while (at + 8 <= end) {
      const auto box = BoxAt(movie_.Clip(at, 16), at, end);
      if (!box || box->end > end || box->end <= at) return;
      VisitBox(*box, depth);
      at = box->end;
    }
  }

  void VisitBox(const Box& box, int depth) {
    static constexpr std::string_view kContainers[] = {"trak", "mdia", "minf", "stbl", "dinf"};
    if (box.type == "trak") isExternal_ = false;
    if (std::ranges::find(kContainers, box.type) != std::end(kContainers)) {
      Visit(box.bodyAt, box.end, depth + 1);
    }
    // The first data reference: flag 1 means that the media is in this file.
    if (box.type == "dref") {
      isExternal_ = (movie_.U32BE(box.bodyAt + 16).value_or(1) & 1U) == 0;
    }
    if (box.type == "stco" || box.type == "co64") AddChunks(box);
  }

  void AddChunks(const Box& box) {
    const std::uint64_t width = box.type == "stco" ? 4 : 8;
    const std::uint64_t room = (box.end - box.bodyAt) / width;
    const std::uint64_t count =
        std::min<std::uint64_t>(movie_.U32BE(box.bodyAt + 4).value_or(0), room);
    if (isExternal_) return;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t at = box.bodyAt + 8 + i * width;
      const auto offset =
          width == 4 ? std::optional<std::uint64_t>(movie_.U32BE(at)) : movie_.U64BE(at);
      last_ = std::max(last_, offset.value_or(0));
    }
  }

  ByteReader movie_;
  bool isExternal_ = false;
  std::uint64_t last_ = 0;
};

}  // namespace

MediaProbe ProbeIsoMedia(const RegularFile& file) {
  std::optional<Box> movie;
  bool hasMedia = false;
  std::uint64_t at = 0;
  for (int i = 0; i < kMaxBoxes && at < file.Size(); ++i) {
    const auto bytes = ReadPart(file, at, 16);
    const auto box = BoxAt(ByteReader{bytes}, at, file.Size());
    if (!box && bytes.size() < 8 && i > 0) return Truncated("ends inside the head of a box");
    if (!box || !IsBoxType(box->type)) {
      if (i == 0) return NotA("an MP4 or QuickTime file");
      break;  // padding
    }
    if (box->end > file.Size()) {
      return TooShort(file, box->end, ("its box '" + std::string(box->type) + "'").c_str());
    }
    hasMedia = hasMedia || box->type == "mdat";
    if (box->type == "moov") movie = Box{{}, box->bodyAt, box->end};
    at = box->end;
  }
  if (!movie) return hasMedia || at > 0 ? Truncated("no box 'moov'") : Passed();
  if (movie->end - movie->bodyAt > kMaxMovieBytes) return Passed();
  const auto bytes =
      ReadPart(file, movie->bodyAt, static_cast<std::size_t>(movie->end - movie->bodyAt));
  const std::uint64_t last = ChunkSearch(ByteReader{bytes}).LastChunk();
  if (last >= file.Size()) return TooShort(file, last + 1, "its sample tables");
  return Passed();
}

}  // namespace Sorvik::formats::probe
