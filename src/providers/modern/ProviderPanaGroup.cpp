// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderPanaGroup.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "frame/Recognition.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/modern/PanaGroupCard.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

using foundation::HasExtension;
using panagroup::Card;
using panagroup::Clip;

Recognition Recognize(const std::string& root) {
  const bool isNamed = foundation::EqualIgnoringCase(foundation::FileName(root), panagroup::kRoot);
  const auto card = Card::Of(root);
  if (card->Clips().empty() || !(isNamed || card->HasKnownFormat())) return Recognition::kNone;
  return Recognized(!card->HasUnrelated());
}

bool IsPicture(std::string_view path) {
  return HasExtension(path, ".jpg") || HasExtension(path, ".thm") || HasExtension(path, ".bmp");
}

// Field texts derived from the name of the folder.
FieldValueMap FieldsOfCode(const panagroup::FolderCode& code, const FieldNameSet& fields) {
  std::string properties;
  if (!code.frameRate.empty()) {
    properties +=
        "<xmpDM:videoFrameRate>" + std::string(code.frameRate) + "</xmpDM:videoFrameRate>";
  }
  if (code.width != 0) {
    properties += "<xmpDM:videoFrameSize rdf:parseType='Resource'><stDim:w>" +
                  std::to_string(code.width) + "</stDim:w><stDim:h>" + std::to_string(code.height) +
                  "</stDim:h><stDim:unit>pixel</stDim:unit></xmpDM:videoFrameSize>";
  }
  FieldNameSet wanted;
  for (const char* name : {"videoFrameRate", "videoFrameSize"}) {
    if (fields.contains(name)) wanted.insert(name);
  }
  if (properties.empty() || wanted.empty()) return {};
  return XMPSupport::MakeValue(
      XMPSupport::ParseFields(wanted),
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
      "<rdf:Description xmlns:xmpDM='http://ns.adobe.com/xmp/1.0/DynamicMedia/' "
      "xmlns:stDim='http://ns.adobe.com/xap/1.0/sType/Dimensions#'>" +
          properties + "</rdf:Description></rdf:RDF></x:xmpmeta>");
}

FieldValueMap MakeEntry(const Card& card, const Clip& clip, const FieldNameSet& fields) {
  FieldValueMap values = XMPSupport::MakeValue(clip.path, XMPSupport::ParseFields(fields));
  for (auto& [name, value] : FieldsOfCode(clip.code, fields)) {
    if (TextOf(values, name).empty()) values.insert_or_assign(name, value);
  }
  values.insert_or_assign(kPathField, any_regular_t(clip.path));
  values.insert_or_assign(kNameField, any_regular_t(std::string(foundation::FileStem(clip.path))));
  if (fields.contains(kExtraPathField)) {
    std::vector<std::string> paths = clip.files;
    paths.insert(paths.end(), card.SharedFiles().begin(), card.SharedFiles().end());
    values.insert_or_assign(kExtraPathField, PathList(std::move(paths)));
  }
  return values;
}

}  // namespace

ProviderPanaGroup::ProviderPanaGroup()
    : ClipProvider({.identification = "com.halvane.Merisk.ProviderPanaGroup",
                    .uiString = "$$$/Ortlane/Libraries/Sorvik/PanaGroupUIString=Panasonic PANA_GRP",
                    .defaultFields = {kNameField, "CreateDate", "startTimecode", "duration",
                                      "videoFrameSize", "videoFrameRate", "Model"},
                    .labelFields = {"Name", "Path", "CreateDate", "ModifyDate", "identifier",
                                    "startTimecode", "duration", "videoFrameSize", "videoFrameRate",
                                    "videoPixelAspectRatio", "videoCompressor", "audioSampleRate",
                                    "audioChannelType", "audioCompressor", "shotName", "Make",
                                    "Model", "SerialNumber"},
                    .layout = {.rootNames = {"*AM", "*AT"}, .ownFolders = {"*AM", "*AT"}},
                    .maxThumbnailHeight = std::numeric_limits<int>::max()}) {}

ContentMap ProviderPanaGroup::GetContent(const std::string& path, const std::string& key,
                                         const FieldNameSet& fields) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Clip* clip = card->Find(key);
  if (clip == nullptr) return {};
  return {{key, MakeEntry(*card, *clip, fields)}};
}

ContentMap ProviderPanaGroup::GetContent(const std::string& path, const FieldNameSet& fields,
                                         ProviderRequest* request) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  foundation::ReadAhead<FieldValueMap> ahead(
      card->Clips().size(),
      [card, fields](std::size_t i) { return MakeEntry(*card, card->Clips()[i], fields); },
      StopWith(request));
  ContentMap content;
  for (std::size_t i = 0; i < card->Clips().size(); ++i) {
    if (ProviderRequest::TestAborted(request)) return {};
    content.insert_or_assign(card->Clips()[i].key, ahead.Take(i));
  }
  return content;
}

int ProviderPanaGroup::CanProvideFor(const std::string& path) const {
  const foundation::CallScope scope;
  return ScoreOf(foundation::IsValidPath(path) ? Recognize(path) : Recognition::kNone);
}

Bitplate** ProviderPanaGroup::GetThumbnail(const std::string& path, const std::string& key,
                                           int width, int height, ProviderRequest*) const {
  const foundation::CallScope scope;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  const Clip* clip = card->Find(key);
  if (clip == nullptr) return nullptr;
  for (const std::string& file : clip->files) {
    if (!IsPicture(file)) continue;
    if (Bitplate** drawn = RenderThumbnailIntoNew(Hestra::MakeString(file), width, height)) {
      return drawn;
    }
  }
  const int side = std::min(height, kIconHeight);
  return GetFolderThumbnail(std::string(foundation::ParentFolder(clip->path)),
                            std::string(foundation::FileName(clip->path)), std::min(width, side),
                            side);
}

void ProviderPanaGroup::DescribeCard(const std::string& path, const ContentMap&,
                                     CardDescription& description) const {
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  for (const Clip& clip : card->Clips()) {
    description.Expect({.path = clip.path,
                        .role = card_role::kEssence,
                        .entryKeys = {clip.key},
                        .content = CardPart::Content::kMedia});
    for (const std::string& file : clip.files) {
      const bool isPicture = IsPicture(file);
      description.Expect(
          {.path = file,
           .role = isPicture ? card_role::kThumbnail : card_role::kSidecar,
           .entryKeys = {clip.key},
           .content = isPicture ? CardPart::Content::kMedia : CardPart::Content::kOpaque});
    }
  }
  for (const std::string& file : card->SharedFiles()) description.AddStructureFile(file);
  for (const std::string& folder : card->Folders()) {
    description.AddFolder(folder);
    description.AddMediaFolder(folder);
  }
}

}  // namespace Sorvik
