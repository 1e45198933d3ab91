// SPDX-License-Identifier: MIT
// Whether a card is complete: everything that is missing or damaged as far as the card itself can
// prove it, and the role of each file on it. For a host that copies a card before it is formatted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// How much of the card is read.
enum class CheckDepth {
  kNames,      // indexes and clip records are read; of media files only name and size
  kStructure,  // heads and tails of media files, too: a few reads per file
};

struct Finding {
  enum class Kind {
    kMissing,     // a list, record or layout requires it
    kEmpty,       // 0 bytes in a role that can't be empty
    kTruncated,   // shorter than its own header, an index or its neighbours require
    kUnreadable,  // can't be opened, listed or parsed
    kOrphaned,    // media that no entry contains
    kUnlisted,    // a clip that is missing in the card's own list
    kStale,       // a list entry for a clip of which nothing is left
    kDiffers,     // a copy has other contents; made by hosts that compare
  };
  enum class Severity { kError, kWarning, kNote };

  Kind kind = Kind::kMissing;
  Severity severity = Severity::kError;
  // One of: essence, sound channel, proxy, clip record, index, playlist, span, segment, frame,
  // thumbnail, real-time metadata, voice memo, sidecar, journal, folder.
  std::string role;
  // Where it is or should be; the id of a clip whose place is unknown.
  std::string path;
  std::vector<std::string> entryKeys;  // as the listing keys them; empty for the card itself
  std::string detail;                  // why, in English; may be empty
};

// "missing", "empty", ...
SORVIK_EXPORT std::string_view NameOf(Finding::Kind kind);
// "error", "warning", "note".
SORVIK_EXPORT std::string_view NameOf(Finding::Severity severity);

// The role of a file on the card.
enum class CardFileRole {
  kClip,       // belongs to at least one entry
  kStructure,  // belongs to the card itself, such as an index
  kForeign,    // isn't part of the structure
  kHidden,     // written by desktops and file servers
};

// "clip", "structure", "foreign", "hidden".
SORVIK_EXPORT std::string_view NameOf(CardFileRole role);

struct CardFile {
  std::string path;
  CardFileRole role = CardFileRole::kForeign;
  std::uint64_t bytes = 0;
  std::string part;                 // what it is, in the terms of Finding::role
  std::vector<std::string> owners;  // keys of the entries
  // A copy of the card needs it: the files of clips, of the card itself, orphaned media, and what
  // is below the folders that entries list among their extra paths.
  bool isPartOfCopy = false;
};

struct CardFindings {
  std::vector<Finding> findings;  // errors first, then by path
  // All regular files below the path, by path, then parts of its entries on other cards.
  std::vector<CardFile> files;
  // Folders that the structure requires and that contain no file.
  std::vector<std::string> emptyFolders;
  std::uint64_t clips = 0;  // number of entries
  std::uint64_t bytes = 0;  // of the clip and structure files below the path
  CheckDepth depth = CheckDepth::kStructure;
  // No error was found, and the check ran to its end. With CheckDepth::kNames this covers names,
  // sizes and indexes only.
  bool complete = false;
};

// Checks the card at `path` by the rules of the provider `identification`. If the provider checks
// no structure or doesn't claim the path, the result has no findings, no files and isn't complete.
// A file of another structure at the same path is neither a finding nor foreign. An aborted
// `request` ends the check early. Any thread, between ProviderHost::Initialize and the last
// Shutdown.
SORVIK_EXPORT CardFindings CheckCard(const std::string& path, const std::string& identification,
                                     CheckDepth depth = CheckDepth::kStructure,
                                     ProviderRequest* request = nullptr);

// True if CheckCard has an answer for this provider at that path.
SORVIK_EXPORT bool CanCheckCard(const std::string& path, const std::string& identification);

struct SORVIK_EXPORT CardCheckMessage : Hestra::MessageImpl<CardCheckMessage>,
                                        Hestra::Allocated<CardCheckMessage> {
  CardFindings findings;
  std::string path;
  std::string identification;
  ContentResultCode result = kResultDone;  // or kResultAborted

  ~CardCheckMessage() override;
};

// What RequestCardCheck queues; ends in a CardCheckMessage.
class SORVIK_EXPORT CardCheckRequest final : public ProviderRequest {
 public:
  CardCheckRequest(tarnwick::utility::ImmutableString station, std::string path,
                   std::string identification, CheckDepth depth);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
  std::string identification_;
  CheckDepth depth_;
};

// Checks on the provider executor. The result is posted to `station`; the returned reference can
// abort the check.
SORVIK_EXPORT Hestra::InterfaceRef<CardCheckRequest, Hestra::IThreadedQueueRequest>
RequestCardCheck(const std::string& path, const std::string& identification, CheckDepth depth,
                 tarnwick::utility::ImmutableString station);

}  // namespace Sorvik
