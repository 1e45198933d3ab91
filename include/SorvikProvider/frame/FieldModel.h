// SPDX-License-Identifier: MIT
// The shapes in which everything leaves the library: an entry is a map of field name to value, a
// listing a map of entry key to entry. Field names, keys, paths and texts are UTF-8; names and keys
// are ordered by bytes and compared exactly.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/any_regular_t.h"

namespace Sorvik {

using halvane::any_regular_t;

using FieldValueMap = std::map<std::string, any_regular_t>;  // the fields of one entry
using ContentMap = std::map<std::string, FieldValueMap>;     // entry key to the entry's fields
using FieldNameSet = std::set<std::string>;                  // fields asked for, or known
using FieldNameList = std::vector<std::string>;              // fields in display order
using FieldLabelMap = std::map<std::string, std::string>;    // field name to label key

// The display name of an entry; a string.
SORVIK_EXPORT extern const char* const kNameField;
SORVIK_EXPORT extern const char* const kSDKNameField;
// The path by which the entry is opened, or what the host passes on as the next path; a string.
SORVIK_EXPORT extern const char* const kPathField;
SORVIK_EXPORT extern const char* const kSDKPathField;
// Other files that belong to the entry: nothing, a string, or a vector of strings.
SORVIK_EXPORT extern const char* const kExtraPathField;
SORVIK_EXPORT extern const char* const kSDKExtraPathField;
// The path of the clip's proxy file; a string.
SORVIK_EXPORT extern const char* const kProxyPathField;

// The root of the browse tree: the list of the machine's volumes.
SORVIK_EXPORT extern const char* const kVolumeListPath;
SORVIK_EXPORT extern const char* const kSDKVolumeListPath;
// Reserved roots that no provider of this library claims.
SORVIK_EXPORT extern const char* const kSDKNetworkVolumeListPath;
SORVIK_EXPORT extern const char* const kSDKEAServerListPath;

}  // namespace Sorvik
