// SPDX-License-Identifier: MIT
// Parsing of the command line.
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
  bool core = false;  // without the providers of newer cards
  bool zero = false;
  bool clipsOnly = false;
  bool folder = false;
  bool packet = false;
  bool nearby = false;  // no command was given: list the cards near the path
  bool files = false;
  bool quick = false;
  bool hash = false;
  bool dirs = false;
  bool allCards = false;
  bool relative = false;
  bool force = false;
  PictureProtocol thumbs = PictureProtocol::kNone;
  std::optional<std::vector<std::string>> fields;  // in the order of the command line
  std::string provider;
  std::string output;
  std::string against;
  int width = 80;
  int height = 60;
};

// Throws Failure with kUsageError for invalid arguments. --help and --version become the commands
// "help" and "version".
Options ParseArguments(const std::vector<std::string>& arguments);

// The text of --help.
std::string HelpText();

}  // namespace host
