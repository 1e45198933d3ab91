// SPDX-License-Identifier: MIT
#include "xmp/readers/CodecNames.h"

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

namespace {

struct CodecName {
  std::string_view code;  // a code shorter than four characters is a prefix
  std::string_view name;
};
constexpr CodecName kVideoCodecs[] = {
    {"avc", "AVC"},
    {"h264", "AVC"},
    {"x264", "AVC"},
    {"ai5", "AVC-Intra 50"},
    {"ai1", "AVC-Intra 100"},
    {"ai2", "AVC-Intra 200"},
    {"hvc1", "HEVC"},
    {"hev1", "HEVC"},
    {"hevc", "HEVC"},
    {"dvh1", "HEVC"},
    {"dvhe", "HEVC"},
    {"av01", "AV1"},
    {"vvc1", "VVC"},
    {"vvi1", "VVC"},
    {"vp08", "VP8"},
    {"vp09", "VP9"},
    {"apch", "ProRes 422 HQ"},
    {"apcn", "ProRes 422"},
    {"apcs", "ProRes 422 LT"},
    {"apco", "ProRes 422 Proxy"},
    {"ap4h", "ProRes 4444"},
    {"ap4x", "ProRes 4444 XQ"},
    {"aprh", "ProRes RAW HQ"},
    {"aprn", "ProRes RAW"},
    {"brhq", "Blackmagic RAW"},
    {"brst", "Blackmagic RAW"},
    {"brvn", "Blackmagic RAW"},
    {"brxq", "Blackmagic RAW"},
    {"dvc ", "DV"},
    {"dvcp", "DV"},
    {"dvpp", "DV"},
    {"dvsd", "DV"},
    {"dvsl", "DV"},
    {"dv25", "DV"},
    {"dvcs", "DV"},
    {"dv5", "DVCPRO 50"},
    {"dv1", "DVCPRO HD"},
    {"dvhd", "DVCPRO HD"},
    {"dvh", "DVCPRO HD"},
    {"mx3", "IMX"},
    {"mx4", "IMX"},
    {"mx5", "IMX"},
    {"xdv", "MPEG-2"},
    {"xd5", "MPEG-2"},
    {"xdh", "MPEG-2"},
    {"hdv", "MPEG-2"},
    {"m2v1", "MPEG-2"},
    {"mpg2", "MPEG-2"},
    {"mp1v", "MPEG-1"},
    {"mpg1", "MPEG-1"},
    {"mp4v", "MPEG-4"},
    {"mp4s", "MPEG-4"},
    {"fmp4", "MPEG-4"},
    {"xvid", "MPEG-4"},
    {"divx", "MPEG-4"},
    {"dx50", "MPEG-4"},
    {"avdn", "VC-3"},
    {"avdh", "VC-3"},
    {"cfhd", "VC-5"},
    {"mjp2", "JPEG 2000"},
    {"mjpa", "Motion JPEG"},
    {"mjpb", "Motion JPEG"},
    {"mjpg", "Motion JPEG"},
    {"jpeg", "Motion JPEG"},
    {"h263", "H.263"},
    {"s263", "H.263"},
    {"2vuy", "Uncompressed"},
    {"yuv2", "Uncompressed"},
    {"yuy2", "Uncompressed"},
    {"uyvy", "Uncompressed"},
    {"v210", "Uncompressed"},
    {"v216", "Uncompressed"},
    {"v308", "Uncompressed"},
    {"v410", "Uncompressed"},
    {"r210", "Uncompressed"},
    {"raw ", "Uncompressed"},
};

struct AudioCodec {
  std::uint32_t type;
  std::string_view name;
};
constexpr AudioCodec kAudioCodecs[] = {
    {FourCC("mp4a"), "AAC"},  {FourCC("sowt"), "PCM"},    {FourCC("twos"), "PCM"},
    {FourCC("lpcm"), "PCM"},  {FourCC("ipcm"), "PCM"},    {FourCC("fpcm"), "PCM"},
    {FourCC("in24"), "PCM"},  {FourCC("in32"), "PCM"},    {FourCC("fl32"), "PCM"},
    {FourCC("fl64"), "PCM"},  {FourCC("raw "), "PCM"},    {FourCC("NONE"), "PCM"},
    {FourCC("ac-3"), "AC3"},  {FourCC("ec-3"), "E-AC3"},  {FourCC("alac"), "ALAC"},
    {FourCC(".mp3"), "MPEG"}, {FourCC("ulaw"), "mu-law"}, {FourCC("alaw"), "A-law"},
    {FourCC("samr"), "AMR"},  {FourCC("sawb"), "AMR"},    {FourCC("Opus"), "Opus"},
    {FourCC("fLaC"), "FLAC"}, {FourCC("ima4"), "ADPCM"},
};

std::string Printable(std::string_view code) {
  for (const char c : code) {
    if (c < 0x20 || c > 0x7E) return {};
  }
  return std::string(code.substr(0, code.find_last_not_of(' ') + 1));
}

std::string LowerASCII(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

}  // namespace

std::string VideoCodecName(std::string_view code) {
  const std::string lower = LowerASCII(code);
  for (const CodecName& codec : kVideoCodecs) {
    if (lower.starts_with(codec.code)) return std::string(codec.name);
  }
  return Printable(code);
}

unsigned BitsOfVideoCodec(std::string_view code) {
  struct Depth {
    std::string_view name;
    unsigned bits;
  };
  constexpr Depth kDepths[] = {
      {"ProRes 422 HQ", 10},
      {"ProRes 422", 10},
      {"ProRes 422 LT", 10},
      {"ProRes 422 Proxy", 10},
      {"ProRes 4444", 12},
      {"ProRes 4444 XQ", 12},
      {"ProRes RAW", 12},
      {"ProRes RAW HQ", 12},
      {"AVC-Intra 50", 10},
      {"AVC-Intra 100", 10},
      {"AVC-Intra 200", 10},
      {"DV", 8},
      {"DVCPRO 50", 8},
      {"DVCPRO HD", 8},
      {"IMX", 8},
      {"MPEG-1", 8},
      {"MPEG-2", 8},
      {"MPEG-4", 8},
      {"Motion JPEG", 8},
      {"H.263", 8},
      {"VP8", 8},
  };
  constexpr Depth kUncompressed[] = {{"2vuy", 8},  {"yuv2", 8},  {"yuy2", 8},  {"uyvy", 8},
                                     {"v308", 8},  {"v210", 10}, {"v410", 10}, {"r210", 10},
                                     {"v216", 16}, {"rle ", 8},  {"png ", 8},  {"hfyu", 8}};
  const std::string lower = LowerASCII(code);
  for (const Depth& depth : kUncompressed) {
    if (lower == depth.name) return depth.bits;
  }
  const std::string name = VideoCodecName(code);
  for (const Depth& depth : kDepths) {
    if (name == depth.name) return depth.bits;
  }
  return 0;
}

std::string FourCCText(std::uint32_t code) {
  std::string text;
  for (const int shift : {24, 16, 8, 0}) text.push_back(static_cast<char>(code >> shift & 0xFF));
  return text;
}

std::string AudioCodecName(std::uint32_t type) {
  for (const AudioCodec& codec : kAudioCodecs) {
    if (codec.type == type) return std::string(codec.name);
  }
  return Printable(FourCCText(type));
}

bool IsFloatPCM(std::uint32_t type) noexcept {
  return type == FourCC("fl32") || type == FourCC("fl64") || type == FourCC("fpcm");
}

unsigned PCMBits(std::uint32_t type, unsigned bits) noexcept {
  switch (type) {
    case FourCC("in24"):
      return 24;
    case FourCC("in32"):
    case FourCC("fl32"):
      return 32;
    case FourCC("fl64"):
      return 64;
    default:
      return bits;
  }
}

std::string_view WaveFormatName(std::uint16_t tag) noexcept {
  switch (tag) {
    case 0x0001:  // PCM
    case 0x0003:  // floating point
      return "PCM";
    case 0x0002:
    case 0x0011:
      return "ADPCM";
    case 0x0006:
      return "A-law";
    case 0x0007:
      return "mu-law";
    case 0x0050:
    case 0x0055:
      return "MPEG";
    case 0x00FF:
    case 0x1600:
    case 0x1610:
      return "AAC";
    case 0x2000:
      return "AC3";
    case 0x2001:
      return "DTS";
    default:
      return {};
  }
}

}  // namespace Sorvik::xmp
