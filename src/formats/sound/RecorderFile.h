// SPDX-License-Identifier: MIT
// The take that a WAV file of a sound recorder belongs to, by its metadata.
// Facts: EBU Tech 3285 ('bext'), EBU Tech 3306 (RF64), iXML 2.0. Texts are bytes as stored. Any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::formats::sound {

// The chunk 'bext'. Texts end at their first NUL.
struct BroadcastExtension {
  std::string description;
  std::string originator;
  std::string originatorReference;
  std::string date;                 // "2021-03-04"; other separators are possible
  std::string time;                 // "05:06:07", likewise
  std::uint64_t timeReference = 0;  // the first sample, counted from midnight

  // The value of a line "sSCENE=12A" of the description, as recorders write them with a letter in
  // front of the name. Empty if there is none.
  std::string_view DescriptionValue(std::string_view name) const;
};
inline constexpr std::uint64_t kBroadcastExtensionSize = 602;  // without the coding history
// Returns nullopt if the bytes end in front of the time reference.
std::optional<BroadcastExtension> ParseBroadcastExtension(foundation::ByteReader bytes);

// The chunk 'iXML'. All items are optional.
struct IXml {
  std::string project;
  std::string scene;
  std::string take;
  std::string tape;  // the sound roll
  std::string note;
  std::string location;
  bool circled = false;
  bool noGood = false;
  std::string familyUid;  // the same in all files of a take
  std::string familyName;
  std::string fileSetIndex;  // "A", "B", ...: which channels, not which part
  unsigned totalFiles = 0;
  std::string timecodeRate;  // "30000/1001"
  bool dropFrame = false;
  std::uint64_t timeStamp = 0;  // the first sample, counted from midnight
  std::uint64_t timeStampRate = 0;
};
inline constexpr std::uint64_t kMaxIXmlSize = std::uint64_t{1} << 20;
// Returns nullopt if the text isn't well-formed.
std::optional<IXml> ParseIXml(std::string_view text);

// The value of the decimal number at the start of `text`; 0 if there is none or it is too large.
std::uint64_t NumberAtStart(std::string_view text);

struct RecorderFile {
  std::optional<BroadcastExtension> broadcast;
  std::optional<IXml> ixml;
  std::uint32_t sampleRate = 0;
  unsigned channels = 0;
  std::uint64_t samples = 0;  // of one channel; 0 unknown

  // True with iXML, or a 'bext' that has a device or program and a date.
  bool IsOfRecorder() const;
  // The first sample, counted from midnight in samples of the file; nullopt if unknown.
  std::optional<std::uint64_t> TimeReference() const;

  // Reads at most `count` bytes at an offset of a file.
  using ReadBytes = std::function<std::vector<std::byte>(std::uint64_t offset, std::size_t count)>;
  // At most six reads, of 64 KiB or the size of an iXML chunk each. Returns nullopt if it isn't a
  // WAV file.
  static std::optional<RecorderFile> Read(const ReadBytes& read, std::uint64_t size);
  // The file at `path`, opened once within a call scope; null if it isn't a WAV file.
  static std::shared_ptr<const RecorderFile> Of(const std::string& path);
  // From the first kHeadBytes of a file; nullopt if it isn't a WAV file.
  static std::optional<RecorderFile> FromHead(std::span<const std::byte> head);
  static constexpr std::size_t kHeadBytes = std::size_t{64} << 10;
};

}  // namespace Sorvik::formats::sound
