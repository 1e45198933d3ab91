// SPDX-License-Identifier: MIT
#include "foundation/platform/NativeAttributes.h"

#include <endian.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/msdos_fs.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <map>
#include <span>

namespace Sorvik::platform {
namespace {

// Missing in older versions of linux/magic.h.
constexpr std::uint32_t kExfatMagic = 0x2011BAB0;
constexpr std::uint32_t kNtfs3Magic = 0x7366746e;
constexpr std::uint32_t kFuseMagic = 0x65735546;
constexpr std::uint32_t kCifsMagic = 0xFF534D42;
constexpr std::uint32_t kSmb2Magic = 0xFE534D42;

class FatAttributes final : public NativeAttributes {
 public:
  explicit FatAttributes(int folder) : folder_(folder) {}

  static bool Works(int folder) {
    __u32 bits = 0;
    return ioctl(folder, FAT_IOCTL_GET_ATTRIBUTES, &bits) == 0;
  }

  std::optional<std::uint32_t> BitsOf(const char* name) const override {
    const int item = openat(folder_, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (item < 0) return std::nullopt;
    __u32 bits = 0;
    const bool known = ioctl(item, FAT_IOCTL_GET_ATTRIBUTES, &bits) == 0;
    close(item);
    return known ? std::optional<std::uint32_t>(bits) : std::nullopt;
  }

  std::string ShortNameOf(const char* name) const override {
    if (!namesRead_) ReadNames();
    const auto found = shortNames_.find(name);
    return found == shortNames_.end() ? std::string() : found->second;
  }

  std::optional<FileTime> CreationOf(const char*) const override { return std::nullopt; }

 private:
  // VFAT gives short names only while the folder is listed, so all are read at once, on a separate
  // descriptor.
  void ReadNames() const {
    namesRead_ = true;
    const int walk = openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (walk < 0) return;
    __fat_dirent pair[2] = {};
    while (ioctl(walk, VFAT_IOCTL_READDIR_BOTH, pair) > 0 && pair[0].d_reclen != 0) {
      // Without a long name there is no separate short name.
      if (pair[1].d_name[0] != '\0') shortNames_.emplace(NameOf(pair[1]), NameOf(pair[0]));
    }
    close(walk);
  }
  static std::string NameOf(const __fat_dirent& entry) {
    return {entry.d_name, strnlen(entry.d_name, sizeof entry.d_name)};
  }

  int folder_;
  mutable bool namesRead_ = false;
  mutable std::map<std::string, std::string> shortNames_;
};

struct AttributeSource {
  const char* name;
  bool bigEndian;
};

class ExtendedAttributes final : public NativeAttributes {
 public:
  // Returns the first source that the file system of `folder` supports; nullptr if none.
  static std::unique_ptr<NativeAttributes> Find(int folder) {
    static constexpr std::array<AttributeSource, 5> kSources = {{{"system.ntfs_attrib_be", true},
                                                                 {"system.ntfs_attrib", false},
                                                                 {"system.dos_attrib", false},
                                                                 {"user.cifs.dosattrib", false},
                                                                 {"user.smb3.dosattrib", false}}};
    for (const AttributeSource& source : kSources) {
      std::unique_ptr<ExtendedAttributes> attributes(new ExtendedAttributes(folder, source));
      if (attributes->BitsOf("")) return attributes;
    }
    return nullptr;
  }

  std::optional<std::uint32_t> BitsOf(const char* name) const override {
    std::uint32_t stored = 0;
    if (Get(name, source_.name, std::as_writable_bytes(std::span(&stored, 1))) != sizeof(stored)) {
      return std::nullopt;
    }
    return source_.bigEndian ? be32toh(stored) : le32toh(stored);
  }

  std::string ShortNameOf(const char* name) const override {
    std::array<char, 64> text;  // at least 12 characters of 3 bytes each
    const std::size_t size =
        Get(name, "system.ntfs_dos_name", std::as_writable_bytes(std::span(text)));
    return {text.data(), size};
  }

  std::optional<FileTime> CreationOf(const char* name) const override {
    std::uint64_t stored = 0;
    if (Get(name, "system.ntfs_crtime_be", std::as_writable_bytes(std::span(&stored, 1))) !=
        sizeof(stored)) {
      return std::nullopt;
    }
    // Units of 100 ns since 1601.
    const std::uint64_t ticks = be64toh(stored);
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
    return FileTime{static_cast<std::int64_t>(ticks / kTicksPerSecond) - kSecondsTo1970,
                    static_cast<std::uint32_t>(ticks % kTicksPerSecond) * 100};
  }

 private:
  ExtendedAttributes(int folder, const AttributeSource& source)
      : prefix_("/proc/self/fd/" + std::to_string(folder) + "/"), source_(source) {}

  std::size_t Get(const char* name, const char* attribute, std::span<std::byte> into) const {
    const ssize_t size = lgetxattr((prefix_ + name).c_str(), attribute, into.data(), into.size());
    return size < 0 ? 0 : static_cast<std::size_t>(size);
  }

  std::string prefix_;
  AttributeSource source_;
};

}  // namespace

std::unique_ptr<NativeAttributes> NativeAttributes::Of(int folder) {
  struct statfs facts;
  if (fstatfs(folder, &facts) != 0) return nullptr;
  switch (static_cast<std::uint32_t>(facts.f_type)) {
    case MSDOS_SUPER_MAGIC:
    case kExfatMagic:
      if (!FatAttributes::Works(folder)) return nullptr;
      return std::make_unique<FatAttributes>(folder);
    case kNtfs3Magic:
    case kFuseMagic:
    case kCifsMagic:
    case kSmb2Magic:
      return ExtendedAttributes::Find(folder);
    default:
      return nullptr;
  }
}

}  // namespace Sorvik::platform
