// SPDX-License-Identifier: MIT
// The operations of the C interface: checks the arguments, then starts or runs the request.
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/c/sorvik.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "c/Operations.h"
#include "foundation/Paths.h"

namespace Sorvik::c {
namespace {

constexpr int kMaxPictureSide = 16384;  // of a Bitplate

Outcome Invalid(std::string text, std::string path = {}) {
  return {SORVIK_INVALID_ARGUMENT, std::move(path), std::move(text)};
}

bool IsBrowseRoot(std::string_view path) {
  return path.starts_with(kVolumeListPath) || path.starts_with(kSDKNetworkVolumeListPath) ||
         path.starts_with(kSDKEAServerListPath);
}

// Copies a path argument.
Outcome TakePath(const char* argument, std::string& path) {
  if (argument == nullptr) return Invalid("path must not be NULL");
  path = argument;
  if (IsBrowseRoot(path)) return {};
  if (!foundation::IsValidPath(path)) {
    return Invalid(path.empty()          ? "path must not be empty"
                   : path.front() != '/' ? "path must be absolute"
                                         : "path is too long",
                   path);
  }
  path = foundation::NormalizedPath(path);
  return {};
}

// Copies the arguments that identify a place.
Outcome TakePlace(const char* path, const char* provider, Place& place) {
  Outcome outcome = TakePath(path, place.path);
  if (!outcome.Ok()) return outcome;
  if (provider == nullptr || *provider == '\0') {
    return Invalid("provider must not be empty", place.path);
  }
  place.provider = provider;
  return {};
}

Outcome TakeKey(const char* argument, std::string& key) {
  if (argument == nullptr || *argument == '\0') return Invalid("key must not be empty");
  key = argument;
  return {};
}

Outcome TakeFields(const sorvik_fields* fields, FieldChoice& choice) {
  if (fields == nullptr) return {};
  choice.all = fields->count == SORVIK_ALL_FIELDS;
  choice.defaults = fields->with_defaults;
  if (choice.all) return {};
  for (std::size_t i = 0; i < fields->count; ++i) {
    if (fields->names == nullptr || fields->names[i] == nullptr) {
      return Invalid("names of fields must not be NULL");
    }
    choice.names.insert(fields->names[i]);
  }
  return {};
}

// Where the result of an operation goes: to a request, or to the caller that waits.
class Target {
 public:
  Target(const sorvik_receiver* receiver, sorvik_request** request)
      : receiver_(receiver), request_(request) {
    if (request != nullptr) *request = nullptr;
  }
  explicit Target(sorvik_event::Result& result) : result_(&result) {}

  Outcome Run(TaskRequest::Task task) const {
    if (result_ != nullptr) return RunAndWait(std::move(task), *result_);
    if (request_ == nullptr) return Invalid("request must not be NULL");
    return Start(std::move(task), receiver_, request_);
  }

 private:
  const sorvik_receiver* receiver_ = nullptr;
  sorvik_request** request_ = nullptr;
  sorvik_event::Result* result_ = nullptr;
};

Outcome Open(const char* path, const char* provider, sorvik_open_mode mode, const Target& target) {
  Place place;
  Outcome outcome = TakePath(path, place.path);
  if (!outcome.Ok()) return outcome;
  if (provider != nullptr) place.provider = provider;
  return target.Run([place, mode](TaskRequest& request) { return Open(request, place, mode); });
}

Outcome List(const char* path, const char* provider, const sorvik_fields* fields,
             const Target& target) {
  Place place;
  FieldChoice choice;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok()) outcome = TakeFields(fields, choice);
  if (!outcome.Ok()) return outcome;
  return target.Run([place, choice](TaskRequest& request) { return List(request, place, choice); });
}

Outcome ReadEntry(const char* path, const char* provider, const char* key,
                  const sorvik_fields* fields, const Target& target) {
  Place place;
  std::string entry;
  FieldChoice choice;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok()) outcome = TakeKey(key, entry);
  if (outcome.Ok()) outcome = TakeFields(fields, choice);
  if (!outcome.Ok()) return outcome;
  return target.Run([place, entry, choice](TaskRequest& request) {
    return ReadEntry(request, place, entry, choice);
  });
}

Outcome ListFiles(const char* path, const char* provider, const char* key, const Target& target) {
  Place place;
  std::string entry;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok() && key != nullptr) outcome = TakeKey(key, entry);
  if (!outcome.Ok()) return outcome;
  return target.Run(
      [place, entry](TaskRequest& request) { return ListFiles(request, place, entry); });
}

// An operation on one entry without further arguments.
using EntryOperation = Outcome(TaskRequest&, const Place&, const std::string&);

Outcome RunOnEntry(EntryOperation* operation, const char* path, const char* provider,
                   const char* key, const Target& target) {
  Place place;
  std::string entry;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok()) outcome = TakeKey(key, entry);
  if (!outcome.Ok()) return outcome;
  return target.Run(
      [operation, place, entry](TaskRequest& request) { return operation(request, place, entry); });
}

