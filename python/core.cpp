// SPDX-License-Identifier: MIT
// The extension module sorvik._core: the requests of the C interface as Python objects. The package
// sorvik is written in Python on top of it.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/c/sorvik.h"

namespace py = pybind11;

namespace {

using OptionalText = std::optional<std::string>;

// Names needn't be valid UTF-8; surrogateescape keeps their bytes.
py::str Decoded(sorvik_text text) {
  PyObject* decoded =
      PyUnicode_DecodeUTF8(text.data, static_cast<Py_ssize_t>(text.size), "surrogateescape");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

py::tuple DecodedAll(const sorvik_text* texts, std::size_t count) {
  py::tuple result(count);
  for (std::size_t i = 0; i < count; ++i) result[i] = Decoded(texts[i]);
  return result;
}

const char* PointerOf(const OptionalText& text) { return text ? text->c_str() : nullptr; }

// (status, text, path), as in the event END.
py::tuple FailureOf(sorvik_status status) {
  return py::make_tuple(static_cast<int>(status),
                        Decoded({sorvik_error_text(), std::strlen(sorvik_error_text())}),
                        Decoded({sorvik_error_path(), std::strlen(sorvik_error_path())}));
}

// The Python class that _core.Failure is. Raised with the members of FailureOf.
PyObject* failureType = nullptr;

void Check(sorvik_status status) {
  if (status == SORVIK_OK) return;
  PyErr_SetObject(failureType, FailureOf(status).ptr());
  throw py::error_already_set();
}

template <class T, void (*Free)(T*)>
struct Freer {
  void operator()(T* object) const noexcept { Free(object); }
};
template <class T, void (*Free)(T*)>
using Owned = std::unique_ptr<T, Freer<T, Free>>;

// A text is a str, a list a tuple, a size an int.
py::object ValueOf(const sorvik_value& value) {
  switch (value.kind) {
    case SORVIK_VALUE_TEXT:
      return Decoded(value.text);
    case SORVIK_VALUE_SIZE:
      return py::int_(value.bytes);
    case SORVIK_VALUE_LIST: {
      py::tuple items(value.count);
      for (std::size_t i = 0; i < value.count; ++i) items[i] = ValueOf(value.items[i]);
      return items;
    }
    default:
      return py::none();
  }
}

py::object TypedOf(const sorvik_entry* entry, const char* field) {
  sorvik_typed_value value;
  sorvik_entry_typed(entry, field, &value);
  const py::tuple fraction = py::make_tuple(value.fraction.numerator, value.fraction.denominator);
  switch (value.kind) {
    case SORVIK_TYPED_BOOLEAN:
      return py::bool_(value.flag);
    case SORVIK_TYPED_INTEGER:
      return py::int_(value.integer);
    case SORVIK_TYPED_REAL:
      return py::float_(value.real);
    case SORVIK_TYPED_FRACTION:
      return py::make_tuple("fraction", fraction);
    case SORVIK_TYPED_TEXT:
      return Decoded(value.text);
    case SORVIK_TYPED_TIME:
      return py::make_tuple("time", Decoded(value.text));
    case SORVIK_TYPED_TIMECODE:
      return py::make_tuple("timecode", Decoded(value.text), fraction, value.flag);
    case SORVIK_TYPED_DURATION:
      return py::make_tuple("duration", value.integer, fraction);
    case SORVIK_TYPED_FRAME_SIZE:
      return py::make_tuple("frame size", value.integer, value.height, Decoded(value.text));
    case SORVIK_TYPED_TEXTS: {
      py::tuple texts(static_cast<std::size_t>(value.integer));
      for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = Decoded(sorvik_entry_typed_item(entry, field, i));
      }
      return py::make_tuple("texts", texts);
    }
    default:
      return py::none();
  }
}

class Listing {
 public:
  explicit Listing(sorvik_listing* listing) : listing_(listing) {}

  py::str Path() const { return Decoded(sorvik_listing_path(listing_.get())); }
  py::str Provider() const { return Decoded(sorvik_listing_provider(listing_.get())); }
  std::size_t Size() const { return sorvik_listing_size(listing_.get()); }

