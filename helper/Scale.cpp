// SPDX-License-Identifier: MIT
#include "Scale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

#include "ToneMap.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace frame {
namespace {

// Lower frames have no second field that is worth separating.
constexpr int kMinInterlacedHeight = 240;
constexpr int kHDHeight = 720;  // smaller pictures without a declared matrix are BT.601
constexpr double kMaxPixelAspect = 4;

struct FreeContext {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};
using Context = std::unique_ptr<SwsContext, FreeContext>;

// The planes of a frame, or of its first field.
struct Planes {
  std::array<const std::uint8_t*, 4> data{};
  std::array<int, 4> lineSize{};
  int width;
  int height;
};

Planes PlanesOf(const AVFrame& frame) {
  Planes planes;
  std::copy_n(frame.data, planes.data.size(), planes.data.begin());
  std::copy_n(frame.linesize, planes.lineSize.size(), planes.lineSize.begin());
  planes.width = frame.width;
  planes.height = frame.height;
  const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  const bool hasPalette = format != nullptr && (format->flags & AV_PIX_FMT_FLAG_PAL) != 0;
  if (frame.interlaced_frame == 0 || frame.height < kMinInterlacedHeight || hasPalette) {
    return planes;
  }
  const bool second = frame.top_field_first == 0;
  for (std::size_t i = 0; i < planes.data.size(); ++i) {
    if (planes.data[i] == nullptr) continue;
    if (second) planes.data[i] += planes.lineSize[i];
    planes.lineSize[i] *= 2;
  }
  planes.height /= 2;
  return planes;
}

int MatrixOf(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
      return SWS_CS_ITU709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return SWS_CS_BT2020;
    case AVCOL_SPC_SMPTE240M:
      return SWS_CS_SMPTE240M;
    case AVCOL_SPC_FCC:
      return SWS_CS_FCC;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
      return SWS_CS_ITU601;
    default:
      return frame.height >= kHDHeight ? SWS_CS_ITU709 : SWS_CS_ITU601;
  }
}

bool IsFullRange(const AVFrame& frame) {
  switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
      return true;
    default:
      return frame.color_range == AVCOL_RANGE_JPEG;
  }
}

// Scales to `size` in the format `format`. Rows of the result have no padding.
template <class Sample>
std::vector<Sample> Scale(const AVFrame& frame, Size size, AVPixelFormat format) {
  const Planes planes = PlanesOf(frame);
  const Context context(sws_getContext(planes.width, planes.height,
                                       static_cast<AVPixelFormat>(frame.format), size.width,
                                       size.height, format, SWS_AREA, nullptr, nullptr, nullptr));
  if (!context) return {};
  sws_setColorspaceDetails(context.get(), sws_getCoefficients(MatrixOf(frame)),
                           IsFullRange(frame) ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                           1 << 16, 1 << 16);
  const std::size_t rowSamples = static_cast<std::size_t>(size.width) * 3;
  // swscale may write some bytes past the end of a row.
  constexpr std::size_t kSpare = 64;
  const std::size_t stride = (rowSamples + kSpare) / kSpare * kSpare;
  const auto rows = static_cast<std::size_t>(size.height);
  std::vector<Sample> padded(stride * rows + kSpare);
  std::uint8_t* const target[] = {reinterpret_cast<std::uint8_t*>(padded.data())};
  const int targetStride[] = {static_cast<int>(stride * sizeof(Sample))};
  if (sws_scale(context.get(), planes.data.data(), planes.lineSize.data(), 0, planes.height, target,
                targetStride) != size.height) {
    return {};
  }
  std::vector<Sample> samples(rowSamples * rows);
  for (std::size_t y = 0; y < rows; ++y) {
    std::copy_n(&padded[y * stride], rowSamples, &samples[y * rowSamples]);
  }
  return samples;
}

Frame Mirrored(Frame picture) {
  const auto width = static_cast<std::size_t>(picture.size.width);
  for (std::size_t row = 0; row < picture.pixels.size(); row += width * 3) {
    for (std::size_t x = 0; x < width / 2; ++x) {
      std::swap_ranges(&picture.pixels[row + 3 * x], &picture.pixels[row + 3 * x] + 3,
                       &picture.pixels[row + 3 * (width - 1 - x)]);
    }
  }
  return picture;
}

Frame TurnedClockwise(const Frame& picture) {
  const auto width = static_cast<std::size_t>(picture.size.width);
  const auto height = static_cast<std::size_t>(picture.size.height);
  Frame turned{{picture.size.height, picture.size.width}, {}};
  turned.pixels.resize(picture.pixels.size());
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      std::copy_n(&picture.pixels[3 * (y * width + x)], 3,
                  &turned.pixels[3 * (x * height + height - 1 - y)]);
    }
  }
  return turned;
}

double AspectOf(AVRational aspect) {
  const double value = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1;
  return value > kMaxPixelAspect || value < 1 / kMaxPixelAspect ? 1 : value;
}

}  // namespace

Size FitSize(double width, double height, Limits limits) {
  const auto limit = [](int side) {
    return side < 1 ? Sorvik::frames::kMaxSide : std::min(side, Sorvik::frames::kMaxSide);
  };
  const int maxWidth = limit(limits.maxWidth);
  const int maxHeight = limit(limits.maxHeight);
  const double scale = std::min({1.0, maxWidth / width, maxHeight / height});
  const auto side = [scale](double full, int most) {
    return std::clamp(static_cast<int>(std::lround(full * scale)), 1, most);
  };
  return {side(width, maxWidth), side(height, maxHeight)};
}

std::optional<Frame> ConvertFrame(const AVFrame& frame, const Presentation& presentation,
                                  Limits limits) {
  if (frame.width < 1 || frame.height < 1) return std::nullopt;
  if (presentation.quarterTurns % 2 != 0) std::swap(limits.maxWidth, limits.maxHeight);
  const Size size = FitSize(frame.width * AspectOf(presentation.pixelAspect), frame.height, limits);
  Frame picture{size, {}};
  if (const auto transfer = HDRTransferOf(frame)) {
    auto samples = Scale<std::uint16_t>(frame, size, AV_PIX_FMT_RGB48);
    picture.pixels = MapTones(samples, *transfer);
  } else {
    picture.pixels = Scale<std::uint8_t>(frame, size, AV_PIX_FMT_RGB24);
  }
  if (picture.Empty()) return std::nullopt;
  if (presentation.mirrored) picture = Mirrored(std::move(picture));
  for (int i = 0; i < presentation.quarterTurns; ++i) picture = TurnedClockwise(picture);
  return picture;
}

std::optional<Frame> ScalePixels(const Pixels& pixels, Limits limits) {
  struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  };
  if (pixels.colours != 1 && pixels.colours != 3) return std::nullopt;
  const std::unique_ptr<AVFrame, FreeFrame> borrowed(av_frame_alloc());
  if (!borrowed) return std::nullopt;
  borrowed->width = pixels.width;
  borrowed->height = pixels.height;
  borrowed->format = pixels.colours == 3 ? AV_PIX_FMT_RGB24 : AV_PIX_FMT_GRAY8;
  borrowed->color_range = AVCOL_RANGE_JPEG;
  borrowed->data[0] = pixels.data;
  borrowed->linesize[0] = pixels.stride;
  return ConvertFrame(*borrowed, {}, limits);
}

}  // namespace frame
