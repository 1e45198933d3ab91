// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

const char* const kNameField = "Name";
const char* const kSDKNameField = kNameField;
const char* const kPathField = "Path";
const char* const kSDKPathField = kPathField;
const char* const kExtraPathField = "ExtraPath";
const char* const kSDKExtraPathField = kExtraPathField;
const char* const kProxyPathField = "ProxyPath";

const char* const kVolumeListPath = "volumes:";
const char* const kSDKVolumeListPath = kVolumeListPath;
const char* const kSDKNetworkVolumeListPath = "networkvolumes:";
const char* const kSDKEAServerListPath = "easervers:";

}  // namespace Sorvik
