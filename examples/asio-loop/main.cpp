// SPDX-License-Identifier: MIT
// A host with the loop of Boost.Asio. A stream_descriptor closes its descriptor, so it is given a
// duplicate.
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>

#include "FolderListing.h"

namespace {

using boost::asio::posix::stream_descriptor;

void DispatchWhenReadable(stream_descriptor& messages) {
  messages.async_wait(stream_descriptor::wait_read, [&](const boost::system::error_code& error) {
    if (error) return;
    // Waits again first, so that a loop nested in a receiver is woken, too.
    DispatchWhenReadable(messages);
    Hestra::StationUtils::Dispatch();
  });
}

}  // namespace

int main(int argc, char** argv) {
  boost::asio::io_context loop;
  FolderListing listing(PathOfArguments(argc, argv), [&] { loop.stop(); });
  stream_descriptor messages(loop, Hestra::StationUtils::DuplicateEventDescriptor());
  DispatchWhenReadable(messages);
  loop.run();
  return listing.ExitCode();
}
