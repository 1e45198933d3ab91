// SPDX-License-Identifier: MIT
#include "FileContents.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace frame {
namespace {

constexpr off_t kMaxFileBytes = off_t{256} << 20;

}  // namespace

std::vector<char> ReadContents(int descriptor) {
  struct stat facts;
  if (fstat(descriptor, &facts) != 0 || facts.st_size > kMaxFileBytes) return {};
  std::vector<char> bytes(static_cast<std::size_t>(facts.st_size));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count =
        pread(descriptor, &bytes[done], bytes.size() - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

}  // namespace frame