  // (key, {name: value})
  py::tuple At(std::size_t index) {
    const sorvik_entry* entry = EntryAt(index);
    py::dict fields;
    const std::size_t count = sorvik_entry_field_count(entry);
    for (std::size_t i = 0; i < count; ++i) {
      const sorvik_field* field = sorvik_entry_field_at(entry, i);
      fields[Name(i, field->name)] = ValueOf(field->value);
    }
    return py::make_tuple(Decoded(sorvik_entry_key(entry)), std::move(fields));
  }

  py::object Typed(std::size_t index, const std::string& field) const {
    return TypedOf(EntryAt(index), field.c_str());
  }

  py::str Label(const std::string& field) const {
    return Decoded(sorvik_listing_label(listing_.get(), field.c_str()));
  }

 private:
  const sorvik_entry* EntryAt(std::size_t index) const {
    const sorvik_entry* entry = sorvik_listing_at(listing_.get(), index);
    if (entry == nullptr) throw py::index_error("no such entry");
    return entry;
  }

  // Entries of a listing mostly have the same fields: their names are decoded once.
  const py::str& Name(std::size_t index, sorvik_text name) {
    const std::string_view text(name.data, name.size);
    if (index >= names_.size()) names_.resize(index + 1);
    auto& [known, object] = names_[index];
    if (known != text || !object) {
      known = text;
      object = Decoded(name);
    }
    return object;
  }

  Owned<sorvik_listing, sorvik_listing_free> listing_;
  std::vector<std::pair<std::string, py::str>> names_;
};

// Top-down RGBA pixels of a picture, shared by its copies.
class Picture {
 public:
  explicit Picture(sorvik_picture* picture)
      : width_(sorvik_picture_width(picture)),
        height_(sorvik_picture_height(picture)),
        pixels_(sorvik_picture_pixels(picture)),
        owner_(picture, sorvik_picture_free) {}

  Picture(int width, int height, const py::bytes& pixels) : width_(width), height_(height) {
    auto copy = std::make_shared<std::string>(pixels);
    if (width < 1 || height < 1 ||
        copy->size() / 4 / static_cast<std::size_t>(width) != static_cast<std::size_t>(height) ||
        copy->size() % (4 * static_cast<std::size_t>(width)) != 0) {
      throw py::value_error("pixels must have 4 * width * height bytes");
    }
    pixels_ = reinterpret_cast<const std::uint8_t*>(copy->data());
    owner_ = std::move(copy);
  }

  int Width() const { return width_; }
  int Height() const { return height_; }

  // Rows, columns, and red, green, blue, alpha; read-only.
  py::buffer_info Buffer() const {
    return py::buffer_info(const_cast<std::uint8_t*>(pixels_), sizeof(std::uint8_t),
                           py::format_descriptor<std::uint8_t>::format(), 3,
                           std::vector<py::ssize_t>{height_, width_, 4},
                           std::vector<py::ssize_t>{4 * py::ssize_t{width_}, 4, 1}, true);
  }

