// SPDX-License-Identifier: MIT
// A provider lists one kind of folder in the browse tree: the list of volumes, a plain directory,
// or one camera structure. It is stateless; one object serves all threads and folders.
#pragma once

#include <string>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

class ProviderRequest;

// All operations may be called on any thread. Providers report no errors: if something can't be
// read, the result is an empty map, a missing entry or field, a lower score or a null thumbnail.
class SORVIK_EXPORT Provider {
 public:
  // A size in bytes, which the host formats.
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

  // Returns a map with only the entry `key`, or an empty map if the structure at `path` has no such
  // entry. Can't be aborted. Some providers fill ExtraPath only here and not in the listing.
  virtual ContentMap GetContent(const std::string& path, const std::string& key,
                                const FieldNameSet& fields) const = 0;
  // Returns all entries of `path` with `fields`. Fields that weren't requested don't appear, unless
  // a provider documents it. `request` may be null; the result of an aborted listing is discarded.
  virtual ContentMap GetContent(const std::string& path, const FieldNameSet& fields,
                                ProviderRequest* request) const = 0;

  // Hooks for a host. By default they return true, false (`command` is unchanged) and false.
  virtual bool GetHasPossibleDirectoryContent(const std::string& path) const;
  virtual bool DoesPathSupportOpenCommand(const std::string& path, std::string& command) const;
  virtual bool ProcessOpenCommand(const std::string& path) const;

  // All fields that this provider can fill.
  virtual FieldNameSet GetFieldList() const = 0;
  // The fields of a column view, in order.
  virtual FieldNameList GetDefaultFieldList() const = 0;
  // Maps field names to labels. A label is a localization key with default text: "$$$/path=Name".
  virtual FieldLabelMap GetFieldLabelList() const = 0;

  // Scores how well the provider fits `path`: 0 or less if it doesn't, 30 for a plain directory, 40
  // for a structure with irregularities, 100 for the root of a clean one. Never throws for bad
  // paths.
  virtual int CanProvideFor(const std::string& path) const = 0;

  // A constant id, "com.halvane.Merisk." and the class name.
  virtual std::string GetIdentification() const = 0;
  // The display name in the user's language.
  virtual std::string GetUIString() const = 0;

  // The maximum thumbnail height in pixels that the provider delivers if the host wants `height`.
  virtual int GetMaximumThumbnailHeight(int height) const = 0;
  // Returns a picture of the entry that fits `width` by `height` pixels. The caller owns it
  // (bitplateDispose). Returns nullptr if there is none.
  virtual Bitplate** GetThumbnail(const std::string& path, const std::string& key, int width,
                                  int height, ProviderRequest* request) const = 0;

  // True if the host should apply its own file-type filter to the entries.
  virtual bool ShouldCheckFilter() const = 0;
  // True if the entries are files or folders on disk.
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
