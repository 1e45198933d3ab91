// SPDX-License-Identifier: MIT
#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "Failure.h"

namespace host {
namespace {

// What a command takes. `options` are separated by blanks.
struct CommandRow {
  std::string_view name;
  std::string_view operands;
  std::size_t fewest;
  std::size_t most;
  std::string_view options;
  std::string_view summary;
};

constexpr CommandRow kCommands[] = {
    {"ls", "[PATH]", 0, 1, "--json --provider --fields --all --thumbs --size",
     "the entries of a place; PATH is \"volumes:\" where it is left out"},
    {"who", "PATH", 1, 1, "--json", "the providers that understand PATH, best first"},
    {"entry", "PATH KEY", 2, 2, "--json --provider --fields --all", "one entry with its fields"},
    {"files", "PATH [KEY]", 1, 2, "--json --provider -0",
     "the files that belong to the clips, one path a line"},
    {"places", "PATH", 1, 1, "--json --provider", "the entries that can be browsed further"},
    {"owner", "FILE", 1, 1, "--json --clips-only", "the entry that owns a file"},
    {"thumb", "PATH KEY | --folder", 0, 2, "--json --provider --size --folder -o",
     "the thumbnail of an entry, or of folders, as a PNG file"},
    {"sheet", "PATH", 1, 1, "--json --provider --fields --all --size -o",
     "a contact sheet in one HTML file"},
    {"check", "PATH", 1, 1, "--json --provider",
     "is a card whole: whose is each file, what is gone"},
    {"providers", "", 0, 0, "--json", "the registered providers with their fields"},
    {"meta", "FILE | --packet", 0, 1, "--json --fields --all --packet",
     "the metadata of one file, or of an XMP packet on the standard input"},
};

struct OptionRow {
  std::string_view name;
  std::string_view value;  // empty for a switch
  std::string_view summary;
};

constexpr OptionRow kOptions[] = {
    {"--json", "", "one JSON document instead of a table"},
    {"--provider", "ID", "ask this provider and not the best one"},
    {"--fields", "A,B,C", "these fields; '' for none"},
    {"--all", "", "all fields that the provider can fill"},
    {"--thumbs", "", "with pictures, where the terminal can show them"},
    {"--size", "WxH", "the cell of a picture in pixels; 80x60 where it is left out"},
    {"--clips-only", "", "look at the clips' own paths alone, not at their further files"},
    {"--folder", "", "the picture of a folder"},
    {"--packet", "", "read an XMP packet from the standard input"},
    {"-o", "FILE", "where to write; - for the standard output"},
    {"-0", "", "end each path with a zero byte, for xargs -0"},
};

const CommandRow* FindCommand(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                         [&](const CommandRow& row) { return row.name == name; });
  return found == std::end(kCommands) ? nullptr : found;
}

bool Takes(const CommandRow& command, std::string_view option) {
  return (" " + std::string(command.options) + " ").find(" " + std::string(option) + " ") !=
         std::string::npos;
}

[[noreturn]] void Refuse(const std::string& why) {
  throw Failure(kWrongUse, why + " (sorvik --help tells more)");
}

std::vector<std::string> SplitFields(std::string_view text) {
  std::vector<std::string> fields;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    if (comma != 0) fields.emplace_back(text.substr(0, comma));
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return fields;
}

// A side of 0 stands for the picture's own; the largest pixel buffer has 16384.
void ParseSize(const std::string& text, Options& options) {
  const char* const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, options.width);
  bool good = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  if (good) {
    const auto height = std::from_chars(width.ptr + 1, end, options.height);
    good = height.ec == std::errc() && height.ptr == end;
  }
  const auto fits = [](int side) { return side >= 0 && side <= 16384; };
  if (!good || !fits(options.width) || !fits(options.height)) {
    Refuse("--size wants WIDTHxHEIGHT, not \"" + text + "\"");
  }
}

PictureProtocol ParseProtocol(const std::string& text) {
  if (text == "auto") return PictureProtocol::kAutomatic;
  if (text == "kitty") return PictureProtocol::kKitty;
  if (text == "sixel") return PictureProtocol::kSixel;
  if (text == "none") return PictureProtocol::kNone;
  Refuse("--thumbs knows auto, kitty, sixel and none, not \"" + text + "\"");
}

void Apply(Options& options, std::string_view name, const std::string& value) {
  if (name == "--json") options.json = true;
  if (name == "--all") options.all = true;
  if (name == "-0") options.zero = true;
  if (name == "--clips-only") options.clipsOnly = true;
  if (name == "--folder") options.folder = true;
  if (name == "--packet") options.packet = true;
  if (name == "--thumbs") options.thumbs = ParseProtocol(value.empty() ? "auto" : value);
  if (name == "--fields") options.fields = SplitFields(value);
  if (name == "--provider") options.provider = value;
  if (name == "--size") ParseSize(value, options);
  if (name == "-o") options.output = value;
}

