// SPDX-License-Identifier: MIT
// The XMP namespaces in use, as published in ISO 16684-1 and its companion tables.
#pragma once

namespace Sorvik::xmp {

inline constexpr char kNsDC[] = "http://purl.org/dc/elements/1.1/";
inline constexpr char kNsXMP[] = "http://ns.adobe.com/xap/1.0/";
inline constexpr char kNsDM[] = "http://ns.adobe.com/xmp/1.0/DynamicMedia/";
inline constexpr char kNsAux[] = "http://ns.adobe.com/exif/1.0/aux/";
inline constexpr char kNsTIFF[] = "http://ns.adobe.com/tiff/1.0/";
inline constexpr char kNsEXIF[] = "http://ns.adobe.com/exif/1.0/";
inline constexpr char kNsCRS[] = "http://ns.adobe.com/camera-raw-settings/1.0/";
// Of the clip records of Sony cameras, for facts that XMP has no property for. The records append
// their version.
inline constexpr char kNsNonRealTimeMeta[] = "urn:schemas-professionalDisc:nonRealTimeMeta";
inline constexpr char kNsBext[] = "http://ns.adobe.com/bwf/bext/1.0/";
// Of Blackmagic RAW recordings, for named values that XMP has no property for.
inline constexpr char kNsBlackmagicRAW[] = "urn:sorvik:blackmagic-raw";
inline constexpr char kNsPhotoshop[] = "http://ns.adobe.com/photoshop/1.0/";
inline constexpr char kNsIptcCore[] = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
inline constexpr char kNsDimensions[] = "http://ns.adobe.com/xap/1.0/sType/Dimensions#";
inline constexpr char kNsRDF[] = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
inline constexpr char kNsXML[] = "http://www.w3.org/XML/1998/namespace";

}  // namespace Sorvik::xmp
