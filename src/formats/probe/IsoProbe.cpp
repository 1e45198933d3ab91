// SPDX-License-Identifier: MIT
#include <array>
#include <optional>

#include "formats/IsoBox.h"
#include "formats/probe/Probes.h"

// Facts: ISO/IEC 14496-12 and the QuickTime file format. A file is a chain of boxes; the sample
// tables in the box "moov" contain the offsets of the chunks of media.
namespace Sorvik::formats::probe {
namespace {

using foundation::ByteReader;

constexpr int kMaxBoxes = 4096;  // at the top level; fragmented files have two per fragment
constexpr std::size_t kMaxMovieBytes = std::size_t{32} << 20;
constexpr int kMaxDepth = 8;

bool IsBoxType(std::string_view type) {
  return type.size() == 4 && std::ranges::all_of(type, [](char c) {
           return (c >= 0x20 && c < 0x7F) || static_cast<unsigned char>(c) == 0xA9;
         });
}

// Finds the end of the last sample in the sample tables of a movie, among media in the same file.
class SampleSearch {
 public:
  explicit SampleSearch(ByteReader movie) : movie_(movie) {}

  std::uint64_t EndOfSamples() {
    Visit(0, movie_.Size(), 0);
    return end_;
  }

 private:
  // The tables of one track. Each has its number of entries at 4, the sizes at 8.
  struct Track {
    bool isExternal = false;
    std::optional<IsoBox> chunks;           // "stco" or "co64"
    std::optional<IsoBox> samplesPerChunk;  // "stsc"
    std::optional<IsoBox> sizes;            // "stsz"
  };

  void Visit(std::uint64_t at, std::uint64_t end, int depth) {
    if (depth > kMaxDepth) return;
    while (at + 8 <= end) {
      const auto box = IsoBoxAt(movie_.Clip(at, 16), at, end);
      if (!box || box->end > end || box->end <= at) return;
      VisitBox(*box, depth);
      at = box->end;
    }
  }

  void VisitBox(const IsoBox& box, int depth) {
    static constexpr std::string_view kContainers[] = {"trak", "mdia", "minf", "stbl", "dinf"};
    if (box.type == "trak") track_ = Track();
    if (std::ranges::find(kContainers, box.type) != std::end(kContainers)) {
      Visit(box.bodyAt, box.end, depth + 1);
    }
    // The first data reference: flag 1 means that the media is in this file.
    if (box.type == "dref") {
      track_.isExternal = (movie_.U32BE(box.bodyAt + 16).value_or(1) & 1U) == 0;
    }
    if (box.type == "stco" || box.type == "co64") track_.chunks = box;
    if (box.type == "stsc") track_.samplesPerChunk = box;
    if (box.type == "stsz") track_.sizes = box;
    if (box.type == "trak" && track_.chunks && !track_.isExternal) AddTrack(*track_.chunks);
  }

  std::uint64_t EntriesOf(const IsoBox& box, std::uint64_t firstAt, std::uint64_t width) const {
    const std::uint64_t first = box.bodyAt + firstAt;
    const std::uint64_t room = box.end < first ? 0 : (box.end - first) / width;
    return std::min<std::uint64_t>(movie_.U32BE(first - 4).value_or(0), room);
  }

  void AddTrack(const IsoBox& chunks) {
    const std::uint64_t width = chunks.type == "stco" ? 4 : 8;
    const std::uint64_t count = EntriesOf(chunks, 8, width);
    std::uint64_t offset = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t at = chunks.bodyAt + 8 + i * width;
      offset = width == 4 ? movie_.U32BE(at).value_or(0) : movie_.U64BE(at).value_or(0);
      end_ = std::max(end_, offset == UINT64_MAX ? offset : offset + 1);
    }
    const std::uint64_t bytes = BytesOfLastChunk(count);
    end_ = std::max(end_, bytes > UINT64_MAX - offset ? UINT64_MAX : offset + bytes);
  }

  // The sum of the sizes of the samples in the last of `count` chunks; 0 if it is unknown.
  std::uint64_t BytesOfLastChunk(std::uint64_t count) const {
    constexpr std::uint64_t kFirstSizeAt = 12;
    if (count == 0 || !track_.samplesPerChunk || !track_.sizes) return 0;
    const IsoBox& runs = *track_.samplesPerChunk;
    constexpr std::uint64_t kRunBytes = 12;  // first chunk, samples per chunk, description
    const std::uint64_t runCount = EntriesOf(runs, 8, kRunBytes);
    if (runCount == 0) return 0;
    const std::uint64_t lastRun = runs.bodyAt + 8 + (runCount - 1) * kRunBytes;
    if (movie_.U32BE(lastRun).value_or(0) > count) return 0;
    const std::uint64_t samples = movie_.U32BE(lastRun + 4).value_or(0);
    const IsoBox& sizes = *track_.sizes;
    const std::uint64_t equalSize = movie_.U32BE(sizes.bodyAt + 4).value_or(0);
    // QuickTime counts compressed sound in units of 1, whatever their bytes.
    if (equalSize == 1) return 0;
    if (equalSize != 0) return samples * equalSize;
    const std::uint64_t sizeCount = EntriesOf(sizes, kFirstSizeAt, 4);
    std::uint64_t bytes = 0;
    for (std::uint64_t i = sizeCount - std::min(samples, sizeCount); i < sizeCount; ++i) {
      bytes += movie_.U32BE(sizes.bodyAt + kFirstSizeAt + 4 * i).value_or(0);
    }
    return bytes;
  }

  ByteReader movie_;
  Track track_;
  std::uint64_t end_ = 0;
};

}  // namespace

MediaProbe ProbeIsoMedia(const RegularFile& file) {
  std::optional<IsoBox> movie;
  bool hasMedia = false;
  std::uint64_t at = 0;
  for (int i = 0; i < kMaxBoxes && at < file.Size(); ++i) {
    const auto bytes = ReadPart(file, at, 16);
    const auto box = IsoBoxAt(ByteReader{bytes}, at, file.Size());
    if (!box && bytes.size() < 8 && i > 0) return Truncated("ends inside the head of a box");
    if (!box || !IsBoxType(box->type)) {
      if (i == 0) return NotA("an MP4 or QuickTime file");
      break;  // padding
    }
    if (box->end > file.Size()) {
      return TooShort(file, box->end, ("its box '" + std::string(box->type) + "'").c_str());
    }
    hasMedia = hasMedia || box->type == "mdat";
    if (box->type == "moov") movie = IsoBox{{}, box->bodyAt, box->end};
    at = box->end;
  }
  if (!movie) return hasMedia || at > 0 ? Truncated("no box 'moov'") : Passed();
  if (movie->end - movie->bodyAt > kMaxMovieBytes) return Passed();
  const auto bytes =
      ReadPart(file, movie->bodyAt, static_cast<std::size_t>(movie->end - movie->bodyAt));
  const std::uint64_t end = SampleSearch(ByteReader{bytes}).EndOfSamples();
  if (end > file.Size()) return TooShort(file, end, "its sample tables");
  return Passed();
}

}  // namespace Sorvik::formats::probe
