// SPDX-License-Identifier: MIT
#include "TerminalPictures.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace host {
namespace {

constexpr int kDefaultCellWidth = 10;
constexpr int kDefaultCellHeight = 20;

std::string_view EnvironmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Kitty's protocol: https://sw.kovidgoyal.net/kitty/graphics-protocol/. A PNG file in chunks of at
// most 4096 base64 digits; C=1 keeps the cursor position, q=2 suppresses replies.
std::string KittyBytes(const Picture& picture) {
  constexpr std::size_t kChunk = 4096;
  const std::string data = Base64(EncodePng(picture));
  std::string bytes;
  for (std::size_t at = 0; at < data.size(); at += kChunk) {
    bytes += at == 0 ? "\x1b_Ga=T,f=100,C=1,q=2,m=" : "\x1b_Gm=";
    bytes += at + kChunk < data.size() ? "1;" : "0;";
    bytes += data.substr(at, kChunk) + "\x1b\\";
  }
  return bytes;
}

// Six levels per colour: 216 registers, within the 256 that terminals support.
constexpr int kLevels = 6;

// Bayer matrix for ordered dithering.
constexpr int kBayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

// Returns the colour register of a pixel, or -1 for a transparent one.
int Register(const std::uint8_t* pixel, std::size_t x, std::size_t y) {
  if (pixel[3] < 128) return -1;
  const int threshold = kBayer[y % 4][x % 4] * 16 + 8;
  const auto level = [&](std::uint8_t value) { return (value * (kLevels - 1) + threshold) / 256; };
  return (level(pixel[2]) * kLevels + level(pixel[1])) * kLevels + level(pixel[0]);
}

std::string Palette() {
  std::string text;
  for (int i = 0; i < kLevels * kLevels * kLevels; ++i) {
    text += "#" + std::to_string(i) + ";2";
    for (const int level : {i / (kLevels * kLevels), i / kLevels % kLevels, i % kLevels}) {
      text += ";" + std::to_string(level * 100 / (kLevels - 1));
    }
  }
  return text;
}

// Appends one colour's sixels of a band; repeated sixels are written as "!count".
void AppendRuns(std::string& text, const std::string& sixels) {
  for (std::size_t at = 0; at < sixels.size();) {
    std::size_t end = at;
    while (end < sixels.size() && sixels[end] == sixels[at]) ++end;
    if (end - at > 3) {
      text += "!" + std::to_string(end - at) + sixels[at];
    } else {
      text.append(end - at, sixels[at]);
    }
    at = end;
  }
}

// Encodes a band of up to six rows, one pass for each colour in it.
std::string Band(const Picture& picture, int top) {
  const auto width = static_cast<std::size_t>(picture.width);
  std::array<std::string, kLevels * kLevels * kLevels> dots;
  for (int row = 0; row < std::min(6, picture.height - top); ++row) {
    for (std::size_t x = 0; x < width; ++x) {
      const auto y = static_cast<std::size_t>(top + row);
      const int index = Register(&picture.pixels[(y * width + x) * 4], x, y);
      if (index < 0) continue;
      std::string& sixels = dots[static_cast<std::size_t>(index)];
      if (sixels.empty()) sixels.assign(width, '?');
      sixels[x] = static_cast<char>('?' + ((sixels[x] - '?') | (1 << row)));
    }
  }
  std::string text;
  for (std::size_t i = 0; i < dots.size(); ++i) {
    if (dots[i].empty()) continue;
    text += "#" + std::to_string(i);
    AppendRuns(text, dots[i]);
    text += "$";
  }
  return text + "-";
}

// DEC STD 070 chapter 9: P2 = 1 keeps pixels at the background colour.
std::string SixelBytes(const Picture& picture) {
  std::string text = "\x1bP0;1q\"1;1;" + std::to_string(picture.width) + ";" +
                     std::to_string(picture.height) + Palette();
  for (int top = 0; top < picture.height; top += 6) text += Band(picture, top);
  return text + "\x1b\\";
}

}  // namespace

PictureProtocol ChooseProtocol(PictureProtocol requested, bool isTerminal) {
  if (requested != PictureProtocol::kAutomatic) return requested;
  if (!isTerminal) return PictureProtocol::kNone;
  const std::string_view term = EnvironmentVariable("TERM");
  const std::string_view program = EnvironmentVariable("TERM_PROGRAM");
  if (!EnvironmentVariable("KITTY_WINDOW_ID").empty() || Contains(term, "kitty") ||
      program == "ghostty" || Contains(term, "ghostty")) {
    return PictureProtocol::kKitty;
  }
  const bool sixel = program == "WezTerm" || program == "iTerm.app" || program == "mintty" ||
                     Contains(term, "sixel") || Contains(term, "foot") ||
                     Contains(term, "mlterm") || Contains(term, "contour") ||
                     term == "yaft-256color";
  return sixel ? PictureProtocol::kSixel : PictureProtocol::kNone;
}

CellExtent ExtentOf(int width, int height) {
  winsize size{};
  ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
  const bool known = size.ws_xpixel != 0 && size.ws_ypixel != 0 && size.ws_col != 0;
  const int cellWidth = known ? std::max(1, size.ws_xpixel / size.ws_col) : kDefaultCellWidth;
  const int cellHeight =
      known && size.ws_row != 0 ? std::max(1, size.ws_ypixel / size.ws_row) : kDefaultCellHeight;
  return {(width + cellWidth - 1) / cellWidth, (height + cellHeight - 1) / cellHeight};
}

std::string PictureBytes(const Picture& picture, PictureProtocol protocol) {
  if (picture.Empty()) return {};
  return protocol == PictureProtocol::kKitty ? KittyBytes(picture) : SixelBytes(picture);
}

}  // namespace host
