// SPDX-License-Identifier: MIT
// What the reader of a kind of file gets and gives. Readers are functions without state; they take
// bytes only through FileBytes, map native facts to properties by a table that can be read beside
// the format's documentation, and never raise: a damaged part costs its own facts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// The bytes of one file under a reader: a source that can be asked at any offset. Made for memory
// as well, so that tests and fuzzers need no file.
class FileBytes {
 public:
  virtual ~FileBytes() = default;
  virtual std::uint64_t Size() const noexcept = 0;
  // At most `count` bytes at `offset`, fewer at the end. `count` is capped by the caller; the
  // vector never grows beyond what is there.
  virtual std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const = 0;
};

// The file under a reader. The head is read once, when the file is opened.
struct ReaderInput {
  std::string path;  // full path in UTF-8; empty when the bytes are in memory
  const FileBytes& file;
  foundation::ByteReader head;  // the first kHeadSize bytes, or all of a smaller file
};
inline constexpr std::size_t kHeadSize = 64 * 1024;

// The properties that a caller will ask for. Readers make a further read (a file's tail, a second
// file) only for a property that is wanted; whether a file has metadata at all doesn't depend on
// it.
class WantedProperties {
 public:
  static WantedProperties All() { return WantedProperties(); }
  static WantedProperties None() {
    WantedProperties none;
    none.all_ = false;
    return none;
  }
  void Add(std::string_view schema, std::string_view name) {
    names_.emplace_back(std::string(schema), std::string(name));
  }
  bool Wants(std::string_view schema, std::string_view name) const {
    if (all_) return true;
    for (const auto& [s, n] : names_) {
      if (s == schema && n == name) return true;
    }
    return false;
  }

 private:
  bool all_ = true;
  std::vector<std::pair<std::string, std::string>> names_;
};

// What a reader found.
struct ReaderOutput {
  TXMPMeta native;             // native facts as properties; they only fill what XMP lacks
  bool hasNative = false;      // the file holds native metadata that the reader knows
  std::string packet;          // serialised XMP of the file, empty if there is none
  std::string extendedPacket;  // further XMP (JPEG extended XMP); fills the first
  // Native facts that are stronger than a sidecar: identifier, relation and duration of P2 and
  // XDCAM EX camera XML.
  bool nativeTiesWin = false;
};

// One row of the table of readers: asked in order, the first that recognises the file reads it.
// `recognises` looks at the path (place and name) and the head alone.
struct Reader {
  const char* name;
  bool (*recognises)(const ReaderInput& input);
  void (*read)(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output);
};

}  // namespace Sorvik::xmp
