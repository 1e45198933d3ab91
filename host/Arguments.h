// SPDX-License-Identifier: MIT
// The command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

enum class PictureProtocol { kNone, kAutomatic, kKitty, kSixel };

struct Options {
  std::string command;
  std::vector<std::string> operands;
  bool json = false;
  bool all = false;
  bool zero = false;
  bool clipsOnly = false;
  bool folder = false;
  bool packet = false;
  PictureProtocol thumbs = PictureProtocol::kNone;
  std::optional<std::vector<std::string>> fields;  // in the order that was given
  std::string provider;
  std::string output;
  int width = 80;
  int height = 60;
};

// Throws Failure for wrong use. The commands "help" and "version" stand for their switches.
Options ParseArguments(const std::vector<std::string>& arguments);

// The text of --help.
std::string HelpText();

}  // namespace host
