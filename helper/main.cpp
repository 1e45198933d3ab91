// SPDX-License-Identifier: MIT
// sorvik-frame: decodes pictures for the library in a process of its own, so that a damaged file
// can't harm the host. Started by the library with a Unix socket as standard input; answers
// queries until the socket is closed. Not a program for users.
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>

#include "Frame.h"
#include "Sandbox.h"

namespace {

using Sorvik::frames::FrameQuery;
using Sorvik::frames::FrameReply;

constexpr int kSocket = STDIN_FILENO;
// Leaves time for a reply before the library ends this process.
constexpr int kDecodeMilliseconds = 1000 * Sorvik::frames::kMaxSeconds - 1000;

struct Query {
  FrameQuery query;
  int file;
};

bool WaitForQuery() {
  pollfd waiting{kSocket, POLLIN, 0};
  int ready;
  do {
    ready = poll(&waiting, 1, 1000 * Sorvik::frames::kMaxIdleSeconds);
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

// Returns nullopt if the library has closed the socket, or at an invalid message.
std::optional<Query> ReceiveQuery() {
  Query received{{}, -1};
  iovec data{&received.query, sizeof received.query};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  if (!WaitForQuery()) return std::nullopt;
  const ssize_t count = recvmsg(kSocket, &message, MSG_CMSG_CLOEXEC | MSG_WAITALL);
  if (count != sizeof received.query || received.query.magic != Sorvik::frames::kMagic) {
    return std::nullopt;
  }
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
    return std::nullopt;
  }
  std::memcpy(&received.file, CMSG_DATA(header), sizeof(int));
  return received;
}

bool Send(const void* data, std::size_t size) {
  const char* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t sent = send(kSocket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

std::optional<frame::Frame> Decode(const Query& query) {
  const frame::Limits limits{query.query.maxWidth, query.query.maxHeight};
  try {
    switch (query.query.kind) {
      case Sorvik::frames::Kind::kVideo:
        return frame::DecodeVideo(query.file, limits, kDecodeMilliseconds);
      case Sorvik::frames::Kind::kRaw:
        return frame::DevelopRaw(query.file, limits);
      case Sorvik::frames::Kind::kHeif:
        return frame::DecodeHeif(query.file, limits);
    }
  } catch (const std::exception&) {  // out of memory
  }
  return std::nullopt;
}

bool Answer(const std::optional<frame::Frame>& picture) {
  FrameReply reply{Sorvik::frames::kMagic, 0, 0};
  if (!picture) return Send(&reply, sizeof reply);
  reply.width = picture->size.width;
  reply.height = picture->size.height;
  return Send(&reply, sizeof reply) && Send(picture->pixels.data(), picture->pixels.size());
}

}  // namespace

int main() {
  int type = 0;
  socklen_t length = sizeof type;
  if (getsockopt(kSocket, SOL_SOCKET, SO_TYPE, &type, &length) != 0) {
    std::fputs("sorvik-frame: started by the library, not by users\n", stderr);
    return 2;
  }
  if (!frame::EnterSandbox()) return 1;
  while (const auto query = ReceiveQuery()) {
    // Ends this process even if the library has been killed.
    alarm(Sorvik::frames::kMaxSeconds + 1);
    const auto picture = Decode(*query);
    alarm(0);
    close(query->file);
    if (!Answer(picture)) break;
  }
  return 0;
}
