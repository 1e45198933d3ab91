// SPDX-License-Identifier: MIT
#include "support/RealMount.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <utility>

namespace sorvik_test {

RealMount RealMount::Memory(const std::string& folder) {
  return RealMount(mount("sorvik-test", folder.c_str(), "tmpfs", 0, "size=1m") == 0 ? folder : "");
}

RealMount RealMount::Bind(const std::string& source, const std::string& mountPoint) {
  const bool done = mount(source.c_str(), mountPoint.c_str(), nullptr, MS_BIND, nullptr) == 0;
  return RealMount(done ? mountPoint : "");
}

RealMount RealMount::Image(const std::string& image, const std::string& label,
                           const std::string& folder) {
  std::ofstream(image).seekp(4 << 20).put('\0');
  const std::string make = "mkfs.ext4 -q -L '" + label + "' '" + image + "' >/dev/null 2>&1";
  const std::string attach = "mount -o loop '" + image + "' '" + folder + "' >/dev/null 2>&1";
  const bool done = std::system(make.c_str()) == 0 && std::system(attach.c_str()) == 0;
  return RealMount(done ? folder : "");
}

RealMount RealMount::DeadShare(const std::string& folder) {
  const int server = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  const std::string options =
      "fd=" + std::to_string(server) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
  const bool done =
      server >= 0 && mount("//dead/share", folder.c_str(), "fuse.sshfs", 0, options.c_str()) == 0;
  return RealMount(done ? folder : "", server);
}

RealMount::RealMount(RealMount&& other) noexcept
    : mountPoint_(std::exchange(other.mountPoint_, {})),
      server_(std::exchange(other.server_, -1)) {}

RealMount::~RealMount() { End(); }

void RealMount::End() {
  if (!mountPoint_.empty()) umount2(mountPoint_.c_str(), MNT_DETACH);
  if (server_ >= 0) close(server_);
  mountPoint_.clear();
  server_ = -1;
}

}  // namespace sorvik_test
