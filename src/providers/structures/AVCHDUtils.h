// SPDX-License-Identifier: MIT
// Which clips of an AVCHD card are one recording: what its playlists say. A shot is a recording as
// the user sees it; a camera that splits it into several stream files joins them in a playlist by
// seamless connection.
//
// Paths are full paths in UTF-16; lists are appended to. Nothing here reports a failure: what can't
// be read or doesn't hold gives fewer names. Only names and their existence matter of clip
// information and stream files, which are never opened. Within a call scope each playlist is read
// once and each folder listed once. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/avchd/Playlist.h"

namespace Sorvik::AVCHDUtils {

class PlayItemVisitor {
 public:
  // True to go on to the next item. The item is valid during the call alone.
  virtual bool Visit(const formats::avchd::PlayItem& item) = 0;
  virtual ~PlayItemVisitor() = default;
};

// Hands the play items of a playlist file to `visitor` in order.
void ForEachPlayItem(const UTF16String& path, PlayItemVisitor& visitor);

// The playlists of the card at the BDMV folder `bdmv` that decide what is a clip: the visible files
// *.MPL and *.mpls of its PLAYLIST folder, in no other spelling.
std::vector<UTF16String> ListPlaylists(const UTF16String& bdmv);

// The stream files of the shots that a playlist starts, from the STREAM folder beside the
// playlist's own.
void GetShotHeadClips(const UTF16String& playlist, std::vector<UTF16String>& out);

// The stream files of all clips of the shot that `streamFile` belongs to, in playing order, itself
// among them; none if no playlist with a number at or below the clip's own holds it. A clip that
// the shot names again is given once: a small playlist can name one as often as it likes.
void GetShotClips(const UTF16String& streamFile, std::vector<UTF16String>& out);

// For each name its stream file, NAME.MTS or else NAME.m2ts; names without either are left out.
void FindClipFiles(const UTF16String& streamFolder, const std::vector<std::string>& names,
                   std::vector<UTF16String>& out);

// The names of the clips that start a shot; no look at the disk beyond the playlist.
void GetShotHeadNames(const UTF16String& playlist, std::vector<std::string>& names);

// Whether the playlist holds `clip`. If so, `names` becomes the names of the clips of its shot; if
// not, its content is of no use.
bool FindShotOfClip(const std::string& clip, const UTF16String& playlist,
                    std::vector<std::string>& names);

// Whether the path names a stream or clip-information file, by five digits, in its own folder of a
// tree that has its other folders. The file itself needn't exist.
bool IsStructureFile(const UTF16String& path);

}  // namespace Sorvik::AVCHDUtils
