// SPDX-License-Identifier: MIT
// What the metadata of one clip costs: parsing a packet, all fields of it, and whole files with and
// without sidecars.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "foundation/CallScope.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik;

// A packet as editing software writes it: the usual properties and `events` entries of history.
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

// One clip XML of P2; with 1, a sidecar beside it.
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

// A file of a kind that no reader knows, searched for a packet.
void ScanForPacket(benchmark::State& state) {
  const sorvik_test::TempTree tree;
  const std::string file = tree.File("clip.bin", std::string(std::size_t{4} << 20, '<'));
  for (auto _ : state) {
    benchmark::DoNotOptimize(XMPSupport::MakeValue(file, AllFields()));
  }
}
BENCHMARK(ScanForPacket)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
