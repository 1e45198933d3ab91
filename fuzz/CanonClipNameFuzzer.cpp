// SPDX-License-Identifier: MIT
// Names of Canon clips: the base is the beginning of the name.
#include <cstdint>
#include <string_view>

#include "FuzzReader.h"
#include "providers/modern/CanonFlatCard.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view stem(reinterpret_cast<const char*>(data), size);
  const auto name = Sorvik::canonflat::ParseClipName(stem);
  sorvik_fuzz::Check(stem.starts_with(name.base));
  sorvik_fuzz::Check(!name.part || *name.part <= 999);
  sorvik_fuzz::Check(name.part || name.isProxy || name.base == stem);
  sorvik_fuzz::Check(stem.empty() || !name.base.empty());
  return 0;
}
