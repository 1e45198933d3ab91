// SPDX-License-Identifier: MIT
#include "support/Ffmpeg.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace sorvik_test {

bool HasFfmpeg() {
  static const bool kBoth =
      std::system("ffmpeg -version > /dev/null 2>&1 && ffprobe -version > /dev/null 2>&1") == 0;
  return kBoth;
}

bool RunFfmpeg(const std::string& arguments) {
  return std::system(("ffmpeg -v error -nostdin -y " + arguments).c_str()) == 0;
}

std::vector<std::string> LinesOf(const std::string& command) {
  std::vector<std::string> lines;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return lines;
  std::string line;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    if (c != '\n') {
      line += static_cast<char>(c);
      continue;
    }
    lines.push_back(std::move(line));
    line.clear();
  }
  pclose(pipe);
  return lines;
}

std::vector<std::string> FrameChecksums(const std::string& input) {
  std::vector<std::string> sums;
  for (const std::string& line : LinesOf("ffmpeg -v error -nostdin " + input +
                                         " -map 0:v:0 -fps_mode passthrough -f framemd5 -")) {
    if (!line.starts_with('#')) sums.push_back(line.substr(line.rfind(' ') + 1));
  }
  return sums;
}

std::vector<double> PacketTimes(const std::string& input, const std::string& stream) {
  std::vector<double> times;
  for (const std::string& line : LinesOf("ffprobe -v error " + input + " -select_streams " +
                                         stream + " -show_entries packet=pts_time -of csv=p=0")) {
    if (!line.empty()) times.push_back(std::atof(line.c_str()));
  }
  std::sort(times.begin(), times.end());
  return times;
}

}  // namespace sorvik_test
