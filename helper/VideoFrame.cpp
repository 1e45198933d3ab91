// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <utility>

#include "FileInput.h"
#include "Frame.h"
#include "Scale.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace frame {
namespace {

// No playlists and other formats that lead to further files.
constexpr char kFormats[] =
    "mov,mp4,m4a,3gp,3g2,mj2,mpegts,mpeg,mpegvideo,mxf,mxf_opatom,avi,dv,"
    "matroska,webm,h264,hevc,m4v,mjpeg,flv,asf";
constexpr char kCodecs[] =
    "h264,hevc,mpeg1video,mpeg2video,mpeg4,dvvideo,prores,dnxhd,jpeg2000,"
    "mjpeg,mjpegb,rawvideo,v210,v308,v408,v410,r210,r10k,cfhd,hap,huffyuv,"
    "ffv1,vc1,wmv3,vp8,vp9,libdav1d,h263,h261,png,qtrle,targa,msmpeg4v2,"
    "msmpeg4v3,wmv1,wmv2,cinepak,svq3,utvideo,magicyuv,dpx";
// Enough for the tables of transport streams of any camera.
constexpr char kProbeBytes[] = "5000000";
constexpr char kAnalyzeMicroseconds[] = "2000000";

constexpr double kPlace = 0.1;  // of the duration
constexpr double kPlacesIfBlack[] = {0.3, 0.5, 0.75};
constexpr int kMaxPackets = 2000;                           // read at one place
constexpr int kMaxKeyFrames = 8;                            // tried at one place
constexpr std::int64_t kMaxPixels = std::int64_t{1} << 26;  // of a coded frame

struct FreeFrame {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFormat {
  void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct FreeCodec {
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};

using Clock = std::chrono::steady_clock;

int IsPast(void* deadline) {
  return Clock::now() > *static_cast<const Clock::time_point*>(deadline) ? 1 : 0;
}

// Options for a call of FFmpeg, which removes those that it has used.
class Dictionary {
 public:
  ~Dictionary() { av_dict_free(&values_); }
  Dictionary() = default;
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;
  void Set(const char* key, const char* value) { av_dict_set(&values_, key, value, 0); }
  AVDictionary** Get() { return &values_; }

 private:
  AVDictionary* values_ = nullptr;
};

class VideoFile {
 public:
  VideoFile(int descriptor, int milliseconds)
      : input_(descriptor), deadline_(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

  bool Open() { return OpenFormat() && FindStream() && OpenCodec(); }

  // The picture at `place` of the duration, 0 to 1.
  std::optional<Frame> PictureAt(double place, Limits limits) {
    Seek(place);
    avcodec_flush_buffers(codec_.get());
    if (!DecodeKeyFrame()) return std::nullopt;
    return ConvertFrame(*frame_, PresentationOf(), limits);
  }

  bool HasDuration() const { return Duration() > 0; }

 private:
  bool OpenFormat() {
    AVFormatContext* format = avformat_alloc_context();
    if (format == nullptr || input_.Context() == nullptr) return false;
    format->pb = input_.Context();
    format->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_DISCARD_CORRUPT;
    format->interrupt_callback = {IsPast, &deadline_};
    Dictionary options;
    options.Set("protocol_whitelist", "file");
    options.Set("format_whitelist", kFormats);
    options.Set("codec_whitelist", kCodecs);
    options.Set("probesize", kProbeBytes);
    options.Set("analyzeduration", kAnalyzeMicroseconds);
    options.Set("fpsprobesize", "0");
    // Frees the context on failure.
    if (avformat_open_input(&format, "", nullptr, options.Get()) < 0) return false;
    format_.reset(format);
    return true;
  }

  bool FindStream() {
    stream_ = BestStream();
    // Containers with an index describe their streams in the header; searching them takes longer
    // than decoding a frame.
    const bool isDescribed = stream_ != nullptr && stream_->codecpar->width > 0 &&
                             stream_->codecpar->codec_id != AV_CODEC_ID_NONE && HasDuration();
    if (!isDescribed) {
      if (avformat_find_stream_info(format_.get(), nullptr) < 0) return false;
      stream_ = BestStream();
    }
    if (stream_ == nullptr) return false;
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
      AVStream* stream = format_->streams[i];
      if (stream != stream_) stream->discard = AVDISCARD_ALL;
    }
    return true;
  }

  // The largest video stream that isn't a cover picture.
  AVStream* BestStream() const {
    AVStream* best = nullptr;
    const auto pixels = [](const AVStream* stream) {
      return std::int64_t{stream->codecpar->width} * stream->codecpar->height;
    };
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
      AVStream* stream = format_->streams[i];
      if (stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO) continue;
      if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) continue;
      if (best == nullptr || pixels(stream) > pixels(best)) best = stream;
    }
    return best;
  }

  bool OpenCodec() {
    const AVCodec* decoder = avcodec_find_decoder(stream_->codecpar->codec_id);
    if (decoder == nullptr) return false;
    codec_.reset(avcodec_alloc_context3(decoder));
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!codec_ || !frame_ || !packet_) return false;
    if (avcodec_parameters_to_context(codec_.get(), stream_->codecpar) < 0) return false;
    codec_->thread_count = 1;
    codec_->max_pixels = kMaxPixels;
    codec_->pkt_timebase = stream_->time_base;
    Dictionary options;
    options.Set("codec_whitelist", kCodecs);
    return avcodec_open2(codec_.get(), decoder, options.Get()) == 0;
  }

