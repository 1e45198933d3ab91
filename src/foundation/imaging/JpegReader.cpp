// SPDX-License-Identifier: MIT
#include "foundation/imaging/JpegReader.h"

#include <csetjmp>
#include <cstddef>
#include <cstdio>
// jpeglib.h needs the types of cstdio.
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "foundation/imaging/ImageDecoder.h"

namespace Sorvik::imaging {
namespace {

// Large, since the library decodes the end of each buffer in a slower way.
constexpr std::size_t kBufferBytes = 256 * 1024;
// The coefficients of a progressive picture of kMaxPixels without subsampling take 600 MB.
constexpr long kMaxLibraryMemory = 640L << 20;
// Each scan of a progressive picture processes all of its pixels, however small it is in the file.
// Real pictures have about ten scans; limiting the sum of processed pixels limits the time.
constexpr std::int64_t kMaxScannedPixels = 1'500'000'000;
// The library writes aligned rows with non-temporal stores, which makes reading them slow. An
// unaligned row is faster.
constexpr std::size_t kRowOffset = 1;

// Converts CMYK to RGB. Inverted values have 255 for no ink, as in files with an Adobe marker.
void ConvertCMYK(std::span<const std::uint8_t> cmyk, bool inverted, std::span<std::uint8_t> rgb) {
  for (std::size_t in = 0, out = 0; in + 3 < cmyk.size() && out + 2 < rgb.size();
       in += 4, out += 3) {
    const int black = inverted ? cmyk[in + 3] : 255 - cmyk[in + 3];
    for (std::size_t c = 0; c < 3; ++c) {
      const int ink = inverted ? cmyk[in + c] : 255 - cmyk[in + c];
      rgb[out + c] = static_cast<std::uint8_t>(ink * black / 255);
    }
  }
}

}  // namespace

struct JpegReader::State {
  explicit State(const ImageSource& from) : source(&from) {}
  ~State() { jpeg_destroy_decompress(&decoder); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // The library's structures, which it passes to the callbacks below.
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors{};
  jpeg_source_mgr input{};
  jpeg_progress_mgr progress{};
  std::jmp_buf failure;

  const ImageSource* source;
  std::uint64_t offset = 0;
  std::array<std::byte, kBufferBytes> buffer;
  std::vector<std::uint8_t> cmyk;  // only used for CMYK pictures
  std::vector<std::uint8_t> row;
  const std::function<void(std::span<const std::uint8_t>)>* receiver = nullptr;

  static State& Of(j_common_ptr decoder) { return *static_cast<State*>(decoder->client_data); }
  static State& Of(j_decompress_ptr decoder) { return *static_cast<State*>(decoder->client_data); }

  // Runs `step`. Returns false if the library reported a fatal error, which is a longjmp to here,
  // so the steps must not have local objects with destructors.
  bool Guarded(void (*step)(State&)) {
    if (setjmp(failure) != 0) return false;
    step(*this);
    return true;
  }

  void Connect();
  static void ReadHead(State& state);
  static void Start(State& state);
  static void ReadRow(State& state);
  static void Finish(State& state) { jpeg_finish_decompress(&state.decoder); }

  [[noreturn]] static void OnFatalError(j_common_ptr decoder) {
    std::longjmp(Of(decoder).failure, 1);
  }
  static boolean Fill(j_decompress_ptr decoder);
  static void Skip(j_decompress_ptr decoder, long count);
  static void CheckScannedPixels(j_common_ptr decoder);
};

void JpegReader::State::Connect() {
  decoder.err = jpeg_std_error(&errors);
  errors.error_exit = OnFatalError;
  // Recoverable damage is no error, and nothing is logged.
  errors.emit_message = [](j_common_ptr, int) {};
  errors.output_message = [](j_common_ptr) {};
  decoder.client_data = this;
}

void JpegReader::State::ReadHead(State& state) {
  jpeg_decompress_struct& decoder = state.decoder;
  jpeg_create_decompress(&decoder);
  decoder.client_data = &state;
  decoder.mem->max_memory_to_use = kMaxLibraryMemory;
  state.input.init_source = [](j_decompress_ptr) {};
  state.input.fill_input_buffer = Fill;
  state.input.skip_input_data = Skip;
  state.input.resync_to_restart = jpeg_resync_to_restart;
  state.input.term_source = [](j_decompress_ptr) {};
  decoder.src = &state.input;
  state.progress.progress_monitor = CheckScannedPixels;
  decoder.progress = &state.progress;
  jpeg_read_header(&decoder, TRUE);
}

void JpegReader::State::Start(State& state) {
  jpeg_decompress_struct& decoder = state.decoder;
  const bool isCMYK = decoder.jpeg_color_space == JCS_CMYK || decoder.jpeg_color_space == JCS_YCCK;
  decoder.out_color_space = isCMYK ? JCS_CMYK : JCS_RGB;
  jpeg_start_decompress(&decoder);
}

void JpegReader::State::ReadRow(State& state) {
  JSAMPROW row = state.cmyk.empty() ? state.row.data() + kRowOffset : state.cmyk.data();
  jpeg_read_scanlines(&state.decoder, &row, 1);
}

boolean JpegReader::State::Fill(j_decompress_ptr decoder) {
  State& state = Of(decoder);
  const bool more = state.offset < state.source->Size();
  std::size_t got = more ? state.source->ReadAt(state.offset, state.buffer) : 0;
  state.offset += got;
  if (got == 0) {
    // The end of a truncated file counts as the end of the picture.
    state.buffer[0] = std::byte{0xFF};
    state.buffer[1] = std::byte{JPEG_EOI};
    got = 2;
  }
  state.input.next_input_byte = reinterpret_cast<const JOCTET*>(state.buffer.data());
  state.input.bytes_in_buffer = got;
  return TRUE;
}

void JpegReader::State::Skip(j_decompress_ptr decoder, long count) {
  State& state = Of(decoder);
  if (count <= 0) return;
  const auto wanted = static_cast<std::size_t>(count);
  const std::size_t here = std::min(wanted, state.input.bytes_in_buffer);
  state.input.next_input_byte += here;
  state.input.bytes_in_buffer -= here;
  state.offset += wanted - here;
}

void JpegReader::State::CheckScannedPixels(j_common_ptr decoder) {
  const auto& jpeg = *reinterpret_cast<j_decompress_ptr>(decoder);
  const std::int64_t pixels = std::int64_t{jpeg.image_width} * jpeg.image_height;
  if (pixels * jpeg.input_scan_number > kMaxScannedPixels) OnFatalError(decoder);
}

JpegReader::JpegReader(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}
JpegReader::JpegReader(JpegReader&&) noexcept = default;
JpegReader& JpegReader::operator=(JpegReader&&) noexcept = default;
JpegReader::~JpegReader() = default;

std::optional<JpegReader> JpegReader::Open(const ImageSource& source) {
  auto state = std::make_unique<State>(source);
  state->Connect();
  if (!state->Guarded(&State::ReadHead)) return std::nullopt;
  const std::int64_t width = state->decoder.image_width;
  const std::int64_t height = state->decoder.image_height;
  if (width < 1 || height < 1 || width * height > kMaxPixels) return std::nullopt;
  return JpegReader(std::move(state));
}

int JpegReader::Width() const noexcept { return static_cast<int>(state_->decoder.image_width); }

int JpegReader::Height() const noexcept { return static_cast<int>(state_->decoder.image_height); }

bool JpegReader::ReadRows(const std::function<void(std::span<const std::uint8_t>)>& row) {
  State& state = *state_;
  if (!state.Guarded(&State::Start)) return false;
  const auto width = static_cast<std::size_t>(Width());
  state.row.resize(kRowOffset + width * 3);
  const std::span<std::uint8_t> rgb = std::span(state.row).subspan(kRowOffset);
  if (state.decoder.out_color_space == JCS_CMYK) state.cmyk.resize(width * 4);
  while (state.decoder.output_scanline < state.decoder.output_height) {
    if (!state.Guarded(&State::ReadRow)) return false;
    if (!state.cmyk.empty()) {
      ConvertCMYK(state.cmyk, state.decoder.saw_Adobe_marker != FALSE, rgb);
    }
    row(rgb);
  }
  return true;
}

}  // namespace Sorvik::imaging
