// SPDX-License-Identifier: MIT
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/imaging/IconSource.h"
#include "foundation/imaging/IconTheme.h"
#include "foundation/imaging/ImageDecoder.h"
#include "support/ImageFiles.h"
#include "support/TempTree.h"
#include "thumbnails/IconDrawing.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/Rendering.h"

namespace sorvik_test {
namespace {

using Sorvik::OwnedBitplate;
using Sorvik::imaging::Icon;
using Sorvik::imaging::IconContext;
using Sorvik::imaging::IconTheme;
using Sorvik::imaging::ThemeIconSource;

constexpr const char* kIndex =
    "[Icon Theme]\n"
    "Name=Test\n"
    "Directories=16/mimetypes,32/mimetypes,512/mimetypes,32@2/mimetypes,32/places,32/actions\n"
    "[16/mimetypes]\nContext=MimeTypes\nSize=16\n"
    "[32/mimetypes]\nContext=MimeTypes\nSize=32\nScale=1\n"
    "[512/mimetypes]\nContext=MimeTypes\nSize=512\n"
    "[32@2/mimetypes]\nContext=MimeTypes\nSize=32\nScale=2\n"
    "[32/places]\nContext=Places\nSize=32\n"
    "[32/actions]\nContext=Actions\nSize=32\n";

// A picture with a transparent pixel, like an icon.
std::string IconPng(const Pixel& pixel, int side) {
  Drawing drawing = Plain(side, side, pixel);
  drawing.pixels.back() = kClear;
  return Saved(drawing, "png", true);
}

// Sets the library's resources folder for the duration of a test.
class ScopedResources {
 public:
  explicit ScopedResources(const std::string& folder)
      : before_(tarnwick::filesupport::commondirs::ResourcesDir()) {
    tarnwick::filesupport::commondirs::SetResourcesDir(Hestra::MakeString(folder));
  }
  ~ScopedResources() { tarnwick::filesupport::commondirs::SetResourcesDir(before_); }
  ScopedResources(const ScopedResources&) = delete;
  ScopedResources& operator=(const ScopedResources&) = delete;

