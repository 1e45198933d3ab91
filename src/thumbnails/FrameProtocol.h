// SPDX-License-Identifier: MIT
// Messages between the library and its helper program sorvik-frame, over a Unix socket. Both sides
// come from one build, so numbers are in the byte order of the machine.
//
// The library sends a FrameQuery with the file's open descriptor attached. The helper answers with
// a FrameReply, followed by the pixels if there is a picture: rows from the top, red, green and
// blue bytes without padding.
#pragma once

#include <cstdint>

namespace Sorvik::frames {

inline constexpr std::uint32_t kMagic = 0x32464B53;  // changes with the messages

// How the helper decodes the file.
enum class Kind : std::uint32_t {
  kVideo,  // a frame of a video file
  kRaw,    // development of a raw picture
  kHeif,   // a HEIC or AVIF picture
};

struct FrameQuery {
  std::uint32_t magic;
  Kind kind;
  // The picture is scaled down to fit; 0 means no limit. It is never enlarged.
  std::int32_t maxWidth;
  std::int32_t maxHeight;
};

struct FrameReply {
  std::uint32_t magic;
  std::int32_t width;  // 0 if the file gives no picture
  std::int32_t height;
};

inline constexpr int kPixelBytes = 3;
// The longest side of a picture. Larger frames are scaled down.
inline constexpr int kMaxSide = 4096;
// After this time the library ends the helper.
inline constexpr int kMaxSeconds = 5;
// A helper that has been idle for this time ends itself.
inline constexpr int kMaxIdleSeconds = 30;

}  // namespace Sorvik::frames
