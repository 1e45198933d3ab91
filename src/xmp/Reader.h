// SPDX-License-Identifier: MIT
// The interface of metadata readers. Readers are stateless functions. They read bytes only through
// FileBytes, map native facts to properties, and never throw: damage to one part of a file loses
// only the facts of that part.
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

// Random access to the bytes of one file. Has a memory implementation, so that tests and fuzzers
// need no files on disk.
class FileBytes {
 public:
  virtual ~FileBytes() = default;
  virtual std::uint64_t Size() const noexcept = 0;
  // Reads at most `count` bytes at `offset`, fewer at the end. The caller limits `count`; the
  // vector never exceeds the available bytes.
  virtual std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const = 0;
};

// The file to read. The head is read once, when the file is opened.
struct ReaderInput {
  std::string path;  // full path in UTF-8; empty when the bytes are in memory
  const FileBytes& file;
  foundation::ByteReader head;  // the first kHeadSize bytes, or all of a smaller file
};
inline constexpr std::size_t kHeadSize = 64 * 1024;

// The properties that the caller wants. Readers perform a further read (the file's tail, a second
// file) only for a wanted property; whether a file has metadata at all doesn't depend on it.
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

// Where native facts are stored: in the file's own structures, in the record of one clip that the
// camera wrote (XML), or in a list of several clips (playlist, clip information, material list).
enum class NativeOrigin { kHeader, kRecord, kIndex };

struct NativeFacts {
  NativeOrigin origin;
  TXMPMeta properties;
};

// The result of a reader.
struct ReaderOutput {
  TXMPMeta native;  // native facts as properties; they only fill in what XMP lacks
  NativeOrigin origin = NativeOrigin::kHeader;  // of `native`
  std::vector<NativeFacts> overriding;          // facts that take precedence over `native`
  std::vector<NativeFacts> completing;          // facts that fill in what `native` lacks
  bool hasNative = false;        // the file has native metadata that the reader supports
  std::string packet;            // serialised XMP of the file, empty if there is none
  std::string extendedPacket;    // further XMP (JPEG extended XMP); fills the first
  bool packetIsSidecar = false;  // `packet` is from a further file next to this one
  // Set if native facts take precedence over sidecars: identifier, relation and duration of P2 and
  // XDCAM EX camera XML.
  bool nativeIdentityWins = false;
};

// A row of the reader table. Rows are tried in order; the first that recognises the file reads it.
// `recognises` looks only at the path and the head.
struct Reader {
  const char* name;
  bool (*recognises)(const ReaderInput& input);
  void (*read)(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output);
};

}  // namespace Sorvik::xmp
