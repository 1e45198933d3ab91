// SPDX-License-Identifier: MIT
#include "xmp/readers/BrawSidecarReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "foundation/Paths.h"
#include "xmp/readers/BrawValues.h"

namespace Sorvik::xmp {

namespace {

constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 20;

bool Recognises(const ReaderInput& input) {
  if (!foundation::HasExtension(input.path, ".sidecar")) return false;
  const std::string_view text = input.head.Text();
  const std::size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
  return first != text.npos && text[first] == '{';
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  const std::uint64_t size = std::min(input.file.Size(), kMaxBytes);
  if (size <= input.head.Size()) {
    output.hasNative = SetBrawSidecar(input.head.Text(), output.native);
    return;
  }
  const auto bytes = input.file.Read(0, static_cast<std::size_t>(size));
  output.hasNative = SetBrawSidecar(foundation::ByteReader(bytes).Text(), output.native);
}

}  // namespace

const Reader kBrawSidecarReader = {"Blackmagic RAW sidecar", Recognises, Read};

}  // namespace Sorvik::xmp
