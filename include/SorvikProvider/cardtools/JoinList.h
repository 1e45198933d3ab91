// SPDX-License-Identifier: MIT
// Lists with which players and editing programs open the files of a recording as one shot, without
// rewriting them. For hosts that hand over clips.
//
//   const JoinOptions options{.format = JoinFormat::kOtio};
//   for (const JoinFile& list : MakeJoinLists("/media/CARD", id, "0001AB", options).files) ...
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/Catalogue.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

enum class JoinFormat {
  kFfconcat,  // of ffmpeg's demuxer "concat"; for one clip, one list for each track in a file
  kOtio,      // OpenTimelineIO
  kAle,       // Avid Log Exchange
  kEdl,       // CMX 3600
  kFcpxml,    // Final Cut Pro XML 1.10
  kCsv,       // a table of all parts
  kJson       // all parts as one JSON document
};

// The format with the name "ffconcat", "otio", "ale", "edl", "fcpxml", "csv" or "json"; nullopt for
// any other name.
SORVIK_EXPORT std::optional<JoinFormat> JoinFormatNamed(std::string_view name);

struct JoinOptions {
  JoinFormat format = JoinFormat::kOtio;
  // The full path that the list will have: ffconcat names files below its folder relative to it,
  // and further tracks get a path next to it. Empty if the list isn't written to a file.
  std::string output = {};
  // Write a list even if a part between others or the first one of one track only, or a frame of an
  // image sequence, is missing.
  bool allowGaps = false;
  // Write JSON with one value per line.
  bool indents = false;
};

struct JoinFile {
  std::string path;  // where the list belongs; empty if JoinOptions::output is
  std::string text;
};

// Why a list can't be made, or what it lacks.
struct JoinProblem {
  std::string path;  // of the card, or of a file
  std::string text;  // in English
};

enum class JoinStatus {
  kDone,
  kNoEntry,  // the card has no such entry
  kGap,      // a part is missing, and JoinOptions::allowGaps isn't set
  kFailed,   // the format can't contain the shot
  kAborted
};

struct JoinResult {
  JoinStatus status = JoinStatus::kDone;
  std::vector<JoinFile> files;        // empty unless status is kDone
  JoinProblem problem;                // set unless status is kDone
  std::vector<JoinProblem> warnings;  // such as a missing last part; each once
};

// Makes the list of the entry `key` of the structure at `path`, as the provider `identification`
// lists it, or of all its clips if `key` is empty. Nothing is written to disk. Reads what a listing
// and GetShotParts read. An aborted `request` ends it early. Never throws for bad data. Any thread,
// between ProviderHost::Initialize and the last Shutdown.
SORVIK_EXPORT JoinResult MakeJoinLists(const std::string& path, const std::string& identification,
                                       const std::string& key, const JoinOptions& options,
                                       ProviderRequest* request = nullptr);

// The same for a card that ReadCataloguedCard returned, without access to the card. A catalogue of
// names only (CheckDepth::kNames) has no lengths.
SORVIK_EXPORT JoinResult MakeJoinLists(const CataloguedCard& card, const std::string& key,
                                       const JoinOptions& options);

struct SORVIK_EXPORT JoinListsMessage : Hestra::MessageImpl<JoinListsMessage>,
                                        Hestra::Allocated<JoinListsMessage> {
  JoinResult joined;
  std::string path;
  std::string identification;
  std::string key;
  ContentResultCode result = kResultDone;  // kResultNoContent: no list; or kResultAborted

  ~JoinListsMessage() override;
};

// What RequestJoinLists queues; ends in a JoinListsMessage.
class SORVIK_EXPORT JoinListsRequest final : public ProviderRequest {
 public:
  JoinListsRequest(tarnwick::utility::ImmutableString station, std::string path,
                   std::string identification, std::string key, JoinOptions options);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;
  JoinListsMessage EmptyMessage() const;

  std::string path_;
  std::string identification_;
  std::string key_;
  JoinOptions options_;
};

// Runs MakeJoinLists on the provider executor. The result is posted to `station`; the returned
// reference can abort it.
SORVIK_EXPORT Hestra::InterfaceRef<JoinListsRequest, Hestra::IThreadedQueueRequest>
RequestJoinLists(const std::string& path, const std::string& identification, const std::string& key,
                 const JoinOptions& options, tarnwick::utility::ImmutableString station);

}  // namespace Sorvik