 private:
  Hestra::UTF16String before_;
};

TEST(IconThemes, ChoosesExactThenNextLargerThenLargestSize) {
  const TempTree tree;
  tree.File("data/icons/Adwaita/index.theme", kIndex);
  const IconTheme theme({tree.Path("none"), tree.Path("data")});
  const auto find = [&](std::vector<std::string> names, int size,
                        IconContext context = IconContext::kMimeTypes) {
    const auto file = theme.Find(names, context, size);
    return file ? file->path.substr(tree.Path("data/icons/").size()) : std::string("nothing");
  };
  EXPECT_EQ(find({"video-x-generic"}, 16), "nothing");
  tree.File("data/icons/Adwaita/32@2/mimetypes/video-x-generic.png");
  tree.File("data/icons/Adwaita/32/actions/video-x-generic.png");
  EXPECT_EQ(find({"video-x-generic"}, 32), "nothing") << "other scales and contexts are ignored";
  tree.File("data/icons/Adwaita/16/mimetypes/video-x-generic.png");
  tree.File("data/icons/Adwaita/512/mimetypes/video-x-generic.png");
  EXPECT_EQ(find({"video-x-generic"}, 16), "Adwaita/16/mimetypes/video-x-generic.png");
  EXPECT_EQ(find({"video-x-generic"}, 32), "Adwaita/512/mimetypes/video-x-generic.png");
  EXPECT_EQ(find({"video-x-generic"}, 600), "Adwaita/512/mimetypes/video-x-generic.png");
  tree.File("data/icons/Adwaita/32/mimetypes/video-x-generic.svg");
  EXPECT_EQ(find({"video-x-generic"}, 32), "Adwaita/32/mimetypes/video-x-generic.svg");
  tree.File("data/icons/Adwaita/32/mimetypes/video-x-generic.png");
  EXPECT_EQ(find({"video-mp4", "video-x-generic"}, 32), "Adwaita/32/mimetypes/video-x-generic.png");
  EXPECT_EQ(find({"video-x-generic"}, 32, IconContext::kPlaces), "nothing");
  EXPECT_EQ(find({"../mimetypes/video-x-generic", "video-x-generic-symbolic", ""}, 32), "nothing");
}

TEST(IconThemes, FallsBackToHicolorAndSurvivesInvalidIndexes) {
  const TempTree tree;
  tree.File("icons/Adwaita/index.theme", "\xFF\xFE no key file");
  tree.File("icons/hicolor/index.theme", kIndex);
  const std::string file = tree.File("icons/hicolor/32/places/folder.png");
  // GLib logs a wrong use as critical, which ends the program here.
  const GLogLevelFlags fatal = g_log_set_always_fatal(G_LOG_LEVEL_CRITICAL);
  const IconTheme theme({tree.Root()});
  g_log_set_always_fatal(fatal);
  EXPECT_EQ(theme.Find({"folder"}, IconContext::kPlaces, 16)->path, file);
  EXPECT_FALSE(IconTheme({tree.Path("icons")}).Find({"folder"}, IconContext::kPlaces, 16));
}

TEST(IconSources, FallsBackToBuiltInDrawings) {
  const TempTree tree;
  const ScopedResources resources(tree.Path("own"));
  tree.File("icons/Adwaita/index.theme", kIndex);
  tree.File("icons/Adwaita/32/mimetypes/video-x-generic.png", IconPng(kRed, 32));
  tree.File("own/icons/16/application-x-generic.png", IconPng(kGreen, 16));
  tree.File("own/icons/32/application-x-generic.png", IconPng(kBlue, 32));
  tree.File("own/icons/48/folder.png", IconPng(kYellow, 48));
  const IconTheme theme({tree.Root()});
  const ThemeIconSource source(theme);
  const auto colour = [](const std::optional<Icon>& icon) {
    if (!icon) return kClear;
    return Pixel{icon->pixels[2], icon->pixels[1], icon->pixels[0], icon->pixels[3]};
  };
  EXPECT_EQ(colour(source.OfFile("A001.MXF", 32)), kRed);
  EXPECT_EQ(colour(source.OfFile("clip.mp4", 16)), kRed) << "the larger one, scaled down";
  EXPECT_EQ(colour(source.OfFile("unknown.\xE9xt", 16)), kGreen);
  EXPECT_EQ(colour(source.OfFile("", 32)), kBlue);
  EXPECT_EQ(colour(source.OfFolder(200)), kYellow);
  EXPECT_FALSE(source.OfFolder(16));
  // A damaged theme icon is ignored.
  tree.File("icons/Adwaita/32/mimetypes/video-x-generic.png", "no picture");
  EXPECT_EQ(colour(source.OfFile("A001.MXF", 32)), kBlue);
}

bool HasSvgDecoder() {
  bool found = false;
  GSList* formats = gdk_pixbuf_get_formats();
  for (const GSList* item = formats; item != nullptr; item = item->next) {
    gchar* name = gdk_pixbuf_format_get_name(static_cast<GdkPixbufFormat*>(item->data));
    found = found || std::string_view(name) == "svg";
    g_free(name);
  }
  g_slist_free(formats);
  return found;
}

TEST(IconSources, DrawsSvgIconsIfADecoderIsInstalled) {
  const TempTree tree;
  tree.File("icons/Adwaita/index.theme", kIndex);
  tree.File("icons/Adwaita/32/places/folder.svg",
            "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='8'>"
            "<circle cx='4' cy='4' r='4' fill='#00f'/></svg>");
  const IconTheme theme({tree.Root()});
  const auto icon = ThemeIconSource(theme).OfFolder(32);
  if (!HasSvgDecoder()) GTEST_SKIP() << "no SVG decoder installed";
  ASSERT_TRUE(icon);
  EXPECT_EQ(icon->width, 32);
  EXPECT_EQ(icon->pixels[(16 * 32 + 16) * 4], 255);
  tree.File("icons/Adwaita/32/places/folder.svg");
  EXPECT_FALSE(Sorvik::imaging::DecodeSvgIcon(
      *Sorvik::imaging::ImageSource::OpenFile(tree.Path("icons/Adwaita/32/places/folder.svg")),
      32));
}

// Returns one icon and records the requests.
class FakeSource final : public Sorvik::imaging::IconSource {
 public:
  std::optional<Icon> OfFile(std::string_view fileName, int side) const override {
    asked = "file " + std::string(fileName) + " " + std::to_string(side);
    return icon;
  }
  std::optional<Icon> OfFolder(int side) const override {
    asked = "folder " + std::to_string(side);
    return icon;
  }
  std::optional<Icon> icon = Icon{1, 1, {10, 20, 30, 255}, 0, 0, {}};
  mutable std::string asked;
};

TEST(Icons, SmallSizeOnlyIfStrictlyNearer) {
  EXPECT_EQ(Sorvik::IconSideFor(16, 16), 16);
  EXPECT_EQ(Sorvik::IconSideFor(23, 23), 16);
  EXPECT_EQ(Sorvik::IconSideFor(24, 24), 32);
  EXPECT_EQ(Sorvik::IconSideFor(16, 32), 32);
  EXPECT_EQ(Sorvik::IconSideFor(0, -5), 16);
  EXPECT_EQ(Sorvik::IconSideFor(INT32_MIN, INT32_MAX), 512) << "no overflow";
  EXPECT_EQ(Sorvik::IconSideFor(60, 45), 48);
  EXPECT_EQ(Sorvik::IconSideFor(200, 100), 200);
}

TEST(Icons, DependOnKindAndNameEvenOfMissingFiles) {
  const TempTree tree;
  const FakeSource source;
  tree.Folder("clip.mxf");
  const auto draw = [&](const std::string& path) {
    const OwnedBitplate plate(Sorvik::DrawIconOfPath(source, Hestra::MakeString(path), 20, 20));
    return plate ? source.asked : "nothing";
  };
  EXPECT_EQ(draw(tree.Path("clip.mxf")), "folder 16");
  EXPECT_EQ(draw(tree.File("existing.mov")), "file existing.mov 16");
  EXPECT_EQ(draw(tree.Path("missing.mov")), "file missing.mov 16");
  EXPECT_EQ(draw(""), "file  16");
}

TEST(Icons, WithAlphaFillTheCell) {
  const FakeSource source;
  const OwnedBitplate plate(Sorvik::DrawFolderIcon(source, 40, 17));
  ASSERT_TRUE(plate);
  EXPECT_EQ(bitplateGetRowOrder(plate.get()), BitplateRowOrder::kTopDown);
  EXPECT_EQ(Upright(plate.get()).pixels, Plain(40, 17, {30, 20, 10}).pixels);
  EXPECT_EQ(Sorvik::DrawFolderIcon(source, 0, 17), nullptr);
  EXPECT_EQ(Sorvik::DrawFolderIcon(source, 17, -1), nullptr);
  EXPECT_EQ(Sorvik::DrawFolderIcon(source, 20000, 17), nullptr);
}

TEST(Icons, WithoutAlphaUseTheirMask) {
  FakeSource source;
  // Two pixels without alpha, the second one masked. Only its blue is cleared.
  source.icon = Icon{2, 1, {10, 20, 30, 0, 40, 50, 60, 0}, 2, 2, {0, 0x000000FF, 0, 0}};
  const OwnedBitplate plate(Sorvik::DrawFolderIcon(source, 2, 1));
  ASSERT_TRUE(plate);
  EXPECT_EQ(PixelOf(plate.get(), 0, 0), (Pixel{30, 20, 10, 255}));
  EXPECT_EQ(PixelOf(plate.get(), 1, 0), (Pixel{60, 50, 0, 0}));
  // Only the first byte of a mask word counts.
  source.icon->mask = {0xFFFFFF00, 0, 0, 0};
  const OwnedBitplate second(Sorvik::DrawFolderIcon(source, 2, 1));
  ASSERT_TRUE(second);
  EXPECT_EQ(PixelOf(second.get(), 0, 0).alpha, 255);
  EXPECT_EQ(Sorvik::DrawFolderIcon(source, 2, 3), nullptr) << "the mask has fewer rows";
  source.icon->maskHeight = 0;
  EXPECT_EQ(Sorvik::DrawFolderIcon(source, 2, 1), nullptr);
}

TEST(Icons, SystemProvidesFolderAndFileIcons) {
  const TempTree tree;
  for (const int side : {1, 16, 24, 32, 60, 300}) {
    const OwnedBitplate folder(Sorvik::GetFolderThumbnail(side, side));
    const OwnedBitplate file(Sorvik::GetFolderThumbnail(tree.Root(), "a.mxf", side, side));
    const OwnedBitplate badFolder(Sorvik::GetFolderThumbnail("relative/", "a.mxf", side, side));
    const OwnedBitplate single(Sorvik::GetIconThumbnail(Hestra::MakeString(tree.Root()), side));
    ASSERT_TRUE(folder && file && badFolder && single) << side;
    EXPECT_EQ(Upright(folder.get()).pixels, Upright(single.get()).pixels);
    if (side > 1) {
      EXPECT_NE(Upright(folder.get()).pixels, Upright(file.get()).pixels);
    }
  }
}

TEST(FixedPictures, NamedIconsDependOnTheHeight) {
  const TempTree tree;
  const ScopedResources resources(tree.Root());
  tree.File("PNG/Clip_Sm_N_D.png", Saved(Plain(4, 4, kRed), "png"));
  tree.File("PNG/Clip_Xl_N_D.png", Saved(Plain(4, 4, kGreen), "png"));
  tree.File("PNG/Clip_48x48_N_D.png", Saved(Plain(4, 4, kBlue), "png"));
  for (const auto& [height, colour] :
       {std::pair{31, kRed}, {32, kGreen}, {47, kGreen}, {48, kBlue}}) {
    const OwnedBitplate plate(Sorvik::RenderNamedIcon(u"Clip", 4, height));
    ASSERT_TRUE(plate) << height;
    EXPECT_EQ(PixelOf(plate.get(), 2, height - 1), colour) << height;
  }
  EXPECT_EQ(Sorvik::RenderNamedIcon(u"Other", 16, 16), nullptr);
}

TEST(FixedPictures, TemplatesAndBuiltInPicturesAreUpright) {
  const TempTree tree;
  const ScopedResources resources(tree.Root());
  EXPECT_EQ(Sorvik::RenderTemplatePicture("Clip.png", 2, 3), nullptr);
  EXPECT_EQ(Sorvik::RenderBuiltInPicture(Sorvik::kAVCHDPictureNumber, 4, 4), nullptr);
  tree.File("templates/Clip.png", Saved(SixColours(), "png"));
  const OwnedBitplate picture(Sorvik::RenderTemplatePicture("Clip.png", 2, 3));
  ASSERT_TRUE(picture);
  EXPECT_EQ(Upright(picture.get()).pixels, SixColours().pixels);

  Drawing drawing = Plain(4, 4, kRed);
  for (std::size_t i = 0; i < 8; ++i) drawing.pixels[i] = kBlue;
  tree.File("pictures/10000-16.png", Saved(drawing, "png", true));
  const OwnedBitplate builtIn(Sorvik::RenderBuiltInPicture(Sorvik::kAVCHDPictureNumber, 4, 6));
  ASSERT_TRUE(builtIn);
  EXPECT_EQ(bitplateGetRowOrder(builtIn.get()), BitplateRowOrder::kBottomUp);
  EXPECT_EQ(PixelOf(builtIn.get(), 0, 0), kClear) << "centred in a cell that is not square";
  EXPECT_EQ(PixelOf(builtIn.get(), 0, 1), kBlue);
  EXPECT_EQ(PixelOf(builtIn.get(), 3, 4), kRed);
  EXPECT_EQ(Sorvik::RenderBuiltInPicture(Sorvik::kAVCHDPictureNumber, 0, 6), nullptr);
}

}  // namespace
}  // namespace sorvik_test
