// SPDX-License-Identifier: MIT
// The programs ffmpeg and ffprobe, for tests with real media.
#pragma once

#include <string>
#include <vector>

namespace sorvik_test {

// False if one of the programs isn't installed. Tests that need them are skipped then.
bool HasFfmpeg();

// Runs ffmpeg with these arguments, split at blanks. Returns false if it fails.
bool RunFfmpeg(const std::string& arguments);
// Runs a shell command and returns the lines of its standard output.
std::vector<std::string> LinesOf(const std::string& command);

// The frames of the first picture stream of `input` (arguments of ffmpeg up to and with -i), as
// checksums of the decoded pictures in the order of presentation.
std::vector<std::string> FrameChecksums(const std::string& input);
// The times of the packets of a stream ("v:0", "a:0") in seconds, ascending. `input` as above.
std::vector<double> PacketTimes(const std::string& input, const std::string& stream);

}  // namespace sorvik_test
