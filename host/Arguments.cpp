// SPDX-License-Identifier: MIT
#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

#include "Failure.h"

namespace host {
namespace {

// A command with its operands and options. `options` are separated by blanks.
struct CommandRow {
  std::string_view name;
  std::string_view operands;
  std::size_t minOperands;
  std::size_t maxOperands;
  std::string_view options;
  std::string_view summary;
};

constexpr std::size_t kAnyCount = std::numeric_limits<std::size_t>::max();

constexpr CommandRow kCommands[] = {
    {"ls", "[PATH]", 0, 1, "--json --provider --fields --all --thumbs --size",
     "list the entries of a path as a table; without PATH the volumes"},
    {"who", "PATH", 1, 1, "--json", "list the providers that support PATH, best first"},
    {"entry", "PATH KEY", 2, 2, "--json --provider --fields --all",
     "show one entry with its fields"},
    {"files", "PATH [KEY]", 1, 2, "--json --provider -0 --dirs --all-cards --relative",
     "list the files of a card or of one clip, one path per line"},
    {"places", "PATH", 1, 1, "--json --provider", "list the entries that can be browsed further"},
    {"owner", "FILE", 1, 1, "--json --clips-only", "show the entry that a file belongs to"},
    {"thumb", "PATH KEY | --folder", 0, 2, "--json --provider --size --folder --force -o",
     "write the thumbnail of an entry, or the folder picture, as PNG"},
    {"sheet", "PATH", 1, 1, "--json --provider --fields --all --size --force -o",
     "write a contact sheet as one HTML file"},
    {"check", "PATH", 1, 1, "--json --provider --files --quick --against --hash",
     "check whether a card is complete; report missing and damaged files"},
    {"cards", "PATH...", 1, kAnyCount, "--json -0",
     "find the cards at, around and below each path, one path per line"},
    {"providers", "", 0, 0, "--json", "list the registered providers with their fields"},
    {"meta", "FILE | --packet", 0, 1, "--json --fields --all --packet",
     "show the metadata of a file, or of an XMP packet on standard input"},
};

struct OptionRow {
  std::string_view name;
  std::string_view value;  // empty for a switch
  std::string_view summary;
};

constexpr OptionRow kOptions[] = {
    {"--json", "", "print one JSON document instead of a table"},
    {"--provider", "ID", "use this provider instead of the best one"},
    {"--fields", "A,B,C", "these fields, comma-separated; '' for none"},
    {"--all", "", "all fields that the provider supports"},
    {"--thumbs", "", "show pictures if the terminal supports them"},
    {"--size", "WxH", "maximum picture size in pixels (default: 80x60)"},
    {"--clips-only", "", "search the main file of each clip only, not its extra files"},
    {"--folder", "", "the picture for a folder"},
    {"--packet", "", "read an XMP packet from standard input"},
    {"--files", "", "list all files with their roles, too"},
    {"--quick", "", "check names and sizes only, without opening media files"},
    {"--against", "COPY", "compare the files of the card with a copy of it"},
    {"--hash", "", "with --against: compare contents, too"},
    {"--dirs", "", "list the empty folders that the card needs, too"},
    {"--all-cards", "", "list parts of the clips on other cards, too"},
    {"--relative", "", "print paths relative to PATH, for rsync --files-from"},
    {"--force", "", "allow -o to replace a file of a card"},
    {"-o", "FILE", "output file; - for standard output"},
    {"--core", "", "without the providers of newer cards; accepted by all commands"},
    {"-0", "", "end each path with a NUL byte, for xargs -0"},
};

const CommandRow* FindCommand(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                         [&](const CommandRow& row) { return row.name == name; });
  return found == std::end(kCommands) ? nullptr : found;
}

bool Accepts(const CommandRow& command, std::string_view option) {
  if (option == "--core") return true;
  return (" " + std::string(command.options) + " ").find(" " + std::string(option) + " ") !=
         std::string::npos;
}

[[noreturn]] void FailUsage(const std::string& why) {
  throw Failure(kUsageError, why + " (try 'sorvik --help')");
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

constexpr int kMaxPictureSide = 16384;  // the limit of a pixel buffer

// Parses WIDTHxHEIGHT. A side of 0 means the picture's own size.
void ParseSize(const std::string& text, Options& options) {
  const char* const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, options.width);
  bool good = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  if (good) {
    const auto height = std::from_chars(width.ptr + 1, end, options.height);
    good = height.ec == std::errc() && height.ptr == end;
  }
  const auto fits = [](int side) { return side >= 0 && side <= kMaxPictureSide; };
  if (!good || !fits(options.width) || !fits(options.height)) {
    FailUsage("--size: expected WIDTHxHEIGHT, got '" + text + "'");
  }
}

PictureProtocol ParseProtocol(const std::string& text) {
  if (text == "auto") return PictureProtocol::kAutomatic;
  if (text == "kitty") return PictureProtocol::kKitty;
  if (text == "sixel") return PictureProtocol::kSixel;
  if (text == "none") return PictureProtocol::kNone;
  FailUsage("--thumbs: expected auto, kitty, sixel or none, got '" + text + "'");
}

void Apply(Options& options, std::string_view name, const std::string& value) {
  if (name == "--json") options.json = true;
  if (name == "--all") options.all = true;
  if (name == "--core") options.core = true;
  if (name == "-0") options.zero = true;
  if (name == "--clips-only") options.clipsOnly = true;
  if (name == "--folder") options.folder = true;
  if (name == "--packet") options.packet = true;
  if (name == "--files") options.files = true;
  if (name == "--quick") options.quick = true;
  if (name == "--hash") options.hash = true;
  if (name == "--dirs") options.dirs = true;
  if (name == "--all-cards") options.allCards = true;
  if (name == "--relative") options.relative = true;
  if (name == "--force") options.force = true;
  if (name == "--against") options.against = value;
  if (name == "--thumbs") options.thumbs = ParseProtocol(value.empty() ? "auto" : value);
  if (name == "--fields") options.fields = SplitFields(value);
  if (name == "--provider") options.provider = value;
  if (name == "--size") ParseSize(value, options);
  if (name == "-o") options.output = value;
}

// Separates the options of a command line from its operands.
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
    options_.nearby = !commandNamed_;
    if (options_.command.empty()) options_.command = "ls";
    CheckUsage(*FindCommand(options_.command));
    return options_;
  }

 private:
  // The first operand is the command name, or the path to list if it isn't one.
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
    if (row == std::end(kOptions)) FailUsage("unknown option '" + name + "'");
    seen_.push_back(name);
    if (equals != std::string::npos) {
      if (row->value.empty() && name != "--thumbs") FailUsage(name + ": option takes no value");
      Apply(options_, name, word.substr(equals + 1));
    } else if (row->value.empty()) {
      Apply(options_, name, {});
    } else {
      if (next_ + 1 >= words_.size()) FailUsage(name + ": missing value");
      Apply(options_, name, words_[++next_]);
    }
  }

  // With too many operands, a first one without '/' and ':' is a mistyped command rather than a
  // path.
  void CheckFirstOperand(const CommandRow& command) const {
    if (commandNamed_ || onlyOperands_ || options_.operands.size() <= command.maxOperands) return;
    const std::string& word = options_.operands.front();
    if (word.find_first_of("/:") == word.npos) FailUsage("unknown command '" + word + "'");
  }

  void CheckUsage(const CommandRow& command) const {
    const std::string name(command.name);
    CheckFirstOperand(command);
    for (const std::string& option : seen_) {
      if (!Accepts(command, option)) FailUsage(name + ": option " + option + " is not supported");
    }
    const std::size_t count = options_.operands.size();
    if (count > command.maxOperands) FailUsage(name + ": too many arguments");
    if (count < command.minOperands)
      FailUsage(name + ": too few arguments, expected " + std::string(command.operands));
    if (name == "thumb" && count != (options_.folder ? 0U : 2U)) {
      FailUsage("thumb: expected PATH KEY, or --folder");
    }
    if (name == "meta" && count != (options_.packet ? 0U : 1U)) {
      FailUsage("meta: expected FILE, or --packet");
    }
    if (Accepts(command, "-o") && options_.output.empty())
      FailUsage(name + ": missing option -o FILE");
    if (options_.output == "-" && options_.json)
      FailUsage("-o - and --json both write to standard output");
    if (options_.hash && options_.against.empty()) FailUsage("--hash needs --against COPY");
    if (options_.all && options_.fields) FailUsage("--fields and --all are mutually exclusive");
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
      "usage: sorvik [COMMAND] [OPTIONS] [PATH]\n\n"
      "Without a command, lists the cards at, around and next to PATH, or PATH itself if there is\n"
      "none; without PATH the volumes.\n\ncommands:\n";
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
      "\n--thumbs detects what the terminal supports; --thumbs=kitty, --thumbs=sixel and\n"
      "--thumbs=none select it. A path that begins with \"volumes:\" and every KEY are passed to\n"
      "the library unchanged; any other path is made absolute. -- ends the options.\n\n"
      "exit status: 0 success, 1 error or incomplete card, 2 usage error, 130 interrupted\n";
  return text;
}

}  // namespace host
