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
  std::string_view example;
};

constexpr std::size_t kAnyCount = std::numeric_limits<std::size_t>::max();

constexpr CommandRow kCommands[] = {
    {"ls", "[PATH]", 0, 1,
     "--json --tsv --csv --provider --fields --all --thumbs --size --icon --cache",
     "list the entries of a path as a table; without PATH the volumes",
     "sorvik ls /media/CARD --csv > clips.csv"},
    {"who", "PATH", 1, 1, "--json --tsv --csv", "list the providers that support PATH, best first",
     "sorvik who /media/CARD"},
    {"entry", "PATH KEY", 2, 2, "--json --provider --fields --all",
     "show one entry with its fields", "sorvik entry /media/CARD 0001AB"},
    {"files", "PATH [KEY]", 1, 2, "--json --provider -0 --dirs --all-cards --relative --catalog",
     "list the files of a card or of one clip, one path per line",
     "sorvik files /media/CARD 0001AB -0 | xargs -0 cp -t /backup"},
    {"places", "PATH", 1, 1, "--json --tsv --csv --provider",
     "list the entries that can be browsed further", "sorvik places /media"},
    {"owner", "FILE...", 1, kAnyCount, "--json --ndjson --clips-only --catalog",
     "show the entry that a file belongs to",
     "sorvik owner /media/CARD/CONTENTS/AUDIO/0001AB00.MXF"},
    {"thumb", "PATH KEY... | --folder", 0, kAnyCount,
     "--json --ndjson --provider --size --folder --icon --cache --force -o",
     "write the picture of an entry, or the folder picture, as PNG",
     "sorvik thumb /media/CARD 0001AB -o clip.png --size 320x240"},
    {"sheet", "PATH", 1, 1, "--json --provider --fields --all --size --icon --cache --force -o",
     "write a contact sheet as one HTML file", "sorvik sheet /media/CARD -o sheet.html"},
    {"check", "PATH", 1, 1, "--json --provider --files --quick --against --hash --catalog",
     "check whether a card is complete; report missing and damaged files",
     "sorvik check /media/CARD"},
    {"cards", "PATH...", 1, kAnyCount, "--json -0",
     "find the cards at, around and below each path, one path per line",
     "sorvik cards /media -0 | xargs -0 -n 1 sorvik check"},
    {"join", "PATH [KEY]", 1, 2, "--json --provider --format --allow-gaps --catalog --force -o",
     "write a list that joins the files of a clip, or of all clips, for players and editors",
     "sorvik join /media/CARD 0001AB --format otio -o shot.otio"},
    {"catalog", "PATH...", 1, kAnyCount,
     "--only --quick --here --jobs --timeout-per-card --shard --since -o --sqlite --force",
     "write the cards, clips and files below each path as lines of JSON",
     "sorvik catalog /mnt/archive --since old.ndjson -o new.ndjson"},
    {"providers", "", 0, 0, "--json", "list the registered providers with their fields",
     "sorvik providers"},
    {"fields", "[PROVIDER]", 0, 1, "--json --tsv --csv", "list fields with label, type and meaning",
     "sorvik fields p2"},
    {"meta", "FILE... | --packet", 0, kAnyCount,
     "--json --ndjson --fields --all --sources --packet",
     "show the metadata of a file, or of an XMP packet on standard input",
     "sorvik meta clip.mov --fields 'Start Timecode,Duration'"},
    {"help", "[COMMAND]", 0, 1, "", "show this help, or that of a command", "sorvik help ls"},
};

struct OptionRow {
  std::string_view name;
  std::string_view value;  // empty for a switch
  std::string_view summary;
};

constexpr OptionRow kOptions[] = {
    {"--json", "", "print one JSON document instead of a table"},
    {"--ndjson", "", "print one JSON document per line, for several files or keys"},
    {"--tsv", "", "print complete values separated by tabs"},
    {"--csv", "", "print complete values as CSV (RFC 4180)"},
    {"--provider", "ID", "use this provider instead of the best one, such as p2"},
    {"--fields", "A,B,C", "these fields by name or label, comma-separated; '' for none"},
    {"--all", "", "all fields that the provider supports"},
    {"--thumbs", "", "show pictures if the terminal supports them"},
    {"--size", "WxH", "maximum picture size in pixels (default: 80x60; sheet: 320 wide)"},
    {"--icon", "", "the icon of the structure instead of a picture of the clip"},
    {"--cache", "", "keep pictures in $XDG_CACHE_HOME/thumbnails"},
    {"--clips-only", "", "search the main file of each clip only, not its extra files"},
    {"--folder", "", "the picture for a folder"},
    {"--packet", "", "read an XMP packet from standard input"},
    {"--sources", "", "show the source of each value, and what other sources contain"},
    {"--files", "", "list all files with their roles, too"},
    {"--quick", "", "check names and sizes only, without opening media files"},
    {"--against", "COPY", "compare the files of the card with a copy of it"},
    {"--hash", "", "with --against: compare contents, too"},
    {"--dirs", "", "list the empty folders that the card needs, too"},
    {"--all-cards", "", "list parts of the clips on other cards, too"},
    {"--relative", "", "print paths relative to PATH, for rsync --files-from"},
    {"--format", "NAME", "ffconcat, otio, ale, edl, fcpxml, csv or json"},
    {"--allow-gaps", "", "write the list even if a part is missing"},
    {"--catalog", "FILE", "answer from a catalogue, without access to PATH"},
    {"--only", "KINDS", "only these kinds of lines: card,clip,file,problem"},
    {"--here", "", "only cards whose root is PATH; don't search below"},
    {"--jobs", "N", "read the cards of N folders at the same time (default: 1)"},
    {"--timeout-per-card", "SECONDS", "leave out cards that take longer (default: 600; 0: none)"},
    {"--shard", "I/N", "only the cards of shard I of N"},
    {"--since", "OLD", "copy the lines of unchanged cards from this catalogue"},
    {"--sqlite", "FILE", "write to the tables of an SQLite database"},
    {"--force", "", "allow -o to replace a file of a card"},
    {"-o", "FILE", "output file, - for standard output; a folder for several keys"},
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
constexpr std::size_t kMaxJobs = 64;    // the limit of WriteCatalogue
constexpr std::uint32_t kMaxShards = 65536;
constexpr std::uint32_t kMaxTimeout = 1'000'000;  // seconds

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
  options.sizeGiven = true;
}

