// SPDX-License-Identifier: MIT
// Answers from a catalogue (--catalog FILE) instead of the medium.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "SorvikProvider/cardtools/Catalogue.h"

namespace host {

// Returns the cards of the catalogue of --catalog at and below `path`, or the one that contains it.
// With --provider only those of that provider. Throws Failure if there is none, or if the
// catalogue can't be read. Accesses nothing else.
std::vector<Sorvik::CataloguedCard> CataloguedCards(Context& context, const std::string& path);

// Returns the card among `cards` with the clip that `typed` refers to, and its key: a key, the name
// of the clip, or the name or path of one of its files. Throws Failure if there is none, or if
// several clips match.
std::pair<const Sorvik::CataloguedCard*, std::string> FindCataloguedClip(
    const std::vector<Sorvik::CataloguedCard>& cards, const std::string& path,
    const std::string& typed);

// Returns the card that has `file`, and the file. Throws Failure if it isn't a file of a clip.
std::pair<Sorvik::CataloguedCard, Sorvik::CardFile> FindCataloguedFile(Context& context,
                                                                       const std::string& file);

}  // namespace host
