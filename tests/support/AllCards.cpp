// SPDX-License-Identifier: MIT
#include "support/AllCards.h"

#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/MadeMedia.h"

namespace sorvik_test {
namespace {

std::string Packet(const std::string& title) {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
         "xmlns:dc='http://purl.org/dc/elements/1.1/' "
         "xmlns:xmpDM='http://ns.adobe.com/xmp/1.0/DynamicMedia/' dc:title='" +
         title +
         "'><xmpDM:duration xmpDM:value='48' xmpDM:scale='1/24'/></rdf:Description></rdf:RDF>"
         "</x:xmpmeta>";
}

std::string ContentOf(const std::string& file) {
  return file.ends_with(".XML") ? "<clip/>" : MadeMedia(file);
}

void MakeFiles(const TempTree& tree, const std::string& root,
               const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    const bool packet = file.ends_with(".xmp") || file.ends_with(".XMP");
    tree.File(root + "/" + file, packet ? Packet(file) : ContentOf(file));
  }
}

void MakeP2(const TempTree& tree) {
  MakeP2Card(tree, "p2");
  for (const P2Clip& clip : P2Shot({"0001AA", "0002AA", "0003AA"}, "S1")) {
    AddP2Clip(tree, "p2", clip);
  }
  AddP2Clip(tree, "p2", {.id = "0004BB", .userName = "Interview"});
  for (const char* clip : {"0001AA", "0002AA", "0003AA", "0004BB"}) {
    for (const char* channel : {"00", "01"}) {
      tree.File("p2/CONTENTS/AUDIO/" + std::string(clip) + channel + ".MXF", MadeMedia(".MXF"));
    }
  }
}

void MakeAVCHD(const TempTree& tree) {
  const AvchdCard card(tree, "avchd");
  card.Clips({"00000", "00001", "00002"});
  card.Playlist("00000", {{"00000"}, {"00001", 6}, {"00002"}});
}

}  // namespace

std::vector<MadeCard> MakeAllCards(const TempTree& tree) {
  MakeP2(tree);
  MakeXDCAMDisc(tree, "disc", {{"C0001"}, {"C0002"}});
  MakeXDCAMProav(tree, "proav", {{"C0001"}, {"C0002"}});
  MakeXDCAMEXCard(tree, "ex", {{"A_01"}, {"A_02"}, {"B_01"}}, {{"A", {"A_01", "A_02"}}});
  MakeAVCHD(tree);
  MakeFiles(tree, "xf/CONTENTS/CLIPS001",
            {"INDEX.MIF", "AA0001/AA000101.MXF", "AA0001/AA000102.MXF", "AA0001/AA0001.CIF",
             "AA0001/AA0001.XML", "AA0001/AA0001.XMP", "AB0002/AB000201.MXF", "AB0002/AB0002.CIF"});
  MakeFiles(tree, "hdv/VIDEO/HVR",
            {"00_0012_2014-01-31_101530.M2T", "00_0012_2014-01-31_103000.M2T",
             "00_0012_2014-01-31_101530.IDX", "00_0013_2014-01-31_104500.AVI",
             "00_0013_2014-01-31_104500.IDX", "00_0013_2014-01-31_104500.XMP", "TRACKS.DAT"});
  MakeFiles(tree, "red", {"A1.RDC/A1_001.R3D", "A1.RDC/A1_002.R3D", "A1.RDC/A1.RMD"});
  MakeFiles(tree, "arri", {"A_0001.ari", "A_0002.ari", "A_0001.ari.xmp"});
  MakeFiles(tree, "dng", {"c_0001.dng", "c_0002.dng", "c.WAV"});
  MakeFiles(tree, "canonraw", {"C_01.RMF", "C_02.RMF", "C_01.WAV", "CLIPINFO.XML"});
  std::vector<MadeCard> cards;
  for (const auto& [folder, provider] :
       {std::pair{"p2", "ProviderP2"}, std::pair{"disc", "ProviderXDCAM"},
        std::pair{"proav", "ProviderXDCAM"}, std::pair{"ex", "ProviderXDCAMEX"},
        std::pair{"avchd", "ProviderAVCHD"}, std::pair{"xf", "ProviderCanonXF"},
        std::pair{"hdv", "ProviderSonyHDV"}, std::pair{"red", "ProviderRED"},
        std::pair{"arri", "ProviderARRIRAW"}, std::pair{"dng", "ProviderCinemaDNG"},
        std::pair{"canonraw", "ProviderCanonRAW"}}) {
    cards.push_back({tree.Path(folder), std::string("com.halvane.Merisk.") + provider});
  }
  return cards;
}

}  // namespace sorvik_test
