// SPDX-License-Identifier: MIT
#include "xmp/readers/GifReader.h"

#include "xmp/readers/FileWindow.h"
#include "xmp/readers/PictureSize.h"

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
std::string ReadPacket(const ReaderInput& input) {
  FileWindow file(input);
  const std::string_view head = input.head.Text();
  const std::string_view packet = FindPacket(head);
  if (!packet.empty() || file.Size() <= input.head.Size()) return std::string(packet);

  const std::size_t begun = head.find(kExtension);
  if (begun != std::string_view::npos) {
    return std::string(FindPacket(file.At(begun, FileWindow::kMaxBytes).Text()));
  }
  std::uint64_t start = 0;
  const std::string_view tail = file.Tail(kTailLength, start).Text();
  const std::string_view last = FindPacket(tail);
  // The end of a packet that is longer than the tail.
  if (!last.empty() || tail.find(kTrailerStart) == tail.npos) return std::string(last);
  return std::string(FindPacket(file.Tail(FileWindow::kMaxBytes, start).Text()));
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  output.packet = ReadPacket(input);
  const std::uint16_t width = input.head.U16LE(6).value_or(0);
  const std::uint16_t height = input.head.U16LE(8).value_or(0);
  SetPictureSize(output.native, width, height);
  output.hasNative = width != 0 && height != 0;
}

}  // namespace

const Reader kGifReader = {"GIF", Recognises, Read};

}  // namespace Sorvik::xmp
