// SPDX-License-Identifier: MIT
// Compares the files of a card with a copy of it.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "SorvikProvider/cardtools/CardCheck.h"

namespace host {

// What the copy at `copyPath` of a file lacks: nullopt if it has the same size. Accesses the disk.
std::optional<std::string> CompareSize(const Sorvik::CardFile& file, const std::string& copyPath);

// The same for files of the same size, by a hash of their contents. Reads both; returns early once
// `stop` is set.
std::optional<std::string> CompareContents(const std::string& path, const std::string& copyPath,
                                           const std::atomic<bool>& stop);

// The finding for a file whose copy differs.
Sorvik::Finding MakeDifference(const Sorvik::CardFile& file, std::string detail);

}  // namespace host
