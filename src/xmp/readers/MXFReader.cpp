// SPDX-License-Identifier: MIT
#include "xmp/readers/MXFReader.h"

#include <algorithm>

#include "xmp/Namespaces.h"
#include "xmp/readers/MXFFacts.h"
#include "xmp/readers/MXFSets.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Header metadata of editors, with private dictionaries, takes 256 KiB; that of cameras less than
// 64.
constexpr std::size_t kMaxHeaderBytes = 4 * 1024 * 1024;
// Holds the random index pack of a 10-hour file with partitions of 10 s, and most footers.
constexpr std::size_t kTail = 64 * 1024;

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

// Returns the bytes from the partition pack at `offset` of the file to the end of its header
// metadata. `have` is the part that was read already; the rest is read if necessary.
Span WithHeader(const FileBytes& file, std::uint64_t offset, ByteReader have,
                const mxf::Partition& partition) {
  Span span;
  span.bytes = have;
  // The byte count starts at the primer, which may follow a fill item.
  const auto first = mxf::ReadKLV(have, partition.end);
  const std::uint64_t primer = first && mxf::IsFill(first->key) ? first->next : partition.end;
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

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  const auto runIn = mxf::FindFirstPartition(input.head);
  if (!runIn) return;
  const ByteReader head = input.head.Clip(*runIn);
  const auto partition = mxf::ReadPartition(head, 0);
  if (!partition) return;
  const Span span = WithHeader(input.file, *runIn, head, *partition);
  const mxf::HeaderMetadata metadata(span.bytes, partition->end);
  const mxf::Facts facts(metadata);
  if (!facts.HasMaterialPackage()) return;
  output.hasNative = true;
  facts.Store(partition->essenceContainer, output.native);
  if (!wanted.Wants(kNsDM, "duration")) return;
  auto duration = facts.GetDuration();
  if (partition->open) {
    if (const auto last = FooterDuration(input.file, *runIn, *partition)) duration = last;
  }
  if (duration) SetDuration(output.native, duration->frames, duration->rate);
}

}  // namespace

const Reader kMXFReader = {"MXF", Recognises, Read};

}  // namespace Sorvik::xmp
