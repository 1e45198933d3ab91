// SPDX-License-Identifier: MIT
// Runs a metadata reader on a fuzzer's bytes and checks the invariants of all readers.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "xmp/Namespaces.h"
#include "xmp/Reader.h"

namespace sorvik_fuzz {

inline void Check(bool holds) {
  if (!holds) std::abort();
}

// Bytes in memory. Fails if a reader reads too much or too often.
class BoundedFile : public Sorvik::xmp::FileBytes {
 public:
  BoundedFile(Sorvik::foundation::ByteReader bytes, int maxReads)
      : bytes_(bytes), maxReads_(maxReads) {}

  std::uint64_t Size() const noexcept override { return bytes_.Size(); }
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const override {
    constexpr std::size_t kMaxBytes = 16 * 1024 * 1024;
    Check(count <= kMaxBytes && ++reads_ <= maxReads_);
    const auto part = bytes_.Clip(offset, count).Bytes();
    return {part.begin(), part.end()};
  }

 private:
  Sorvik::foundation::ByteReader bytes_;
  int maxReads_;
  mutable int reads_ = 0;
};

// Whether a file has metadata, and the facts of its head, must not depend on the wanted properties:
// compares the output with all properties wanted and with none.
inline void Fuzz(const Sorvik::xmp::Reader& reader, std::span<const std::uint8_t> data,
                 const std::string& path, int maxReads = 3,
                 std::size_t headSize = Sorvik::xmp::kHeadSize) {
  using namespace Sorvik::xmp;
  const Sorvik::foundation::ByteReader bytes(std::as_bytes(data));
  ReaderOutput outputs[2];
  const WantedProperties wanted[2] = {WantedProperties::All(), WantedProperties::None()};
  for (int i = 0; i < 2; ++i) {
    const BoundedFile file(bytes, maxReads);
    const ReaderInput input{path, file, bytes.Clip(0, headSize)};
    reader.recognises(input);
    reader.read(input, wanted[i], outputs[i]);
  }
  Check(outputs[0].hasNative == outputs[1].hasNative);
  std::string codecs[2];
  for (int i = 0; i < 2; ++i) {
    outputs[i].native.GetProperty(kNsDM, "videoCompressor", &codecs[i]);
  }
  Check(codecs[0] == codecs[1]);
}

// For readers that seek in the file. A second run with a short head makes them do so.
inline void FuzzSeeking(const Sorvik::xmp::Reader& reader, std::span<const std::uint8_t> data,
                        const std::string& path) {
  constexpr int kMaxReads = 96;
  constexpr std::size_t kShortHead = 256;
  Fuzz(reader, data, path, kMaxReads);
  Fuzz(reader, data, path, kMaxReads, kShortHead);
}

}  // namespace sorvik_fuzz
