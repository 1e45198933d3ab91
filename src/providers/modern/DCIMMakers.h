// SPDX-License-Identifier: MIT
// How cameras name folders and files below DCIM: one table with a row for each maker.
//
// A DCF object (CIPA DC-009, Design rule for Camera File system) consists of all files of one
// folder with the same stem: a picture, its raw file, a voice memo, a thumbnail. A row adds what a
// maker's names mean beyond that: which chapters are one recording, which file is the proxy of
// another one, and where thumbnails are. Nothing is joined by a number alone. All names are
// compared ignoring case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::dcim {

inline constexpr std::string_view kDCIM = "DCIM";
inline constexpr std::string_view kMisc = "MISC";

// Of a file, by its extension.
enum class Role {
  kOriginal,
  kProxy,
  kThumbnail,
  kSound,    // voice memos and separate sound
  kSidecar,  // anything else that belongs to an original
};

struct ExtensionRole {
  std::string_view extension;  // with its dot
  Role role;
};

// The meaning of a stem, without the extension. Files of the same recording in another form come
// after the originals.
enum class Form { kOriginal, kEdit, kProxy };

// What the number of a stem counts.
enum class Numbering {
  kNone,
  kChapters,  // of one recording, without gaps from the first number on
  kLoop,      // of one recording whose oldest chapters the camera deletes
  kFrames,    // photographs of one series
};

// Parts of one recording have the same kind and the same key.
struct StemPattern {
  std::string_view mask;  // see MatchesPattern
  // For each character of the stem: "k" belongs to the key, "n" to the number.
  std::string_view use;
  // The kind of recording. A proxy may name several, separated by commas: it belongs to the first
  // one that exists.
  std::string_view kinds;
  Form form = Form::kOriginal;
  Numbering numbering = Numbering::kNone;
  std::uint32_t firstNumber = 0;  // of chapters
};

// A folder next to the files, whose files belong to them. Stems may end with `stemEnd`, and may
// contain the extension of the original.
struct CompanionFolder {
  std::string_view name;
  std::string_view stemEnd;
  Role role;
};

struct Maker {
  std::string_view name;
  std::span<const std::string_view> folders;  // patterns of the names of folders below DCIM
  std::span<const StemPattern> stems = {};    // all other stems are DCF objects
  // In the order in which the first original of an object is chosen, after raw pictures. Extensions
  // that a row lacks are those of the last row.
  std::span<const ExtensionRole> extensions;
  // An original with the second extension is the proxy of one with the first and the same stem.
  std::string_view rawExtension = {};
  std::string_view proxyExtension = {};
  std::span<const CompanionFolder> companions = {};
  // Files of a folder that belong to no object: names, or "*" and the end of a name.
  std::span<const std::string_view> folderFiles = {};
  // Thumbnails are in MISC/THM/<number of the folder> instead of next to the original.
  bool thumbnailsInMisc = false;
  // The camera cuts long takes into clips with consecutive numbers, at the end of their stems or in
  // front of a letter, when a file reaches one of these sizes.
  std::span<const std::uint64_t> fileLimits = {};
};

// The table. The last row is that of DCF objects of any camera.
std::span<const Maker> Makers();

// The row for a folder; nullptr if its name matches no row.
const Maker* MakerOfFolder(std::string_view folder);

// The meaning of a file name.
struct FileIdentity {
  const Maker* maker = nullptr;          // never null
  const StemPattern* pattern = nullptr;  // null for DCF objects
  // Equal for the files of an object in one folder. Several candidates for a proxy: the first one
  // of which an original exists.
  std::vector<std::string> groups;
  std::uint32_t number = 0;
  Form form = Form::kOriginal;
  Role role = Role::kSidecar;
  bool isKnown = false;  // a row lists the extension
  std::size_t rank = 0;  // of the extension; the lowest is the first original
};

// Identifies a file by the row of its folder. Without a row (`folder` is null) by the first row
// whose stems match.
FileIdentity Identify(const Maker* folder, std::string_view name);

// True if the file belongs to its folder instead of an object.
bool IsFolderFile(const Maker* folder, std::string_view name);

// The stem of another chapter of the recording that `stem`, which matches `pattern`, belongs to.
std::string StemOfChapter(const Maker& maker, const StemPattern& pattern, std::string_view stem,
                          std::uint32_t number);

}  // namespace Sorvik::dcim
