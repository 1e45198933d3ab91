// SPDX-License-Identifier: MIT
// Paths and names in UTF-8, and their comparison without regard to case. Works on the text alone
// and never touches the disk. The rules are those of Hestra::PathUtils. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Sorvik::foundation {

// `folder`, a separator (unless `folder` ends with one) and `name`.
std::string JoinPath(std::string_view folder, std::string_view name);

// For "/a/b.c": "b.c", "b" and ".c". The extension begins at the last dot of the name and includes
// it; a leading dot begins no extension. The results point into `path`.
std::string_view FileName(std::string_view path);
std::string_view FileStem(std::string_view path);
std::string_view FileExtension(std::string_view path);
// For "/a/b.c": "/a"; for "/a": "/". Empty if `path` has no separator.
std::string_view ParentFolder(std::string_view path);

// True if the file name begins with a dot.
bool IsHidden(std::string_view path);

// Removes one trailing separator; "/" stays.
std::string_view WithoutTrailingSlash(std::string_view path);

// See platform::NormalizePath.
std::string NormalizedPath(std::string_view path);

// True if `path` is inside `folder` once both are normalized. For paths that a file on a card
// names, which must not lead off the card.
bool IsInside(std::string_view path, std::string_view folder);

// True if `path` can be a path of this system: absolute, without NUL, and not too long.
bool IsValidPath(std::string_view path);

// The number of 16-bit code units of the text, which is how names of cards are measured.
std::size_t CountCodeUnits(std::string_view text);
// At most `count` 16-bit code units of the text from `begin` on. A range that splits a character
// gives an empty or invalid text.
std::string SubstrOfCodeUnits(std::string_view text, std::size_t begin,
                              std::size_t count = std::string_view::npos);

// True if `text` begins with the characters of `prefix`. A byte that isn't part of valid UTF-8 is a
// character of its own.
bool StartsWithCharacters(std::string_view text, std::string_view prefix);

// The simple Unicode case folding of tarnwick::utility::FoldCase, on UTF-8.
std::string FoldCase(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);
// The simple Unicode mapping to upper case, on UTF-8.
std::string UpperCase(std::string_view text);

// Compares the extension of a file name with `extension` (its dot included), ignoring case.
bool HasExtension(std::string_view path, std::string_view extension);

}  // namespace Sorvik::foundation
