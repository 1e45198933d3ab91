// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string_view>

#include "ClipPictures.h"
#include "Commands.h"
#include "ContactSheet.h"
#include "Failure.h"
#include "Json.h"
#include "Keys.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
#include "SorvikProvider/foundation/EscapedText.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "Text.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::FieldNameList;
using Sorvik::FieldValueMap;
using Sorvik::ProviderWrapper;

// With more clips, the pictures are files of their own that the browser loads when they are
// visible.
constexpr std::size_t kMaxEmbeddedPictures = 1000;
// The width of pictures unless --size is given. The page scales them.
constexpr int kPictureWidth = 320;
// Pictures that are requested ahead of the one that is written next, which bounds the memory.
constexpr std::size_t kMaxAhead = 16;

const FieldNameList kTotalFields = {"duration", "videoFrameRate", Sorvik::kPathField,
                                    Sorvik::kExtraPathField, Sorvik::kProxyPathField};

// The columns of the listing, then the selected fields. Key, name and path have places of their
// own.
std::vector<Column> SheetColumns(const Options& options, const ProviderWrapper& provider) {
  std::vector<Column> columns = DefaultColumns(provider);
  if (options.fields || options.all) {
    const FieldNameList shown = FieldsOf(columns);
    FieldNameList others = ChosenFields(options, provider, {});
    std::erase_if(others, [&](const std::string& field) {
      return std::find(shown.begin(), shown.end(), field) != shown.end();
    });
    std::erase(others, Sorvik::kPathField);
    const std::vector<Column> further = ColumnsOf(provider, others);
    columns.insert(columns.end(), further.begin() + 1, further.end());
  }
  std::erase_if(columns, [](const Column& column) {
    return column.fields.empty() || column.fields.front() == Sorvik::kNameField;
  });
  return columns;
}

SheetClip MakeClip(const std::string& key, const std::string& shortKey, const FieldValueMap& values,
                   const std::vector<Column>& columns) {
  SheetClip clip;
  clip.name = EntryName(key, values);
  clip.key = shortKey;
  const std::vector<std::string> paths = FieldTexts(values, Sorvik::kPathField);
  if (!paths.empty() && paths.front().starts_with('/')) clip.path = paths.front();
  for (const Column& column : columns) {
    const std::string text = CellOf(column, key, values, {.complete = false, .brief = true});
    if (!text.empty()) clip.facts.emplace_back(column.heading, text);
  }
  return clip;
}

// In seconds.
double TotalDuration(const ContentMap& content) {
  double seconds = 0;
  for (const auto& [key, values] : content) {
    const std::vector<std::string> rate = FieldTexts(values, "videoFrameRate");
    const double frames = rate.empty() ? 0 : std::strtod(rate.front().c_str(), nullptr);
    for (const std::string& text : FieldTexts(values, "duration")) {
      seconds += DurationSeconds(text, frames);
    }
  }
  return seconds;
}

// Returns the size of the existing files of all entries. Accesses the disk.
unsigned long long TotalBytes(const std::string& path, const ContentMap& content,
                              const std::atomic<bool>& stop) {
  const auto isStopped = [&stop] { return stop.load(); };
  unsigned long long bytes = 0;
  for (const auto& file : Sorvik::FindEntryFiles(path, AllPaths(content), isStopped).files) {
    bytes += file.bytes;
  }
  return bytes;
}

// The clips of one card or folder, without pictures.
struct CardSheet {
  const ProviderWrapper& provider;
  std::string path;
  std::vector<std::string> keys;
  std::vector<SheetClip> clips;  // in the order of the keys
  double seconds = 0;
  unsigned long long bytes = 0;
};

CardSheet ReadCard(Context& context, const ProviderWrapper& provider, const std::string& path) {
  const std::vector<Column> columns = SheetColumns(context.options, provider);
  FieldNameList fields = FieldsOf(columns);
  fields.push_back(Sorvik::kNameField);
  fields.insert(fields.end(), kTotalFields.begin(), kTotalFields.end());
  const ContentMap content = ListEntries(context, provider, path, fields);
  const std::map<std::string, std::string> shortKeys = ShortKeys(path, content);
  CardSheet card{provider, path, {}, {}};
  for (const auto& [key, values] : content) {
    card.keys.push_back(key);
    card.clips.push_back(MakeClip(key, shortKeys.at(key), values, columns));
  }
  card.seconds = TotalDuration(content);
  context.session.GetProgress().Begin("looking for files");
  const auto& stop = context.session.Stopped();
  card.bytes = context.session.OnWorker<unsigned long long>(
      [&path, &content, &stop] { return TotalBytes(path, content, stop); });
  return card;
}

// The cards as `sorvik PATH` finds them: those nearby if the path is only a plain folder.
std::vector<CardSheet> ReadCards(Context& context, const std::string& path,
                                 std::vector<std::string>& unreadableFolders) {
  const ProviderWrapper& provider = ChooseProvider(context, path);
  std::vector<CardSheet> cards;
  if (context.options.provider.empty() && !IsStructure(provider)) {
    const CardsOfPath found = NearbyCards(context, path);
    unreadableFolders = found.unreadableFolders;
    for (const Sorvik::FoundCard& card : found.cards) {
      cards.push_back(ReadCard(context, ProviderOf(card), card.path));
    }
  }
  if (cards.empty()) cards.push_back(ReadCard(context, provider, path));
  return cards;
}

