// SPDX-License-Identifier: MIT
#include "providers/common/ClipValueCache.h"

namespace Sorvik {

const FieldValueMap& ClipValueCache::ValuesOf(const std::string& path) {
  const auto cached = values_.find(path);
  if (cached != values_.end()) return cached->second;
  return values_.emplace(path, XMPSupport::MakeValue(path, fields_)).first->second;
}

const any_regular_t* ClipValueCache::ValueOf(const std::string& path, const std::string& field) {
  const FieldValueMap& values = ValuesOf(path);
  const auto found = values.find(field);
  return found == values.end() ? nullptr : &found->second;
}

}  // namespace Sorvik
