// SPDX-License-Identifier: MIT
// Where the metadata of a file comes from. All functions may be called on any thread.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik::XMPSupport {

enum class ValueSource {
  kSidecar,   // a file with XMP next to the media file
  kXMP,       // the XMP in the file
  kRecord,    // the XML that the camera wrote for the clip
  kIndex,     // a list of several clips: playlist, clip information, material list
  kNative,    // other structures of the file, such as its header
  kProvider,  // the provider of the card's structure
};

// Returns "sidecar", "xmp", "record", "index", "native" or "provider".
SORVIK_EXPORT const char* GetSourceName(ValueSource source) noexcept;

// The display text of a value in one source.
struct SourceValue {
  ValueSource from = ValueSource::kNative;
  std::string value;
};

struct SourcedValue {
  ValueSource from = ValueSource::kNative;  // the strongest source that has the value
  std::string value;                        // never empty
  // Weaker sources with a different value, strongest first. Sources that agree are not listed.
  std::vector<SourceValue> others;
};

// By name: a field of the field table, or a property of kFurtherProperties.
using SourcedValueMap = std::map<std::string, SourcedValue>;

// A property that is no field of the browse model, such as the lens.
struct FurtherProperty {
  const char* name;          // such as "aux:Lens"
  const char* labelKey;      // "$$$/path=Default label"
  const char* schemaNS;      // namespace of the property
  const char* propertyName;  // its local name
};

inline constexpr std::size_t kFurtherPropertyCount = 28;

SORVIK_EXPORT extern const FurtherProperty kFurtherProperties[kFurtherPropertyCount];

// Returns all fields and further properties of the media file at `path` (UTF-8) that have a value.
// The values of fields are those of MakeValue; of further properties, items of lists are
// separated by "; ". Returns an empty map if the file can't be read or has no metadata. Reads what
// MakeValue reads for all fields. Never throws for bad data.
SORVIK_EXPORT SourcedValueMap GetValueSources(const std::string& path);

// Adds the fields that a provider returned for the entry of the file, as the weakest source: texts
// only, and not the paths.
SORVIK_EXPORT void AddProviderValues(const FieldValueMap& fields, SourcedValueMap& sources);

}  // namespace Sorvik::XMPSupport
