// SPDX-License-Identifier: MIT
// What a provider implements, as a second base, if its structure can be checked for completeness.
// The provider only describes what its card should contain; CheckCard compares the description with
// the disk: whether parts exist, are empty, truncated or unreadable, and which media is orphaned.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// The roles of findings. The severity of most findings follows from the role.
namespace card_role {
inline constexpr char kEssence[] = "essence";
inline constexpr char kSound[] = "sound channel";
inline constexpr char kProxy[] = "proxy";
inline constexpr char kClipRecord[] = "clip record";
inline constexpr char kIndex[] = "index";
inline constexpr char kPlaylist[] = "playlist";
inline constexpr char kSpan[] = "span";
inline constexpr char kSegment[] = "segment";
inline constexpr char kFrame[] = "frame";
inline constexpr char kThumbnail[] = "thumbnail";              // optional
inline constexpr char kRealTimeMeta[] = "real-time metadata";  // optional
inline constexpr char kVoiceMemo[] = "voice memo";
inline constexpr char kSidecar[] = "sidecar";
inline constexpr char kJournal[] = "journal";  // optional; also for backup copies
inline constexpr char kFolder[] = "folder";
}  // namespace card_role

// A file that belongs to entries or to the card.
struct CardPart {
  enum class Content {
    kMedia,   // probed by its container (MXF, MP4, MPEG-TS, WAV, ...), except with kNames
    kIndex,   // the same for a small binary index: read with kNames, too
    kXml,     // must be well-formed
    kOpaque,  // not read
    kJson,    // must be a JSON document
  };

  std::string path;
  std::string role;                         // one of card_role
  std::vector<std::string> entryKeys = {};  // empty for the card itself
  Content content = Content::kOpaque;
  bool required = true;  // if false, a missing file is no finding
  bool mayBeEmpty = false;
  // If it isn't 0: the minimum size, and its source ("clip information 00001.CPI").
  std::uint64_t minBytes = 0;
  std::string minBytesSource = {};
};

// A provider's description of one card. Paths are UTF-8 and need not exist.
class CardDescription {
 public:
  explicit CardDescription(CheckDepth depth) : depth_(depth) {}

  // With kNames, a provider opens indexes and clip records, but no media.
  CheckDepth Depth() const noexcept { return depth_; }

  // A file of one or several entries. May be called several times for a path; the keys are joined,
  // and the strictest expectation counts.
  void Expect(CardPart part) { parts_.push_back(std::move(part)); }
  // A file of the card itself, such as an index, if it exists. Neither required nor read.
  void AddStructureFile(std::string path) { structureFiles_.push_back(std::move(path)); }
  // Media files below `folder` that are neither expected nor among the paths of an entry are
  // orphaned. `extensions` (dots included) replaces the usual media extensions.
  void AddMediaFolder(std::string folder, std::vector<std::string> extensions = {}) {
    mediaFolders_.push_back({std::move(folder), std::move(extensions)});
  }
  // A folder that the structure needs even if it is empty. It isn't a finding if it is missing.
  void AddFolder(std::string path) { folders_.push_back(std::move(path)); }
  // Findings that only the provider can make: an unreadable index, an unlisted clip, a stale list
  // entry, a number gap, a clip that is known by its id only.
  void Report(Finding finding) { findings_.push_back(std::move(finding)); }
  // The same with the usual severity of the kind and role.
  void Report(Finding::Kind kind, std::string role, std::string path,
              std::vector<std::string> entryKeys = {}, std::string detail = {});

  struct MediaFolder {
    std::string path;
    std::vector<std::string> extensions;
  };
  const std::vector<CardPart>& Parts() const noexcept { return parts_; }
  const std::vector<std::string>& StructureFiles() const noexcept { return structureFiles_; }
  const std::vector<MediaFolder>& MediaFolders() const noexcept { return mediaFolders_; }
  const std::vector<std::string>& Folders() const noexcept { return folders_; }
  const std::vector<Finding>& Findings() const noexcept { return findings_; }

 private:
  CheckDepth depth_;
  std::vector<CardPart> parts_;
  std::vector<std::string> structureFiles_;
  std::vector<MediaFolder> mediaFolders_;
  std::vector<std::string> folders_;
  std::vector<Finding> findings_;
};

// The usual severity: a warning for unlisted clips and for optional roles, else an error.
Finding::Severity SeverityOf(Finding::Kind kind, std::string_view role);

class CardChecker {
 public:
  virtual ~CardChecker() = default;
  // Describes the card at `path`, which the provider claims. `entries` are those of GetContent for
  // that path, with Path, ExtraPath and ProxyPath. Runs in a call scope of the caller. Any thread.
  virtual void DescribeCard(const std::string& path, const ContentMap& entries,
                            CardDescription& card) const = 0;
};

}  // namespace Sorvik
