// SPDX-License-Identifier: MIT
#include "xmp/readers/GifReader.h"

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: GIF89a, sections 18 to 26; ISO 16684-3, 1.1.2. The packet is stored unmodified, not split
// into sub-blocks. It is followed by 258 bytes (1, then 255 down to 0, then 0) that bring decoders
// which interpret it as sub-blocks to the end of the extension.
constexpr std::string_view kExtension{"\x21\xFF\x0BXMP DataXMP", 14};
constexpr std::string_view kTrailerStart{"\x01\xFF\xFE\xFD\xFC", 5};
// Writers put it in front of the images or at the end of the file.
constexpr std::uint64_t kTailLength = 64 * 1024;

// Returns the packet of the extension in `bytes`; empty if there is no complete one.
std::string_view FindPacket(std::string_view bytes) {
  const std::size_t at = bytes.find(kExtension);
  if (at == std::string_view::npos) return {};
  const std::string_view packet = bytes.substr(at + kExtension.size());
  const std::size_t end = packet.find(kTrailerStart);
  return end == std::string_view::npos ? std::string_view() : packet.substr(0, end);
}

bool Recognises(const ReaderInput& input) {
  return input.head.Matches(0, "GIF89a") || input.head.Matches(0, "GIF87a");
}

// Searches for the 14-byte signature, which doesn't occur in compressed pixels by chance. Following
// the sub-blocks would mean reading the complete file.
void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  FileWindow file(input);
  const std::string_view head = input.head.Text();
  output.packet = FindPacket(head);
  if (!output.packet.empty() || file.Size() <= input.head.Size()) return;

  const std::size_t begun = head.find(kExtension);
  if (begun != std::string_view::npos) {
    output.packet = FindPacket(file.At(begun, FileWindow::kMaxBytes).Text());
    return;
  }
  std::uint64_t start = 0;
  output.packet = FindPacket(file.Tail(kTailLength, start).Text());
}

}  // namespace

const Reader kGifReader = {"GIF", Recognises, Read};

}  // namespace Sorvik::xmp
