// SPDX-License-Identifier: MIT
// Parsing of the command line.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Table.h"

namespace host {

enum class PictureProtocol { kNone, kAutomatic, kKitty, kSixel };

struct Options {
  std::string command;
  std::vector<std::string> operands;
  bool json = false;
  bool ndjson = false;  // one document per line; implies json
  bool all = false;
  bool core = false;  // without the providers of newer cards
  bool zero = false;
  bool clipsOnly = false;
  bool folder = false;
  bool packet = false;
  bool sources = false;
  bool nearby = false;  // no command was given: list the cards near the path
  bool files = false;
  bool quick = false;
  bool hash = false;
  bool dirs = false;
  bool allCards = false;
  bool relative = false;
  bool force = false;
  bool allowGaps = false;
  bool icon = false;   // the provider's own picture
  bool cache = false;  // keep pictures on disk
  bool here = false;
  PictureProtocol thumbs = PictureProtocol::kNone;
  TableForm form = TableForm::kAligned;
  std::optional<std::vector<std::string>> fields;  // as typed, in the order of the command line
  std::string provider;
  std::string output;
  std::string against;
  std::string format;             // of join
  std::vector<std::string> only;  // kinds of lines; empty for all
  std::size_t jobs = 1;
  std::chrono::seconds cardTimeout{600};
  std::uint32_t shard = 0;
  std::uint32_t shards = 1;
  std::string since;
  std::string sqlite;
  std::string catalog;
  int width = 80;
  int height = 60;
  bool sizeGiven = false;
};

// Throws Failure with kUsageError for invalid arguments. --help and --version become the commands
// "help" and "version"; the operand of "help" is the command that it is about, if any.
Options ParseArguments(const std::vector<std::string>& arguments);

// Returns true if the arguments ask for JSON. For errors found before the options are parsed.
bool WantsJson(const std::vector<std::string>& arguments);

// Returns the text of --help, or that of one command. Throws Failure with kUsageError for an
// unknown command.
std::string HelpText(const std::string& command);

}  // namespace host