 private:
  int width_;
  int height_;
  const std::uint8_t* pixels_ = nullptr;
  std::shared_ptr<const void> owner_;
};

py::tuple FileOf(const sorvik_file& file) {
  return py::make_tuple(Decoded(file.path), Decoded(file.role), Decoded(file.part), file.bytes,
                        file.present, DecodedAll(file.owners, file.owner_count));
}

py::tuple FilesOf(const sorvik_files* files) {
  py::tuple result(sorvik_files_count(files));
  for (std::size_t i = 0; i < result.size(); ++i) result[i] = FileOf(*sorvik_files_at(files, i));
  return result;
}

py::tuple FindingOf(const sorvik_finding& finding) {
  return py::make_tuple(Decoded(finding.kind), Decoded(finding.severity), Decoded(finding.role),
                        Decoded(finding.path), DecodedAll(finding.entries, finding.entry_count),
                        Decoded(finding.detail));
}

// [(name, from, value, others)]
py::tuple SourcesOf(const sorvik_sources* sources) {
  py::tuple result(sorvik_sources_count(sources));
  for (std::size_t i = 0; i < result.size(); ++i) {
    const sorvik_source& source = *sorvik_sources_at(sources, i);
    py::tuple others(source.other_count);
    for (std::size_t other = 0; other < others.size(); ++other) {
      others[other] =
          py::make_tuple(Decoded(source.others[other].from), Decoded(source.others[other].value));
    }
    result[i] = py::make_tuple(Decoded(source.name), Decoded(source.from), Decoded(source.value),
                               std::move(others));
  }
  return result;
}

// (parts, rate, complete)
py::tuple PartsOf(const sorvik_parts* parts) {
  py::tuple result(sorvik_parts_count(parts));
  for (std::size_t i = 0; i < result.size(); ++i) {
    const sorvik_part& part = *sorvik_parts_at(parts, i);
    result[i] = py::make_tuple(Decoded(part.name), Decoded(part.path), Decoded(part.track),
                               part.channel, part.present, part.inferred, part.frames,
                               part.first_frame, part.frames_after, Decoded(part.start));
  }
  const sorvik_fraction rate = sorvik_parts_rate(parts);
  return py::make_tuple(std::move(result), py::make_tuple(rate.numerator, rate.denominator),
                        sorvik_parts_complete(parts));
}

// (lists, warnings); a list is (path, text)
py::tuple JoinListsOf(const sorvik_join_lists* lists) {
  py::tuple made(sorvik_join_lists_count(lists));
  for (std::size_t i = 0; i < made.size(); ++i) {
    const sorvik_join_list& list = *sorvik_join_lists_at(lists, i);
    made[i] = py::make_tuple(Decoded(list.path), Decoded(list.text));
  }
  py::tuple warnings(sorvik_join_lists_warning_count(lists));
  for (std::size_t i = 0; i < warnings.size(); ++i) {
    warnings[i] = Decoded(sorvik_join_lists_warning_at(lists, i));
  }
  return py::make_tuple(std::move(made), std::move(warnings));
}

py::tuple ReportOf(const sorvik_report* report) {
  py::tuple findings(sorvik_report_finding_count(report));
  for (std::size_t i = 0; i < findings.size(); ++i) {
    findings[i] = FindingOf(*sorvik_report_finding_at(report, i));
  }
  return py::make_tuple(Decoded(sorvik_report_path(report)),
                        Decoded(sorvik_report_provider(report)), sorvik_report_complete(report),
                        sorvik_report_depth(report) == SORVIK_DEPTH_NAMES ? "names" : "structure",
                        sorvik_report_clips(report), sorvik_report_bytes(report),
                        std::move(findings), FilesOf(sorvik_report_files(report)));
}

py::tuple CardOf(const sorvik_card* card) {
  return py::make_tuple(Decoded(sorvik_card_path(card)), Decoded(sorvik_card_provider(card)),
                        Decoded(sorvik_card_name(card)), sorvik_card_score(card));
}

// What an event contains.
py::object ContentOf(sorvik_event* event) {
  switch (sorvik_event_get_kind(event)) {
    case SORVIK_EVENT_CARD: {
      const Owned<sorvik_card, sorvik_card_free> card(sorvik_event_take_card(event));
      return CardOf(card.get());
    }
    case SORVIK_EVENT_LISTING:
      return py::cast(std::make_shared<Listing>(sorvik_event_take_listing(event)));
    case SORVIK_EVENT_FILES: {
      const Owned<sorvik_files, sorvik_files_free> files(sorvik_event_take_files(event));
      return FilesOf(files.get());
    }
    case SORVIK_EVENT_SOURCES: {
      const Owned<sorvik_sources, sorvik_sources_free> sources(sorvik_event_take_sources(event));
      return SourcesOf(sources.get());
    }
    case SORVIK_EVENT_PARTS: {
      const Owned<sorvik_parts, sorvik_parts_free> parts(sorvik_event_take_parts(event));
      return PartsOf(parts.get());
    }
    case SORVIK_EVENT_JOIN_LISTS: {
      const Owned<sorvik_join_lists, sorvik_join_lists_free> lists(
          sorvik_event_take_join_lists(event));
      return JoinListsOf(lists.get());
    }
    case SORVIK_EVENT_REPORT: {
      const Owned<sorvik_report, sorvik_report_free> report(sorvik_event_take_report(event));
      return ReportOf(report.get());
    }
    case SORVIK_EVENT_PICTURE:
      return py::cast(Picture(sorvik_event_take_picture(event)));
    default:
      return py::make_tuple(static_cast<int>(sorvik_event_status(event)),
                            Decoded(sorvik_event_text(event)), Decoded(sorvik_event_path(event)));
  }
}

// (kind, content)
py::tuple EventOf(sorvik_event* event) {
  const int kind = sorvik_event_get_kind(event);
  return py::make_tuple(kind, ContentOf(event));
}

// A queue and what its callbacks received during a dispatch. Belongs to one thread.
class Queue {
 public:
  Queue() {
    sorvik_queue* queue = nullptr;
    Check(sorvik_queue_create(&queue));
    queue_.reset(queue);
  }

