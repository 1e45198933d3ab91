// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>
#include <vector>

#include "ClipPictures.h"
#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Keys.h"
#include "Paths.h"
#include "PictureScale.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"

namespace host {
namespace {

using Sorvik::ProviderWrapper;

// A size that was asked for explicitly is filled, by scaling a smaller picture smoothly.
Picture EntryPicture(Context& context, const ProviderWrapper& provider, const std::string& path,
                     const std::string& key) {
  const Options& options = context.options;
  const PictureSize size{options.width, options.height};
  ClipPictures source(context, provider, path, size, size);
  Picture picture;
  context.session.GetProgress().Begin("drawing");
  source.Request(key, [&](Picture answer) { picture = std::move(answer); });
  context.session.WaitForPictures();
  if (!options.sizeGiven) return picture;
  return EnlargedTo(WithoutGaps(std::move(picture)), options.width, options.height);
}

Picture FolderPicture(Context& context) {
  const int width = context.options.width;
  const int height = context.options.height;
  return context.session.OnWorker<Picture>(
      [width, height] { return PictureFromBitplate(Sorvik::GetFolderThumbnail(width, height)); });
}

void WriteJson(Output& output, const std::string& file, const Picture& picture) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("file");
  json.String(file == "-" ? file : ResolvePath(file));
  json.Key("width");
  json.Number(picture.width);
  json.Key("height");
  json.Number(picture.height);
  json.EndObject();
}

void WritePicture(Context& context, const std::string& file, const Picture& picture) {
  WriteFile(context.output, file, EncodePng(picture));
  if (context.options.json) WriteJson(context.output, file, picture);
}

// Returns the name of the picture of an entry in a folder: its key, in which slashes are replaced.
std::string PictureFile(const std::string& folder, const std::string& path,
                        const std::string& key) {
  std::string name = RelativePath(key, path);
  std::replace(name.begin(), name.end(), '/', '_');
  return folder + "/" + name + ".png";
}

void RunOne(Context& context, const ProviderWrapper& provider, const std::string& path,
            const std::string& typed, bool several) {
  const std::string key = FindKey(context, provider, path, typed);
  const Picture picture = EntryPicture(context, provider, path, key);
  if (picture.Empty()) throw Failure(kFailed, path, "no thumbnail for entry '" + typed + "'");
  const std::string& output = context.options.output;
  WritePicture(context, several ? PictureFile(output, path, key) : output, picture);
}

}  // namespace

int RunThumb(Context& context) {
  const Options& options = context.options;
  RefuseFileOfCard(context, options.output);
  if (options.folder) {
    const Picture picture = FolderPicture(context);
    if (picture.Empty()) throw Failure(kFailed, "no folder picture available");
    WritePicture(context, options.output, picture);
    return kDone;
  }
  const std::string path = ResolvePath(options.operands[0]);
  const std::vector<std::string> keys(options.operands.begin() + 1, options.operands.end());
  const bool several = keys.size() > 1;
  if (several && !IsFolder(options.output)) {
    throw Failure(kUsageError, "thumb: several keys need an existing folder as -o");
  }
  const ProviderWrapper& provider = ChooseProvider(context, path);
  if (several) context.session.ShareReads();
  return ForEachOperand(context, keys, [&](const std::string& key) {
    RunOne(context, provider, path, key, several);
  });
}

}  // namespace host
