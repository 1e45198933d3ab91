// SPDX-License-Identifier: MIT
// Thumbnails of large photographs and of the small icons of cards.
//
//   cmake --preset release -DSORVIK_BUILD_BENCH=ON && ninja -C build/release ThumbnailBench
//   build/release/ThumbnailBench --benchmark_repetitions=5
//
// The photograph is generated: noise over gradients, so that its size matches that of a camera
// file. BM_Photograph checks once that its pixels equal those of a full decode and the box filter.
// It is compared with the image library: a full decode, and an inexact one that scales in the JPEG
// decoder. BM_Thumbnailer runs that library's thumbnailer as a process, and BM_OwnProcess does the
// same with this library.
#include <benchmark/benchmark.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "Picture.h"
#include "SorvikProvider/foundation/Bitplate.h"
#include "foundation/imaging/BoxFilter.h"
#include "foundation/imaging/ImageDecoder.h"
#include "support/TempTree.h"
#include "thumbnails/PictureFit.h"
#include "thumbnails/Rendering.h"

namespace {

using sorvik_test::TempTree;

constexpr int kPhotoWidth = 4000;
constexpr int kPhotoHeight = 3000;
constexpr int kSide = 256;

std::string MakePhotograph(const TempTree& tree, const char* name) {
  GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, kPhotoWidth, kPhotoHeight);
  std::minstd_rand random(1);
  guchar* pixels = gdk_pixbuf_get_pixels(pixbuf);
  const int rowBytes = gdk_pixbuf_get_rowstride(pixbuf);
  for (int y = 0; y < kPhotoHeight; ++y) {
    for (int x = 0; x < kPhotoWidth; ++x) {
      const int noise = static_cast<int>(random() % 24);
      guchar* pixel = pixels + y * rowBytes + x * 3;
      pixel[0] = static_cast<guchar>(x * 230 / kPhotoWidth + noise);
      pixel[1] = static_cast<guchar>(y * 230 / kPhotoHeight + noise);
      pixel[2] = static_cast<guchar>((x ^ y) % 200 + noise);
    }
  }
  const std::string path = tree.Path(name);
  gdk_pixbuf_save(pixbuf, path.c_str(), "jpeg", nullptr, "quality", "85", nullptr);
  g_object_unref(pixbuf);
  return path;
}

const std::string& Photograph() {
  static const TempTree tree;
  static const std::string path = MakePhotograph(tree, "photo.jpg");
  return path;
}

// Renders the cell by a full decode.
std::vector<unsigned char> FullDecode(const std::string& path) {
  using namespace Sorvik;
  const auto source = imaging::ImageSource::OpenFile(path);
  const auto image = imaging::DecodeImage(*source);
  std::vector<unsigned char> cell(kSide * kSide * 4);
  imaging::BoxFilter filter(image->Width(), image->Height(), imaging::kRGB,
                            {cell.data(), kSide * 4, kSide, kSide},
                            FitPicture(image->Width(), image->Height(), kSide, kSide));
  for (int y = 0; y < image->Height(); ++y) filter.AddRow(image->Row(y));
  return cell;
}

std::vector<unsigned char> Render(const Sorvik::UTF16String& path) {
  std::vector<unsigned char> cell(kSide * kSide * 4);
  if (!Sorvik::RenderThumbnail(path, kSide, kSide, kSide * 4, cell.data())) cell.clear();
  return cell;
}

void BM_Photograph(benchmark::State& state) {
  const auto path = Hestra::MakeString(Photograph());
  if (Render(path) != FullDecode(Photograph())) state.SkipWithError("not the exact box filter");
  for (auto _ : state) benchmark::DoNotOptimize(Render(path));
}
BENCHMARK(BM_Photograph)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PhotographFullDecode(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(FullDecode(Photograph()));
}
BENCHMARK(BM_PhotographFullDecode)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PhotographShrinkOnLoad(benchmark::State& state) {
  for (auto _ : state) {
    g_object_unref(gdk_pixbuf_new_from_file_at_size(Photograph().c_str(), kSide, kSide, nullptr));
  }
}
BENCHMARK(BM_PhotographShrinkOnLoad)->Unit(benchmark::kMillisecond)->UseRealTime();

// Runs `arguments` as a program; returns false if it fails.
bool Run(std::vector<std::string> arguments) {
  std::vector<char*> list;
  for (std::string& argument : arguments) list.push_back(argument.data());
  list.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    execvp(list[0], list.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void BM_Thumbnailer(benchmark::State& state) {
  const TempTree tree;
  for (auto _ : state) {
    if (!Run({"gdk-pixbuf-thumbnailer", "-s", std::to_string(kSide), Photograph(),
              tree.Path("out.png")})) {
      state.SkipWithError("gdk-pixbuf-thumbnailer didn't run");
      break;
    }
  }
}
BENCHMARK(BM_Thumbnailer)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OwnProcess(benchmark::State& state) {
  const TempTree tree;
  for (auto _ : state) {
    if (!Run({"/proc/self/exe", "--thumbnail", Photograph(), tree.Path("out.png")})) {
      state.SkipWithError("the child failed");
      break;
    }
  }
}
BENCHMARK(BM_OwnProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

// A card of 500 clips: 80 by 60 pixels, 24 bits.
void BM_CardIcons(benchmark::State& state) {
  constexpr int kIcons = 500;
  const TempTree tree;
  GdkPixbuf* pixbuf = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, 80, 60);
  gdk_pixbuf_fill(pixbuf, 0x336699FF);
  std::vector<Sorvik::UTF16String> paths;
  for (int i = 0; i < kIcons; ++i) {
    const std::string path = tree.Path(std::to_string(i) + ".BMP");
    gdk_pixbuf_save(pixbuf, path.c_str(), "bmp", nullptr, nullptr);
    paths.push_back(Hestra::MakeString(path));
  }
  g_object_unref(pixbuf);
  std::vector<unsigned char> cell(80 * 60 * 4);
  for (auto _ : state) {
    for (const auto& path : paths) {
      if (!Sorvik::RenderThumbnail(path, 80, 60, 80 * 4, cell.data())) {
        state.SkipWithError("an icon can't be drawn");
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * kIcons);
}
BENCHMARK(BM_CardIcons)->Unit(benchmark::kMillisecond);

// The child process of BM_OwnProcess: writes one thumbnail like `sorvik thumb`.
int WriteThumbnail(const char* path, const char* out) {
  const host::Picture picture = host::PictureFromBitplate(
      Sorvik::RenderThumbnailIntoNew(Hestra::MakeString(std::string(path)), kSide, kSide));
  if (picture.Empty()) return 1;
  std::ofstream file(out, std::ios::binary);
  file << host::EncodePng(picture);
  return file.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--thumbnail") return WriteThumbnail(argv[2], argv[3]);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