  int Descriptor() const { return sorvik_queue_descriptor(queue_.get()); }

  // [(id of the request, kind, content)]
  py::list Dispatch(std::size_t maxEvents) {
    received_ = py::list();
    sorvik_queue_dispatch(queue_.get(), maxEvents);
    if (failure_) {
      py::error_already_set failure = std::move(*std::exchange(failure_, std::nullopt));
      throw failure;
    }
    return std::exchange(received_, py::list());
  }

  sorvik_queue* Get() const { return queue_.get(); }

  void Receive(std::uint64_t id, sorvik_event* event) noexcept {
    try {
      const int kind = sorvik_event_get_kind(event);
      received_.append(py::make_tuple(id, kind, ContentOf(event)));
    } catch (py::error_already_set& failure) {
      failure_ = std::move(failure);
    }
  }

 private:
  Owned<sorvik_queue, sorvik_queue_free> queue_;
  py::list received_;
  std::optional<py::error_already_set> failure_;
};

// A running operation. Aborted when the object is destroyed.
class Request {
 public:
  Request(std::shared_ptr<Queue> queue, std::uint64_t id) : queue_(std::move(queue)), id_(id) {
    receiver_ = {queue_ ? queue_->Get() : nullptr, Receive, this};
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() { sorvik_request_free(request_); }

  const sorvik_receiver* Receiver() const { return queue_ ? &receiver_ : nullptr; }
  sorvik_request** Output() { return &request_; }

  // (kind, content), or None after `milliseconds` without an event.
  py::object Next(int milliseconds) {
    sorvik_event* event = nullptr;
    sorvik_status status = SORVIK_OK;
    {
      const py::gil_scoped_release released;
      status = sorvik_request_next(request_, milliseconds, &event);
    }
    if (status == SORVIK_TIMED_OUT) return py::none();
    Check(status);
    const Owned<sorvik_event, sorvik_event_free> owned(event);
    return EventOf(event);
  }

  void Abort() { sorvik_request_abort(request_); }

 private:
  static void Receive(sorvik_request*, sorvik_event* event, void* context) {
    const auto* self = static_cast<const Request*>(context);
    const std::shared_ptr<Queue> queue = self->queue_;
    queue->Receive(self->id_, event);
  }

  std::shared_ptr<Queue> queue_;
  std::uint64_t id_;
  sorvik_receiver receiver_{};
  sorvik_request* request_ = nullptr;
};

using QueueRef = std::shared_ptr<Queue>;

// Starts a request with `start`, which gets the receiver and the output.
template <class Function>
std::unique_ptr<Request> Start(const QueueRef& queue, std::uint64_t id, const Function& start) {
  auto request = std::make_unique<Request>(queue, id);
  Check(start(request->Receiver(), request->Output()));
  return request;
}

// The wanted fields, as long as the object exists.
class Fields {
 public:
  // None: all fields.
  Fields(const std::optional<std::vector<std::string>>& names, bool withDefaults) {
    if (names) names_ = *names;
    for (const std::string& name : names_) pointers_.push_back(name.c_str());
    fields_ = {pointers_.data(), names ? pointers_.size() : SORVIK_ALL_FIELDS, withDefaults};
  }
  Fields(const Fields&) = delete;
  Fields& operator=(const Fields&) = delete;

  const sorvik_fields* Get() const { return &fields_; }

