// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/ClipPicture.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "cardtools/ClipSources.h"
#include "cardtools/ProviderLookup.h"
#include "foundation/CallScope.h"
#include "foundation/imaging/ImageSource.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/RequestQueue.h"
#include "frame/ThumbnailAnswer.h"
#include "metadata/EmbeddedPictures.h"
#include "thumbnails/FrameHelper.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/PlainPicture.h"

namespace Sorvik {
namespace {

// The largest preview of a camera with 100 megapixels has half of it.
constexpr std::uint64_t kMaxEmbeddedBytes = std::uint64_t{64} << 20;

// Renders one clip from its sources, in their order.
class ClipPainter {
 public:
  ClipPainter(int width, int height, ProviderRequest* request)
      : width_(width), height_(height), request_(request) {}

  OwnedBitplate Paint(const ClipSources& sources) const {
    for (const ClipSource& source : sources) {
      if (IsStopped()) break;
      if (OwnedBitplate plate = Paint(source)) return plate;
    }
    return nullptr;
  }

 private:
  OwnedBitplate Paint(const ClipSource& source) const {
    switch (source.kind) {
      case ClipSource::Kind::kPicture:
        return PaintPicture(source.path);
      case ClipSource::Kind::kEmbedded:
        return PaintEmbedded(source.path);
      case ClipSource::Kind::kVideo:
        return PaintDecoded(source.path, frames::Kind::kVideo);
      case ClipSource::Kind::kRaw:
        return PaintDecoded(source.path, frames::Kind::kRaw);
      case ClipSource::Kind::kHeif:
        return PaintDecoded(source.path, frames::Kind::kHeif);
    }
    return nullptr;
  }

  OwnedBitplate PaintPicture(const std::string& path) const {
    const auto image = imaging::ImageSource::OpenFile(path);
    if (!image) return nullptr;
    return DrawPlainPicture(*image, width_, height_, FindEmbeddedPictures(path).orientation);
  }

  OwnedBitplate PaintEmbedded(const std::string& path) const {
    const EmbeddedPictures found = FindEmbeddedPictures(path);
    if (found.pictures.empty()) return nullptr;
    const auto file = platform::RegularFile::Open(path);
    if (!file) return nullptr;
    for (const EmbeddedPicture& picture : found.pictures) {
      if (picture.length > kMaxEmbeddedBytes || IsStopped()) continue;
      std::vector<std::byte> bytes(static_cast<std::size_t>(picture.length));
      bytes.resize(file->ReadAt(picture.offset, bytes));
      const imaging::ImageSource image(bytes);
      if (auto plate = DrawPlainPicture(image, width_, height_, found.orientation)) return plate;
    }
    return nullptr;
  }

  OwnedBitplate PaintDecoded(const std::string& path, frames::Kind kind) const {
    const auto picture =
        DecodeInHelper(path, kind, width_, height_, [this] { return IsStopped(); });
    return picture ? DrawFramePicture(*picture) : nullptr;
  }

  bool IsStopped() const { return ProviderRequest::TestAborted(request_); }

  int width_;
  int height_;
  ProviderRequest* request_;
};

}  // namespace

Bitplate** RenderClipPicture(const std::string& path, const std::string& identification,
                             const std::string& key, int width, int height,
                             ProviderRequest* request) {
  const foundation::CallScope scope;
  const platform::ShareScope shares(path);
  const ProviderWrapper* provider = FindProvider(identification);
  if (provider == nullptr || width < 0 || height < 0) return nullptr;
  const ClipPainter painter(width, height, request);
  return painter.Paint(FindClipSources(*provider, path, key)).release();
}

ClipPictureRequest::ClipPictureRequest(tarnwick::utility::ImmutableString station, std::string path,
                                       std::string identification, std::string key, int width,
                                       int height)
    : ProviderRequest(std::move(station), ProviderRef()),
      path_(std::move(path)),
      identification_(std::move(identification)),
      key_(std::move(key)),
      width_(width),
      height_(height) {}

void ClipPictureRequest::Run() {
  Bitplate** const thumbnail =
      TestAborted() ? nullptr
                    : RenderClipPicture(path_, identification_, key_, width_, height_, this);
  GetThumbnailMessage message = ThumbnailAnswer(path_, key_, thumbnail, TestAborted());
  PostResult(message);
}

void ClipPictureRequest::PostAborted() const { Post(ThumbnailAnswer(path_, key_, nullptr, true)); }

Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> ClipPictureRequest::GetRef() {
  return Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>(this);
}

Hestra::InterfaceRef<ClipPictureRequest, Hestra::IThreadedQueueRequest> RequestClipPicture(
    const std::string& path, const std::string& identification, const std::string& key, int width,
    int height, tarnwick::utility::ImmutableString station) {
  const Hestra::InterfaceRef<ClipPictureRequest, Hestra::IThreadedQueueRequest> request(
      new ClipPictureRequest(std::move(station), path, identification, key, width, height));
  QueueRequest(request);
  return request;
}

}  // namespace Sorvik
