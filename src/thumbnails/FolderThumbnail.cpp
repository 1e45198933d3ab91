// SPDX-License-Identifier: MIT
#include <array>
#include <string>

#include "SorvikProvider/foundation/Environment.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/imaging/IconSource.h"
#include "foundation/imaging/StaticImages.h"
#include "thumbnails/IconDrawing.h"
#include "thumbnails/OwnedBitplate.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {
namespace {

namespace PathUtils = Hestra::PathUtils;

imaging::ThemeIconSource SystemIcons() {
  return imaging::ThemeIconSource(imaging::IconTheme::System());
}

UTF16String NamedIconSuffix(int height) {
  if (height < 32) return u"_Sm_N_D.png";
  return height < 48 ? u"_Xl_N_D.png" : u"_48x48_N_D.png";
}

}  // namespace

Bitplate** GetFolderThumbnail(int width, int height) {
  return DrawFolderIcon(SystemIcons(), width, height);
}

Bitplate** GetFolderThumbnail(const std::string& directory, const std::string& file, int width,
                              int height) {
  UTF16String path;
  if (PathUtils::IsLongFormFolderPath(directory)) {
    path = PathUtils::AddTrailingSlash(Hestra::MakeString(directory)) + Hestra::MakeString(file);
  }
  path = PathUtils::Win::StripUNC(PathUtils::ToNormalizedPath(path));
  return DrawIconOfPath(SystemIcons(), path, width, height);
}

Bitplate** GetIconThumbnail(const UTF16String& path, int side) {
  return DrawIconOfPath(SystemIcons(), path, side, side);
}

Bitplate** RenderNamedIcon(const UTF16String& name, int width, int height) {
  const UTF16String path =
      PathUtils::AddTrailingSlash(tarnwick::filesupport::commondirs::ResourcesDir()) + u"PNG" +
      PathUtils::GetPathSeparator() + name + NamedIconSuffix(height);
  return PathUtils::ExistsOnDisk(path) ? RenderThumbnail(path, width, height) : nullptr;
}

Bitplate** RenderTemplatePicture(std::string_view fileName, int width, int height) {
  const UTF16String path =
      Hestra::DirectoryRegistry::FindDirectory("document.templates") + Hestra::MakeString(fileName);
  return PathUtils::ExistsOnDisk(path) ? RenderThumbnailIntoNew(path, width, height) : nullptr;
}

Bitplate** RenderBuiltInPicture(int number, int width, int height) {
  constexpr int kBytesPerPixel = 4;
  constexpr int kBestQuality = 4;
  const auto frame = Fenwold::StaticImageFactory::LoadImageW(
      number, width, height, Garrowby::kPixelFormat_BGRA_4444_8u, kBestQuality);
  const OwnedBitplate source(Ilkmoor::NewBitplateFromIlkmoorFrame(frame));
  if (!source) return nullptr;
  OwnedBitplate copy = NewBitplate(bitplateGetWidth(source.get()), bitplateGetHeight(source.get()));
  if (!copy) return nullptr;
  bitplateLockPixels(source.get());
  bitplateLockPixels(copy.get());
  // Copy from the last row upwards: the rows of the copy are bottom-up.
  const int sourceRowBytes = bitplateGetRowbytes(source.get());
  const int lastRow = bitplateGetHeight(source.get()) - 1;
  IR_Convert(bitplateGetPixels(source.get()) + std::ptrdiff_t{lastRow} * sourceRowBytes,
             -sourceRowBytes, kBytesPerPixel, bitplateGetPixels(copy.get()),
             bitplateGetRowbytes(copy.get()), kBytesPerPixel, bitplateGetWidth(copy.get()),
             bitplateGetHeight(copy.get()), kBytesPerPixel);
  bitplateUnlockPixels(copy.get());
  bitplateUnlockPixels(source.get());
  bitplateSetRowOrder(copy.get(), BitplateRowOrder::kBottomUp);
  return copy.release();
}

}  // namespace Sorvik
