// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"

namespace host {
namespace {

Picture EntryPicture(Context& context, const std::string& path, const std::string& key) {
  const Options& options = context.options;
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  Picture picture;
  context.session.GetProgress().Begin("drawing");
  context.session.RequestPicture(provider, path, key, options.width,
                                 provider.GetMaximumThumbnailHeight(options.height),
                                 [&](Picture answer) { picture = std::move(answer); });
  context.session.WaitForPictures();
  return picture;
}

Picture FolderPicture(Context& context) {
  const int width = context.options.width;
  const int height = context.options.height;
  return context.session.OnWorker<Picture>(
      [width, height] { return PictureFromBitplate(Sorvik::GetFolderThumbnail(width, height)); });
}

void WriteJson(Output& output, const Options& options, const Picture& picture) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("file");
  json.String(options.output == "-" ? options.output : ResolvePath(options.output));
  json.Key("width");
  json.Number(picture.width);
  json.Key("height");
  json.Number(picture.height);
  json.EndObject();
}

}  // namespace

int RunThumb(Context& context) {
  const Options& options = context.options;
  RefuseFileOfCard(context, options.output);
  Picture picture;
  if (options.folder) {
    picture = FolderPicture(context);
    if (picture.Empty()) throw Failure(kFailed, "no folder picture available");
  } else {
    const std::string path = ResolvePath(options.operands[0]);
    picture = EntryPicture(context, path, options.operands[1]);
    if (picture.Empty()) {
      throw Failure(kFailed, path + ": no thumbnail for entry '" + options.operands[1] + "'");
    }
  }
  WriteFile(context.output, options.output, EncodePng(picture));
  if (options.json) WriteJson(context.output, options, picture);
  return kDone;
}

}  // namespace host
