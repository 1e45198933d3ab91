// SPDX-License-Identifier: MIT
// Runs a reader of native metadata over a fuzzer's bytes, and checks what holds for every file.
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

// Bytes in memory, which refuse a reader that asks for too much or too often.
class BoundedFile : public Sorvik::xmp::FileBytes {
 public:
  BoundedFile(Sorvik::foundation::ByteReader bytes, int mostReads)
      : bytes_(bytes), mostReads_(mostReads) {}

  std::uint64_t Size() const noexcept override { return bytes_.Size(); }
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const override {
    constexpr std::size_t kMaxBytes = 16 * 1024 * 1024;
    Check(count <= kMaxBytes && ++reads_ <= mostReads_);
    const auto part = bytes_.Clip(offset, count).Bytes();
    return {part.begin(), part.end()};
  }

 private:
  Sorvik::foundation::ByteReader bytes_;
  int mostReads_;
  mutable int reads_ = 0;
};

// Whether a file has metadata, and what it says, doesn't depend on the properties wanted; these are
// the readers' output with all of them, and with none.
inline void Fuzz(const Sorvik::xmp::Reader& reader, std::span<const std::uint8_t> data,
                 const std::string& path, int mostReads = 3,
                 std::size_t headSize = Sorvik::xmp::kHeadSize) {
  using namespace Sorvik::xmp;
  const Sorvik::foundation::ByteReader bytes(std::as_bytes(data));
  ReaderOutput outputs[2];
  const WantedProperties wanted[2] = {WantedProperties::All(), WantedProperties::None()};
  for (int i = 0; i < 2; ++i) {
    const BoundedFile file(bytes, mostReads);
    const ReaderInput input{path, file, bytes.Clip(0, headSize)};
    reader.recognises(input);
    reader.read(input, wanted[i], outputs[i]);
  }
  Check(outputs[0].hasNative == outputs[1].hasNative);
  std::string rates[2];
  for (int i = 0; i < 2; ++i) {
    outputs[i].native.GetProperty(kNsDM, "videoCompressor", &rates[i]);
  }
  Check(rates[0] == rates[1]);
}

// For readers that jump about in the file, the head of which is cut short here to make them do so.
inline void FuzzJumps(const Sorvik::xmp::Reader& reader, std::span<const std::uint8_t> data,
                      const std::string& path) {
  constexpr int kMaxReads = 96;
  constexpr std::size_t kShortHead = 256;
  Fuzz(reader, data, path, kMaxReads);
  Fuzz(reader, data, path, kMaxReads, kShortHead);
}

}  // namespace sorvik_fuzz
