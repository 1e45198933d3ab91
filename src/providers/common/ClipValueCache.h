// SPDX-License-Identifier: MIT
// The metadata of the clips of one operation: each file is read once, however many of its fields
// are used. A local variable of that operation. One thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/ReadAhead.h"

namespace Sorvik {

class ClipValueCache {
 public:
  explicit ClipValueCache(const FieldNameSet& fields) : fields_(XMPSupport::ParseFields(fields)) {}

  // What else to read for a clip; any thread.
  using ReadMore = std::function<void(const std::string& path, const FieldValueMap& values)>;

  // Announces files whose values will be used, about in this order (foundation/ReadAhead.h).
  // Replaces the earlier announcement.
  void ReadAhead(std::vector<std::string> paths, std::function<bool()> stop,
                 ReadMore readMore = {});

  // The requested fields of the media file at `path` (UTF-8), as XMPSupport::MakeValue returns
  // them. Valid as long as the cache.
  const FieldValueMap& ValuesOf(const std::string& path);
  // One of these fields; nullptr if the file doesn't have it.
  const any_regular_t* ValueOf(const std::string& path, const std::string& field);

 private:
  XMPSupport::XMPFieldBits fields_;
  std::unordered_map<std::string, FieldValueMap> values_;
  std::optional<foundation::ReadAhead<FieldValueMap>> ahead_;
  std::unordered_map<std::string, std::size_t> announced_;  // the indexes in ahead_
};

}  // namespace Sorvik
