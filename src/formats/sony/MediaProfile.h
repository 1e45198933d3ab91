// SPDX-License-Identifier: MIT
// The material list of Sony media, MEDIAPRO.XML: one Material for each clip or take, with what
// belongs to it. The card's structure and some metadata of its clips come from here. Facts of the
// format: as public readers of it agree, checked on files of cameras. Any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::formats {
class XercesDocument;
}

namespace Sorvik::formats::sony {

using Hestra::UTF16String;

// The texts of attributes stand without white space at their ends; a missing one is empty.
struct MaterialPart {
  enum class Kind { kComponent, kProxy, kRelevantInfo };

  Kind kind;
  UTF16String uri;   // relative to the folder of the list, "./" in front
  UTF16String type;  // such as "MP4", "XML", "BiM", "PPN"
  UTF16String umid;
  UTF16String duration;  // attribute "dur": frames
};

struct Material {
  UTF16String uri;
  UTF16String umid;
  UTF16String title;
  UTF16String status;
  UTF16String videoType;
  UTF16String audioType;
  UTF16String frameRate;  // attribute "fps": "59.94i", "25p"
  UTF16String duration;   // attribute "dur": frames
  UTF16String channels;   // attribute "ch"
  UTF16String aspectRatio;
  std::vector<MaterialPart> parts;  // in document order

  // The first of its parts of that kind, or null.
  const MaterialPart* First(MaterialPart::Kind kind) const noexcept;
  bool IsTake() const noexcept { return uri.find(u"/TAKR/") != uri.npos; }
};

// Twice what the longest real lists hold: 4,700 clips with four parts each. What a list has beyond
// that is left out.
inline constexpr std::size_t kMaxRecords = 50'000;

class MediaProfile {
 public:
  // The list in the file at `path`, parsed once within a call scope. Without materials if the file
  // isn't there or can't be parsed.
  static std::shared_ptr<const MediaProfile> Of(const UTF16String& path);
  static MediaProfile FromBytes(std::string_view bytes);

  bool IsReadable() const noexcept { return readable_; }
  const std::vector<Material>& Materials() const noexcept { return materials_; }
  // Materials and their parts together, for callers that bound how much they keep.
  std::size_t RecordCount() const noexcept { return records_; }

  // The first material, takes apart, one of whose uris (its own, or that of a component or of
  // relevant information) ends in the file name `name`, regardless of case; null if there is none.
  const Material* OfFile(std::u16string_view name) const;
  // The first take one of whose components has that umid (hexadecimal digits, in either case); null
  // if there is none.
  const Material* TakeWith(std::u16string_view umid) const;

 private:
  static MediaProfile FromDocument(const std::optional<XercesDocument>& document);
  void IndexMaterials();
  void IndexTake(std::size_t place);
  void IndexFiles(std::size_t place);

  bool readable_ = false;
  std::size_t records_ = 0;
  std::vector<Material> materials_;
  std::unordered_map<UTF16String, std::size_t> files_;       // by folded name
  std::unordered_map<UTF16String, std::size_t> components_;  // of takes, by folded umid
};

}  // namespace Sorvik::formats::sony
