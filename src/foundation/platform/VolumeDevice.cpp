// SPDX-License-Identifier: MIT
#include "foundation/platform/VolumeDevice.h"

#include <fcntl.h>
#include <libudev.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "foundation/platform/FileSystem.h"

namespace Sorvik::platform {
namespace {

constexpr unsigned kSCSIOpticalMajor = 11;  // "sr" in the kernel's list of device numbers
constexpr unsigned kRAMDiskMajor = 1;

struct FreeText {
  void operator()(char* text) const noexcept { std::free(text); }
};
struct UnrefUdev {
  void operator()(udev* context) const noexcept { udev_unref(context); }
};
struct UnrefDevice {
  void operator()(udev_device* device) const noexcept { udev_device_unref(device); }
};

std::string RealPath(const std::string& path) {
  const std::unique_ptr<char, FreeText> real(realpath(path.c_str(), nullptr));
  return real ? std::string(real.get()) : std::string();
}

// The first line of a sysfs attribute.
std::string FirstLine(const std::string& path) {
  const auto bytes = ReadHead(path, 256);
  if (!bytes) return {};
  const std::string text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  return text.substr(0, text.find('\n'));
}

std::string DeviceFolder(const VolumeSources& sources, DeviceNumber device) {
  return sources.systemTree + "/dev/block/" + std::to_string(device.major) + ":" +
         std::to_string(device.minor);
}

std::string PropertyOf(const VolumeSources& sources, DeviceNumber device, const char* name) {
  if (!device.IsBlockDevice() || !sources.deviceProperty) return {};
  return sources.deviceProperty(device.major, device.minor, name);
}

bool IsRemovable(const VolumeSources& sources, DeviceNumber device) {
  const std::string top = RealPath(sources.systemTree + "/devices");
  std::string folder = RealPath(DeviceFolder(sources, device));
  // Card readers on an MMC bus report their cards as not removable.
  while (!top.empty() && folder.size() > top.size() && IsAtOrBelow(folder, top)) {
    if (FirstLine(folder + "/removable") == "1") return true;
    const std::string subsystem = RealPath(folder + "/subsystem");
    if (subsystem.substr(subsystem.rfind('/') + 1) == "mmc") return true;
    folder.resize(folder.rfind('/'));
  }
  return false;
}

// Decodes \xNN, as which udev writes bytes that are unsafe in names.
std::string DecodeUdevText(const std::string& text) {
  const auto digit = [](char c) {
    const char* const digits = "0123456789abcdef";
    const char* found = std::strchr(digits, c >= 'A' && c <= 'F' ? c - 'A' + 'a' : c);
    return c == '\0' || found == nullptr ? -1 : static_cast<int>(found - digits);
  };
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape = text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x';
    const int high = escape ? digit(text[i + 2]) : -1;
    const int low = escape ? digit(text[i + 3]) : -1;
    if (high < 0 || low < 0) {
      plain += text[i];
    } else {
      plain += static_cast<char>(high * 16 + low);
      i += 3;
    }
  }
  return plain;
}

std::string LabelOfFileSystem(const VolumeSources& sources, const Mount& mount) {
  const std::string path = sources.filePrefix + mount.mountPoint;
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
  if (folder < 0) return {};
  char label[FSLABEL_MAX] = {};
  struct stat facts;
  // Another mount on a parent folder may cover this mount point.
  const bool isThisMount =
      fstat(folder, &facts) == 0 && (mount.major == 0 || (major(facts.st_dev) == mount.major &&
                                                          minor(facts.st_dev) == mount.minor));
  const bool hasLabel = isThisMount && ioctl(folder, FS_IOC_GETFSLABEL, label) == 0;
  close(folder);
  return hasLabel ? std::string(label, strnlen(label, sizeof label)) : std::string();
}

bool IsBelowMediaFolder(std::string_view path) {
  for (const std::string_view folder : {"/media", "/run/media"}) {
    if (path.size() > folder.size() && IsAtOrBelow(path, folder)) return true;
  }
  return false;
}

std::string UdevProperty(unsigned majorNumber, unsigned minorNumber, const char* name) {
  const std::unique_ptr<udev, UnrefUdev> context(udev_new());
  if (!context) return {};
  const std::unique_ptr<udev_device, UnrefDevice> device(
      udev_device_new_from_devnum(context.get(), 'b', makedev(majorNumber, minorNumber)));
  const char* value = device ? udev_device_get_property_value(device.get(), name) : nullptr;
  return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

VolumeSources VolumeSources::OfThisSystem() {
  VolumeSources sources;
  sources.deviceProperty = UdevProperty;
  return sources;
}

DeviceNumber DeviceOf(const Mount& mount) {
  if (mount.major != 0) return {mount.major, mount.minor};
  // Some disk file systems (btrfs) use an anonymous device number; the source is the device.
  struct stat facts;
  const bool named = mount.source.rfind("/dev/", 0) == 0 &&
                     stat(mount.source.c_str(), &facts) == 0 && S_ISBLK(facts.st_mode);
  if (!named) return {};
  return {major(facts.st_rdev), minor(facts.st_rdev)};
}

bool HasMedium(const VolumeSources& sources, DeviceNumber device) {
  if (!device.IsBlockDevice()) return true;
  if (KindOf(sources.systemTree + "/dev/block") != FileKind::kDirectory) return true;
  const std::string folder = DeviceFolder(sources, device);
  return KindOf(folder).has_value() && FirstLine(folder + "/size") != "0";
}

VolumeKind KindOfLocal(const VolumeSources& sources, const MountTable& table, const Mount& mount,
                       DeviceNumber device) {
  if (mount.type == "tmpfs" || mount.type == "ramfs") return VolumeKind::kRAMDisk;
  if (device.major == kRAMDiskMajor) return VolumeKind::kRAMDisk;
  if (device.major == kSCSIOpticalMajor || PropertyOf(sources, device, "ID_CDROM") == "1") {
    return VolumeKind::kOptical;
  }
  if (device.IsBlockDevice()) {
    return IsRemovable(sources, device) ? VolumeKind::kRemovable : VolumeKind::kFixed;
  }
  if (mount.type == "fuse") {
    const bool local = mount.source.substr(0, 1) == "/" && !table.LeadsToNetwork(mount.source) &&
                       KindOf(sources.filePrefix + mount.source).has_value();
    return local ? VolumeKind::kFixed : VolumeKind::kUnknown;
  }
  return mount.type.rfind("fuse.", 0) == 0 ? VolumeKind::kUnknown : VolumeKind::kFixed;
}

std::string SerialOf(const VolumeSources& sources, DeviceNumber device) {
  return PropertyOf(sources, device, "ID_FS_UUID");
}

std::string LabelOf(const VolumeSources& sources, const Mount& mount, DeviceNumber device,
                    const std::string& serial) {
  if (device.IsBlockDevice()) {
    if (std::string label = LabelOfFileSystem(sources, mount); !label.empty()) return label;
    const std::string escaped = PropertyOf(sources, device, "ID_FS_LABEL_ENC");
    if (!escaped.empty()) return DecodeUdevText(escaped);
  }
  if (!IsBelowMediaFolder(mount.mountPoint)) return {};
  // Desktops name the mount point of a medium without a label after its UUID.
  const std::string name = mount.mountPoint.substr(mount.mountPoint.rfind('/') + 1);
  return name == serial ? std::string() : name;
}

}  // namespace Sorvik::platform
