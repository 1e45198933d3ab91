// SPDX-License-Identifier: MIT
// Finds out from the playlists of an AVCHD card which clips belong to one shot. A shot is a
// recording as the user sees it; a camera that splits it into several stream files joins them in a
// playlist by seamless connection.
//
// Paths are full paths, UTF-16 unless they are std::string; results are appended to the lists. What
// can't be read or is invalid gives fewer names; nothing is reported. Clip information and stream
// files are never opened, only their names and their existence matter. Within a call scope each
// playlist is read once and each folder listed once. Any thread.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/avchd/Playlist.h"

namespace Sorvik::AVCHDUtils {

class PlayItemVisitor {
 public:
  // Returns true to go on to the next item. The item is valid during the call only.
  virtual bool Visit(const formats::avchd::PlayItem& item) = 0;
  virtual ~PlayItemVisitor() = default;
};

// Calls `visitor` with the play items of a playlist file in order.
void ForEachPlayItem(const UTF16String& path, PlayItemVisitor& visitor);

// The playlists of the card at the BDMV folder `bdmv` that decide what is a clip: the visible files
// *.MPL and *.mpls of its PLAYLIST folder, case-sensitive.
std::vector<std::string> ListPlaylists(const std::string& bdmv);

// The stream files of the shots that start in a playlist, from the STREAM folder next to the
// playlist's folder.
void GetShotHeadClips(const UTF16String& playlist, std::vector<UTF16String>& out);

// The stream files of all clips of the shot that `streamFile` belongs to, itself included, in
// playing order. None if no playlist with a number up to the clip's number contains it. A clip that
// the shot repeats is given once.
void GetShotClips(const UTF16String& streamFile, std::vector<UTF16String>& out);

// For each name its stream file, NAME.MTS or else NAME.m2ts; names without either are skipped.
void FindClipFiles(const UTF16String& streamFolder, const std::vector<std::string>& names,
                   std::vector<UTF16String>& out);

// The names of the clips that start a shot. Reads nothing but the playlist.
void GetShotHeadNames(const UTF16String& playlist, std::vector<std::string>& names);

// Returns whether the playlist contains `clip`, and sets `names` to the clips of its shot.
bool FindShotOfClip(const std::string& clip, const UTF16String& playlist,
                    std::vector<std::string>& names);

// True if `path` is that of a stream or clip-information file: named by five digits, in its folder
// of a tree that has the other folders of a card. The file itself needn't exist.
bool IsStructureFile(const UTF16String& path);

}  // namespace Sorvik::AVCHDUtils
