// SPDX-License-Identifier: MIT
#include <libraw/libraw.h>

#include <memory>
#include <vector>

#include "FileContents.h"
#include "Frame.h"
#include "Scale.h"

namespace frame {

std::optional<Frame> DevelopRaw(int descriptor, Limits limits) {
  std::vector<char> bytes = ReadContents(descriptor);
  const auto raw = std::make_unique<LibRaw>();
  raw->imgdata.params.half_size = 1;
  raw->imgdata.params.use_camera_wb = 1;
  raw->imgdata.params.user_qual = 0;
  raw->imgdata.params.output_bps = 8;
  if (raw->open_buffer(bytes.data(), bytes.size()) != LIBRAW_SUCCESS) return std::nullopt;
  if (raw->unpack() != LIBRAW_SUCCESS || raw->dcraw_process() != LIBRAW_SUCCESS) {
    return std::nullopt;
  }
  struct Clear {
    void operator()(libraw_processed_image_t* image) const { LibRaw::dcraw_clear_mem(image); }
  };
  const std::unique_ptr<libraw_processed_image_t, Clear> image(raw->dcraw_make_mem_image());
  if (!image || image->type != LIBRAW_IMAGE_BITMAP || image->bits != 8) return std::nullopt;
  return ScalePixels(
      {image->data, image->width, image->height, image->width * image->colors, image->colors},
      limits);
}

}  // namespace frame