 private:
  std::vector<std::string> names_;
  std::vector<const char*> pointers_;
  sorvik_fields fields_{};
};

using Names = std::optional<std::vector<std::string>>;

std::unique_ptr<Request> StartOpen(const std::string& path, const OptionalText& provider,
                                   bool nearby, const QueueRef& queue, std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_open(path.c_str(), PointerOf(provider),
                             nearby ? SORVIK_OPEN_NEARBY : SORVIK_OPEN_EXACT, receiver, request);
  });
}

std::unique_ptr<Request> StartList(const std::string& path, const std::string& provider,
                                   const Names& names, bool withDefaults, const QueueRef& queue,
                                   std::uint64_t id) {
  const Fields fields(names, withDefaults);
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_list(path.c_str(), provider.c_str(), fields.Get(), receiver, request);
  });
}

std::unique_ptr<Request> StartReadEntry(const std::string& path, const std::string& provider,
                                        const std::string& key, const Names& names,
                                        bool withDefaults, const QueueRef& queue,
                                        std::uint64_t id) {
  const Fields fields(names, withDefaults);
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_read_entry(path.c_str(), provider.c_str(), key.c_str(), fields.Get(),
                                   receiver, request);
  });
}

std::unique_ptr<Request> StartListFiles(const std::string& path, const std::string& provider,
                                        const OptionalText& key, const QueueRef& queue,
                                        std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_list_files(path.c_str(), provider.c_str(), PointerOf(key), receiver,
                                   request);
  });
}

std::unique_ptr<Request> StartReadSources(const std::string& path, const std::string& provider,
                                          const std::string& key, const QueueRef& queue,
                                          std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_read_sources(path.c_str(), provider.c_str(), key.c_str(), receiver,
                                     request);
  });
}

std::unique_ptr<Request> StartListParts(const std::string& path, const std::string& provider,
                                        const std::string& key, const QueueRef& queue,
                                        std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_list_parts(path.c_str(), provider.c_str(), key.c_str(), receiver, request);
  });
}

std::unique_ptr<Request> StartJoin(const std::string& path, const std::string& provider,
                                   const OptionalText& key, const std::string& format,
                                   const OptionalText& output, bool allowGaps,
                                   const QueueRef& queue, std::uint64_t id) {
  const sorvik_join_options options{format.c_str(), PointerOf(output), allowGaps};
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_join(path.c_str(), provider.c_str(), PointerOf(key), &options, receiver,
                             request);
  });
}

std::unique_ptr<Request> StartCheck(const std::string& path, const std::string& provider,
                                    bool namesOnly, const QueueRef& queue, std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_check(path.c_str(), provider.c_str(),
                              namesOnly ? SORVIK_DEPTH_NAMES : SORVIK_DEPTH_STRUCTURE, receiver,
                              request);
  });
}

std::unique_ptr<Request> StartFindOwner(const std::string& path, const QueueRef& queue,
                                        std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_find_owner(path.c_str(), receiver, request);
  });
}

std::unique_ptr<Request> StartRenderThumbnail(const std::string& path, const std::string& provider,
                                              const std::string& key, int width, int height,
                                              const QueueRef& queue, std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_render_thumbnail(path.c_str(), provider.c_str(), key.c_str(), width, height,
                                         receiver, request);
  });
}

std::unique_ptr<Request> StartRenderPicture(const std::string& path, const std::string& provider,
                                            const std::string& key, int width, int height,
                                            const QueueRef& queue, std::uint64_t id) {
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_render_picture(path.c_str(), provider.c_str(), key.c_str(), width, height,
                                       receiver, request);
  });
}

std::unique_ptr<Request> StartScan(const std::string& path, bool nearby, bool withEntries,
                                   const Names& names, bool withDefaults, const QueueRef& queue,
                                   std::uint64_t id) {
  const Fields fields(names, withDefaults);
  const unsigned flags = (nearby ? unsigned{SORVIK_SCAN_NEARBY} : 0U) |
                         (withEntries ? unsigned{SORVIK_SCAN_ENTRIES} : 0U);
  return Start(queue, id, [&](const sorvik_receiver* receiver, sorvik_request** request) {
    return sorvik_start_scan(path.c_str(), flags, fields.Get(), receiver, request);
  });
}

// What a catalogue calls, and the exception that ended it.
struct CatalogueCalls {
  const py::function& receive;
  const py::function& isStopped;
  std::optional<py::error_already_set> failure = {};

