// SPDX-License-Identifier: MIT
// The material list of Sony media, MEDIAPRO.XML: one Material for each clip or take, with the files
// that belong to it. Source of the format's facts: public readers, checked against files of
// cameras. Texts are UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Sorvik::formats {
class XercesDocument;
}

namespace Sorvik::formats::sony {

// Texts of attributes are without white space at their ends; a missing attribute is empty.
struct MaterialPart {
  enum class Kind { kComponent, kProxy, kRelevantInfo };

  Kind kind;
  std::string uri;   // relative to the folder of the list, beginning with "./"
  std::string type;  // such as "MP4", "XML", "BiM", "PPN"
  std::string umid;
  std::string duration;  // attribute "dur": frames
};

struct Material {
  std::string uri;
  std::string umid;
  std::string title;
  std::string status;
  std::string videoType;
  std::string audioType;
  std::string frameRate;  // attribute "fps": "59.94i", "25p"
  std::string duration;   // attribute "dur": frames
  std::string channels;   // attribute "ch"
  std::string aspectRatio;
  std::vector<MaterialPart> parts;  // in document order

  // The first part of that kind; null if there is none.
  const MaterialPart* First(MaterialPart::Kind kind) const noexcept;
  bool IsTake() const noexcept { return uri.find("/TAKR/") != uri.npos; }
};

// Twice the longest real lists: 4,700 clips with four parts each. The rest of a longer list is
// ignored.
inline constexpr std::size_t kMaxRecords = 50'000;

class MediaProfile {
 public:
  // The list in the file at `path`, parsed once within a call scope. Without materials if the file
  // is missing or can't be parsed.
  static std::shared_ptr<const MediaProfile> Of(const std::string& path);
  static MediaProfile FromBytes(std::string_view bytes);

  bool IsReadable() const noexcept { return readable_; }
  const std::vector<Material>& Materials() const noexcept { return materials_; }
  // The number of materials and parts, for callers that limit how much they keep.
  std::size_t RecordCount() const noexcept { return records_; }

  // The first material that isn't a take and has a uri (its own, of a component or of relevant
  // information) whose file name is `fileName`, ignoring case; null if there is none.
  const Material* FindMaterial(std::string_view fileName) const;
  // The first take that has a component with that UMID (hexadecimal digits, case-insensitive); null
  // if there is none.
  const Material* FindTake(std::string_view componentUmid) const;

 private:
  static MediaProfile FromDocument(const std::optional<XercesDocument>& document);
  void IndexMaterials();
  void IndexTake(std::size_t index);
  void IndexFiles(std::size_t index);

  bool readable_ = false;
  std::size_t records_ = 0;
  std::vector<Material> materials_;
  std::unordered_map<std::string, std::size_t> byFileName_;       // folded
  std::unordered_map<std::string, std::size_t> byComponentUmid_;  // of takes, folded
};

}  // namespace Sorvik::formats::sony
