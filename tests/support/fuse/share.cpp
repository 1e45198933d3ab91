// SPDX-License-Identifier: MIT
// A network share for tests: shows a folder of the machine through FUSE, mounted with the type of a
// network file system. Like many of those it doesn't report allocated blocks. A test stops the
// process to simulate a server that is unreachable.
//   sorvik-test-share FOLDER MOUNT_POINT TYPE_SUFFIX
// Prints a line when the share is mounted. With SORVIK_TEST_SHARE_DELAY in the environment each
// request takes that many microseconds longer, several at a time, as on a distant server.
#define FUSE_USE_VERSION 31
#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

int root;  // descriptor of the folder
useconds_t delay;

void wait_for_server() {
  if (delay > 0) usleep(delay);
}

// Paths begin with a separator.
const char* relative(const char* path) { return path[1] == '\0' ? "." : path + 1; }

int share_getattr(const char* path, struct stat* facts, struct fuse_file_info* info) {
  static_cast<void>(info);
  wait_for_server();
  if (fstatat(root, relative(path), facts, AT_SYMLINK_NOFOLLOW) != 0) return -errno;
  facts->st_blocks = 0;
  return 0;
}

int share_readlink(const char* path, char* target, size_t size) {
  wait_for_server();
  const ssize_t length = readlinkat(root, relative(path), target, size - 1);
  if (length < 0) return -errno;
  target[length] = '\0';
  return 0;
}

int share_readdir(const char* path, void* list, fuse_fill_dir_t add, off_t offset,
                  struct fuse_file_info* info, enum fuse_readdir_flags flags) {
  static_cast<void>(offset);
  static_cast<void>(info);
  static_cast<void>(flags);
  wait_for_server();
  const int descriptor = openat(root, relative(path), O_RDONLY | O_DIRECTORY);
  if (descriptor < 0) return -errno;
  DIR* folder = fdopendir(descriptor);
  if (folder == nullptr) return -errno;
  for (struct dirent* entry = readdir(folder); entry != nullptr; entry = readdir(folder)) {
    struct stat facts = {};
    facts.st_mode = static_cast<mode_t>(DTTOIF(entry->d_type));
    if (add(list, entry->d_name, &facts, 0, fuse_fill_dir_flags()) != 0) break;
  }
  closedir(folder);
  return 0;
}

int share_open(const char* path, struct fuse_file_info* info) {
  wait_for_server();
  const int descriptor = openat(root, relative(path), O_RDONLY);
  if (descriptor < 0) return -errno;
  info->fh = static_cast<std::uint64_t>(descriptor);
  return 0;
}

int share_read(const char* path, char* buffer, size_t size, off_t offset,
               struct fuse_file_info* info) {
  static_cast<void>(path);
  wait_for_server();
  const ssize_t got = pread(static_cast<int>(info->fh), buffer, size, offset);
  return got < 0 ? -errno : static_cast<int>(got);
}

int share_release(const char* path, struct fuse_file_info* info) {
  static_cast<void>(path);
  close(static_cast<int>(info->fh));
  return 0;
}

// Nothing is kept in the kernel's cache, so that every access asks this process.
void* share_init(struct fuse_conn_info* connection, struct fuse_config* config) {
  static_cast<void>(connection);
  config->entry_timeout = 0;
  config->attr_timeout = 0;
  config->negative_timeout = 0;
  std::puts("mounted");
  std::fflush(stdout);
  return nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  root = open(arguments[1], O_RDONLY | O_DIRECTORY);
  if (root < 0) return 1;
  fuse_operations operations = {};
  operations.getattr = share_getattr;
  operations.readlink = share_readlink;
  operations.readdir = share_readdir;
  operations.open = share_open;
  operations.read = share_read;
  operations.release = share_release;
  operations.init = share_init;
  if (const char* text = std::getenv("SORVIK_TEST_SHARE_DELAY")) {
    delay = static_cast<useconds_t>(std::atoi(text));
  }
  char options[256];
  std::snprintf(options, sizeof options, "subtype=%s,fsname=//test/share%s", arguments[3],
                delay > 0 ? ",max_threads=64" : "");
  char foreground[] = "-f";
  char single_thread[] = "-s";
  char option[] = "-o";
  char* fuse_arguments[] = {arguments[0], foreground,    option, options,
                            arguments[2], single_thread, nullptr};
  return fuse_main(delay > 0 ? 5 : 6, fuse_arguments, &operations, nullptr);
}
