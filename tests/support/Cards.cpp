// SPDX-License-Identifier: MIT
#include "support/Cards.h"

#include "support/MadeMedia.h"

namespace sorvik_test {
namespace {

std::string Element(std::string_view name, std::string_view content) {
  if (content.empty()) return {};
  std::string text("<");
  text.append(name).append(">").append(content).append("</").append(name).append(">");
  return text;
}

// One pixel instead of a camera's 80 by 60.
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
      "<StartTimecode>" +
      clip.start + "</StartTimecode><AspectRatio>16:9</AspectRatio></Video>";
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
  tree.File(contents + clip.essence + "/" + clip.id + digits + ".MXF", MadeMedia(".MXF"));
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

std::string XmlElement(std::string_view name, std::string_view attributes,
                       std::string_view content) {
  std::string text("<");
  text.append(name).append(" ").append(attributes).append(">");
  text.append(content).append("</").append(name).append(">");
  return text;
}

std::string UmidOf(std::string_view name) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string umid = "060A2B340101010501010D4313000000";
  for (const char c : name.substr(0, 16)) {
    umid += kDigits[static_cast<unsigned char>(c) >> 4];
    umid += kDigits[static_cast<unsigned char>(c) & 15];
  }
  umid.resize(64, '0');
  return umid;
}

namespace {

std::string UmidOfClip(const SonyClip& clip) {
  return clip.umid.empty() ? UmidOf(clip.name) : clip.umid;
}

std::string Quoted(std::string_view name, std::string_view value) {
  return std::string(name).append("=\"").append(value).append("\" ");
}

std::string PartXml(std::string_view name, const std::string& uri, std::string_view type,
                    const std::string& more = {}) {
  return XmlElement(name, Quoted("uri", uri) + Quoted("type", type) + more);
}

}  // namespace

std::string NonRealTimeMetaXml(const SonyClip& clip) {
  const std::string title =
      clip.title.empty() ? "" : XmlElement("Title", Quoted("usAscii", clip.title));
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<NonRealTimeMeta xmlns=\"urn:schemas-professionalDisc:nonRealTimeMeta:ver.1.30\" "
         "lastUpdate=\"2012-02-03T04:05:06Z\">" +
         XmlElement("TargetMaterial", Quoted("umidRef", UmidOfClip(clip))) +
         XmlElement("Duration", Quoted("value", std::to_string(clip.frames))) +
         "<LtcChangeTable tcFps=\"25\" halfStep=\"false\">"
         "<LtcChange frameCount=\"0\" value=\"12302010\" status=\"increment\"/></LtcChangeTable>"
         "<CreationDate value=\"2012-02-03T04:05:00Z\"/>" +
         title + "<VideoFormat><VideoFrame videoCodec=\"MPEG2HD35_1440_1080_MP@HL\" " +
         Quoted("captureFps", clip.rate) + Quoted("formatFps", clip.rate) +
         "/><VideoLayout pixel=\"1440\" numOfVerticalLine=\"1080\" aspectRatio=\"16:9\"/>"
         "</VideoFormat><AudioFormat numOfChannel=\"2\">"
         "<AudioRecPort port=\"DIRECT\" audioCodec=\"LPCM16\" trackDst=\"CH1\"/></AudioFormat>"
         "<Device manufacturer=\"Sony\" modelName=\"PMW-EX3\" serialNo=\"123\"/>"
         "</NonRealTimeMeta>";
}

std::string MediaProXml(std::string_view materials) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
         XmlElement("MediaProfile",
                    "xmlns=\"http://xmlns.sony.net/pro/metadata/mediaprofile\" version=\"2.10\"",
                    "<Properties/>" + XmlElement("Contents", "", materials));
}

void MakeXDCAMDisc(const TempTree& tree, const std::string& card,
                   const std::vector<SonyClip>& clips) {
  std::string materials;
  for (const SonyClip& clip : clips) {
    tree.File(card + "/Clip/" + clip.name + "M01.XML", NonRealTimeMetaXml(clip));
    tree.File(card + "/Clip/" + clip.name + ".MXF", MadeMedia(".MXF"));
    tree.File(card + "/Sub/" + clip.name + "S01.MP4", MadeMedia(".MP4"));
    const std::string title = clip.title.empty() ? "" : Quoted("title", clip.title);
    materials += XmlElement(
        "Material",
        Quoted("uri", "./Clip/" + clip.name + ".MXF") + Quoted("umid", UmidOfClip(clip)) + title,
        PartXml("Proxy", "./Sub/" + clip.name + "S01.MP4", "MP4") +
            PartXml("RelevantInfo", "./Clip/" + clip.name + "M01.XML", "XML"));
  }
  tree.Folder(card + "/Clip");
  tree.Folder(card + "/Sub");
  tree.Folder(card + "/General");
  tree.File(card + "/MEDIAPRO.XML", MediaProXml(materials));
  tree.File(card + "/DISCMETA.XML", "<DiscMeta/>");
  tree.File(card + "/ALIAS.XML", "<aliasList/>");
}

