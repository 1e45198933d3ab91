// SPDX-License-Identifier: MIT
// The duration of an entry that consists of several parts. One thread.
#pragma once

#include <cstdint>
#include <string>

#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

inline constexpr char kFrameCountField[] = "frameCount";

class PartDurations {
 public:
  // `fields` are those that the entry is requested with.
  explicit PartDurations(const FieldNameSet& fields);

  // The fields to read of the first part: the requested ones and the frame count.
  const FieldNameSet& FieldsOfFirst() const noexcept { return fieldsOfFirst_; }
  // True if the entry has the duration or the frame count.
  bool AreWanted() const noexcept { return wantsDuration_ || wantsFrameCount_; }

  // Adds a further part: its frames, or its frame count ("210 @ 1/25"), which must have the rate of
  // the first part.
  void Add(std::uint64_t frames);
  void Add(const std::string& frameCount);
  // Changes the values of the first part to those of the entry.
  void SetTotal(FieldValueMap& values) const;

 private:
  FieldNameSet fieldsOfFirst_;
  bool wantsDuration_;
  bool wantsFrameCount_;
  std::int64_t frames_ = 0;  // of the further parts
};

}  // namespace Sorvik
