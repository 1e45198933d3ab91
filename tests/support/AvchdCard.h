// SPDX-License-Identifier: MIT
// A synthetic AVCHD card with empty stream files and valid playlists.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/Bytes.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"

namespace sorvik_test {

struct PlayItemOf {
  std::string clip;
  unsigned condition = 1;   // 6 continues the previous item
  std::size_t length = 20;  // of the data after the length field
};

// A header of 58 bytes, the play-list block with its items, and `tail` bytes after it.
inline Bytes PlaylistOf(const std::vector<PlayItemOf>& items, std::size_t tail = 6) {
  Bytes block;
  block.U16(0).U16(items.size()).U16(0);  // reserved; number of items, of sub-paths
  for (const PlayItemOf& item : items) {
    Bytes body;
    body.Text(item.clip).Text("M2TS").U8(0).U8(0xA0 | item.condition);
    body.U8(0).U32(45000).U32(90000);  // STC id; IN; OUT
    block.U16(item.length).Add(body.PadTo(item.length).Cut(item.length));
  }
  Bytes file;
  file.Text("MPLS0100").U32(58).U32(0).U32(0);  // start of list, marks, extension
  file.PadTo(58).U32(block.size()).Add(block).Fill(tail);
  return file;
}

// The file names of a camera.
struct AvchdNaming {
  std::string stream, clipInfo, playlist, index, movieObject;
};
inline const AvchdNaming kShortNames{".MTS", ".CPI", ".MPL", "index.bdm", "MOVIEOBJ.BDM"};
inline const AvchdNaming kLongNames{".m2ts", ".clpi", ".mpls", "index.bdmv", "MovieObject.bdmv"};

// A card without clips that is recognised as AVCHD, in `folder` of the tree.
class AvchdCard {
 public:
  explicit AvchdCard(const TempTree& tree, std::string folder = {},
                     AvchdNaming naming = kShortNames)
      : tree_(tree),
        root_(folder.empty() ? tree.Root() : tree.Path(folder)),
        bdmv_(folder.empty() ? "BDMV" : folder + "/BDMV"),
        naming_(std::move(naming)) {
    for (const char* name : {"/STREAM", "/CLIPINF", "/PLAYLIST"}) tree_.Folder(bdmv_ + name);
    tree_.File(bdmv_ + "/" + naming_.index, Bytes().Text("INDX0100").PadTo(40).str());
    tree_.File(bdmv_ + "/" + naming_.movieObject, Bytes().Text("MOBJ0100").PadTo(40).str());
  }

  const std::string& Root() const { return root_; }
  std::string BDMV() const { return tree_.Path(bdmv_); }
  // The full path of a file or folder below BDMV.
  std::string Path(std::string_view below) const { return BDMV() + "/" + std::string(below); }
  std::string File(std::string_view below, std::string_view content = {}) const {
    return tree_.File(bdmv_ + "/" + std::string(below), content);
  }
  // Creates the stream and the clip information file of each clip.
  void Clips(const std::vector<std::string>& numbers) const {
    for (const std::string& number : numbers) {
      const std::string stream = MadeMedia(naming_.stream);
      File("STREAM/" + number + naming_.stream, stream);
      File("CLIPINF/" + number + naming_.clipInfo,
           Bytes().Text("HDMV0100").PadTo(56).U32(stream.size() / 192).str());
    }
  }
  std::string Playlist(std::string_view number, const std::vector<PlayItemOf>& items) const {
    return File("PLAYLIST/" + std::string(number) + naming_.playlist, PlaylistOf(items).str());
  }

 private:
  const TempTree& tree_;
  std::string root_;
  std::string bdmv_;
  AvchdNaming naming_;
};

}  // namespace sorvik_test