PictureProtocol ParseProtocol(const std::string& text) {
  if (text == "auto") return PictureProtocol::kAutomatic;
  if (text == "kitty") return PictureProtocol::kKitty;
  if (text == "sixel") return PictureProtocol::kSixel;
  if (text == "none") return PictureProtocol::kNone;
  FailUsage("--thumbs: expected auto, kitty, sixel or none, got '" + text + "'");
}

// Parses all of `text`, a number from `min` to `max`.
template <class Number>
Number ParseNumber(std::string_view option, std::string_view text, Number min, Number max) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < min || number > max) {
    FailUsage(std::string(option) + ": expected a number from " + std::to_string(min) + " to " +
              std::to_string(max) + ", got '" + std::string(text) + "'");
  }
  return number;
}

void ParseKinds(const std::string& text, Options& options) {
  static constexpr std::string_view kKinds[] = {"card", "clip", "file", "problem"};
  options.only = SplitFields(text);
  for (const std::string& kind : options.only) {
    if (std::ranges::count(kKinds, kind) == 0) {
      FailUsage("--only: expected card, clip, file or problem, got '" + kind + "'");
    }
  }
  if (options.only.empty()) FailUsage("--only: missing value");
}

// Parses "3/64".
void ParseShard(const std::string& text, Options& options) {
  const std::string_view all = text;
  const auto slash = all.find('/');
  if (slash == all.npos) FailUsage("--shard: expected I/N, got '" + text + "'");
  options.shards = ParseNumber<std::uint32_t>("--shard", all.substr(slash + 1), 1, kMaxShards);
  options.shard =
      ParseNumber<std::uint32_t>("--shard", all.substr(0, slash), 1, options.shards) - 1;
}

bool ApplyCatalogOption(Options& options, std::string_view name, const std::string& value) {
  if (name == "--only") {
    ParseKinds(value, options);
  } else if (name == "--here") {
    options.here = true;
  } else if (name == "--jobs") {
    options.jobs = ParseNumber<std::size_t>(name, value, 1, kMaxJobs);
  } else if (name == "--timeout-per-card") {
    options.cardTimeout =
        std::chrono::seconds(ParseNumber<std::uint32_t>(name, value, 0, kMaxTimeout));
  } else if (name == "--shard") {
    ParseShard(value, options);
  } else if (name == "--since") {
    options.since = value;
  } else if (name == "--sqlite") {
    options.sqlite = value;
  } else if (name == "--catalog") {
    options.catalog = value;
  } else {
    return false;
  }
  return true;
}

