// SPDX-License-Identifier: MIT
#include "providers/common/ClipValueCache.h"

#include <memory>
#include <utility>

namespace Sorvik {

void ClipValueCache::ReadAhead(std::vector<std::string> paths, std::function<bool()> stop,
                               ReadMore readMore) {
  announced_.clear();
  for (std::size_t i = 0; i < paths.size(); ++i) announced_.emplace(paths[i], i);
  const auto shared = std::make_shared<const std::vector<std::string>>(std::move(paths));
  ahead_.emplace(
      shared->size(),
      [shared, fields = fields_, readMore = std::move(readMore)](std::size_t i) {
        const std::string& path = (*shared)[i];
        FieldValueMap values = XMPSupport::MakeValue(path, fields);
        if (readMore) readMore(path, values);
        return values;
      },
      std::move(stop));
}

const FieldValueMap& ClipValueCache::ValuesOf(const std::string& path) {
  const auto cached = values_.find(path);
  if (cached != values_.end()) return cached->second;
  const auto announced = announced_.find(path);
  FieldValueMap values = announced == announced_.end() ? XMPSupport::MakeValue(path, fields_)
                                                       : ahead_->Take(announced->second);
  return values_.emplace(path, std::move(values)).first->second;
}

const any_regular_t* ClipValueCache::ValueOf(const std::string& path, const std::string& field) {
  const FieldValueMap& values = ValuesOf(path);
  const auto found = values.find(field);
  return found == values.end() ? nullptr : &found->second;
}

}  // namespace Sorvik