  template <class Call>
  bool Guarded(const Call& call, bool afterFailure) noexcept {
    const py::gil_scoped_acquire held;
    try {
      return call();
    } catch (py::error_already_set& error) {
      failure = std::move(error);
    }
    return afterFailure;
  }
};

// Calls `receive` with each line as bytes, until it or `isStopped` ends the run.
void WriteCatalogue(const std::vector<std::string>& paths, const py::function& receive,
                    const py::function& isStopped) {
  std::vector<const char*> pointers;
  for (const std::string& path : paths) pointers.push_back(path.c_str());
  CatalogueCalls calls{receive, isStopped};
  const sorvik_line_callback onLine = [](sorvik_text line, void* context) {
    auto& own = *static_cast<CatalogueCalls*>(context);
    return own.Guarded([&] { return own.receive(py::bytes(line.data, line.size)).cast<bool>(); },
                       false);
  };
  const sorvik_stop_callback onTick = [](void* context) {
    auto& own = *static_cast<CatalogueCalls*>(context);
    return own.Guarded([&] { return own.isStopped().cast<bool>(); }, true);
  };
  sorvik_status status = SORVIK_OK;
  {
    const py::gil_scoped_release released;
    status = sorvik_write_catalogue(pointers.data(), pointers.size(), onLine, onTick, &calls);
  }
  if (calls.failure) {
    py::error_already_set failure = std::move(*calls.failure);
    throw failure;
  }
  Check(status);
}

template <class Function>
void CheckWithoutGil(const Function& function) {
  sorvik_status status = SORVIK_OK;
  {
    const py::gil_scoped_release released;
    status = function();
  }
  Check(status);
}

void Initialize() { CheckWithoutGil(sorvik_initialize); }

void SetLanguage(const std::string& tag) {
  CheckWithoutGil([&tag] { return sorvik_set_language(tag.c_str()); });
}

void Shutdown() {
  const py::gil_scoped_release released;
  sorvik_shutdown();
}

}  // namespace

PYBIND11_MODULE(_core, module) {
  failureType = PyErr_NewException("sorvik._core.Failure", PyExc_Exception, nullptr);
  if (failureType == nullptr) throw py::error_already_set();
  module.attr("Failure") = py::reinterpret_borrow<py::object>(failureType);

  module.def("version", sorvik_version);
  module.def("initialize", Initialize);
  module.def("shutdown", Shutdown);
  module.def("stalled_workers", sorvik_stalled_workers);
  module.def("set_language", SetLanguage);

  py::class_<Listing, std::shared_ptr<Listing>>(module, "Listing")
      .def_property_readonly("path", &Listing::Path)
      .def_property_readonly("provider", &Listing::Provider)
      .def("__len__", &Listing::Size)
      .def("at", &Listing::At)
      .def("typed", &Listing::Typed)
      .def("label", &Listing::Label);
  py::class_<Picture>(module, "Picture", py::buffer_protocol())
      .def(py::init<const Picture&>())
      .def(py::init<int, int, const py::bytes&>())
      .def_property_readonly("width", &Picture::Width)
      .def_property_readonly("height", &Picture::Height)
      .def_buffer([](const Picture& picture) { return picture.Buffer(); });
  py::class_<Queue, QueueRef>(module, "Queue")
      .def(py::init<>())
      .def("descriptor", &Queue::Descriptor)
      .def("dispatch", &Queue::Dispatch);
  py::class_<Request>(module, "Request").def("next", &Request::Next).def("abort", &Request::Abort);

  module.def("start_open", StartOpen);
  module.def("start_list", StartList);
  module.def("start_read_entry", StartReadEntry);
  module.def("start_list_files", StartListFiles);
  module.def("start_read_sources", StartReadSources);
  module.def("start_list_parts", StartListParts);
  module.def("start_join", StartJoin);
  module.def("start_check", StartCheck);
  module.def("start_find_owner", StartFindOwner);
  module.def("start_render_thumbnail", StartRenderThumbnail);
  module.def("start_render_picture", StartRenderPicture);
  module.def("start_scan", StartScan);
  module.def("write_catalogue", WriteCatalogue);
}
