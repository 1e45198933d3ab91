// SPDX-License-Identifier: MIT
#include <libheif/heif.h>

#include <algorithm>
#include <memory>

#include "FileContents.h"
#include "Frame.h"
#include "Scale.h"

namespace frame {
namespace {

struct ReleaseHandle {
  void operator()(const heif_image_handle* handle) const { heif_image_handle_release(handle); }
};
struct ReleaseImage {
  void operator()(const heif_image* image) const { heif_image_release(image); }
};
struct FreeContext {
  void operator()(heif_context* context) const { heif_context_free(context); }
};
using Handle = std::unique_ptr<heif_image_handle, ReleaseHandle>;

// A thumbnail that is large enough is decoded instead of the picture.
bool IsLargeEnough(const heif_image_handle* thumbnail, Limits limits) {
  const int side =
      std::max(heif_image_handle_get_width(thumbnail), heif_image_handle_get_height(thumbnail));
  const int wanted = std::max(limits.maxWidth, limits.maxHeight);
  return wanted > 0 && side >= wanted;
}

Handle ChooseImage(heif_context* context, Limits limits) {
  heif_image_handle* primary = nullptr;
  if (heif_context_get_primary_image_handle(context, &primary).code != heif_error_Ok) return {};
  Handle chosen(primary);
  heif_item_id id = 0;
  if (heif_image_handle_get_list_of_thumbnail_IDs(primary, &id, 1) != 1) return chosen;
  heif_image_handle* thumbnail = nullptr;
  if (heif_image_handle_get_thumbnail(primary, id, &thumbnail).code != heif_error_Ok) return chosen;
  Handle small(thumbnail);
  return IsLargeEnough(thumbnail, limits) ? std::move(small) : std::move(chosen);
}

}  // namespace

std::optional<Frame> DecodeHeif(int descriptor, Limits limits) {
  const std::vector<char> bytes = ReadContents(descriptor);
  const std::unique_ptr<heif_context, FreeContext> context(heif_context_alloc());
  if (!context) return std::nullopt;
  constexpr int kOnThisThread = 0;  // one process per core runs already
  heif_context_set_max_decoding_threads(context.get(), kOnThisThread);
  if (heif_context_read_from_memory_without_copy(context.get(), bytes.data(), bytes.size(), nullptr)
          .code != heif_error_Ok) {
    return std::nullopt;
  }
  const Handle handle = ChooseImage(context.get(), limits);
  if (!handle) return std::nullopt;
  heif_image* decoded = nullptr;
  // Applies rotation, mirroring and cropping.
  if (heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGB,
                        nullptr)
          .code != heif_error_Ok) {
    return std::nullopt;
  }
  const std::unique_ptr<heif_image, ReleaseImage> image(decoded);
  int stride = 0;
  std::uint8_t* pixels = heif_image_get_plane(decoded, heif_channel_interleaved, &stride);
  if (pixels == nullptr) return std::nullopt;
  return ScalePixels({pixels, heif_image_get_width(decoded, heif_channel_interleaved),
                      heif_image_get_height(decoded, heif_channel_interleaved), stride, 3},
                     limits);
}

}  // namespace frame
