// SPDX-License-Identifier: MIT
#include <string>
#include <utility>
#include <vector>

#include "foundation/Paths.h"
#include "providers/modern/DCIMCard.h"
#include "providers/modern/ProviderDCIM.h"

namespace Sorvik {
namespace dcim {

std::vector<Chapter> ChaptersOf(const Object& object) {
  std::vector<Chapter> chapters;
  if (object.parts.empty()) return chapters;
  const std::string& first = object.parts.front().path;
  const std::string folder(foundation::ParentFolder(first));
  const bool isNumbered = object.PartNumbering() == Numbering::kChapters;
  std::uint32_t next = isNumbered ? object.pattern->firstNumber : 0;
  for (const Part& part : object.parts) {
    for (; isNumbered && next < part.number; ++next) {
      std::string name =
          StemOfChapter(*object.maker, *object.pattern, foundation::FileStem(part.path), next);
      name.append(foundation::FileExtension(first));
      chapters.push_back({foundation::JoinPath(folder, name), false});
    }
    next = part.number + 1;
    chapters.push_back({part.path, true});
  }
  return chapters;
}

}  // namespace dcim

std::vector<ListedPart> ProviderDCIM::ListParts(const std::string& path,
                                                const std::string& key) const {
  const auto object = dcim::FindObject(std::string(foundation::WithoutTrailingSlash(path)), key);
  std::vector<ListedPart> parts;
  if (object == nullptr) return parts;
  const dcim::Numbering numbering = object->PartNumbering();
  const bool hasChapters =
      numbering == dcim::Numbering::kChapters || numbering == dcim::Numbering::kLoop;
  if (!hasChapters) return parts;
  for (dcim::Chapter& chapter : dcim::ChaptersOf(*object)) {
    parts.push_back({.path = std::move(chapter.path), .isPresent = chapter.exists});
  }
  return parts;
}

}  // namespace Sorvik