void Apply(Options& options, std::string_view name, const std::string& value) {
  if (ApplyCatalogOption(options, name, value)) return;
  if (name == "--json") options.json = true;
  if (name == "--ndjson") options.json = options.ndjson = true;
  if (name == "--tsv") options.form = TableForm::kTsv;
  if (name == "--csv") options.form = TableForm::kCsv;
  if (name == "--all") options.all = true;
  if (name == "--core") options.core = true;
  if (name == "-0") options.zero = true;
  if (name == "--clips-only") options.clipsOnly = true;
  if (name == "--folder") options.folder = true;
  if (name == "--packet") options.packet = true;
  if (name == "--sources") options.sources = true;
  if (name == "--files") options.files = true;
  if (name == "--quick") options.quick = true;
  if (name == "--hash") options.hash = true;
  if (name == "--dirs") options.dirs = true;
  if (name == "--all-cards") options.allCards = true;
  if (name == "--relative") options.relative = true;
  if (name == "--force") options.force = true;
  if (name == "--allow-gaps") options.allowGaps = true;
  if (name == "--format") options.format = value;
  if (name == "--icon") options.icon = true;
  if (name == "--cache") options.cache = true;
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
    if (options_.command == "version") return options_;
    if (help_) return HelpOptions();
    options_.nearby = !commandNamed_;
    if (options_.command.empty()) options_.command = "ls";
    CheckUsage(*FindCommand(options_.command));
    return options_;
  }

 private:
  // --help after a command is the help of that command.
  Options HelpOptions() const {
    Options options;
    options.command = "help";
    if (commandNamed_) options.operands = {options_.command};
    return options;
  }

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
    if (word == "--help" || word == "-h") help_ = true;
    if (word == "--version" || word == "-V") options_.command = "version";
    if (help_ || options_.command == "version") return;
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
    CheckOperandCount(name, count);
    if (Accepts(command, "-o") && options_.output.empty() && name != "join" && name != "catalog")
      FailUsage(name + ": missing option -o FILE");
    if (options_.output == "-" && options_.json)
      FailUsage("-o - and --json both write to standard output");
    if (options_.hash && options_.against.empty()) FailUsage("--hash needs --against COPY");
    if (options_.hash && !options_.catalog.empty())
      FailUsage("--hash and --catalog are mutually exclusive");
    if (options_.all && options_.fields) FailUsage("--fields and --all are mutually exclusive");
    if (options_.json && options_.form != TableForm::kAligned)
      FailUsage("--json, --tsv and --csv are mutually exclusive");
  }

  void CheckOperandCount(const std::string& name, std::size_t count) const {
    if (name == "thumb" && (options_.folder ? count != 0 : count < 2)) {
      FailUsage("thumb: expected PATH KEY, or --folder");
    }
    if (name == "meta" && (options_.packet ? count != 0 : count == 0)) {
      FailUsage("meta: expected FILE, or --packet");
    }
    if (options_.packet && options_.sources) {
      FailUsage("--sources needs a file, not --packet");
    }
    const std::size_t single = name == "thumb" ? 2 : 1;
    const bool several = Accepts(*FindCommand(name), "--ndjson") && count > single;
    if (several && options_.json && !options_.ndjson) {
      FailUsage(name + ": several documents need --ndjson instead of --json");
    }
  }

  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  bool onlyOperands_ = false;
  bool commandNamed_ = false;
  bool help_ = false;
  std::vector<std::string> seen_;
  Options options_;
};

constexpr std::size_t kHelpColumn = 32;

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size() + 2), ' ');
  return text;
}

}  // namespace

Options ParseArguments(const std::vector<std::string>& arguments) {
  return Parser(arguments).Parse();
}

bool WantsJson(const std::vector<std::string>& arguments) {
  for (const std::string& word : arguments) {
    if (word == "--") break;
    if (word == "--json" || word == "--ndjson") return true;
  }
  return false;
}

namespace {

std::string OptionLine(const OptionRow& row) {
  return Padded("  " + std::string(row.name) + " " + std::string(row.value), kHelpColumn) +
         std::string(row.summary) + "\n";
}

std::string CommandHelp(const CommandRow& command) {
  const std::string name(command.name);
  std::string text = "usage: sorvik " + name;
  if (!command.options.empty()) text += " [OPTIONS]";
  if (!command.operands.empty()) text += " " + std::string(command.operands);
  text += "\n\n" + std::string(command.summary) + "\n";
  std::string options;
  for (const OptionRow& row : kOptions) {
    if (Accepts(command, row.name)) options += OptionLine(row);
  }
  if (!options.empty()) text += "\noptions:\n" + options;
  return text + "\nexample:\n  " + std::string(command.example) + "\n";
}

std::string GeneralHelp() {
  std::string text =
      "sorvik lists camera cards and folders as clips.\n\n"
      "usage: sorvik [COMMAND] [OPTIONS] [PATH]\n\n"
      "Without a command, lists the cards at, around and next to PATH, or PATH itself if there is\n"
      "none; without PATH the volumes.\n\ncommands:\n";
  for (const CommandRow& row : kCommands) {
    text += Padded("  " + std::string(row.name) + " " + std::string(row.operands), kHelpColumn);
    text += std::string(row.summary) + "\n";
  }
  text += "\noptions:\n";
  for (const OptionRow& row : kOptions) text += OptionLine(row);
  text += Padded("  --help, -h", kHelpColumn) + "show help, also after a command\n";
  text += Padded("  --version, -V", kHelpColumn) + "show the version\n";
  return text +
         "\n'sorvik help COMMAND' shows the options of a command and an example.\n"
         "\nKEY is what 'sorvik ls' shows in the column Key; the file name of a clip, its path or\n"
         "its name work as well. A path that begins with \"volumes:\" is passed to the library\n"
         "unchanged; any other path is made absolute. -- ends the options.\n"
         "\nexit status: 0 success, 1 error or incomplete card, 2 usage error, 130 interrupted;\n"
         "catalog: 3 no card, 4 not readable, 75 timeout or I/O error\n";
}

}  // namespace

std::string HelpText(const std::string& command) {
  if (command.empty()) return GeneralHelp();
  const CommandRow* row = FindCommand(command);
  if (row == nullptr) FailUsage("help: unknown command '" + command + "'");
  return CommandHelp(*row);
}

}  // namespace host