Outcome TakeJoinOptions(const sorvik_join_options* options, JoinOptions& wanted) {
  if (options == nullptr || options->format == nullptr) return Invalid("format must not be NULL");
  const auto format = JoinFormatNamed(options->format);
  if (!format) return Invalid("unknown format '" + std::string(options->format) + "'");
  wanted.format = *format;
  wanted.allowGaps = options->allow_gaps;
  return options->output == nullptr ? Outcome() : TakePath(options->output, wanted.output);
}

Outcome Join(const char* path, const char* provider, const char* key,
             const sorvik_join_options* options, const Target& target) {
  Place place;
  std::string entry;
  JoinOptions wanted;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok() && key != nullptr) outcome = TakeKey(key, entry);
  if (outcome.Ok()) outcome = TakeJoinOptions(options, wanted);
  if (!outcome.Ok()) return outcome;
  return target.Run(
      [place, entry, wanted](TaskRequest& request) { return Join(request, place, entry, wanted); });
}

Outcome Check(const char* path, const char* provider, sorvik_depth depth, const Target& target) {
  Place place;
  Outcome outcome = TakePlace(path, provider, place);
  if (!outcome.Ok()) return outcome;
  const CheckDepth wanted =
      depth == SORVIK_DEPTH_NAMES ? CheckDepth::kNames : CheckDepth::kStructure;
  return target.Run(
      [place, wanted](TaskRequest& request) { return Check(request, place, wanted); });
}

Outcome FindOwner(const char* path, const Target& target) {
  std::string file;
  Outcome outcome = TakePath(path, file);
  if (!outcome.Ok()) return outcome;
  return target.Run([file](TaskRequest& request) { return FindOwner(request, file); });
}

// Which picture of an entry is rendered.
using Render = Outcome(TaskRequest&, const Place&, const std::string&, int, int);

Outcome RenderWith(Render* render, const char* path, const char* provider, const char* key,
                   int width, int height, const Target& target) {
  Place place;
  std::string entry;
  Outcome outcome = TakePlace(path, provider, place);
  if (outcome.Ok()) outcome = TakeKey(key, entry);
  if (!outcome.Ok()) return outcome;
  if (width < 1 || height < 1 || width > kMaxPictureSide || height > kMaxPictureSide) {
    return Invalid("width and height must be 1 to 16384", place.path);
  }
  return target.Run([render, place, entry, width, height](TaskRequest& request) {
    return render(request, place, entry, width, height);
  });
}

// Runs `operation` with a target that waits, and gives the result of type T to the caller.
template <class T, class Operation>
sorvik_status Wait(T** output, const Operation& operation) {
  if (output != nullptr) *output = nullptr;
  return Guarded([&]() -> Outcome {
    if (output == nullptr) return Invalid("the output must not be NULL");
    sorvik_event::Result result;
    Outcome outcome = operation(Target(result));
    if (!outcome.Ok()) return outcome;
    auto* made = std::get_if<std::unique_ptr<T>>(&result);
    if (made == nullptr || *made == nullptr) return {SORVIK_FAILED, {}, "no result"};
    *output = made->release();
    return {};
  });
}

}  // namespace
}  // namespace Sorvik::c

using namespace Sorvik::c;

sorvik_status sorvik_write_catalogue(const char* const* paths, size_t count,
                                     sorvik_line_callback receive, sorvik_stop_callback stop,
                                     void* context) {
  return Guarded([&]() -> Outcome {
    if (receive == nullptr || (paths == nullptr && count != 0)) {
      return Invalid("paths and receive must not be NULL");
    }
    std::vector<std::string> folders(count);
    for (std::size_t i = 0; i < count; ++i) {
      Outcome outcome = TakePath(paths[i], folders[i]);
      if (!outcome.Ok()) return outcome;
    }
    return WhileInitialized([&] {
      return WriteCatalogueLines(
          folders,
          [&](std::string_view line) {
            const std::string terminated(line);
            return receive(TextOf(terminated), context);
          },
          [&] { return stop != nullptr && stop(context); });
    });
  });
}

const char* sorvik_version(void) { return SORVIK_LIBRARY_VERSION; }

sorvik_status sorvik_set_language(const char* tag) {
  return Guarded([tag]() -> Outcome {
    if (tag == nullptr) return Invalid("tag must not be NULL");
    tarnwick::config::Localizer::Get().SetLanguage(tag);
    return {};
  });
}

sorvik_status sorvik_open(const char* path, const char* provider, sorvik_open_mode mode,
                          sorvik_card** card) {
  return Wait(card, [&](const Target& target) { return Open(path, provider, mode, target); });
}

sorvik_status sorvik_list(const char* path, const char* provider, const sorvik_fields* fields,
                          sorvik_listing** listing) {
  return Wait(listing, [&](const Target& target) { return List(path, provider, fields, target); });
}

