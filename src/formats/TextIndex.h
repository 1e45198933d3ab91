// SPDX-License-Identifier: MIT
// Finds which of many texts holds a given one, or is held by it, without walking all of them each
// time: a card's index is asked once for every clip.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::formats {

// The texts never change. One object belongs to one thread at a time: look-ups build on what
// earlier ones have found out.
class TextIndex {
 public:
  explicit TextIndex(std::vector<UTF16String> texts);
  TextIndex(const TextIndex&) = delete;
  TextIndex& operator=(const TextIndex&) = delete;

  // The place of the first text in which `part` occurs. An empty part occurs nowhere.
  std::optional<std::size_t> FirstHolding(std::u16string_view part) const;
  // The place of the first text that occurs in `whole`. An empty text occurs nowhere.
  std::optional<std::size_t> FirstHeldBy(std::u16string_view whole) const;

 private:
  // Every stretch of one length that occurs in the texts, with the place of the first.
  using Stretches = std::unordered_map<std::u16string_view, std::size_t>;

  // Null if the texts are so long, or of so many lengths asked, that a walk is the lesser cost.
  const Stretches* StretchesOf(std::size_t length) const;

  std::vector<UTF16String> texts_;
  std::size_t totalLength_ = 0;
  std::unordered_map<std::u16string_view, std::size_t> places_;
  std::set<std::size_t> lengths_;
  mutable std::map<std::size_t, Stretches> stretches_;
};

}  // namespace Sorvik::formats
