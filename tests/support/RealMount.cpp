// SPDX-License-Identifier: MIT
#include "support/RealMount.h"

#include <sys/mount.h>

#include <cstdlib>
#include <fstream>
#include <utility>

namespace sorvik_test {

RealMount RealMount::Memory(const std::string& folder) {
  return RealMount(mount("sorvik-test", folder.c_str(), "tmpfs", 0, "size=1m") == 0 ? folder : "");
}

RealMount RealMount::Bind(const std::string& what, const std::string& place) {
  return RealMount(mount(what.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) == 0 ? place : "");
}

RealMount RealMount::Image(const std::string& image, const std::string& label,
                           const std::string& folder) {
  std::ofstream(image).seekp(4 << 20).put('\0');
  const std::string make = "mkfs.ext4 -q -L '" + label + "' '" + image + "' >/dev/null 2>&1";
  const std::string attach = "mount -o loop '" + image + "' '" + folder + "' >/dev/null 2>&1";
  const bool done = std::system(make.c_str()) == 0 && std::system(attach.c_str()) == 0;
  return RealMount(done ? folder : "");
}

RealMount::RealMount(RealMount&& other) noexcept : place_(std::exchange(other.place_, {})) {}

RealMount::~RealMount() {
  if (!place_.empty()) umount2(place_.c_str(), MNT_DETACH);
}

}  // namespace sorvik_test