// The words of a command line, with options taken apart from operands.
class Parser {
 public:
  explicit Parser(const std::vector<std::string>& words) : words_(words) {}

  Options Parse() {
    for (; next_ < words_.size(); ++next_) {
      const std::string& word = words_[next_];
      if (!onlyOperands_ && word == "--") {
        onlyOperands_ = true;
      } else if (!onlyOperands_ && word.size() > 1 && word[0] == '-') {
        ParseOption(word);
      } else {
        TakeOperand(word);
      }
    }
    if (!options_.command.empty() && FindCommand(options_.command) == nullptr) return options_;
    if (options_.command.empty()) options_.command = "ls";
    CheckUse(*FindCommand(options_.command));
    return options_;
  }

 private:
  // The first word names the command; where it doesn't, it is a path to list.
  void TakeOperand(const std::string& word) {
    if (options_.command.empty() && !onlyOperands_ && FindCommand(word) != nullptr) {
      options_.command = word;
      commandNamed_ = true;
      return;
    }
    if (options_.command.empty()) options_.command = "ls";
    options_.operands.push_back(word);
  }

  void ParseOption(const std::string& word) {
    if (word == "--help" || word == "-h") options_.command = "help";
    if (word == "--version") options_.command = "version";
    if (options_.command == "help" || options_.command == "version") return;
    const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    const auto* const row =
        std::find_if(std::begin(kOptions), std::end(kOptions),
                     [&](const OptionRow& known) { return known.name == name; });
    if (row == std::end(kOptions)) Refuse("unknown option " + name);
    seen_.push_back(name);
    if (equals != std::string::npos) {
      if (row->value.empty() && name != "--thumbs") Refuse(name + " takes no value");
      Apply(options_, name, word.substr(equals + 1));
    } else if (row->value.empty()) {
      Apply(options_, name, {});
    } else {
      if (next_ + 1 >= words_.size()) Refuse(name + " wants a value");
      Apply(options_, name, words_[++next_]);
    }
  }

  // A first word that can't be a path, and has others behind it, was meant for a command.
  void CheckFirstWord(const CommandRow& command) const {
    if (commandNamed_ || onlyOperands_ || options_.operands.size() <= command.most) return;
    const std::string& word = options_.operands.front();
    if (word.find_first_of("/:") == word.npos) Refuse("there is no command " + word);
  }

  void CheckUse(const CommandRow& command) const {
    const std::string name(command.name);
    CheckFirstWord(command);
    for (const std::string& option : seen_) {
      if (!Takes(command, option)) Refuse(name + " takes no " + option);
    }
    const std::size_t count = options_.operands.size();
    if (count > command.most) Refuse(name + " was given too many words");
    if (count < command.fewest) Refuse(name + " wants " + std::string(command.operands));
    if (name == "thumb" && count != (options_.folder ? 0U : 2U)) {
      Refuse("thumb wants PATH and KEY, or --folder");
    }
    if (name == "meta" && count != (options_.packet ? 0U : 1U)) {
      Refuse("meta wants FILE, or --packet");
    }
    if (Takes(command, "-o") && options_.output.empty()) Refuse(name + " wants -o FILE");
    if (options_.output == "-" && options_.json) Refuse("-o - and --json are one output too many");
    if (options_.all && options_.fields) Refuse("--fields and --all contradict each other");
  }

  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  bool onlyOperands_ = false;
  bool commandNamed_ = false;
  std::vector<std::string> seen_;
  Options options_;
};

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size() + 2), ' ');
  return text;
}

}  // namespace

Options ParseArguments(const std::vector<std::string>& arguments) {
  return Parser(arguments).Parse();
}

std::string HelpText() {
  constexpr std::size_t kColumn = 30;
  std::string text =
      "sorvik shows camera cards and folders as places with clips.\n\n"
      "usage: sorvik [COMMAND] [OPTIONS] [PATH]\n\ncommands (ls where none is named):\n";
  for (const CommandRow& row : kCommands) {
    text += Padded("  " + std::string(row.name) + " " + std::string(row.operands), kColumn);
    text += std::string(row.summary) + "\n";
    if (!row.options.empty()) text += std::string(kColumn, ' ') + std::string(row.options) + "\n";
  }
  text += "\noptions:\n";
  for (const OptionRow& row : kOptions) {
    text += Padded("  " + std::string(row.name) + " " + std::string(row.value), kColumn);
    text += std::string(row.summary) + "\n";
  }
  text +=
      "\n--thumbs finds out what the terminal can show; --thumbs=kitty, --thumbs=sixel and\n"
      "--thumbs=none say it. A path that begins with \"volumes:\" goes to the library as it "
      "stands,\n"
      "as does every KEY; any other path is made absolute. -- ends the options.\n\n"
      "exit code: 0 done, 1 nothing found or understood, 2 wrong use, 130 ended by Ctrl-C\n";
  return text;
}

}  // namespace host
