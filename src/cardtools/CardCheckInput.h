// SPDX-License-Identifier: MIT
// A check of a card for callers that have listed it already and need its own folders only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

struct CardCheckInput {
  // The entries of the card, with Path, ExtraPath and ProxyPath; nullptr: they are listed.
  const ContentMap* content = nullptr;
  // Patterns of the folders below the root that are searched for files (CardLayout); nullptr: all.
  const std::vector<std::string_view>* folders = nullptr;
  // Receives the modification times of the files on the card, in nanoseconds since 1970.
  std::unordered_map<std::string, std::int64_t>* modificationTimes = nullptr;
};

CardFindings CheckCard(const std::string& path, const std::string& identification, CheckDepth depth,
                       const CardCheckInput& input, ProviderRequest* request);

}  // namespace Sorvik
