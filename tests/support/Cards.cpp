// SPDX-License-Identifier: MIT
#include "support/Cards.h"

namespace sorvik_test {
namespace {

std::string Element(std::string_view name, std::string_view content) {
  if (content.empty()) return {};
  std::string text("<");
  text.append(name).append(">").append(content).append("</").append(name).append(">");
  return text;
}

// 80 by 60 would be the camera's size; a picture of one pixel is a picture.
constexpr std::string_view kIcon{
    "BM\x3a\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0"
    "\0\0\0\0\4\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x10\x20\x30\0",
    58};

std::string P2Relation(const P2Clip& clip) {
  if (clip.shotId.empty() && clip.top.empty()) return {};
  std::string connection;
  for (const auto& [name, id] : {std::pair("Top", clip.top), std::pair("Previous", clip.previous),
                                 std::pair("Next", clip.next)}) {
    connection += Element(name, Element("GlobalClipID", id));
  }
  return Element("Relation", Element("OffsetInShot", "0") + Element("GlobalShotID", clip.shotId) +
                                 Element("Connection", connection));
}

}  // namespace

std::string P2GlobalId(std::string_view id) { return "060A2B34" + std::string(id); }

std::string P2ClipXml(const P2Clip& clip) {
  const std::string globalId = clip.globalId.empty() ? P2GlobalId(clip.id) : clip.globalId;
  const std::string video =
      "<Video ValidAudioFlag=\"false\"><VideoFormat>MXF</VideoFormat>"
      "<Codec Class=\"100\">AVC-I_1080/50i</Codec><FrameRate>50i</FrameRate>"
      "<StartTimecode>10:20:30:12</StartTimecode><AspectRatio>16:9</AspectRatio></Video>";
  const std::string audio =
      "<Audio><AudioFormat>MXF</AudioFormat><SamplingRate>48000</SamplingRate>"
      "<BitsPerSample>24</BitsPerSample></Audio>";
  const std::string metadata =
      Element("UserClipName", clip.userName) +
      "<Access><CreationDate>2015-03-04T05:06:07+01:00</CreationDate>"
      "<LastUpdateDate>2015-03-05T06:07:08+01:00</LastUpdateDate></Access>"
      "<Device><Manufacturer>Panasonic</Manufacturer><SerialNo.>A1</SerialNo.>"
      "<ModelName>AJ-PX270</ModelName></Device>" +
      clip.extraXml;
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\r\n"
         "<P2Main xmlns=\"urn:schemas-Professional-Plug-in:P2:ClipMetadata:v3.1\">" +
         Element("ClipContent", Element("ClipName", clip.id) + Element("GlobalClipID", globalId) +
                                    Element("Duration", std::to_string(clip.frames)) +
                                    Element("EditUnit", clip.editUnit) + P2Relation(clip) +
                                    Element("EssenceList", video + audio + audio) +
                                    Element("ClipMetadata", metadata)) +
         "</P2Main>";
}

void MakeP2Card(const TempTree& tree, const std::string& card) {
  for (const char* folder : {"AUDIO", "CLIP", "ICON", "PROXY", "VIDEO"}) {
    tree.Folder(card + "/CONTENTS/" + folder);
  }
}

void AddP2Clip(const TempTree& tree, const std::string& card, const P2Clip& clip) {
  const std::string contents = card + "/CONTENTS/";
  tree.File(contents + "CLIP/" + clip.id + ".XML", P2ClipXml(clip));
  tree.File(contents + "ICON/" + clip.id + ".BMP", kIcon);
  if (clip.essence.empty()) return;
  const std::string digits = clip.essence == "AUDIO" ? "00" : "";
  tree.File(contents + clip.essence + "/" + clip.id + digits + ".MXF", "essence");
}

std::vector<P2Clip> P2Shot(const std::vector<std::string>& ids, const std::string& shotId) {
  std::vector<P2Clip> clips;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    P2Clip clip;
    clip.id = ids[i];
    clip.shotId = shotId;
    clip.top = P2GlobalId(ids.front());
    if (i > 0) clip.previous = P2GlobalId(ids[i - 1]);
    if (i + 1 < ids.size()) clip.next = P2GlobalId(ids[i + 1]);
    clips.push_back(clip);
  }
  return clips;
}

}  // namespace sorvik_test
