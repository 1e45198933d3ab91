// SPDX-License-Identifier: MIT
// The metadata of one media file, from its sidecars, its own XMP and what the camera noted in it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "xmp/Reader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

using XMP_FileFormat = std::uint32_t;
inline constexpr XMP_FileFormat kXMP_UnknownFile = 0x20202020;  // four blanks: any kind of file

inline constexpr XMP_OptionBits kXMPFiles_OpenForRead = 0x1;
inline constexpr XMP_OptionBits kXMPFiles_OpenUseSmartHandler = 0x20;
inline constexpr XMP_OptionBits kXMPFiles_OpenLimitedScanning = 0x80;

// Where a packet stands in its file. Nothing here needs more than its length.
struct XMP_PacketInfo {
  std::uint64_t length = 0;
};

// One file at a time, for reading only; whatever the format code says, the reader is chosen by the
// file's place, name and first bytes. One object belongs to one thread; any number of them work at
// the same time.
class TXMPFiles {
 public:
  TXMPFiles();
  TXMPFiles(const TXMPFiles&) = delete;
  TXMPFiles& operator=(const TXMPFiles&) = delete;
  ~TXMPFiles();

  // Which properties will be asked for, for all files opened from now on. At first all of them.
  void SetWantedProperties(WantedProperties wanted) { wanted_ = std::move(wanted); }

  // True if the file could be opened. Only a regular file ever is.
  bool OpenFile(const std::string& path, XMP_FileFormat format, XMP_OptionBits flags);
  // Fills `meta` with what is known of the file, property by property from the strongest source
  // that has it: sidecars, the file's XMP, native metadata. False if there is neither XMP nor
  // native metadata. Raises if all there is are packets that can't be parsed. `packet`, which may
  // be null like `info`, gets the file's own serialised XMP.
  bool GetXMP(SXMPMeta* meta, std::string* packet = nullptr, XMP_PacketInfo* info = nullptr);
  void CloseFile(XMP_OptionBits options = 0) noexcept;

 private:
  struct OpenedFile;

  WantedProperties wanted_;
  std::unique_ptr<OpenedFile> file_;  // null while no file is open
};

using SXMPFiles = TXMPFiles;

class TXMPUtils {
 public:
  // With no schema and no name, and with kXMPUtil_DoAllProperties, empties the object.
  static void RemoveProperties(SXMPMeta* meta, const char* schema, const char* name,
                               XMP_OptionBits options);
};

using SXMPUtils = TXMPUtils;
inline constexpr XMP_OptionBits kXMPUtil_DoAllProperties = 0x1;

}  // namespace Sorvik::xmp
