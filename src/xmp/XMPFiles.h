// SPDX-License-Identifier: MIT
// The metadata of one media file, from its sidecars, its own XMP and its native metadata.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "xmp/Reader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

using XMP_FileFormat = std::uint32_t;
inline constexpr XMP_FileFormat kXMP_UnknownFile = 0x20202020;  // four blanks: any kind of file

inline constexpr XMP_OptionBits kXMPFiles_OpenForRead = 0x1;
inline constexpr XMP_OptionBits kXMPFiles_OpenUseSmartHandler = 0x20;
inline constexpr XMP_OptionBits kXMPFiles_OpenLimitedScanning = 0x80;

// The location of a packet in its file. Only the length is used here.
struct XMP_PacketInfo {
  std::uint64_t length = 0;
};

// Where a part of a file's metadata comes from.
enum class MetadataSource {
  kSidecar,  // a file with XMP next to it
  kXMP,      // the XMP in the file
  kRecord,   // the camera's XML of the clip
  kIndex,    // a list of several clips
  kHeader,   // other structures of the file
};

struct MetadataPart {
  MetadataSource source;
  TXMPMeta properties;
};

// Opens one file at a time, read-only. The format code is ignored: the reader is chosen by the
// file's path, name and first bytes. One object belongs to one thread; several objects can work
// concurrently.
class TXMPFiles {
 public:
  TXMPFiles();
  TXMPFiles(const TXMPFiles&) = delete;
  TXMPFiles& operator=(const TXMPFiles&) = delete;
  ~TXMPFiles();

  // Sets which properties will be asked for, for all files opened from now on. Default: all.
  void SetWantedProperties(WantedProperties wanted) { wanted_ = std::move(wanted); }

  // Returns true if the file could be opened. Only regular files are opened.
  bool OpenFile(const std::string& path, XMP_FileFormat format, XMP_OptionBits flags);
  // Fills `meta` property by property from the strongest source that has it: sidecars, the file's
  // XMP, native metadata. Returns false if there is neither XMP nor native metadata. Throws if the
  // only sources are packets that can't be parsed. `packet` receives the file's own serialised XMP;
  // `packet` and `info` may be null.
  bool GetXMP(SXMPMeta* meta, std::string* packet = nullptr, XMP_PacketInfo* info = nullptr);
  // Returns the parts of which GetXMP makes its result, strongest first. Empty if there is neither
  // XMP nor native metadata. Throws like GetXMP.
  std::vector<MetadataPart> GetParts(std::string* packet = nullptr);
  void CloseFile(XMP_OptionBits options = 0) noexcept;

 private:
  struct OpenedFile;

  WantedProperties wanted_;
  std::unique_ptr<OpenedFile> file_;  // null while no file is open
};

using SXMPFiles = TXMPFiles;

class TXMPUtils {
 public:
  // Clears the object if called without schema and name and with kXMPUtil_DoAllProperties.
  static void RemoveProperties(SXMPMeta* meta, const char* schema, const char* name,
                               XMP_OptionBits options);
};

using SXMPUtils = TXMPUtils;
inline constexpr XMP_OptionBits kXMPUtil_DoAllProperties = 0x1;

}  // namespace Sorvik::xmp
