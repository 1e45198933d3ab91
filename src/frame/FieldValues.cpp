// SPDX-License-Identifier: MIT
#include "frame/FieldValues.h"

#include <utility>

namespace Sorvik {

any_regular_t PathList(std::vector<std::string> paths) {
  std::vector<any_regular_t> list;
  list.reserve(paths.size());
  for (std::string& path : paths) list.emplace_back(std::move(path));
  return any_regular_t(std::move(list));
}

any_regular_t PathList(const std::vector<UTF16String>& paths) {
  std::vector<any_regular_t> list;
  list.reserve(paths.size());
  for (const UTF16String& path : paths) list.emplace_back(Hestra::MakeStdString(path));
  return any_regular_t(std::move(list));
}

std::string TextOf(const FieldValueMap& fields, const std::string& name) {
  std::string text;
  if (const auto found = fields.find(name); found != fields.end()) found->second.cast(text);
  return text;
}

}  // namespace Sorvik