void MakeXDCAMProav(const TempTree& tree, const std::string& card,
                    const std::vector<SonyClip>& clips) {
  std::string table;
  for (const SonyClip& clip : clips) {
    const std::string folder = card + "/PROAV/CLPR/" + clip.name + "/" + clip.name;
    tree.File(folder + "M01.XML", NonRealTimeMetaXml(clip));
    for (const char* end : {"C01.SMI", "V01.MXF", "A01.MXF", "A02.MXF", "S01.MXF", "R01.BIM"}) {
      const bool isPlaylist = std::string_view(end).ends_with(".SMI");
      tree.File(folder + end, isPlaylist ? "<smil/>" : MadeMedia(end));
    }
    const auto file = [&clip](std::string_view name, const char* end) {
      return XmlElement(name, Quoted("file", clip.name + end));
    };
    table += XmlElement("clip", Quoted("clipId", clip.name) + Quoted("file", clip.name + "C01.SMI"),
                        file("video", "V01.MXF") + file("audio", "A01.MXF") +
                            file("audio", "A02.MXF") + file("subStream", "S01.MXF") +
                            file("rtmeta", "R01.BIM") + file("meta", "M01.XML"));
  }
  tree.Folder(card + "/PROAV/CLPR");
  tree.File(card + "/PROAV/INDEX.XML",
            XmlElement("indexFile", "", XmlElement("clipTable", "path=\"/PROAV/CLPR/\"", table)));
  tree.File(card + "/PROAV/DISCMETA.XML", "<DiscMeta/>");
  tree.File(card + "/PROAV/DISCINFO.XML", "<DiscInfo/>");
}

namespace {

std::string AddEXClip(const TempTree& tree, const std::string& card, const SonyClip& clip) {
  const std::string uri = "./CLPR/" + clip.name + "/" + clip.name;
  const std::string place = card + "/BPAV/" + uri.substr(2);
  tree.File(place + "M01.XML", NonRealTimeMetaXml(clip));
  for (const char* end : {".MP4", ".SMI", "R01.BIM", "I01.PPN"})
    tree.File(place + end, MadeMedia(end));
  const std::string umid = Quoted("umid", UmidOfClip(clip));
  return XmlElement("Material", Quoted("uri", uri + ".SMI") + Quoted("type", "PD-EDL") + umid,
                    PartXml("Component", uri + ".MP4", "MP4", umid + Quoted("dur", "100")) +
                        PartXml("RelevantInfo", uri + "M01.XML", "XML") +
                        PartXml("RelevantInfo", uri + "R01.BIM", "BiM") +
                        PartXml("RelevantInfo", uri + "I01.PPN", "PPN"));
}

std::string AddEXTake(const TempTree& tree, const std::string& card, const EXTake& take) {
  const std::string uri = "./TAKR/" + take.name + "/" + take.name;
  const std::string place = card + "/BPAV/" + uri.substr(2);
  std::string parts;
  std::string components;
  const auto& sources = take.sources.empty() ? take.clips : take.sources;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const bool open = !take.complete && i + 1 == sources.size();
    parts += XmlElement("ref", Quoted("src", "urn:smpte:umid:" + UmidOf(sources[i])) +
                                   Quoted("clipBegin", "smpte-25=00:00:00:00") +
                                   (open ? "" : Quoted("clipEnd", "smpte-25=00:00:04:00")));
  }
  for (const std::string& clip : take.clips) {
    components += PartXml("Component", "./CLPR/" + clip + "/" + clip + ".SMI", "PD-EDL",
                          Quoted("umid", UmidOf(clip)));
  }
  if (take.playlist) {
    tree.File(place + ".SMI", XmlElement("smil", Quoted("umid", UmidOf(take.name)),
                                         XmlElement("body", "", XmlElement("par", "", parts))));
  }
  tree.File(place + "M01.XML", NonRealTimeMetaXml({.name = take.name}));
  return XmlElement(
      "Material",
      Quoted("uri", uri + ".SMI") + Quoted("type", "PD-EDL") + Quoted("umid", UmidOf(take.name)),
      components + PartXml("RelevantInfo", uri + "M01.XML", "XML"));
}

}  // namespace

void MakeXDCAMEXCard(const TempTree& tree, const std::string& card,
                     const std::vector<SonyClip>& clips, const std::vector<EXTake>& takes) {
  std::string materials;
  for (const SonyClip& clip : clips) materials += AddEXClip(tree, card, clip);
  for (const EXTake& take : takes) materials += AddEXTake(tree, card, take);
  tree.Folder(card + "/BPAV/CLPR");
  tree.Folder(card + "/BPAV/TAKR");
  tree.File(card + "/BPAV/MEDIAPRO.XML", MediaProXml(materials));
  tree.File(card + "/BPAV/MEDIAPRO.BAK", "backup");
  tree.File(card + "/BPAV/CUEUP.XML", std::string(64, '\xFF'));
}

}  // namespace sorvik_test
