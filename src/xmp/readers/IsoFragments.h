// SPDX-License-Identifier: MIT
// The duration of fragmented ISO base media files, whose samples are described in 'moof' boxes
// between the media data. Reads the first fragment, the segment index, and the end of the file.
// Facts: ISO/IEC 14496-12, 8.8 and 8.16.3.
#pragma once

#include <string>

#include "xmp/readers/IsoTracks.h"

namespace Sorvik::xmp {

class IsoFragments {
 public:
  IsoFragments(FileWindow& file, const IsoMovie& movie);

  // The boxes in front of and at the first fragment.
  void TakeIndex(const IsoBox& sidx);
  void TakeFirst(const IsoBox& moof);
  // Reads the last fragment, and copies the XMP from its 'uuid' box there unless `packet` has one.
  void ReadTail(std::string& packet);

  // Stores duration, frame rate and timing in the movie and its main track: nothing of the movie
  // header, which some writers never update.
  void Store(IsoMovie& movie) const;

 private:
  struct Fragment {
    bool known = false;
    bool hasStart = false;
    std::uint64_t start = 0;  // decode time of the first sample
    SampleTimes times;
    SampleTimes rest;  // without the first sample

    void Add(std::uint64_t count, std::uint64_t units);
  };
  Fragment ReadFragment(const IsoBox& moof);
  void ReadTrackFragment(const IsoBox& traf, Fragment& fragment);
  void AddRun(foundation::ByteReader trun, std::uint32_t defaultUnits, Fragment& fragment) const;
  // Offset of the last 'moof' box by the random access index; 0 if there is none.
  std::uint64_t LastByIndex();
  double TotalUnits() const;

  FileWindow& file_;
  std::size_t track_ = 0;  // index of the main track
  std::uint32_t trackId_ = 0;
  std::uint32_t timescale_ = 0;
  std::uint32_t defaultUnits_ = 0;
  double headerUnits_ = 0;  // duration by 'mehd'
  double ownUnits_ = 0;     // of samples in the movie's own tables
  double indexUnits_ = 0;   // duration by 'sidx'
  Fragment first_;
  Fragment last_;
  std::uint64_t firstAt_ = 0;
  std::uint64_t lastAt_ = 0;
};

// The identifier of a 'uuid' box that contains XMP (ISO 16684-3, 1.2.6).
extern const std::string_view kXMPBoxId;

}  // namespace Sorvik::xmp
