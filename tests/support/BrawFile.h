// SPDX-License-Identifier: MIT
// Made Blackmagic RAW files: a movie without frames and its named values.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/IsoBytes.h"

namespace sorvik_test {

struct BrawKey {
  std::string name;
  std::uint32_t type;  // well-known type of QuickTime metadata
  Bytes value;
};
inline BrawKey TextKey(const std::string& name, const std::string& text) {
  return {name, 1, Bytes(text)};
}
inline BrawKey NumberKey(const std::string& name, std::uint32_t number) {
  return {name, 77, Bytes().U32(number)};
}

inline Bytes BrawMetadata(const std::vector<BrawKey>& keys) {
  Bytes names = Bytes().U32(0).U32(keys.size());
  std::vector<Bytes> items;
  for (const BrawKey& key : keys) {
    names.U32(8 + key.name.size()).Text("mdta").Text(key.name);
    const Bytes data = Box("data", Bytes().U32(key.type).U32(0).Add(key.value));
    items.push_back(Bytes().U32(8 + data.size()).U32(items.size() + 1).Add(data));
  }
  return Box("meta", {Handler("mdta"), Box("keys", names), Box("ilst", items)});
}

inline std::string MadeBraw(const std::vector<BrawKey>& keys) {
  const Bytes video = Track(
      "vide", MediaHeader(24000, 24000),
      {Descriptions(VideoEntry("brxq", 5120, 4272)), Durations({{24, 1000}}), Sizes(24), Chunks(8)},
      TrackHeader(5120, 4272));
  const Bytes movie = Box("moov", {MovieHeader(24000, 24000), video, BrawMetadata(keys)});
  return Box("wide", Bytes()).Add(Box("mdat", Bytes().Fill(64))).Add(movie).str();
}

}  // namespace sorvik_test