sorvik_status sorvik_read_entry(const char* path, const char* provider, const char* key,
                                const sorvik_fields* fields, sorvik_listing** listing) {
  return Wait(listing,
              [&](const Target& target) { return ReadEntry(path, provider, key, fields, target); });
}

sorvik_status sorvik_list_files(const char* path, const char* provider, const char* key,
                                sorvik_files** files) {
  return Wait(files, [&](const Target& target) { return ListFiles(path, provider, key, target); });
}

sorvik_status sorvik_read_sources(const char* path, const char* provider, const char* key,
                                  sorvik_sources** sources) {
  return Wait(sources, [&](const Target& target) {
    return RunOnEntry(ReadSources, path, provider, key, target);
  });
}

sorvik_status sorvik_list_parts(const char* path, const char* provider, const char* key,
                                sorvik_parts** parts) {
  return Wait(parts, [&](const Target& target) {
    return RunOnEntry(ListParts, path, provider, key, target);
  });
}

sorvik_status sorvik_join(const char* path, const char* provider, const char* key,
                          const sorvik_join_options* options, sorvik_join_lists** lists) {
  return Wait(lists,
              [&](const Target& target) { return Join(path, provider, key, options, target); });
}

sorvik_status sorvik_check(const char* path, const char* provider, sorvik_depth depth,
                           sorvik_report** report) {
  return Wait(report, [&](const Target& target) { return Check(path, provider, depth, target); });
}

sorvik_status sorvik_find_owner(const char* path, sorvik_listing** owner) {
  return Wait(owner, [&](const Target& target) { return FindOwner(path, target); });
}

sorvik_status sorvik_render_thumbnail(const char* path, const char* provider, const char* key,
                                      int width, int height, sorvik_picture** picture) {
  return Wait(picture, [&](const Target& target) {
    return RenderWith(RenderThumbnail, path, provider, key, width, height, target);
  });
}

sorvik_status sorvik_render_picture(const char* path, const char* provider, const char* key,
                                    int width, int height, sorvik_picture** picture) {
  return Wait(picture, [&](const Target& target) {
    return RenderWith(RenderPicture, path, provider, key, width, height, target);
  });
}

sorvik_status sorvik_start_open(const char* path, const char* provider, sorvik_open_mode mode,
                                const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return Open(path, provider, mode, target); });
}

sorvik_status sorvik_start_list(const char* path, const char* provider, const sorvik_fields* fields,
                                const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return List(path, provider, fields, target); });
}

sorvik_status sorvik_start_read_entry(const char* path, const char* provider, const char* key,
                                      const sorvik_fields* fields, const sorvik_receiver* receiver,
                                      sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return ReadEntry(path, provider, key, fields, target); });
}

sorvik_status sorvik_start_list_files(const char* path, const char* provider, const char* key,
                                      const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return ListFiles(path, provider, key, target); });
}

sorvik_status sorvik_start_read_sources(const char* path, const char* provider, const char* key,
                                        const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return RunOnEntry(ReadSources, path, provider, key, target); });
}

sorvik_status sorvik_start_list_parts(const char* path, const char* provider, const char* key,
                                      const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return RunOnEntry(ListParts, path, provider, key, target); });
}

sorvik_status sorvik_start_join(const char* path, const char* provider, const char* key,
                                const sorvik_join_options* options, const sorvik_receiver* receiver,
                                sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return Join(path, provider, key, options, target); });
}

sorvik_status sorvik_start_check(const char* path, const char* provider, sorvik_depth depth,
                                 const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return Check(path, provider, depth, target); });
}

sorvik_status sorvik_start_find_owner(const char* path, const sorvik_receiver* receiver,
                                      sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&] { return FindOwner(path, target); });
}

sorvik_status sorvik_start_render_thumbnail(const char* path, const char* provider, const char* key,
                                            int width, int height, const sorvik_receiver* receiver,
                                            sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded(
      [&] { return RenderWith(RenderThumbnail, path, provider, key, width, height, target); });
}

sorvik_status sorvik_start_render_picture(const char* path, const char* provider, const char* key,
                                          int width, int height, const sorvik_receiver* receiver,
                                          sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded(
      [&] { return RenderWith(RenderPicture, path, provider, key, width, height, target); });
}

sorvik_status sorvik_start_scan(const char* path, unsigned flags, const sorvik_fields* fields,
                                const sorvik_receiver* receiver, sorvik_request** request) {
  const Target target(receiver, request);
  return Guarded([&]() -> Outcome {
    std::string folder;
    FieldChoice choice;
    Outcome outcome = TakePath(path, folder);
    if (outcome.Ok()) outcome = TakeFields(fields, choice);
    if (!outcome.Ok()) return outcome;
    return target.Run(
        [folder, flags, choice](TaskRequest& task) { return Scan(task, folder, flags, choice); });
  });
}
