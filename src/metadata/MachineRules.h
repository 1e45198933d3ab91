// SPDX-License-Identifier: MIT
// The typed value of a field, from its XMP property or from its display text. Rules never throw for
// bad data: a property that can't be read gives no value, and a text of another type stays a text.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/metadata/MachineValues.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::XMPSupport {

struct MachineRule {
  MachineValue (*fromProperty)(const xmp::SXMPMeta& meta, const XMPCrossReference& row) = nullptr;
  MachineValue (*fromText)(const std::string& text) = nullptr;
};

namespace MachineRules {

extern const MachineRule kText;
extern const MachineRule kInteger;
extern const MachineRule kReal;
extern const MachineRule kFraction;   // "10/11", "10:11", "0.9091"
extern const MachineRule kFrameRate;  // the same; a standard rate if it is near
extern const MachineRule kBoolean;
extern const MachineRule kTime;        // ISO 8601 or EXIF
extern const MachineRule kCoordinate;  // "51,30.5N" as degrees
extern const MachineRule kFirstItem;
extern const MachineRule kList;
extern const MachineRule kAlternativeText;  // "x-default", else the first one
extern const MachineRule kProject;          // path and type
extern const MachineRule kFrameSize;
extern const MachineRule kDataRate;  // megabytes per second
extern const MachineRule kTimecode;
extern const MachineRule kDuration;
extern const MachineRule kScale;       // of the duration
extern const MachineRule kFrameCount;  // of the duration

}  // namespace MachineRules

// Counts the frames of a timecode "HH:MM:SS:FF" without dropped frames. Returns no value if it
// isn't one.
MachineValue DurationOfTimecode(std::string_view timecode, const Fraction& rate);

}  // namespace Sorvik::XMPSupport
