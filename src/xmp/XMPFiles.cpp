// SPDX-License-Identifier: MIT
#include "xmp/XMPFiles.h"

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

// The merged metadata of a file. Sources are added from strongest to weakest.
class MergedMetadata {
 public:
  // A packet that can't be parsed is ignored.
  void AddPacket(std::string_view packet) {
    if (packet.empty()) return;
    TXMPMeta parsed;
    try {
      parsed.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
    } catch (const XMP_Error&) {
      anyBroken_ = true;
      return;
    }
    anyFound_ = true;
    merged_.FillFrom(parsed);
  }
  void AddNative(const TXMPMeta& native) {
    anyFound_ = true;
    merged_.FillFrom(native);
  }
  // Properties by which clips are grouped into shots and takes.
  void AddNativeIdentity(const TXMPMeta& native) {
    merged_.TakeFrom(native, kNsDC, "identifier");
    merged_.TakeFrom(native, kNsDC, "relation");
    merged_.TakeFrom(native, kNsDM, "duration");
  }

  bool AnyFound() const { return anyFound_; }
  bool AnyBroken() const { return anyBroken_; }
  TXMPMeta&& Take() && { return std::move(merged_); }

 private:
  TXMPMeta merged_;
  bool anyFound_ = false;
  bool anyBroken_ = false;
};

void AddSidecars(const std::string& path, MergedMetadata& merged) {
  if (IsPlainXMP(path)) return;
  for (const std::vector<std::string>& spellings : SidecarCandidates(path)) {
    for (const std::string& sidecar : spellings) {
      if (!foundation::MayExistOnCard(sidecar)) continue;
      const auto bytes = platform::ReadHead(sidecar, foundation::XmlLimits().bytes + 1);
      if (!bytes) continue;
      merged.AddPacket(foundation::ByteReader(*bytes).Text());
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

bool TXMPFiles::GetXMP(SXMPMeta* meta, std::string* packet, XMP_PacketInfo* info) {
  if (file_ == nullptr) throw XMP_Error(kXMPErr_BadFile, "no file is open");
  const ReaderInput& input = file_->input;
  ReaderOutput output;
  ReaderFor(input).read(input, wanted_, output);

  MergedMetadata merged;
  if (output.hasNative && output.nativeIdentityWins) merged.AddNativeIdentity(output.native);
  AddSidecars(input.path, merged);
  merged.AddPacket(output.packet);
  merged.AddPacket(output.extendedPacket);
  if (output.hasNative) merged.AddNative(output.native);

  if (!merged.AnyFound() && merged.AnyBroken()) {
    throw XMP_Error(kXMPErr_BadXML, "the file's XMP is not well-formed");
  }
  if (!merged.AnyFound()) return false;
  if (info != nullptr) info->length = output.packet.size();
  if (packet != nullptr) *packet = std::move(output.packet);
  if (meta != nullptr) *meta = std::move(merged).Take();
  return true;
}

void TXMPFiles::CloseFile(XMP_OptionBits) noexcept { file_.reset(); }

void TXMPUtils::RemoveProperties(SXMPMeta* meta, const char* schema, const char* name,
                                 XMP_OptionBits options) {
  const bool all = (options & kXMPUtil_DoAllProperties) != 0;
  if (meta != nullptr && schema == nullptr && name == nullptr && all) meta->Clear();
}

}  // namespace Sorvik::xmp
