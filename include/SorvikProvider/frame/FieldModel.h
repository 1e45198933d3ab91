// SPDX-License-Identifier: MIT
// The containers of listings: an entry maps field names to values, a listing maps entry keys to
// entries. Field names, keys, paths and texts are UTF-8; names and keys are ordered by bytes and
// case-sensitive.
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
using FieldNameSet = std::set<std::string>;                  // requested or supported fields
using FieldNameList = std::vector<std::string>;              // fields in display order
using FieldLabelMap = std::map<std::string, std::string>;    // field name to label key

// The display name of an entry; a string.
SORVIK_EXPORT extern const char* const kNameField;
SORVIK_EXPORT extern const char* const kSDKNameField;
// The path of the entry: its file, or the folder to browse next; a string.
SORVIK_EXPORT extern const char* const kPathField;
SORVIK_EXPORT extern const char* const kSDKPathField;
// Further files of the entry: empty, a string, or a vector of strings.
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
