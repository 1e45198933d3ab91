// SPDX-License-Identifier: MIT
#include "xmp/XMPFiles.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/CardFolder.h"
#include "foundation/XmlTree.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/FileBytes.h"
#include "xmp/Namespaces.h"
#include "xmp/ReaderTable.h"
#include "xmp/Sidecars.h"
#include "xmp/readers/PlainXMPReader.h"

namespace Sorvik::xmp {
namespace {

// Collects the parts of a file's metadata, from strongest to weakest.
class PartCollector {
 public:
  // A packet that can't be parsed is ignored.
  void AddPacket(std::string_view packet, MetadataSource source) {
    if (packet.empty()) return;
    TXMPMeta parsed;
    try {
      parsed.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
    } catch (const XMP_Error&) {
      anyBroken_ = true;
      return;
    }
    parts_.push_back({source, std::move(parsed)});
  }
  void AddNative(NativeFacts facts) {
    parts_.push_back({SourceOf(facts.origin), std::move(facts.properties)});
  }
  // Properties by which clips are grouped into shots and takes.
  void AddNativeIdentity(const NativeFacts& facts) {
    TXMPMeta identity;
    identity.TakeFrom(facts.properties, kNsDC, "identifier");
    identity.TakeFrom(facts.properties, kNsDC, "relation");
    identity.TakeFrom(facts.properties, kNsDM, "duration");
    if (!identity.Empty()) parts_.push_back({SourceOf(facts.origin), std::move(identity)});
  }

  bool AnyBroken() const { return anyBroken_; }
  std::vector<MetadataPart>&& Take() && { return std::move(parts_); }

 private:
  static MetadataSource SourceOf(NativeOrigin origin) {
    switch (origin) {
      case NativeOrigin::kRecord:
        return MetadataSource::kRecord;
      case NativeOrigin::kIndex:
        return MetadataSource::kIndex;
      case NativeOrigin::kHeader:
        break;
    }
    return MetadataSource::kHeader;
  }

  std::vector<MetadataPart> parts_;
  bool anyBroken_ = false;
};

// All native facts, strongest first.
std::vector<NativeFacts> TakeNative(ReaderOutput& output) {
  std::vector<NativeFacts> native = std::move(output.overriding);
  native.push_back({output.origin, std::move(output.native)});
  std::ranges::move(output.completing, std::back_inserter(native));
  return native;
}

void AddSidecars(const std::string& path, PartCollector& parts) {
  if (IsPlainXMP(path)) return;
  for (const std::vector<std::string>& spellings : SidecarCandidates(path)) {
    for (const std::string& sidecar : spellings) {
      if (!foundation::MayExistOnCard(sidecar)) continue;
      const auto bytes = foundation::ReadHeadOnCard(sidecar, foundation::XmlLimits().bytes + 1);
      if (!bytes) continue;
      parts.AddPacket(foundation::ByteReader(*bytes).Text(), MetadataSource::kSidecar);
      break;
    }
  }
}

}  // namespace

struct TXMPFiles::OpenedFile {
  OpenedFile(std::string path, FileOnDisk opened)
      : file(std::move(opened)), input{std::move(path), file, file.Head()} {}

  const FileOnDisk file;
  const ReaderInput input;
};

TXMPFiles::TXMPFiles() = default;
TXMPFiles::~TXMPFiles() = default;

bool TXMPFiles::OpenFile(const std::string& path, XMP_FileFormat, XMP_OptionBits) {
  CloseFile();
  auto file = FileOnDisk::Open(path);
  if (!file) return false;
  file_ = std::make_unique<OpenedFile>(path, std::move(*file));
  return true;
}

std::vector<MetadataPart> TXMPFiles::GetParts(std::string* packet) {
  if (file_ == nullptr) throw XMP_Error(kXMPErr_BadFile, "no file is open");
  const ReaderInput& input = file_->input;
  ReaderOutput output;
  ReaderFor(input).read(input, wanted_, output);
  std::vector<NativeFacts> native;
  if (output.hasNative) native = TakeNative(output);

  PartCollector collector;
  if (output.nativeIdentityWins) {
    for (const NativeFacts& facts : native) collector.AddNativeIdentity(facts);
  }
  AddSidecars(input.path, collector);
  const auto own = output.packetIsSidecar ? MetadataSource::kSidecar : MetadataSource::kXMP;
  collector.AddPacket(output.packet, own);
  collector.AddPacket(output.extendedPacket, own);
  for (NativeFacts& facts : native) collector.AddNative(std::move(facts));

  const bool anyBroken = collector.AnyBroken();
  std::vector<MetadataPart> parts = std::move(collector).Take();
  if (parts.empty() && anyBroken) {
    throw XMP_Error(kXMPErr_BadXML, "the file's XMP is not well-formed");
  }
  if (packet != nullptr) *packet = std::move(output.packet);
  return parts;
}

bool TXMPFiles::GetXMP(SXMPMeta* meta, std::string* packet, XMP_PacketInfo* info) {
  std::string own;
  std::vector<MetadataPart> parts = GetParts(&own);
  if (parts.empty()) return false;
  if (info != nullptr) info->length = own.size();
  if (packet != nullptr) *packet = std::move(own);
  if (meta == nullptr) return true;
  SXMPMeta merged = std::move(parts.front().properties);
  for (auto part = parts.begin() + 1; part != parts.end(); ++part)
    merged.FillFrom(part->properties);
  *meta = std::move(merged);
  return true;
}

void TXMPFiles::CloseFile(XMP_OptionBits) noexcept { file_.reset(); }

void TXMPUtils::RemoveProperties(SXMPMeta* meta, const char* schema, const char* name,
                                 XMP_OptionBits options) {
  const bool all = (options & kXMPUtil_DoAllProperties) != 0;
  if (meta != nullptr && schema == nullptr && name == nullptr && all) meta->Clear();
}

}  // namespace Sorvik::xmp
