// SPDX-License-Identifier: MIT
#include "xmp/XMPFiles.h"

#include <optional>
#include <vector>

#include "foundation/ByteReader.h"
#include "foundation/FolderNames.h"
#include "foundation/XmlTree.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/FileBytes.h"
#include "xmp/Namespaces.h"
#include "xmp/ReaderTable.h"
#include "xmp/Sidecars.h"
#include "xmp/readers/PlainXMPReader.h"

namespace Sorvik::xmp {
namespace {

// What is known of a file, filled from the strongest source to the weakest.
class MetadataSum {
 public:
  // A packet that can't be parsed costs nothing but itself.
  void AddPacket(std::string_view packet) {
    if (packet.empty()) return;
    TXMPMeta parsed;
    try {
      parsed.ParseFromBuffer(packet.data(), static_cast<std::uint32_t>(packet.size()));
    } catch (const XMP_Error&) {
      anyBroken_ = true;
      return;
    }
    anyKnown_ = true;
    sum_.FillFrom(parsed);
  }
  void AddNative(const TXMPMeta& native) {
    anyKnown_ = true;
    sum_.FillFrom(native);
  }
  // The properties by which clips are tied to shots and takes.
  void AddNativeTies(const TXMPMeta& native) {
    sum_.TakeFrom(native, kNsDC, "identifier");
    sum_.TakeFrom(native, kNsDC, "relation");
    sum_.TakeFrom(native, kNsDM, "duration");
  }

  bool AnyKnown() const { return anyKnown_; }
  bool AnyBroken() const { return anyBroken_; }
  TXMPMeta&& Sum() && { return std::move(sum_); }

 private:
  TXMPMeta sum_;
  bool anyKnown_ = false;
  bool anyBroken_ = false;
};

void AddSidecars(const std::string& path, MetadataSum& sum) {
  if (IsPlainXMP(path)) return;
  for (const std::vector<std::string>& spellings : SidecarPlaces(path)) {
    for (const std::string& sidecar : spellings) {
      if (!foundation::FolderNames::MayExist(sidecar)) continue;
      const auto bytes = platform::ReadHead(sidecar, foundation::XmlLimits().bytes + 1);
      if (!bytes) continue;
      sum.AddPacket(foundation::ByteReader(*bytes).Text());
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

  MetadataSum sum;
  if (output.hasNative && output.nativeTiesWin) sum.AddNativeTies(output.native);
  AddSidecars(input.path, sum);
  sum.AddPacket(output.packet);
  sum.AddPacket(output.extendedPacket);
  if (output.hasNative) sum.AddNative(output.native);

  if (!sum.AnyKnown() && sum.AnyBroken()) {
    throw XMP_Error(kXMPErr_BadXML, "the file's XMP is not well-formed");
  }
  if (!sum.AnyKnown()) return false;
  if (info != nullptr) info->length = output.packet.size();
  if (packet != nullptr) *packet = std::move(output.packet);
  if (meta != nullptr) *meta = std::move(sum).Sum();
  return true;
}

void TXMPFiles::CloseFile(XMP_OptionBits) noexcept { file_.reset(); }

void TXMPUtils::RemoveProperties(SXMPMeta* meta, const char* schema, const char* name,
                                 XMP_OptionBits options) {
  const bool all = (options & kXMPUtil_DoAllProperties) != 0;
  if (meta != nullptr && schema == nullptr && name == nullptr && all) meta->Clear();
}

}  // namespace Sorvik::xmp
