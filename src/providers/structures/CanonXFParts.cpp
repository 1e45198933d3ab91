// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "providers/structures/CanonXFNames.h"
#include "providers/structures/ProviderCanonXF.h"

namespace Sorvik {

using foundation::CardFolder;

// The spans of the clip by number. A span or its information implies those before it.
std::vector<ListedPart> ProviderCanonXF::ListParts(const std::string& path,
                                                   const std::string& key) const {
  const ContentMap content = GetContent(path, key, {kPathField});
  if (content.empty()) return {};
  const std::string own = TextOf(content.begin()->second, kPathField);
  const auto clip = CardFolder::Of(foundation::ParentFolder(own));
  const std::string_view extension = canonxf::kSpanExtension;
  const std::map<int, std::string> spans = canonxf::NumberedFiles(*clip, extension);
  const auto infos = canonxf::NumberedFiles(*clip, canonxf::kSpanInfoExtension);
  std::vector<ListedPart> parts;
  if (spans.empty()) return parts;
  const int lastInfo = infos.empty() ? 0 : infos.rbegin()->first;
  const int last = std::max(spans.rbegin()->first, lastInfo);
  for (int number = 1; number <= last; ++number) {
    const auto span = spans.find(number);
    const bool exists = span != spans.end();
    const std::string name =
        exists ? span->second
               : canonxf::SpanName(canonxf::ClipIdOf(foundation::FileStem(own)), number, extension);
    parts.push_back({.path = clip->PathOf(name), .isPresent = exists});
  }
  return parts;
}

}  // namespace Sorvik
