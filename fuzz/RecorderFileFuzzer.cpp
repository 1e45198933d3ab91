// SPDX-License-Identifier: MIT
// WAV files of sound recorders: the number and size of reads is limited, and takes are formed from
// any values.
#include <memory>

#include "FuzzReader.h"
#include "formats/sound/RecorderFile.h"
#include "providers/modern/SoundTakes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Sorvik::formats::sound::RecorderFile;
  constexpr int kMaxReads = 6;
  const sorvik_fuzz::BoundedFile bytes(
      Sorvik::foundation::ByteReader(std::as_bytes(std::span(data, size))), kMaxReads);
  const auto read = [&bytes](std::uint64_t offset, std::size_t count) {
    return bytes.Read(offset, count);
  };
  auto file = RecorderFile::Read(read, size);
  if (!file) return 0;
  const auto facts = std::make_shared<const RecorderFile>(std::move(*file));
  const auto takes = Sorvik::soundroll::GroupTakes({{"a_1.wav", facts}, {"a_2.wav", facts}});
  std::size_t files = 0;
  for (const auto& take : takes) files += take.FileCount();
  sorvik_fuzz::Check(files == 2);
  return 0;
}
