// SPDX-License-Identifier: MIT
#include <libraw/libraw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "Frame.h"
#include "Scale.h"

namespace frame {
namespace {

constexpr off_t kMaxFileBytes = off_t{256} << 20;

std::vector<char> ReadFile(int descriptor) {
  struct stat facts;
  if (fstat(descriptor, &facts) != 0 || facts.st_size > kMaxFileBytes) return {};
  std::vector<char> bytes(static_cast<std::size_t>(facts.st_size));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count =
        pread(descriptor, &bytes[done], bytes.size() - done, static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

// A picture of LibRaw as a frame of FFmpeg, for scaling. It borrows the pixels.
std::optional<Frame> Scaled(libraw_processed_image_t& image, Limits limits) {
  if (image.type != LIBRAW_IMAGE_BITMAP || image.bits != 8) return std::nullopt;
  if (image.colors != 1 && image.colors != 3) return std::nullopt;
  struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  };
  const std::unique_ptr<AVFrame, FreeFrame> borrowed(av_frame_alloc());
  if (!borrowed) return std::nullopt;
  borrowed->width = image.width;
  borrowed->height = image.height;
  borrowed->format = image.colors == 3 ? AV_PIX_FMT_RGB24 : AV_PIX_FMT_GRAY8;
  borrowed->color_range = AVCOL_RANGE_JPEG;
  borrowed->data[0] = image.data;
  borrowed->linesize[0] = image.width * image.colors;
  return ConvertFrame(*borrowed, {}, limits);
}

}  // namespace

std::optional<Frame> DevelopRaw(int descriptor, Limits limits) {
  std::vector<char> bytes = ReadFile(descriptor);
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
  return image ? Scaled(*image, limits) : std::nullopt;
}

}  // namespace frame