  // In units of the stream; 0 if it is unknown.
  std::int64_t Duration() const {
    if (stream_ != nullptr && stream_->duration > 0) return stream_->duration;
    if (format_->duration <= 0 || stream_ == nullptr) return 0;
    return av_rescale_q(format_->duration, AVRational{1, AV_TIME_BASE}, stream_->time_base);
  }

  void Seek(double place) {
    const auto part = [place](std::int64_t full) {
      return static_cast<std::int64_t>(place * static_cast<double>(full));
    };
    if (HasDuration()) {
      const std::int64_t start = stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time;
      const std::int64_t time = part(Duration());
      if (start <= INT64_MAX - time &&
          av_seek_frame(format_.get(), stream_->index, start + time, AVSEEK_FLAG_BACKWARD) >= 0) {
        return;
      }
    }
    av_seek_frame(format_.get(), -1, part(input_.Size()), AVSEEK_FLAG_BYTE);
  }

  // Decodes the next key frame alone into frame_. Skips frames that the decoder reports as damaged.
  bool DecodeKeyFrame() {
    int keyFrames = 0;
    for (int i = 0; i < kMaxPackets && keyFrames < kMaxKeyFrames && !IsPast(&deadline_); ++i) {
      if (av_read_frame(format_.get(), packet_.get()) < 0) break;
      const bool wanted = packet_->stream_index == stream_->index &&
                          (packet_->flags & AV_PKT_FLAG_KEY) != 0 && packet_->size > 0;
      if (wanted) ++keyFrames;
      const bool decoded = wanted && DecodePacket();
      av_packet_unref(packet_.get());
      if (decoded) return true;
    }
    return false;
  }

  // The end of the stream makes the decoder return a frame that it would keep for reordering.
  bool DecodePacket() {
    avcodec_send_packet(codec_.get(), packet_.get());
    avcodec_send_packet(codec_.get(), nullptr);
    bool decoded = avcodec_receive_frame(codec_.get(), frame_.get()) == 0;
    if (decoded) {
      decoded = frame_->decode_error_flags == 0 && (frame_->flags & AV_FRAME_FLAG_CORRUPT) == 0;
    }
    avcodec_flush_buffers(codec_.get());
    return decoded;
  }

  Presentation PresentationOf() {
    Presentation result;
    result.pixelAspect = av_guess_sample_aspect_ratio(format_.get(), stream_, frame_.get());
    const std::uint8_t* data = av_stream_get_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (data == nullptr) return result;
    std::int32_t matrix[9];
    std::copy_n(data, sizeof matrix, reinterpret_cast<std::uint8_t*>(matrix));
    const double determinant =
        static_cast<double>(matrix[0]) * matrix[4] - static_cast<double>(matrix[1]) * matrix[3];
    result.mirrored = determinant < 0;
    if (result.mirrored) av_display_matrix_flip(matrix, 1, 0);
    const double degrees = av_display_rotation_get(matrix);  // counterclockwise
    if (!std::isnan(degrees))
      result.quarterTurns = (4 - static_cast<int>(std::lround(degrees / 90))) % 4;
    return result;
  }

  FileInput input_;
  Clock::time_point deadline_;
  std::unique_ptr<AVFormatContext, FreeFormat> format_;
  std::unique_ptr<AVCodecContext, FreeCodec> codec_;
  std::unique_ptr<AVFrame, FreeFrame> frame_;
  std::unique_ptr<AVPacket, FreePacket> packet_;
  AVStream* stream_ = nullptr;
};

// The part of the pixels that aren't black.
double BrightPart(const Frame& picture) {
  constexpr int kBlack = 32;
  std::size_t bright = 0;
  for (std::size_t i = 0; i + 2 < picture.pixels.size(); i += 3) {
    bright += std::max({picture.pixels[i], picture.pixels[i + 1], picture.pixels[i + 2]}) > kBlack;
  }
  return 3.0 * static_cast<double>(bright) / static_cast<double>(picture.pixels.size());
}

}  // namespace

std::optional<Frame> DecodeVideo(int descriptor, Limits limits, int milliseconds) {
  constexpr double kMinBrightPart = 0.03;
  av_log_set_level(AV_LOG_QUIET);
  VideoFile video(descriptor, milliseconds);
  if (!video.Open()) return std::nullopt;
  std::optional<Frame> best = video.PictureAt(kPlace, limits);
  if (!best) best = video.PictureAt(0, limits);
  double brightPart = best ? BrightPart(*best) : 0;
  for (const double place : kPlacesIfBlack) {
    if (brightPart >= kMinBrightPart) break;
    auto other = video.PictureAt(place, limits);
    if (!other) continue;
    const double otherPart = BrightPart(*other);
    if (best && otherPart <= brightPart) continue;
    brightPart = otherPart;
    best = std::move(other);
  }
  return best;
}

}  // namespace frame
