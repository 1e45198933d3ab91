// SPDX-License-Identifier: MIT
#include "xmp/readers/MXFReader.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/ClipRecord.h"
#include "xmp/readers/MXFAcquisition.h"
#include "xmp/readers/MXFFacts.h"
#include "xmp/readers/MXFSets.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/NonRealTimeMetaReader.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Header metadata of editors, with private dictionaries, takes 256 KiB; that of cameras less than
// 64.
constexpr std::size_t kMaxHeaderBytes = 4 * 1024 * 1024;
// Holds the random index pack of a 10-hour file with partitions of 10 s, and most footers.
constexpr std::size_t kTail = 64 * 1024;
// The camera's document, of which the header may contain the beginning only.
constexpr std::size_t kMaxRecordBytes = 256 * 1024;

// A key at offset 0 is sufficient; after a run-in, which may contain any bytes, the extension must
// match too.
bool Recognises(const ReaderInput& input) {
  if (mxf::ReadPartition(input.head, 0)) return true;
  constexpr std::string_view kExtension = ".mxf";
  if (input.path.size() < kExtension.size()) return false;
  const auto end = input.path.substr(input.path.size() - kExtension.size());
  const bool named = std::ranges::equal(end, kExtension, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b;
  });
  return named && mxf::FindFirstPartition(input.head).has_value();
}

struct Span {
  std::vector<std::byte> owned;
  ByteReader bytes;
};

// Returns the offset of the header metadata, the bytes of which are counted from the primer. It may
// follow a fill item.
std::uint64_t PrimerOffset(ByteReader bytes, const mxf::Partition& partition) {
  const auto first = mxf::ReadKLV(bytes, partition.end);
  return first && mxf::IsFill(first->key) ? first->next : partition.end;
}

// Returns the bytes from the partition pack at `offset` of the file to the end of its header
// metadata. `have` is the part that was read already; the rest is read if necessary.
Span WithHeader(const FileBytes& file, std::uint64_t offset, ByteReader have,
                const mxf::Partition& partition) {
  Span span;
  span.bytes = have;
  const std::uint64_t primer = PrimerOffset(have, partition);
  if (partition.headerBytes == 0 || primer > kMaxHeaderBytes) return span;
  const std::uint64_t need =
      primer + std::min<std::uint64_t>(partition.headerBytes, kMaxHeaderBytes);
  const std::uint64_t there = file.Size() - std::min(offset, file.Size());
  if (have.Size() >= std::min(need, there)) return span;
  const auto rest = file.Read(offset + have.Size(), static_cast<std::size_t>(need - have.Size()));
  span.owned.assign(have.Bytes().begin(), have.Bytes().end());
  span.owned.insert(span.owned.end(), rest.begin(), rest.end());
  span.bytes = ByteReader(span.owned);
  return span;
}

// Returns the duration in the footer partition of a file with an open header. At most two reads.
std::optional<mxf::Facts::Duration> FooterDuration(const FileBytes& file, std::uint64_t runIn,
                                                   const mxf::Partition& header) {
  const std::uint64_t tailStart = file.Size() > kTail ? file.Size() - kTail : 0;
  std::vector<std::byte> tail;
  std::uint64_t footer = header.footerOffset;
  if (footer == 0) {
    tail = file.Read(tailStart, kTail);
    footer = mxf::LastPartitionOffset(ByteReader(tail)).value_or(0);
  }
  if (footer == 0 || footer >= file.Size() || runIn > file.Size() - footer) return std::nullopt;
  footer += runIn;
  Span span;
  span.bytes = footer >= tailStart ? ByteReader(tail).Clip(footer - tailStart) : ByteReader();
  if (span.bytes.Empty()) {
    span.owned = file.Read(footer, kMaxHeaderBytes / 4);
    span.bytes = ByteReader(span.owned);
  }
  const auto partition = mxf::ReadPartition(span.bytes, 0);
  if (!partition || partition->header || partition->headerBytes == 0) return std::nullopt;
  const mxf::HeaderMetadata metadata(span.bytes, partition->end);
  return mxf::Facts(metadata).GetDuration();
}

