// SPDX-License-Identifier: MIT
// Metadata as typed values for programs: numbers, fractions and ISO 8601 times instead of the texts
// that XMPSupport makes for people. They don't depend on the language. Values are copied; all
// functions may be called on any thread.
//
//   const MachineValueScope scope;
//   ContentMap content = provider.GetContent(path, fields, nullptr);
//   for (auto& [key, entry] : content) MachineFields values = TakeMachineValues(entry);
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/metadata/XMPSupport.h"

namespace Sorvik {

// A fraction in lowest terms with a positive denominator.
struct Fraction {
  std::int64_t numerator = 0;
  std::int64_t denominator = 1;
  bool operator==(const Fraction&) const = default;
};

// A date, or a date with a time, in the form of ISO 8601: "2024-05-01", "2024-05-01T10:00:00.5Z",
// "2024-05-01T10:00:00+02:00". Without a zone it is the local time of the camera.
struct IsoTime {
  std::string text;
  bool hasZone = false;
  bool operator==(const IsoTime&) const = default;
};

struct TimecodeValue {
  std::string text;  // "10:00:00:00", with ';' in front of the frames if it drops frames
  Fraction rate;     // frames per second; 0 if the file has none
  bool dropFrame = false;
  bool operator==(const TimecodeValue&) const = default;
};

struct DurationValue {
  std::int64_t count = 0;  // frames, or other units
  Fraction rate;           // units per second; 0 if the file has none
  bool operator==(const DurationValue&) const = default;
};

struct FrameSizeValue {
  std::int64_t width = 0;
  std::int64_t height = 0;
  std::string unit;  // usually "pixel"
  bool operator==(const FrameSizeValue&) const = default;
};

// std::monostate: the field has no value. A text that isn't of the type of its field stays a text.
using MachineValue =
    std::variant<std::monostate, bool, std::int64_t, double, Fraction, std::string, IsoTime,
                 TimecodeValue, DurationValue, FrameSizeValue, std::vector<std::string>>;
using MachineFields = std::map<std::string, MachineValue>;  // by the name of the field

// Returns the typed values of the wanted fields of a media file; fields without a value are left
// out. Reads the same files as XMPSupport::MakeValue. Empty if the file has no metadata.
SORVIK_EXPORT MachineFields ReadMachineValues(const std::string& path,
                                              const XMPSupport::XMPFieldBits& fields);

// While an object exists, the entries that providers make on this thread also carry typed values,
// for TakeMachineValues. Until then each such entry has one additional field, which isn't for use.
class SORVIK_EXPORT MachineValueScope {
 public:
  MachineValueScope() noexcept;
  ~MachineValueScope();
  MachineValueScope(const MachineValueScope&) = delete;
  MachineValueScope& operator=(const MachineValueScope&) = delete;

  // True if there is an object on this thread.
  static bool IsActive() noexcept;
};

// Returns the typed values of an entry and removes the additional field from it. A value that the
// provider itself has set, such as the duration of several parts, and every value of an entry that
// was made without a MachineValueScope, is parsed from its text. That is exact except for texts in
// the user's language (booleans, data rates, project references) and pixel aspect ratios, which are
// rounded. Fields without a value are left out.
SORVIK_EXPORT MachineFields TakeMachineValues(FieldValueMap& entry);

// A value in the form that the JSON of the catalogue uses: true, 12, 51.5, "30000/1001", "text",
// "2024-05-01T10:00:00Z", {"timecode":"10:00:00:00","rate":"25/1","dropFrame":false},
// {"count":250,"rate":"25/1"}, {"width":1920,"height":1080,"unit":"pixel"}, ["a","b"], null. A rate
// that isn't known is null.
SORVIK_EXPORT std::string ToJson(const MachineValue& value);
// All of them as one object, in order of their names.
SORVIK_EXPORT std::string ToJson(const MachineFields& fields);

}  // namespace Sorvik
