// SPDX-License-Identifier: MIT
// Records of Sony clips: the facts that join parts of a recording stay within their ranges.
#include <cstdint>
#include <string_view>

#include "FuzzReader.h"
#include "formats/sony/ClipRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Sorvik::formats::sony::ClipRecord;
  const auto document = Sorvik::foundation::ParseXml({reinterpret_cast<const char*>(data), size});
  if (!document) return 0;
  const ClipRecord record = ClipRecord::FromRoot(document->Root());
  sorvik_fuzz::Check(record.seconds >= 0);
  for (const auto& timecode : {record.start, record.end}) {
    sorvik_fuzz::Check(!timecode || *timecode < record.framesPerDay);
  }
  // A clip continues itself only if it lasts less than about a second.
  if (Continues(record, record)) sorvik_fuzz::Check(record.seconds <= 1.0);
  return 0;
}
