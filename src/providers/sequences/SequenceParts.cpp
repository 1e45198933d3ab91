// SPDX-License-Identifier: MIT
// The parts of recordings that are numbered files.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "providers/common/NumberGaps.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"

namespace Sorvik {
namespace {

using foundation::HasExtension;
using foundation::JoinPath;
using foundation::ParentFolder;

ImageSequence SequenceOf(const std::vector<NumberedName>& run) {
  ImageSequence images;
  images.prefix = run.front().before;
  images.suffix = run.front().after;
  images.first = run.front().number;
  images.last = run.back().number;
  images.digits = static_cast<unsigned>(run.front().width);
  images.missing = images.last - images.first + 1 - run.size();
  return images;
}

// The frames, then the sound files among the extra paths of the entry.
std::vector<ListedPart> SequenceParts(const Provider& provider, const std::string& path,
                                      const std::string& key) {
  const std::vector<NumberedName> run = RunOf(key);
  if (run.empty()) return {};
  ListedPart frames;
  frames.path = JoinPath(ParentFolder(key), Joined(run.front(), run.front().number));
  frames.track = ShotTrack::kPicture;
  frames.images = SequenceOf(run);
  // Numbers that don't count frames, such as those of photographs, have long gaps.
  frames.frames =
      frames.images->missing < run.size() ? run.size() + frames.images->missing : run.size();
  std::vector<ListedPart> parts = {frames};
  const ContentMap content = provider.GetContent(path, key, {kExtraPathField});
  if (content.empty()) return parts;
  const auto extra = content.begin()->second.find(kExtraPathField);
  const auto* files = extra == content.begin()->second.end()
                          ? nullptr
                          : extra->second.get_if<std::vector<any_regular_t>>();
  if (files == nullptr) return parts;
  for (const any_regular_t& file : *files) {
    const auto* sound = file.get_if<std::string>();
    if (sound == nullptr || !HasExtension(*sound, ".wav")) continue;
    parts.push_back({.path = *sound, .track = ShotTrack::kSound, .frames = frames.frames});
  }
  return parts;
}

}  // namespace

std::vector<ListedPart> ProviderARRIRAW::ListParts(const std::string& path,
                                                   const std::string& key) const {
  return SequenceParts(*this, path, key);
}

std::vector<ListedPart> ProviderCanonRAW::ListParts(const std::string& path,
                                                    const std::string& key) const {
  return SequenceParts(*this, path, key);
}

std::vector<ListedPart> ProviderCinemaDNG::ListParts(const std::string& path,
                                                     const std::string& key) const {
  return SequenceParts(*this, path, key);
}

std::vector<ListedPart> ProviderRED::ListParts(const std::string&, const std::string& key) const {
  return ListSegments(key);
}

}  // namespace Sorvik
