// SPDX-License-Identifier: MIT
#include "formats/sound/RecorderFile.h"

#include <algorithm>
#include <charconv>

#include "foundation/CallScope.h"
#include "foundation/XmlTree.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::formats::sound {
namespace {

using foundation::ByteReader;
using foundation::XmlElement;

constexpr std::size_t kWindowSize = std::size_t{64} * 1024;
constexpr int kMaxReads = 6;
constexpr int kMaxChunks = 256;

// The fields of 'bext', one after the other.
constexpr std::uint64_t kDescriptionSize = 256;
constexpr std::uint64_t kOriginatorAt = 256;
constexpr std::uint64_t kReferenceAt = 288;
constexpr std::uint64_t kNameSize = 32;
constexpr std::uint64_t kDateAt = 320;
constexpr std::uint64_t kDateSize = 10;
constexpr std::uint64_t kTimeAt = 330;
constexpr std::uint64_t kTimeSize = 8;
constexpr std::uint64_t kTimeReferenceAt = 338;

constexpr std::uint16_t kPCM = 1;
constexpr std::uint16_t kFloat = 3;
constexpr std::uint16_t kExtensible = 0xFFFE;

bool IsTrue(std::string_view text) { return text == "TRUE" || text == "true"; }

// The parts of a file that have been read, without reading any of them twice.
class Window {
 public:
  Window(const RecorderFile::ReadBytes& read, std::uint64_t size)
      : read_(read), size_(size), bytes_(read(0, Limit(kWindowSize))) {}

  // The bytes at `at`, fewer at the end of the file or after too many reads.
  ByteReader At(std::uint64_t at, std::uint64_t count) {
    if (at >= size_) return {};
    count = std::min(count, size_ - at);
    const bool isRead = at >= begin_ && ByteReader(bytes_).Holds(at - begin_, count);
    if (!isRead && reads_ < kMaxReads) {
      ++reads_;
      begin_ = at;
      bytes_ = read_(at, static_cast<std::size_t>(
                             std::min(std::max<std::uint64_t>(count, kWindowSize), size_ - at)));
    }
    return at < begin_ ? ByteReader() : ByteReader(bytes_).Clip(at - begin_, count);
  }

  std::uint64_t Size() const noexcept { return size_; }

 private:
  std::size_t Limit(std::size_t count) const {
    return static_cast<std::size_t>(std::min<std::uint64_t>(count, size_));
  }

  const RecorderFile::ReadBytes& read_;
  std::uint64_t size_;
  std::uint64_t begin_ = 0;
  std::vector<std::byte> bytes_;
  int reads_ = 1;
};

class ChunkReader {
 public:
  ChunkReader(const RecorderFile::ReadBytes& read, std::uint64_t size) : window_(read, size) {}

  std::optional<RecorderFile> Read() {
    constexpr std::uint64_t kHeader = 12;
    const ByteReader head = window_.At(0, kHeader);
    const bool isRiff =
        head.Matches(0, "RIFF") || head.Matches(0, "RF64") || head.Matches(0, "BW64");
    if (!isRiff || !head.Matches(8, "WAVE")) return std::nullopt;
    std::uint64_t at = kHeader;
    for (int i = 0; i < kMaxChunks; ++i) {
      const ByteReader chunk = window_.At(at, 8);
      if (chunk.Size() < 8) break;
      const std::string id(chunk.TextAt(0, 4));
      std::uint64_t size = *chunk.U32LE(4);
      if (id == "data" && wideDataSize_ != 0) size = wideDataSize_;
      Take(id, at + 8, size);
      if (size > window_.Size()) break;
      at += 8 + size + size % 2;
    }
    if (blockSize_ != 0) file_.samples = dataSize_ / blockSize_;
    return std::move(file_);
  }

 private:
  void Take(std::string_view id, std::uint64_t at, std::uint64_t size) {
    if (id == "fmt ") {
      TakeFormat(window_.At(at, std::min<std::uint64_t>(size, 40)));
    } else if (id == "ds64") {
      wideDataSize_ = window_.At(at, std::min<std::uint64_t>(size, 24)).U64LE(8).value_or(0);
    } else if (id == "data") {
      dataSize_ = size;
    } else if (id == "bext") {
      file_.broadcast = ParseBroadcastExtension(
          window_.At(at, std::min<std::uint64_t>(size, kBroadcastExtensionSize)));
    } else if (id == "iXML" && size <= kMaxIXmlSize) {
      file_.ixml = ParseIXml(window_.At(at, size).Text());
    }
  }

  // Tag, channels, samples per second, bytes per second, bytes per block, bits per sample;
  // extensible formats add sizes, speaker positions and the actual tag.
  void TakeFormat(ByteReader format) {
    std::uint16_t tag = format.U16LE(0).value_or(0);
    if (tag == kExtensible) tag = format.U16LE(24).value_or(0);
    file_.channels = format.U16LE(2).value_or(0);
    file_.sampleRate = format.U32LE(4).value_or(0);
    if (tag == kPCM || tag == kFloat) blockSize_ = format.U16LE(12).value_or(0);
  }

