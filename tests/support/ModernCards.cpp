// SPDX-License-Identifier: MIT
#include "support/ModernCards.h"

#include "support/Cards.h"
#include "support/MadeMedia.h"

namespace sorvik_test {
namespace {

struct LayoutNames {
  const char* clips;
  const char* proxies;
  const char* thumbnails;
  const char* extension;
  const char* version;
  std::vector<std::string> files;
  std::vector<std::string> folders;
};

LayoutNames NamesOf(XAVCLayout layout) {
  if (layout == XAVCLayout::kM4Root) {
    return {"CLIP",
            "SUB",
            "THMBNL",
            ".MP4",
            "XAVC-M4@2.00.00",
            {"STATUS.BIN"},
            {"TAKE", "GENERAL/LUT"}};
  }
  return {"Clip",
          "Sub",
          "Thmbnl",
          ".MXF",
          "XAVC-XD@1.00.00",
          {"CUEUP.XML", "DISCMETA.XML"},
          {"Edit", "General", "UserData", "Take"}};
}

std::string Part(const char* element, const std::string& uri, const std::string& type) {
  return XmlElement(element, "uri=\"./" + uri + "\" type=\"" + type + "\"");
}

std::string MaterialXml(const XAVCClip& clip, const LayoutNames& names) {
  const std::string clips = std::string(names.clips) + "/" + clip.name;
  std::string parts;
  if (clip.proxy)
    parts += Part("Proxy", std::string(names.proxies) + "/" + clip.name + "S03.MP4", "MP4");
  parts += Part("RelevantInfo", clips + "M01.XML", "XML");
  parts += Part("RelevantInfo", std::string(names.thumbnails) + "/" + clip.name + "T01.JPG", "JPG");
  std::string attributes = "uri=\"./" + clips + names.extension + "\" type=\"" +
                           std::string(names.extension + 1) + "\" videoType=\"" + clip.codec +
                           "\" fps=\"25p\" ch=\"2\" dur=\"" + std::to_string(clip.frames) +
                           "\" umid=\"" + UmidOf(clip) + "\"";
  if (!clip.title.empty()) attributes += " title=\"" + clip.title + "\"";
  return XmlElement("Material", attributes, parts);
}

std::string RecordXml(const XAVCClip& clip) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
         XmlElement(
             "NonRealTimeMeta",
             "xmlns=\"urn:schemas-professionalDisc:nonRealTimeMeta:ver.2.20\" lastUpdate=\"" +
                 clip.created + "\"",
             XmlElement("TargetMaterial", "umidRef=\"" + UmidOf(clip) + "\"") +
                 XmlElement("Duration", "value=\"" + std::to_string(clip.frames) + "\"") +
                 XmlElement("LtcChangeTable", "tcFps=\"25\" halfStep=\"false\"",
                            XmlElement("LtcChange", "frameCount=\"0\" value=\"" + clip.start +
                                                        "\" status=\"increment\"") +
                                XmlElement("LtcChange",
                                           "frameCount=\"" + std::to_string(clip.frames - 1) +
                                               "\" value=\"" + clip.end + "\" status=\"end\"")) +
                 XmlElement("CreationDate", "value=\"" + clip.created + "\"") +
                 XmlElement(
                     "VideoFormat", "",
                     XmlElement("VideoFrame", "videoCodec=\"" + clip.codec +
                                                  "\" captureFps=\"25p\" formatFps=\"25p\"") +
                         XmlElement("VideoLayout",
                                    "pixel=\"3840\" numOfVerticalLine=\"2160\" "
                                    "aspectRatio=\"16:9\"")) +
                 XmlElement("Device",
                            "manufacturer=\"Sony\" modelName=\"ILME-FX3\" "
                            "serialNo=\"1234\""));
}

}  // namespace

std::string UmidOf(const XAVCClip& clip) { return UmidOf(clip.name).substr(0, 48) + clip.device; }

void MakeXAVCCard(const TempTree& tree, const std::string& root, XAVCLayout layout,
                  const std::vector<XAVCClip>& clips, bool index) {
  const LayoutNames names = NamesOf(layout);
  std::string materials;
  for (const char* folder : {names.clips, names.proxies, names.thumbnails}) {
    tree.Folder(root + "/" + folder);
  }
  for (const std::string& folder : names.folders) tree.Folder(root + "/" + folder);
  for (const std::string& file : names.files) tree.File(root + "/" + file, "<Any/>");
  for (const XAVCClip& clip : clips) {
    const std::string file = root + "/" + names.clips + "/" + clip.name;
    if (clip.listed) materials += MaterialXml(clip, names);
    if (clip.essence) tree.File(file + names.extension, "essence");
    if (clip.record) tree.File(file + "M01.XML", RecordXml(clip));
    if (clip.proxy) tree.File(root + "/" + names.proxies + "/" + clip.name + "S03.MP4", "proxy");
    if (clip.thumbnail) {
      tree.File(root + "/" + names.thumbnails + "/" + clip.name + "T01.JPG", MadeMedia(".jpg"));
    }
  }
  if (!index) return;
  tree.File(
      root + "/MEDIAPRO.XML",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
          XmlElement("MediaProfile", "xmlns=\"http://xmlns.sony.net/pro/metadata/mediaprofile\"",
                     XmlElement("Properties", "",
                                XmlElement("System", std::string("masterVersion=\"") +
                                                         names.version + "\"")) +
                         XmlElement("Contents", "", materials)));
}

void MakeCanonFlatCard(const TempTree& tree, const std::string& root,
                       const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    tree.File(root + "/CONTENTS/CLIPS001/" + file, MadeMedia(file));
  }
}

}  // namespace sorvik_test
