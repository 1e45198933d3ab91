// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Commands.h"
#include "ContactSheet.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::FieldNameList;
using Sorvik::ProviderWrapper;

// Fields that help to find a shot, shown if the provider has them.
constexpr const char* kTimeFields[] = {"shotDate", "CreateDate", "startTimecode", "duration", "21"};

void AddOnce(FieldNameList& list, const std::string& field) {
  if (std::find(list.begin(), list.end(), field) == list.end()) list.push_back(field);
}

// Name and times, then the selected fields. Path is omitted unless selected.
FieldNameList SheetFields(const Options& options, const ProviderWrapper& provider) {
  const Sorvik::FieldNameSet known = provider.GetFieldList();
  FieldNameList fields = {Sorvik::kNameField};
  for (const char* field : kTimeFields) {
    if (known.contains(field)) AddOnce(fields, field);
  }
  FieldNameList usual = provider.GetDefaultFieldList();
  std::erase(usual, Sorvik::kPathField);
  for (const std::string& field : ChosenFields(options, provider, usual)) AddOnce(fields, field);
  return fields;
}

SheetClip MakeClip(const std::string& key, const Sorvik::FieldValueMap& values,
                   const FieldNameList& fields, const Sorvik::FieldLabelMap& labels) {
  SheetClip clip;
  clip.name = EntryName(key, values);
  for (const std::string& field : fields) {
    const auto value = values.find(field);
    if (field == Sorvik::kNameField || value == values.end()) continue;
    const std::string text = CellText(value->second);
    if (!text.empty()) clip.facts.emplace_back(LabelOf(labels, field), text);
  }
  return clip;
}

std::vector<SheetClip> MakeClips(Context& context, const ProviderWrapper& provider,
                                 const std::string& path) {
  const FieldNameList fields = SheetFields(context.options, provider);
  const ContentMap content = ListEntries(context, provider, path, fields);
  const Sorvik::FieldLabelMap labels = provider.GetFieldLabelList();
  std::vector<SheetClip> clips;
  for (const auto& [key, values] : content) clips.push_back(MakeClip(key, values, fields, labels));

  context.session.GetProgress().Begin("drawing", clips.size());
  const int height = provider.GetMaximumThumbnailHeight(context.options.height);
  std::size_t index = 0;
  for (const auto& [key, values] : content) {
    context.session.RequestPicture(provider, path, key, context.options.width, height,
                                   [&context, &clip = clips[index++]](Picture picture) {
                                     context.session.GetProgress().Advance();
                                     if (!picture.Empty()) clip.png = EncodePng(picture);
                                   });
  }
  context.session.WaitForPictures();
  return clips;
}

}  // namespace

int RunSheet(Context& context) {
  const Options& options = context.options;
  const std::string path = ResolvePath(options.operands.front());
  RefuseFileOfCard(context, options.output);
  const ProviderWrapper& provider = ChooseProvider(context, path);
  const std::vector<SheetClip> clips = MakeClips(context, provider, path);
  if (clips.empty()) throw Failure(kFailed, path + ": no entries");
  WriteFile(context.output, options.output, SheetHtml(path, provider.GetUIString(), clips));
  if (options.json) {
    JsonWriter json(context.output);
    json.BeginObject();
    json.Key("file");
    json.String(ResolvePath(options.output));
    json.Key("entries");
    json.Number(static_cast<unsigned long long>(clips.size()));
    json.EndObject();
  }
  return kDone;
}

}  // namespace host