  Window window_;
  RecorderFile file_;
  std::uint64_t wideDataSize_ = 0;
  std::uint64_t dataSize_ = 0;
  unsigned blockSize_ = 0;
};

}  // namespace

std::uint64_t NumberAtStart(std::string_view text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? value : 0;
}

std::string_view BroadcastExtension::DescriptionValue(std::string_view name) const {
  std::string_view rest = description;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find_first_of("\r\n"));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    const std::size_t equals = line.find('=');
    if (equals == line.npos || equals != name.size() + 1) continue;
    if (line.substr(1, name.size()) == name && line[0] >= 'a' && line[0] <= 'z') {
      return line.substr(equals + 1);
    }
  }
  return {};
}

std::optional<BroadcastExtension> ParseBroadcastExtension(ByteReader bytes) {
  const auto reference = bytes.U64LE(kTimeReferenceAt);
  if (!reference) return std::nullopt;
  const auto text = [&bytes](std::uint64_t at, std::uint64_t size) {
    return std::string(bytes.CStringAt(at, size));
  };
  return BroadcastExtension{.description = text(0, kDescriptionSize),
                            .originator = text(kOriginatorAt, kNameSize),
                            .originatorReference = text(kReferenceAt, kNameSize),
                            .date = text(kDateAt, kDateSize),
                            .time = text(kTimeAt, kTimeSize),
                            .timeReference = *reference};
}

std::optional<IXml> ParseIXml(std::string_view text) {
  const auto document =
      foundation::ParseXml(text, {.bytes = kMaxIXmlSize, .depth = 32, .nodes = 20'000});
  if (!document) return std::nullopt;
  const XmlElement& root = document->Root();
  IXml ixml;
  ixml.project = root.TextOf("PROJECT");
  ixml.scene = root.TextOf("SCENE");
  ixml.take = root.TextOf("TAKE");
  ixml.tape = root.TextOf("TAPE");
  ixml.note = root.TextOf("NOTE");
  ixml.circled = IsTrue(root.TextOf("CIRCLED"));
  ixml.noGood = IsTrue(root.TextOf("NO_GOOD"));
  if (const XmlElement* location = root.Child("LOCATION")) {
    ixml.location = location->TextOf("LOCATION_NAME");
  }
  if (const XmlElement* set = root.Child("FILE_SET")) {
    ixml.familyUid = set->TextOf("FAMILY_UID");
    ixml.familyName = set->TextOf("FAMILY_NAME");
    ixml.fileSetIndex = set->TextOf("FILE_SET_INDEX");
    ixml.totalFiles = static_cast<unsigned>(
        std::min<std::uint64_t>(NumberAtStart(set->TextOf("TOTAL_FILES")), UINT16_MAX));
  }
  if (const XmlElement* speed = root.Child("SPEED")) {
    ixml.timecodeRate = speed->TextOf("TIMECODE_RATE");
    ixml.dropFrame = speed->TextOf("TIMECODE_FLAG") == "DF";
    ixml.timeStamp = NumberAtStart(speed->TextOf("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO")) |
                     NumberAtStart(speed->TextOf("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI")) << 32;
    ixml.timeStampRate = NumberAtStart(speed->TextOf("TIMESTAMP_SAMPLE_RATE"));
    if (ixml.timeStampRate == 0) {
      ixml.timeStampRate = NumberAtStart(speed->TextOf("FILE_SAMPLE_RATE"));
    }
  }
  return ixml;
}

bool RecorderFile::IsOfRecorder() const {
  return ixml || (broadcast && !broadcast->originator.empty() && !broadcast->date.empty());
}

std::optional<std::uint64_t> RecorderFile::TimeReference() const {
  if (broadcast && broadcast->timeReference != 0) return broadcast->timeReference;
  if (ixml && ixml->timeStamp != 0 && ixml->timeStampRate == sampleRate) return ixml->timeStamp;
  return broadcast ? std::optional(broadcast->timeReference) : std::nullopt;
}

std::optional<RecorderFile> RecorderFile::Read(const ReadBytes& read, std::uint64_t size) {
  return ChunkReader(read, size).Read();
}

std::shared_ptr<const RecorderFile> RecorderFile::Of(const std::string& path) {
  return foundation::CallScope::Share<RecorderFile>(
      path, [&path]() -> std::shared_ptr<const RecorderFile> {
        const auto file = platform::RegularFile::Open(path);
        if (!file) return nullptr;
        auto read = Read(
            [&file](std::uint64_t offset, std::size_t count) {
              std::vector<std::byte> bytes(count);
              bytes.resize(file->ReadAt(offset, bytes));
              return bytes;
            },
            file->Size());
        return read ? std::make_shared<const RecorderFile>(std::move(*read)) : nullptr;
      });
}

std::optional<RecorderFile> RecorderFile::FromHead(std::span<const std::byte> head) {
  const auto read = [head](std::uint64_t offset, std::size_t count) {
    const auto part = ByteReader(head).Clip(offset, count).Bytes();
    return std::vector<std::byte>(part.begin(), part.end());
  };
  return Read(read, head.size());
}

}  // namespace Sorvik::formats::sound
