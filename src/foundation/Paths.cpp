// SPDX-License-Identifier: MIT
#include "foundation/Paths.h"

#include <algorithm>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/PathText.h"

namespace Sorvik::foundation {
namespace {

using platform::kSeparator;

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The offset in a file name at which its extension begins; the size of the name without one.
std::size_t ExtensionStart(std::string_view name) {
  const auto dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? name.size() : dot;
}

}  // namespace

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path;
  path.reserve(folder.size() + 1 + name.size());
  path = folder;
  if (path.empty() || path.back() != kSeparator) path += kSeparator;
  path += name;
  return path;
}

std::string_view FileName(std::string_view path) {
  const auto slash = path.rfind(kSeparator);
  return slash == path.npos ? path : path.substr(slash + 1);
}

std::string_view FileStem(std::string_view path) {
  const std::string_view name = FileName(path);
  return name.substr(0, ExtensionStart(name));
}

std::string_view FileExtension(std::string_view path) {
  const std::string_view name = FileName(path);
  return name.substr(ExtensionStart(name));
}

std::string_view ParentFolder(std::string_view path) {
  const auto slash = path.rfind(kSeparator);
  if (slash == path.npos) return {};
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

bool IsHidden(std::string_view path) { return FileName(path).starts_with('.'); }

std::string_view WithoutTrailingSlash(std::string_view path) {
  if (path.size() > 1 && path.back() == kSeparator) path.remove_suffix(1);
  return path;
}

std::string NormalizedPath(std::string_view path) { return platform::NormalizePath(path); }

bool IsInside(std::string_view path, std::string_view folder) {
  const std::string inner = NormalizedPath(path);
  const std::string outer = JoinPath(NormalizedPath(folder), {});
  return inner.size() > outer.size() && inner.starts_with(outer);
}

bool IsValidPath(std::string_view path) {
  return path.starts_with(kSeparator) && path.size() < platform::kPathLimit &&
         path.find('\0') == path.npos;
}

std::size_t CountCodeUnits(std::string_view text) {
  return IsAscii(text) ? text.size() : Hestra::MakeString(text).size();
}

std::string SubstrOfCodeUnits(std::string_view text, std::size_t begin, std::size_t count) {
  if (IsAscii(text)) return std::string(text.substr(std::min(begin, text.size()), count));
  const std::u16string units = Hestra::MakeString(text);
  return Hestra::MakeStdString(
      std::u16string_view(units).substr(std::min(begin, units.size()), count));
}

bool StartsWithCharacters(std::string_view text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  return IsAscii(prefix) || Hestra::MakeString(text).starts_with(Hestra::MakeString(prefix));
}

std::string FoldCase(std::string_view text) {
  if (!IsAscii(text)) {
    return Hestra::MakeStdString(tarnwick::utility::FoldCase(Hestra::MakeString(text)));
  }
  std::string folded(text);
  std::ranges::transform(folded, folded.begin(), FoldAscii);
  return folded;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  if (!IsAscii(a) || !IsAscii(b)) return FoldCase(a) == FoldCase(b);
  return std::ranges::equal(a, b, {}, FoldAscii, FoldAscii);
}

std::string UpperCase(std::string_view text) {
  return Hestra::MakeStdString(tarnwick::utility::UpperCase(Hestra::MakeString(text)));
}

bool HasExtension(std::string_view path, std::string_view extension) {
  return EqualIgnoringCase(FileExtension(path), extension);
}

}  // namespace Sorvik::foundation
