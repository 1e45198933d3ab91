// SPDX-License-Identifier: MIT
#include "PictureList.h"

#include <algorithm>
#include <map>

#include "ClipPictures.h"
#include "Paths.h"
#include "TerminalPictures.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::FieldNameList;
using Sorvik::FieldValueMap;

std::map<std::string, Picture> RequestPictures(Context& context,
                                               const Sorvik::ProviderWrapper& provider,
                                               const std::string& path,
                                               const Sorvik::ContentMap& content) {
  const Options& options = context.options;
  const PictureSize size{options.width, options.height};
  ClipPictures source(context, provider, path, size, size);
  std::map<std::string, Picture> pictures;
  context.session.GetProgress().Begin("drawing", content.size());
  for (const auto& [key, fields] : content) {
    context.session.GetProgress().AddItem(FileName(key));
    source.Request(key, [&context, &picture = pictures[key], name = FileName(key)](Picture answer) {
      context.session.GetProgress().FinishItem(name);
      picture = std::move(answer);
    });
  }
  context.session.WaitForPictures();
  return pictures;
}

// Returns the entry's name, then its other fields with their labels.
std::vector<std::string> EntryLines(const std::string& key, const FieldValueMap& values,
                                    const FieldNameList& fields,
                                    const Sorvik::FieldLabelMap& labels) {
  std::vector<std::string> lines = {EntryName(key, values)};
  for (const std::string& field : fields) {
    const auto value = values.find(field);
    if (field == Sorvik::kNameField || value == values.end()) continue;
    if (field == kFrameCountField && values.contains(kDurationField)) continue;
    const bool seconds = field == kDurationField && FieldTexts(values, kDurationField).empty();
    const auto count = values.find(kFrameCountField);
    const std::string text =
        seconds && count != values.end() ? SecondsText(count->second) : CellText(value->second);
    if (!text.empty()) lines.push_back(LabelOf(labels, field) + "  " + text);
  }
  return lines;
}

// Writes blank lines first and moves the cursor up again, so that the terminal doesn't scroll
// between the picture and its text. ESC 7 saves the cursor before the picture is drawn, ESC 8
// restores it.
void WriteEntry(Output& output, const std::string& picture, CellExtent extent,
                const std::vector<std::string>& lines) {
  const std::size_t rows = std::max(lines.size(), static_cast<std::size_t>(extent.rows));
  const std::string count = std::to_string(rows);
  output.Write(std::string(rows, '\n') + "\x1b[" + count +
               "A\x1b"
               "7" +
               picture +
               "\x1b"
               "8");
  for (std::size_t i = 0; i < rows; ++i) {
    const std::string indent = "\x1b[" + std::to_string(extent.columns + 2) + "C";
    output.Write(i < lines.size() ? indent + output.Shown(lines[i]) + "\n" : "\n");
  }
}

}  // namespace

void WritePictureList(Context& context, const Sorvik::ProviderWrapper& provider,
                      const std::string& path, const FieldNameList& fields,
                      const Sorvik::ContentMap& content, PictureProtocol protocol) {
  const auto pictures = RequestPictures(context, provider, path, content);
  const Sorvik::FieldLabelMap labels = provider.GetFieldLabelList();
  CellExtent extent;
  for (const auto& [key, picture] : pictures) {
    const CellExtent one = ExtentOf(picture.width, picture.height);
    extent.columns = std::max(extent.columns, one.columns);
    extent.rows = std::max(extent.rows, one.rows);
  }
  for (const auto& [key, values] : content) {
    WriteEntry(context.output, PictureBytes(pictures.at(key), protocol), extent,
               EntryLines(key, values, fields, labels));
  }
}

}  // namespace host