// The document of Sony cameras is in an item of its own in the header. Returns an empty text if
// there is none.
std::string EmbeddedRecord(const FileBytes& file, std::uint64_t offset, ByteReader header) {
  constexpr std::string_view kBegin = "<NonRealTimeMeta";
  constexpr std::string_view kEnd = "</NonRealTimeMeta>";
  const std::string_view text = header.Text();
  const std::size_t begin = text.find(kBegin);
  if (begin == text.npos) return {};
  std::size_t end = text.find(kEnd, begin);
  if (end != text.npos) return std::string(text.substr(begin, end + kEnd.size() - begin));
  const auto bytes = file.Read(offset + begin, kMaxRecordBytes);
  const std::string_view record = ByteReader(bytes).Text();
  end = record.find(kEnd);
  return end == record.npos ? std::string() : std::string(record.substr(0, end + kEnd.size()));
}

// Settings of lens and camera with the first frame, after the header metadata.
void AddAcquisition(const ReaderInput& input, std::uint64_t primer, std::uint64_t headerBytes,
                    TXMPMeta& meta) {
  if (primer >= input.file.Size() || headerBytes >= input.file.Size() - primer) return;
  TXMPMeta settings;
  mxf::SetAcquisition(input, primer + headerBytes, settings);
  meta.FillFrom(settings);
}

// The mean rate of files whose descriptor has none.
void SetMeanDataRate(std::uint64_t bytes, const std::optional<mxf::Facts::Duration>& duration,
                     TXMPMeta& meta) {
  if (!duration || !duration->rate.Known() || meta.HasProperty(kNsDM, "fileDataRate")) return;
  SetFileDataRate(meta, bytes, duration->frames * duration->rate.den, duration->rate.num);
}

// Returns whether the file contains a clip record.
bool ReadHeader(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  const auto runIn = mxf::FindFirstPartition(input.head);
  if (!runIn) return false;
  const ByteReader head = input.head.Clip(*runIn);
  const auto partition = mxf::ReadPartition(head, 0);
  if (!partition) return false;
  const Span span = WithHeader(input.file, *runIn, head, *partition);
  const mxf::HeaderMetadata metadata(span.bytes, partition->end);
  const mxf::Facts facts(metadata);
  if (!facts.HasMaterialPackage()) return false;
  output.hasNative = true;
  facts.Store(partition->essenceContainer, output.native);
  TXMPMeta record;
  const bool hasRecord =
      ReadNonRealTimeMeta(EmbeddedRecord(input.file, *runIn, span.bytes), record);
  if (hasRecord) {
    // The writer in the header may be a part of the camera, such as its recorder.
    output.native.TakeFrom(record, kNsTIFF, "Make");
    output.native.TakeFrom(record, kNsTIFF, "Model");
    output.native.TakeFrom(record, kNsDM, "cameraModel");
    AddNonRealTimeFacts(std::move(record), output.native);
  }
  if (wanted.Wants(kNsAux, "Lens") || wanted.Wants(kNsCRS, "WhiteBalance")) {
    AddAcquisition(input, *runIn + PrimerOffset(head, *partition), partition->headerBytes,
                   output.native);
  }
  const bool wantsDuration = wanted.Wants(kNsDM, "duration");
  if (!wantsDuration && !wanted.Wants(kNsDM, "fileDataRate")) return hasRecord;
  auto duration = facts.GetDuration();
  if (partition->open && (wantsDuration || !duration)) {
    if (const auto last = FooterDuration(input.file, *runIn, *partition)) duration = last;
  }
  if (duration && wantsDuration) SetDuration(output.native, duration->frames, duration->rate);
  SetMeanDataRate(input.file.Size(), duration, output.native);
  return hasRecord;
}

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  const bool hasRecord = ReadHeader(input, wanted, output);
  // The record of the camera is of use even if the file is damaged.
  if (!hasRecord && AddClipRecord(input.path, wanted, output)) output.hasNative = true;
}

}  // namespace

const Reader kMXFReader = {"MXF", Recognises, Read};

}  // namespace Sorvik::xmp
