// SPDX-License-Identifier: MIT
// Parts of MP4 and MOV files inside a valid movie, which complete files rarely reach. The first
// byte selects the part: the sample tables of a video or timecode track, fragments after the movie,
// user data, or the box of a camera maker.
#include <string>

#include "FuzzReader.h"
#include "xmp/readers/IsoMediaReader.h"

namespace {

std::string Number(std::size_t value) {
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<char>(value >> shift & 0xFF));
  return bytes;
}

std::string Box(const std::string& type, const std::string& body) {
  return Number(body.size() + 8) + type + body;
}

// Version, flags and times of 0; 1000 units per second, a duration of 10 seconds.
std::string Times() { return std::string(12, '\0') + Number(1000) + Number(10'000); }

std::string Track(const std::string& handler, const std::string& tables) {
  const std::string media = Box("mdhd", Times()) + Box("hdlr", std::string(8, '\0') + handler) +
                            Box("minf", Box("stbl", tables));
  return Box("trak", Box("tkhd", std::string(12, '\0') + Number(1)) + Box("mdia", media));
}

std::string Movie(const std::string& boxes) {
  return Box("ftyp", "isom") + Box("moov", Box("mvhd", Times()) + boxes);
}

std::string FileWith(unsigned part, const std::string& body) {
  const std::string canon = "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48";
  switch (part) {
    case 0:
      return Movie(Track("vide", body));
    case 1:
      return Movie(Track("tmcd", body));
    case 2:
      return Movie(Track("vide", {}) + Box("mvex", Box("trex", Number(0) + Number(1)))) + body;
    case 3:
      return Movie(Track("soun", body));
    case 4:
      return Movie(Box("udta", body));
    default:
      return Movie(Box("uuid", canon + body));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr unsigned kParts = 6;
  const std::string file =
      FileWith(data[0] % kParts, {reinterpret_cast<const char*>(data) + 1, size - 1});
  sorvik_fuzz::FuzzSeeking(Sorvik::xmp::kIsoMediaReader,
                           {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()},
                           "a.mp4");
  return 0;
}
