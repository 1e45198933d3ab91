// SPDX-License-Identifier: MIT
// Reading metadata: parsing a packet, all fields of a packet, complete files with and without
// sidecars, and 1,000 files of one folder.
//
//   bench/MetadataCompare.sh build/release/MetadataBench
//
// compares the last of these with another reader and counts system calls.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "support/TiffBytes.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik;

// A packet as written by editing software: common properties and `events` history entries.
std::string Packet(long events) {
  std::string text = R"(<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/"><rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
<rdf:Description rdf:about="" xmlns:xmp="http://ns.adobe.com/xap/1.0/"
 xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:mm="http://ns.adobe.com/xap/1.0/mm/"
 xmlns:dm="http://ns.adobe.com/xmp/1.0/DynamicMedia/" xmp:CreateDate="2015-03-23T22:18:20-04:00"
 xmp:Label="A" dm:videoFrameRate="24.000000" dm:scene="1" dm:good="True" dm:fileDataRate="36/10">
<dm:duration dm:value="48" dm:scale="1/24"/>
<dc:title><rdf:Alt><rdf:li xml:lang="x-default">Title</rdf:li></rdf:Alt></dc:title>
<mm:History><rdf:Seq>)";
  for (long i = 0; i < events; ++i) {
    text += R"(<rdf:li rdf:parseType="Resource"><mm:action>saved</mm:action>
<mm:when>2015-03-23T22:18:29-04:00</mm:when><mm:id>xmp.iid:0380117407206811822A837BB167DEB4</mm:id>
</rdf:li>)";
  }
  return text +
         "</rdf:Seq></mm:History></rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

XMPSupport::XMPFieldBits AllFields() { return XMPSupport::XMPFieldBits().set(); }

void ParsePacket(benchmark::State& state) {
  const std::string packet = Packet(state.range(0));
  for (auto _ : state) {
    xmp::TXMPMeta meta;
    meta.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
    benchmark::DoNotOptimize(meta);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(packet.size()));
}
BENCHMARK(ParsePacket)->Arg(4)->Arg(1000)->Arg(20'000)->Unit(benchmark::kMicrosecond);

void AllFieldsOfPacket(benchmark::State& state) {
  const std::string packet = Packet(4);
  for (auto _ : state) {
    benchmark::DoNotOptimize(XMPSupport::MakeValue(AllFields(), packet));
  }
}
BENCHMARK(AllFieldsOfPacket)->Unit(benchmark::kMicrosecond);

// One P2 clip XML; with argument 1 also a sidecar.
void FieldsOfClip(benchmark::State& state) {
  const sorvik_test::TempTree tree;
  sorvik_test::MakeP2Card(tree, "card");
  sorvik_test::AddP2Clip(tree, "card", {.id = "0001AB"});
  if (state.range(0) != 0) tree.File("card/CONTENTS/CLIP/0001AB.XMP", Packet(4));
  const std::string clip = tree.Path("card/CONTENTS/CLIP/0001AB.XML");
  const foundation::CallScope scope;
  for (auto _ : state) {
    benchmark::DoNotOptimize(XMPSupport::MakeValue(clip, AllFields()));
  }
}
BENCHMARK(FieldsOfClip)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// A packet scan of a file of unknown format.
void ScanForPacket(benchmark::State& state) {
  const sorvik_test::TempTree tree;
  const std::string file = tree.File("clip.bin", std::string(std::size_t{4} << 20, '<'));
  for (auto _ : state) {
    benchmark::DoNotOptimize(XMPSupport::MakeValue(file, AllFields()));
  }
}
BENCHMARK(ScanForPacket)->Unit(benchmark::kMicrosecond);

// A photograph as written by cameras and editors: Exif, a packet, 100 kB of pixels.
std::string Photograph() {
  sorvik_test::TiffBytes t;
  const std::string exif =
      t.File({t.Ascii(271, "Maker"), t.Ascii(272, "Model"), t.Ascii(306, "2021:03:04 05:06:07")},
             {{34665, {t.Ascii(36867, "2021:03:04 05:06:07"), t.Ascii(42033, "12345")}},
              {34853, {t.Ascii(1, "N"), t.Ratios(2, {{48, 1}, {12, 1}, {30, 1}})}}});
  const auto segment = [](const std::string& body) {
    return sorvik_test::Bytes().U16(0xFFE1).U16(body.size() + 2).Text(body);
  };
  sorvik_test::Bytes file;
  file.U16(0xFFD8).Add(segment(std::string("Exif\0\0", 6) + exif));
  file.Add(segment(std::string("http://ns.adobe.com/xap/1.0/\0", 29) + Packet(4)));
  return file.U16(0xFFDA).U16(2).Fill(100'000, 0x55).U16(0xFFD9).str();
}

// 1,000 files, in the folder SORVIK_BENCH_FILES if set, so that other programs can read them.
std::vector<std::string> ThousandPaths(const sorvik_test::TempTree& tree, bool pictures) {
  const char* kept = std::getenv("SORVIK_BENCH_FILES");
  const std::filesystem::path folder =
      std::filesystem::path(kept != nullptr ? kept : tree.Root()) / (pictures ? "jpg" : "xmp");
  std::filesystem::create_directories(folder);
  const std::string content = pictures ? Photograph() : Packet(4);
  std::vector<std::string> paths;
  for (int i = 0; i < 1000; ++i) {
    paths.push_back(folder / (std::to_string(1000 + i) + (pictures ? ".jpg" : ".xmp")));
    if (std::filesystem::exists(paths.back())) continue;  // from an earlier run
    std::ofstream(paths.back(), std::ios::binary) << content;
  }
  return paths;
}

// All fields of 1,000 XMP files; with argument 1 of 1,000 photographs.
void ThousandFiles(benchmark::State& state) {
  const sorvik_test::TempTree tree;
  const auto paths = ThousandPaths(tree, state.range(0) != 0);
  for (auto _ : state) {
    const foundation::CallScope scope;
    // As in a listing, where the folder's names are cached.
    Hestra::Directory::GetItems(std::filesystem::path(paths.front()).parent_path());
    for (const std::string& path : paths) {
      benchmark::DoNotOptimize(XMPSupport::MakeValue(path, AllFields()));
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(paths.size()));
}
BENCHMARK(ThousandFiles)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