SheetPage MakePage(const std::string& path, const std::vector<CardSheet>& cards) {
  SheetPage page{path, {}, Hestra::MakeStdString(Hestra::GetLanguageString()), {}, 0};
  if (page.language == "x-default") page.language = "en";
  std::set<std::string> providers;
  double seconds = 0;
  unsigned long long bytes = 0;
  for (const CardSheet& card : cards) {
    const std::string name = card.provider.GetUIString();
    if (providers.insert(name).second) page.provider += (page.provider.empty() ? "" : ", ") + name;
    page.clips += card.clips.size();
    seconds += card.seconds;
    bytes += card.bytes;
  }
  if (seconds > 0) {
    page.totals.emplace_back(Translated("$$$/Sorvik/Sheet/Duration=Total duration"),
                             DurationText(seconds));
  }
  page.totals.emplace_back(Translated("$$$/Sorvik/Sheet/Bytes=Size"), SizeText(bytes));
  return page;
}

// Stores the pictures in the page, or in a folder next to it if there are many.
class PictureStore {
 public:
  PictureStore(Context& context, std::size_t clips) : output_(context.output) {
    constexpr std::string_view kSuffix = ".html";
    const std::string& page = context.options.output;
    if (clips <= kMaxEmbeddedPictures || page == "-") return;
    folder_ = page.ends_with(kSuffix) ? page.substr(0, page.size() - kSuffix.size()) : page;
    folder_ += "_files";
    if (mkdir(folder_.c_str(), 0777) != 0 && errno != EEXIST) {
      throw Failure(kFailed, folder_, std::string("cannot create (") + std::strerror(errno) + ")");
    }
  }

  // Returns the URL of the picture of a clip, which is counted from 0. Transparency needs PNG.
  std::string Add(std::size_t clip, const Picture& picture) {
    const bool isJpeg = IsOpaque(picture);
    const std::string bytes = isJpeg ? EncodeJpeg(picture) : EncodePng(picture);
    if (folder_.empty()) {
      return std::string("data:image/") + (isJpeg ? "jpeg" : "png") + ";base64," + Base64(bytes);
    }
    const std::string name = std::to_string(clip + 1) + (isJpeg ? ".jpg" : ".png");
    WriteFile(output_, folder_ + "/" + name, bytes);
    return Hestra::UrlPath("./" + FileName(folder_) + "/" + name);
  }

 private:
  Output& output_;
  std::string folder_;
};

// Writes the clips in their order, each as soon as its picture is there.
class ClipWriter {
 public:
  // `first` is the number of clips in the sheets before this one.
  ClipWriter(Session& session, ClipPictures& pictures, CardSheet& sheet, std::size_t first,
             PictureStore& store, OutputFile& file)
      : session_(session),
        pictures_(pictures),
        sheet_(sheet),
        first_(first),
        store_(store),
        file_(file),
        done_(sheet.clips.size()) {}

  void Run() {
    session_.GetProgress().Begin("drawing", sheet_.clips.size());
    for (std::size_t i = 0; i < sheet_.clips.size(); ++i) {
      Request(i);
      while (i + 1 - written_ > kMaxAhead) WaitForNext();
    }
    session_.WaitForPictures();
    WriteFinished();
  }

 private:
  void Request(std::size_t i) {
    const std::string& name = sheet_.clips[i].key;
    session_.GetProgress().AddItem(name);
    ++running_;
    pictures_.Request(sheet_.keys[i], [this, i, &name](const Picture& picture) {
      session_.GetProgress().FinishItem(name);
      if (!picture.Empty()) sheet_.clips[i].picture = store_.Add(first_ + i, picture);
      done_[i] = true;
      --running_;
    });
  }

  void WaitForNext() {
    if (running_ > 0) session_.WaitForPictures(running_ - 1);
    WriteFinished();
  }

  void WriteFinished() {
    for (; written_ < done_.size() && done_[written_]; ++written_) {
      SheetClip& clip = sheet_.clips[written_];
      file_.Write(SheetClipHtml(clip));
      clip.picture = {};
    }
  }

  Session& session_;
  ClipPictures& pictures_;
  CardSheet& sheet_;
  const std::size_t first_;
  PictureStore& store_;
  OutputFile& file_;
  std::vector<bool> done_;
  std::size_t written_ = 0;
  std::size_t running_ = 0;
};

}  // namespace

int RunSheet(Context& context) {
  const Options& options = context.options;
  const std::string path = ResolvePath(options.operands.front());
  RefuseFileOfCard(context, options.output);
  context.session.ShareReads();
  std::vector<std::string> unreadableFolders;
  std::vector<CardSheet> cards = ReadCards(context, path, unreadableFolders);
  const SheetPage page = MakePage(path, cards);
  if (page.clips == 0) throw Failure(kFailed, path, "no entries");
  const PictureSize icons{options.width, options.height};
  OutputFile file(context.output, options.output);
  file.Write(SheetBegin(page));
  PictureStore store(context, page.clips);
  std::size_t first = 0;
  for (CardSheet& card : cards) {
    ClipPictures pictures(context, card.provider, card.path,
                          options.sizeGiven ? icons : PictureSize{kPictureWidth, 0}, icons);
    ClipWriter(context.session, pictures, card, first, store, file).Run();
    first += card.clips.size();
  }
  file.Write(SheetEnd());
  file.Close();
  if (options.json) {
    JsonWriter json(context.output);
    json.BeginObject();
    json.Key("file");
    json.String(ResolvePath(options.output));
    json.Key("entries");
    json.Number(static_cast<unsigned long long>(page.clips));
    json.EndObject();
  }
  return ReportUnreadable(context, unreadableFolders);
}

}  // namespace host
