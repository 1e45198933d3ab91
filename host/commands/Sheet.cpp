// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string_view>

#include "Commands.h"
#include "ContactSheet.h"
#include "Failure.h"
#include "Json.h"
#include "Keys.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
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
    const std::string text = CellOf(column, key, values, {.complete = false, .shortDates = true});
    if (!text.empty()) clip.facts.emplace_back(column.heading, text);
  }
  return clip;
}

std::string TotalDuration(const ContentMap& content) {
  double seconds = 0;
  for (const auto& [key, values] : content) {
    const std::vector<std::string> rate = FieldTexts(values, "videoFrameRate");
    const double frames = rate.empty() ? 0 : std::strtod(rate.front().c_str(), nullptr);
    for (const std::string& text : FieldTexts(values, "duration")) {
      seconds += DurationSeconds(text, frames);
    }
  }
  return seconds > 0 ? DurationText(seconds) : std::string();
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

// Appends the keys of the clips to `keys`, in the order of the page.
SheetPage MakePage(Context& context, const ProviderWrapper& provider, const std::string& path,
                   std::vector<std::string>& keys) {
  const std::vector<Column> columns = SheetColumns(context.options, provider);
  FieldNameList fields = FieldsOf(columns);
  fields.push_back(Sorvik::kNameField);
  fields.insert(fields.end(), kTotalFields.begin(), kTotalFields.end());
  const ContentMap content = ListEntries(context, provider, path, fields);
  const std::map<std::string, std::string> shortKeys = ShortKeys(path, content);
  SheetPage page{
      path, provider.GetUIString(), Hestra::MakeStdString(Hestra::GetLanguageString()), {}, {}};
  if (page.language == "x-default") page.language = "en";
  for (const auto& [key, values] : content) {
    keys.push_back(key);
    page.clips.push_back(MakeClip(key, shortKeys.at(key), values, columns));
  }
  const std::string duration = TotalDuration(content);
  if (!duration.empty()) {
    page.totals.emplace_back(Translated("$$$/Sorvik/Sheet/Duration=Total duration"), duration);
  }
  context.session.GetProgress().Begin("looking for files");
  const auto& stop = context.session.Stopped();
  const auto bytes = context.session.OnWorker<unsigned long long>(
      [&path, &content, &stop] { return TotalBytes(path, content, stop); });
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

  // Returns the URL of the picture.
  std::string Add(const Picture& picture) {
    const std::string png = EncodePng(picture);
    if (folder_.empty()) return "data:image/png;base64," + Base64(png);
    const std::string name = std::to_string(++count_) + ".png";
    WriteFile(output_, folder_ + "/" + name, png);
    return UrlPath("./" + FileName(folder_) + "/" + name);
  }

 private:
  Output& output_;
  std::string folder_;
  std::size_t count_ = 0;
};

void AddPictures(Context& context, const ProviderWrapper& provider, const std::string& path,
                 const std::vector<std::string>& keys, std::vector<SheetClip>& clips) {
  PictureStore store(context, clips.size());
  context.session.GetProgress().Begin("drawing", clips.size());
  const int height = provider.GetMaximumThumbnailHeight(context.options.height);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    context.session.GetProgress().AddItem(clips[i].key);
    context.session.RequestPicture(provider, path, keys[i], context.options.width, height,
                                   [&context, &store, &clip = clips[i]](const Picture& picture) {
                                     context.session.GetProgress().FinishItem(clip.key);
                                     if (!picture.Empty()) clip.picture = store.Add(picture);
                                   });
  }
  context.session.WaitForPictures();
}

}  // namespace

int RunSheet(Context& context) {
  const Options& options = context.options;
  const std::string path = ResolvePath(options.operands.front());
  RefuseFileOfCard(context, options.output);
  const ProviderWrapper& provider = ChooseProvider(context, path);
  std::vector<std::string> keys;
  SheetPage page = MakePage(context, provider, path, keys);
  if (page.clips.empty()) throw Failure(kFailed, path, "no entries");
  AddPictures(context, provider, path, keys, page.clips);
  WriteFile(context.output, options.output, SheetHtml(page));
  if (options.json) {
    JsonWriter json(context.output);
    json.BeginObject();
    json.Key("file");
    json.String(ResolvePath(options.output));
    json.Key("entries");
    json.Number(static_cast<unsigned long long>(page.clips.size()));
    json.EndObject();
  }
  return kDone;
}

}  // namespace host
