// SPDX-License-Identifier: MIT
#include "formats/sony/TakePlaylist.h"

#include <string>

#include "formats/XercesDocument.h"

namespace Sorvik::formats::sony {
namespace {

// What stands behind the last colon of "urn:smpte:umid:<umid>"; all of it where there is none.
UTF16String UmidOfSource(const UTF16String& source) {
  const auto colon = source.rfind(u':');
  return colon == source.npos ? source : source.substr(colon + 1);
}

std::optional<TakePlaylist> FromDocument(const std::optional<XercesDocument>& document) {
  if (!document || document->Root().Name() != u"smil") return std::nullopt;
  TakePlaylist playlist;
  const XercesElement body = FindChildElement(document->Root(), u"body");
  UTF16String text;
  for (XercesElement part = FindChildElement(FindChildElement(body, u"par"), u"ref"); part;
       part = FindNextSiblingElement(part, u"ref")) {
    GetElementAttribute(part, u"src", text);
    playlist.sources.push_back(UmidOfSource(text));
    GetElementAttribute(part, u"clipEnd", text);
    if (text.empty()) playlist.complete = false;
  }
  return playlist;
}

}  // namespace

std::optional<TakePlaylist> TakePlaylist::Read(const UTF16String& path) {
  return FromDocument(XercesDocument::ReadFile(path));
}

std::optional<TakePlaylist> TakePlaylist::FromBytes(std::string_view bytes) {
  return FromDocument(XercesDocument::Parse(bytes));
}

}  // namespace Sorvik::formats::sony
