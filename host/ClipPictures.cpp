// SPDX-License-Identifier: MIT
#include "ClipPictures.h"

#include <optional>
#include <utility>

#include "PictureScale.h"
#include "Values.h"

namespace host {

ClipPictures::ClipPictures(Context& context, const Sorvik::ProviderWrapper& provider,
                           std::string path, PictureSize size, PictureSize icons)
    : context_(context),
      provider_(provider),
      path_(std::move(path)),
      size_(size),
      icons_(icons),
      cache_(size.width, size.height),
      isCached_(context.options.cache && cache_.Side() > 0) {}

void ClipPictures::Request(const std::string& key, Session::PictureReceiver receive) {
  if (context_.options.icon) {
    RequestIcon(key, std::move(receive));
    return;
  }
  if (!isCached_) {
    RequestClip(key, {}, receive);
    return;
  }
  const std::string file = MainFile(key);
  // The worker may outlive this object after Ctrl-C.
  auto known = context_.session.OnWorker<std::optional<Picture>>(
      [cache = cache_, file] { return cache.Find(file); });
  if (known) {
    receive(ReducedTo(std::move(*known), size_.width, size_.height));
  } else {
    RequestClip(key, file, receive);
  }
}

void ClipPictures::RequestClip(const std::string& key, const std::string& file,
                               const Session::PictureReceiver& receive) {
  const PictureSize size = file.empty() ? size_ : PictureSize{cache_.Side(), cache_.Side()};
  context_.session.RequestClipPicture(provider_.GetIdentification(), path_, key, size.width,
                                      size.height, [this, key, file, receive](Picture picture) {
                                        if (picture.Empty()) {
                                          RequestIcon(key, receive);
                                          return;
                                        }
                                        if (!file.empty()) {
                                          cache_.Store(file, picture);
                                          picture = ReducedTo(std::move(picture), size_.width,
                                                              size_.height);
                                        }
                                        receive(std::move(picture));
                                      });
}

void ClipPictures::RequestIcon(const std::string& key, Session::PictureReceiver receive) {
  const int height = provider_.GetMaximumThumbnailHeight(icons_.height);
  context_.session.RequestPicture(provider_, path_, key, icons_.width, height, std::move(receive));
}

// The file that the cached picture belongs to; empty if the entry has none.
std::string ClipPictures::MainFile(const std::string& key) {
  const auto content =
      context_.session.OnWorker<Sorvik::ContentMap>([&provider = provider_, path = path_, key] {
        return provider.GetContent(path, key, {Sorvik::kPathField});
      });
  const auto entry = content.find(key);
  if (entry == content.end()) return {};
  const std::vector<std::string> paths = FieldTexts(entry->second, Sorvik::kPathField);
  return paths.empty() || !paths.front().starts_with('/') ? std::string() : paths.front();
}

}  // namespace host
