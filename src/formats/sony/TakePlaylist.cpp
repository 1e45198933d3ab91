// SPDX-License-Identifier: MIT
#include "formats/sony/TakePlaylist.h"

#include "formats/XercesDocument.h"

namespace Sorvik::formats::sony {
namespace {

// The text after the last colon of "urn:smpte:umid:<umid>"; all of it if there is no colon.
std::string UmidOfSource(const std::string& source) {
  const auto colon = source.rfind(':');
  return colon == source.npos ? source : source.substr(colon + 1);
}

std::optional<TakePlaylist> FromDocument(const std::optional<XercesDocument>& document) {
  if (!document || document->Root().Name() != "smil") return std::nullopt;
  TakePlaylist playlist;
  const XercesElement body = FindChildElement(document->Root(), "body");
  std::string text;
  for (XercesElement part = FindChildElement(FindChildElement(body, "par"), "ref"); part;
       part = FindNextSiblingElement(part, "ref")) {
    GetElementAttribute(part, "src", text);
    playlist.sources.push_back(UmidOfSource(text));
    GetElementAttribute(part, "clipEnd", text);
    if (text.empty()) playlist.complete = false;
  }
  return playlist;
}

}  // namespace

std::optional<TakePlaylist> TakePlaylist::Read(const std::string& path) {
  return FromDocument(XercesDocument::ReadFile(path));
}

std::optional<TakePlaylist> TakePlaylist::FromBytes(std::string_view bytes) {
  return FromDocument(XercesDocument::Parse(bytes));
}

}  // namespace Sorvik::formats::sony
