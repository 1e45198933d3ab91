// SPDX-License-Identifier: MIT
// A provider understands one kind of place in the browse tree: the machine's volumes, a plain
// directory, or one camera structure. It keeps nothing between calls; one object serves all threads
// and all folders at once.
#pragma once

#include <string>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

class ProviderRequest;

// All operations may be called on any thread. Providers report no failures: what can't be read
// gives an empty map, a left-out entry or field, a lower score or a null thumbnail.
class SORVIK_EXPORT Provider {
 public:
  // A size in bytes. It has no display form here: the host formats sizes.
  struct SORVIK_EXPORT ByteSize_t {
    ByteSize_t() noexcept = default;
    explicit ByteSize_t(unsigned long long bytes) noexcept : value(bytes) {}
    ByteSize_t(const ByteSize_t&) noexcept = default;
    ByteSize_t& operator=(const ByteSize_t&) noexcept = default;
    virtual ~ByteSize_t();
    friend bool operator==(const ByteSize_t& a, const ByteSize_t& b) noexcept {
      return a.value == b.value;
    }

    unsigned long long value = 0;
  };

  virtual ~Provider();

  // One entry: a map that holds just `key`, or an empty map if the structure at `path` has no such
  // entry. Can't be aborted. Fills ExtraPath also where the listing doesn't.
  virtual ContentMap GetContent(const std::string& path, const std::string& key,
                                const FieldNameSet& fields) const = 0;
  // All entries of `path` with `fields`. A field that wasn't asked for doesn't appear, save where a
  // provider says so. `request` may be null; an aborted listing's result is discarded.
  virtual ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                                ProviderRequest* request) const = 0;

  // Hooks for a host: true, false with `command` untouched, and false.
  virtual bool GetHasPossibleDirectoryContent(const std::string& path) const;
  virtual bool DoesPathSupportOpenCommand(const std::string& path, std::string& command) const;
  virtual bool ProcessOpenCommand(const std::string& path) const;

  // Every field that this provider can fill.
  virtual FieldNameSet GetFieldList() const = 0;
  // The fields of a column view, in order.
  virtual FieldNameList GetDefaultFieldList() const = 0;
  // Field name to label, an unresolved key with its default text: "$$$/path=Name".
  virtual FieldLabelMap GetFieldLabelList() const = 0;

  // How well the provider understands `path`: 0 or less not at all, 30 a plain directory, 40 a
  // structure with a reservation, 100 its own root in good order. Never throws for bad paths.
  virtual int CanProvideFor(const std::string& path) const = 0;

  // A constant id, "com.halvane.Merisk." and the class name.
  virtual std::string GetIdentification() const = 0;
  // The display name in the user's language.
  virtual std::string GetUIString() const = 0;

  // The height in pixels that the provider can deliver where the host would like `height`.
  virtual int GetMaximumThumbnailHeight(int height) const = 0;
  // A picture of the entry within `width` by `height` pixels, owned by the caller
  // (bitplateDispose); null if there is none.
  virtual Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width,
                                  int height, ProviderRequest* request) const = 0;

  // True if the host should apply its own file-type filter to the entries.
  virtual bool ShouldCheckFilter() const = 0;
  virtual bool IsFileBased() const = 0;
};

}  // namespace Sorvik

namespace halvane {
inline namespace version_1 {

template <>
struct SORVIK_EXPORT TypeRecordOf<Sorvik::Provider::ByteSize_t> {
  static const TypeRecord& Get() noexcept;
};

}  // namespace version_1
}  // namespace halvane
