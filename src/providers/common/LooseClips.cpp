// SPDX-License-Identifier: MIT
#include "providers/common/LooseClips.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik {

std::optional<FileGroup> GroupLooseFiles(const std::string& folder, const std::string& name,
                                         LooseNameParser parse) {
  const auto wanted = parse(name);
  if (!wanted) return std::nullopt;
  FileGroup group;
  std::vector<std::pair<std::uint32_t, std::string>> originals;
  bool isTypical = false;
  const auto listed = foundation::CardFolder::Of(folder);
  for (const std::string& file : listed->VisibleFiles()) {
    const auto parsed = parse(file);
    if (!parsed || !foundation::EqualIgnoringCase(parsed->clip, wanted->clip)) continue;
    isTypical = isTypical || parsed->isTypical;
    std::string path = listed->PathOf(file);
    if (parsed->isProxy && group.proxy.empty()) group.proxy = path;
    if (parsed->isOriginal) {
      originals.emplace_back(parsed->part, std::move(path));
    } else {
      group.others.push_back(std::move(path));
    }
  }
  if (originals.empty() || !isTypical) return std::nullopt;
  std::ranges::stable_sort(originals);
  for (auto& [part, path] : originals) group.parts.push_back(std::move(path));
  group.name = foundation::FileStem(group.parts.front());
  return group;
}

}  // namespace Sorvik
