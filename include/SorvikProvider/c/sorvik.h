/* SPDX-License-Identifier: MIT */
/* The C interface of the library, for C and for every language that can call C.
 *
 *   sorvik_card *card;
 *   sorvik_listing *clips;
 *   if (sorvik_initialize() != SORVIK_OK) return 1;
 *   if (sorvik_open("/media/CARD", NULL, SORVIK_OPEN_NEARBY, &card) != SORVIK_OK) {
 *     fprintf(stderr, "%s\n", sorvik_error_text());
 *   }
 *
 * Conventions:
 *  - Texts are UTF-8. Paths and names are the bytes of the file system, which need not be UTF-8.
 *    Paths that a caller passes are absolute, or one of the browse roots such as "volumes:".
 *  - A function that can fail returns a status. Its outputs are then NULL, and the text is in
 *    sorvik_error_text() of the same thread.
 *  - Every pointer to a type with a ..._free function that is returned through an output or by a
 *    ..._take_... function belongs to the caller. All other pointers are borrowed: they are valid
 *    as long as the object that they come from. The ..._free functions ignore NULL.
 *  - Any thread may call any function. A single object must not be changed or freed by one thread
 *    while another one uses it; sorvik_request_abort may be called at any time before the request
 *    is freed.
 *  - Nothing is written to disk.
 *  - Binary compatibility: functions, enumerators and members of structs are only added. Structs
 *    are passed by pointer and grow at their end, except for those that say they don't change.
 *    Symbols have the version SORVIK_2.0 or the one that added them. */
#ifndef SORVIKPROVIDER_C_SORVIK_H
#define SORVIKPROVIDER_C_SORVIK_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define SORVIK_C_EXPORT __attribute__((visibility("default")))
#else
#define SORVIK_C_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status and texts ---- */

typedef enum sorvik_status {
  SORVIK_OK = 0,
  SORVIK_INVALID_ARGUMENT = 1, /* such as NULL, a relative path or an unknown provider */
  SORVIK_NOT_INITIALIZED = 2,  /* before sorvik_initialize or after sorvik_shutdown */
  SORVIK_NO_PROVIDER = 3,      /* the path exists, but no provider supports it */
  SORVIK_MISSING = 4,          /* the path doesn't exist */
  SORVIK_UNREADABLE = 5,       /* the path exists and can't be read */
  SORVIK_NO_ENTRY = 6,         /* the place has no entry with this key */
  SORVIK_NO_PICTURE = 7,       /* the entry has no picture */
  SORVIK_ABORTED = 8,
  SORVIK_TIMED_OUT = 9, /* of sorvik_request_next: the request goes on */
  SORVIK_OUT_OF_MEMORY = 10,
  SORVIK_FAILED = 11 /* anything else, such as a part of the installation that is missing */
} sorvik_status;

/* Why the last function that failed on this thread did so, in English: never NULL, and empty if
 * none failed. Valid until the next failure on this thread. */
SORVIK_C_EXPORT const char* sorvik_error_text(void);
/* The path that the failure is about; empty if it is about none. Valid as sorvik_error_text. */
SORVIK_C_EXPORT const char* sorvik_error_path(void);

/* `size` bytes and a terminating NUL that isn't counted. `data` is never NULL. Texts of metadata
 * can contain further NULs. This struct doesn't change. */
typedef struct sorvik_text {
  const char* data;
  size_t size;
} sorvik_text;

/* ---- Library ---- */

/* The version of the library, such as "2.0.0". */
SORVIK_C_EXPORT const char* sorvik_version(void);

/* Both are counted. The first sorvik_initialize creates all providers and the workers. The last
 * sorvik_shutdown aborts what still runs and waits for the workers, for those that are stuck in the
 * kernel at most one second; handles stay valid and are still to be freed. In a process that also
 * uses the C++ interface, both count as its ProviderHost::Initialize and Shutdown, and belong to
 * the main thread as these do. After fork, only the process that initialized the library can use
 * it. */
SORVIK_C_EXPORT sorvik_status sorvik_initialize(void);
SORVIK_C_EXPORT void sorvik_shutdown(void);

/* The number of workers whose request was aborted and which are still stuck in a system call, such
 * as a read from a share that doesn't answer. */
SORVIK_C_EXPORT size_t sorvik_stalled_workers(void);

/* Sets the language of labels, names of providers and texts, such as "de-DE"; "" takes it from the
 * environment, which is the default. */
SORVIK_C_EXPORT sorvik_status sorvik_set_language(const char* tag);

/* ---- Places ---- */

/* A folder as a provider supports it: a card, a plain folder or the list of volumes. */
typedef struct sorvik_card sorvik_card;

SORVIK_C_EXPORT sorvik_text sorvik_card_path(const sorvik_card* card);
/* The identification of the provider, for the functions below. */
SORVIK_C_EXPORT sorvik_text sorvik_card_provider(const sorvik_card* card);
/* The name of the provider in the user's language. */
SORVIK_C_EXPORT sorvik_text sorvik_card_name(const sorvik_card* card);
/* 100 for the root of a card in good order, 40 with a reservation, 30 for a plain folder. */
SORVIK_C_EXPORT int sorvik_card_score(const sorvik_card* card);
SORVIK_C_EXPORT void sorvik_card_free(sorvik_card* card);

/* ---- Entries ---- */

typedef enum sorvik_value_kind {
  SORVIK_VALUE_NONE = 0, /* no value */
  SORVIK_VALUE_TEXT = 1,
  SORVIK_VALUE_LIST = 2, /* `count` values in `items` */
  SORVIK_VALUE_SIZE = 3  /* `bytes` */
} sorvik_value_kind;

/* This struct doesn't change. */
typedef struct sorvik_value {
  sorvik_value_kind kind;
  sorvik_text text;
  uint64_t bytes;
  size_t count;
  const struct sorvik_value* items;
} sorvik_value;

typedef struct sorvik_field {
  sorvik_text name;
  sorvik_value value;
} sorvik_field;

/* A clip, file, folder or volume: its fields, ordered by name. "Name" is its display name, "Path"
 * the file to open, "ExtraPath" lists what else belongs to it. */
typedef struct sorvik_entry sorvik_entry;

/* Identifies the entry within its place. */
SORVIK_C_EXPORT sorvik_text sorvik_entry_key(const sorvik_entry* entry);
SORVIK_C_EXPORT size_t sorvik_entry_field_count(const sorvik_entry* entry);
/* NULL if there are not that many fields. */
SORVIK_C_EXPORT const sorvik_field* sorvik_entry_field_at(const sorvik_entry* entry, size_t index);
/* NULL if the entry has no field of this name. */
SORVIK_C_EXPORT const sorvik_field* sorvik_entry_field(const sorvik_entry* entry, const char* name);

/* This struct doesn't change. */
typedef struct sorvik_fraction {
  int64_t numerator;
  int64_t denominator; /* positive */
} sorvik_fraction;

typedef enum sorvik_typed_kind {
  SORVIK_TYPED_NONE = 0,
  SORVIK_TYPED_BOOLEAN = 1,    /* `flag` */
  SORVIK_TYPED_INTEGER = 2,    /* `integer` */
  SORVIK_TYPED_REAL = 3,       /* `real` */
  SORVIK_TYPED_FRACTION = 4,   /* `fraction` */
  SORVIK_TYPED_TEXT = 5,       /* `text` */
  SORVIK_TYPED_TIME = 6,       /* `text` in the form of ISO 8601; `flag`: it has a zone */
  SORVIK_TYPED_TIMECODE = 7,   /* `text`, `fraction`: frames per second; `flag`: it drops frames */
  SORVIK_TYPED_DURATION = 8,   /* `integer`: frames or other units, `fraction`: units per second */
  SORVIK_TYPED_FRAME_SIZE = 9, /* `integer`: width, `height`, `text`: the unit */
  SORVIK_TYPED_TEXTS = 10      /* `integer`: their number; see sorvik_entry_typed_item */
} sorvik_typed_kind;

/* A value for programs, independent of the language. A rate that isn't known has the numerator 0.
 * This struct doesn't change. */
typedef struct sorvik_typed_value {
  sorvik_typed_kind kind;
  bool flag;
  int64_t integer;
  int64_t height;
  double real;
  sorvik_fraction fraction;
  sorvik_text text;
} sorvik_typed_value;

/* Sets `value` to the typed value of a field. Returns false, and sets it to SORVIK_TYPED_NONE, if
 * the entry has no such field or the field has no value. */
SORVIK_C_EXPORT bool sorvik_entry_typed(const sorvik_entry* entry, const char* field,
                                        sorvik_typed_value* value);
/* One of the texts of a field of the kind SORVIK_TYPED_TEXTS; empty if there are not that many. */
SORVIK_C_EXPORT sorvik_text sorvik_entry_typed_item(const sorvik_entry* entry, const char* field,
                                                    size_t index);

/* The entries of a place, ordered by key. */
typedef struct sorvik_listing sorvik_listing;

SORVIK_C_EXPORT sorvik_text sorvik_listing_path(const sorvik_listing* listing);
SORVIK_C_EXPORT sorvik_text sorvik_listing_provider(const sorvik_listing* listing);
SORVIK_C_EXPORT size_t sorvik_listing_size(const sorvik_listing* listing);
/* NULL if there are not that many entries. */
SORVIK_C_EXPORT const sorvik_entry* sorvik_listing_at(const sorvik_listing* listing, size_t index);
/* NULL if there is no such entry. */
SORVIK_C_EXPORT const sorvik_entry* sorvik_listing_find(const sorvik_listing* listing,
                                                        const char* key);
/* The label of a field in the user's language; the name itself if the field has none. */
SORVIK_C_EXPORT sorvik_text sorvik_listing_label(const sorvik_listing* listing, const char* field);
SORVIK_C_EXPORT void sorvik_listing_free(sorvik_listing* listing);

/* The fields that a listing shall have. Names that the provider doesn't know are ignored. */
typedef struct sorvik_fields {
  const char* const* names;
  size_t count;       /* with SORVIK_ALL_FIELDS, `names` isn't used */
  bool with_defaults; /* the default fields of the provider, too */
} sorvik_fields;

#define SORVIK_ALL_FIELDS SIZE_MAX

/* ---- Files ---- */

typedef struct sorvik_file {
  sorvik_text path;
  /* "clip", "structure" (of the card itself, such as an index), "foreign", or "hidden" (written by
   * desktops and file servers). */
  sorvik_text role;
  /* What it is: "essence", "sound channel", "proxy", "clip record", "index", "playlist", "span",
   * "segment", "frame", "thumbnail", "real-time metadata", "voice memo", "sidecar", "journal" or
   * "folder"; empty if it isn't known. */
  sorvik_text part;
  uint64_t bytes;
  bool present; /* false: an entry of the card requires the file, and it is missing */
  size_t owner_count;
  const sorvik_text* owners; /* keys of the entries that the file belongs to */
} sorvik_file;

typedef struct sorvik_files sorvik_files;

SORVIK_C_EXPORT size_t sorvik_files_count(const sorvik_files* files);
/* NULL if there are not that many files. */
SORVIK_C_EXPORT const sorvik_file* sorvik_files_at(const sorvik_files* files, size_t index);
SORVIK_C_EXPORT void sorvik_files_free(sorvik_files* files);

/* ---- Sources of values ---- */

/* A value in one source: "sidecar", "xmp", "record", "index", "native" or "provider". This struct
 * doesn't change. */
typedef struct sorvik_source_value {
  sorvik_text from;
  sorvik_text value;
} sorvik_source_value;

/* Where the value of a field is from. */
typedef struct sorvik_source {
  sorvik_text name;  /* of the field, or of a further property such as "aux:Lens" */
  sorvik_text from;  /* the strongest source that has the value */
  sorvik_text value; /* not empty */
  size_t other_count;
  const sorvik_source_value* others; /* different values in weaker sources, strongest first */
} sorvik_source;

typedef struct sorvik_sources sorvik_sources;

/* Ordered by name. */
SORVIK_C_EXPORT size_t sorvik_sources_count(const sorvik_sources* sources);
/* NULL if there are not that many fields. */
SORVIK_C_EXPORT const sorvik_source* sorvik_sources_at(const sorvik_sources* sources, size_t index);
SORVIK_C_EXPORT void sorvik_sources_free(sorvik_sources* sources);

/* ---- Parts ---- */

/* A file of a recording that the camera cut into several files, or wrote as separate files for
 * picture and sound. */
typedef struct sorvik_part {
  sorvik_text name; /* what the camera calls it */
  /* The file, or the folder of an image sequence. Of a missing part, where it should be; empty if
   * that isn't known. */
  sorvik_text path;
  sorvik_text track; /* "picture and sound", "picture" or "sound" */
  unsigned channel;  /* of a sound track: 1, 2, ...; 0 for a file with all channels */
  bool present;
  bool inferred;  /* that it continues the part before it isn't recorded, but follows from times */
  int64_t frames; /* of the recording in this file; -1 if unknown */
  uint64_t first_frame;  /* frames of the file in front of them */
  uint64_t frames_after; /* and after them */
  sorvik_text start;     /* the timecode of the first frame; empty if unknown */
} sorvik_part;

/* Track by track, each in playing order. */
typedef struct sorvik_parts sorvik_parts;

SORVIK_C_EXPORT size_t sorvik_parts_count(const sorvik_parts* parts);
/* NULL if there are not that many parts. */
SORVIK_C_EXPORT const sorvik_part* sorvik_parts_at(const sorvik_parts* parts, size_t index);
/* Frames per second; the numerator is 0 if the rate isn't known. */
SORVIK_C_EXPORT sorvik_fraction sorvik_parts_rate(const sorvik_parts* parts);
/* False if a part is missing. */
SORVIK_C_EXPORT bool sorvik_parts_complete(const sorvik_parts* parts);
SORVIK_C_EXPORT void sorvik_parts_free(sorvik_parts* parts);

/* ---- Join lists ---- */

/* A list with which players and editing programs open the files of a recording as one shot. */
typedef struct sorvik_join_list {
  sorvik_text path; /* where it belongs; empty if no output path was given */
  sorvik_text text;
} sorvik_join_list;

/* What one operation made: one list, or one for each track in a file of its own. */
typedef struct sorvik_join_lists sorvik_join_lists;

SORVIK_C_EXPORT size_t sorvik_join_lists_count(const sorvik_join_lists* lists);
/* NULL if there are not that many lists. */
SORVIK_C_EXPORT const sorvik_join_list* sorvik_join_lists_at(const sorvik_join_lists* lists,
                                                             size_t index);
/* What the lists lack, such as a last part that is missing, in English. */
SORVIK_C_EXPORT size_t sorvik_join_lists_warning_count(const sorvik_join_lists* lists);
/* Empty if there are not that many warnings. */
SORVIK_C_EXPORT sorvik_text sorvik_join_lists_warning_at(const sorvik_join_lists* lists,
                                                         size_t index);
SORVIK_C_EXPORT void sorvik_join_lists_free(sorvik_join_lists* lists);

typedef struct sorvik_join_options {
  const char* format; /* "ffconcat", "otio", "ale", "edl", "fcpxml", "csv" or "json" */
  /* The absolute path that the list will have, or NULL: ffconcat names files below its folder
   * relative to it, and further tracks get a path next to it. */
  const char* output;
  bool allow_gaps; /* write a list even if a part between others is missing */
} sorvik_join_options;

/* ---- Completeness ---- */

typedef struct sorvik_finding {
  sorvik_text kind;     /* missing, empty, truncated, unreadable, orphaned, unlisted, stale */
  sorvik_text severity; /* error, warning, note */
  sorvik_text role;     /* as `part` of a file */
  sorvik_text path;     /* where it is or should be; the id of a clip whose place is unknown */
  sorvik_text detail;   /* why, in English; may be empty */
  size_t entry_count;
  const sorvik_text* entries; /* keys */
} sorvik_finding;

typedef enum sorvik_depth {
  SORVIK_DEPTH_NAMES = 0,    /* reads indexes and clip records; of media only name and size */
  SORVIK_DEPTH_STRUCTURE = 1 /* reads heads and tails of media files, too */
} sorvik_depth;

/* Whether a card is complete. */
typedef struct sorvik_report sorvik_report;

SORVIK_C_EXPORT sorvik_text sorvik_report_path(const sorvik_report* report);
SORVIK_C_EXPORT sorvik_text sorvik_report_provider(const sorvik_report* report);
/* True if there is no error and the check ran to its end. */
SORVIK_C_EXPORT bool sorvik_report_complete(const sorvik_report* report);
SORVIK_C_EXPORT sorvik_depth sorvik_report_depth(const sorvik_report* report);
SORVIK_C_EXPORT uint64_t sorvik_report_clips(const sorvik_report* report);
/* The size of the clip and structure files below the path. */
SORVIK_C_EXPORT uint64_t sorvik_report_bytes(const sorvik_report* report);
SORVIK_C_EXPORT size_t sorvik_report_finding_count(const sorvik_report* report);
/* Errors first. NULL if there are not that many findings. */
SORVIK_C_EXPORT const sorvik_finding* sorvik_report_finding_at(const sorvik_report* report,
                                                               size_t index);
/* All files of the card. */
SORVIK_C_EXPORT const sorvik_files* sorvik_report_files(const sorvik_report* report);
SORVIK_C_EXPORT void sorvik_report_free(sorvik_report* report);

/* ---- Pictures ---- */

/* Top-down rows of four bytes per pixel: red, green, blue, alpha, with straight (not premultiplied)
 * colours. */
typedef struct sorvik_picture sorvik_picture;

SORVIK_C_EXPORT int sorvik_picture_width(const sorvik_picture* picture);
SORVIK_C_EXPORT int sorvik_picture_height(const sorvik_picture* picture);
/* Four times width times height bytes, without gaps between the rows. */
SORVIK_C_EXPORT const uint8_t* sorvik_picture_pixels(const sorvik_picture* picture);
SORVIK_C_EXPORT void sorvik_picture_free(sorvik_picture* picture);

/* ---- Operations that wait ----
 *
 * They run on a worker and wait for it without a limit. A caller that must not block, or wants to
 * abort, uses the requests below. `provider` is the identification of a provider (or its last
 * component, such as "ProviderP2", in any case). */

typedef enum sorvik_open_mode {
  SORVIK_OPEN_EXACT = 0, /* the best provider for this very path */
  /* The card at the path, else the one that contains it, else the first one below it; else as
   * SORVIK_OPEN_EXACT. */
  SORVIK_OPEN_NEARBY = 1
} sorvik_open_mode;

/* Finds the provider for a path. With `provider` not NULL, that one, for this very path. */
SORVIK_C_EXPORT sorvik_status sorvik_open(const char* path, const char* provider,
                                          sorvik_open_mode mode, sorvik_card** card);
/* Lists the entries of a place. `fields` NULL means the default fields of the provider. */
SORVIK_C_EXPORT sorvik_status sorvik_list(const char* path, const char* provider,
                                          const sorvik_fields* fields, sorvik_listing** listing);
/* Reads one entry: a listing with one element. */
SORVIK_C_EXPORT sorvik_status sorvik_read_entry(const char* path, const char* provider,
                                                const char* key, const sorvik_fields* fields,
                                                sorvik_listing** listing);
/* The files of a card, or those of one entry if `key` isn't NULL, the missing ones included. */
SORVIK_C_EXPORT sorvik_status sorvik_list_files(const char* path, const char* provider,
                                                const char* key, sorvik_files** files);
/* The sources of all values of an entry: of its media file, and of the provider. */
SORVIK_C_EXPORT sorvik_status sorvik_read_sources(const char* path, const char* provider,
                                                  const char* key, sorvik_sources** sources);
/* The files that an entry consists of. */
SORVIK_C_EXPORT sorvik_status sorvik_list_parts(const char* path, const char* provider,
                                                const char* key, sorvik_parts** parts);
/* Makes the lists that join the files of an entry, or of all entries if `key` is NULL, which
 * docs/joining.md describes. SORVIK_FAILED if the format can't contain them, or if a part between
 * others is missing and gaps aren't allowed. */
SORVIK_C_EXPORT sorvik_status sorvik_join(const char* path, const char* provider, const char* key,
                                          const sorvik_join_options* options,
                                          sorvik_join_lists** lists);
/* Checks whether a card is complete. SORVIK_NO_PROVIDER if the provider checks no structure. */
SORVIK_C_EXPORT sorvik_status sorvik_check(const char* path, const char* provider,
                                           sorvik_depth depth, sorvik_report** report);
/* Finds the entry that a file belongs to: a listing with one element, whose path is the folder of
 * the structure. For a file that no structure claims it is that of the plain folder. */
SORVIK_C_EXPORT sorvik_status sorvik_find_owner(const char* path, sorvik_listing** owner);
/* Renders the thumbnail of an entry in the size in pixels (1 to 16384): for many kinds of clips, an
 * icon with a border. */
SORVIK_C_EXPORT sorvik_status sorvik_render_thumbnail(const char* path, const char* provider,
                                                      const char* key, int width, int height,
                                                      sorvik_picture** picture);

/* Renders the best picture by which a clip can be recognised: that of the camera, else a preview
 * inside the file, else a frame of the video. It keeps its aspect ratio and is reduced to fit the
 * size, but never enlarged. SORVIK_NO_PICTURE if there is none. */
SORVIK_C_EXPORT sorvik_status sorvik_render_picture(const char* path, const char* provider,
                                                    const char* key, int width, int height,
                                                    sorvik_picture** picture);

/* ---- Requests ----
 *
 * A request runs on a worker and delivers events: any number of results, then exactly one
 * SORVIK_EVENT_END. After an abort, END comes within about 100 ms with SORVIK_ABORTED, even if the
 * worker is stuck in a system call. */

typedef struct sorvik_request sorvik_request;
typedef struct sorvik_event sorvik_event;

typedef enum sorvik_event_kind {
  SORVIK_EVENT_END = 0,
  SORVIK_EVENT_CARD = 1,
  SORVIK_EVENT_LISTING = 2,
  SORVIK_EVENT_FILES = 3,
  SORVIK_EVENT_REPORT = 4,
  SORVIK_EVENT_PICTURE = 5,
  SORVIK_EVENT_PROBLEM = 6, /* of a scan: a card that can't be listed; the scan continues */
  SORVIK_EVENT_SOURCES = 7,
  SORVIK_EVENT_PARTS = 8,
  SORVIK_EVENT_JOIN_LISTS = 9
} sorvik_event_kind;

SORVIK_C_EXPORT sorvik_event_kind sorvik_event_get_kind(const sorvik_event* event);
/* Of END and PROBLEM; SORVIK_OK for all others. */
SORVIK_C_EXPORT sorvik_status sorvik_event_status(const sorvik_event* event);
/* Of END and PROBLEM: why, and for which path; else empty. */
SORVIK_C_EXPORT sorvik_text sorvik_event_text(const sorvik_event* event);
SORVIK_C_EXPORT sorvik_text sorvik_event_path(const sorvik_event* event);
/* Each gives the result of its kind to the caller, who frees it; NULL for events of another kind
 * and if it has been taken. */
SORVIK_C_EXPORT sorvik_card* sorvik_event_take_card(sorvik_event* event);
SORVIK_C_EXPORT sorvik_listing* sorvik_event_take_listing(sorvik_event* event);
SORVIK_C_EXPORT sorvik_files* sorvik_event_take_files(sorvik_event* event);
SORVIK_C_EXPORT sorvik_sources* sorvik_event_take_sources(sorvik_event* event);
SORVIK_C_EXPORT sorvik_parts* sorvik_event_take_parts(sorvik_event* event);
SORVIK_C_EXPORT sorvik_join_lists* sorvik_event_take_join_lists(sorvik_event* event);
SORVIK_C_EXPORT sorvik_report* sorvik_event_take_report(sorvik_event* event);
SORVIK_C_EXPORT sorvik_picture* sorvik_event_take_picture(sorvik_event* event);
/* For events of sorvik_request_next only. */
SORVIK_C_EXPORT void sorvik_event_free(sorvik_event* event);

/* A queue delivers the events of its requests in an event loop, on one thread. */
typedef struct sorvik_queue sorvik_queue;

/* Called by sorvik_queue_dispatch. The event is borrowed and valid during the call. */
typedef void (*sorvik_callback)(sorvik_request* request, sorvik_event* event, void* context);

SORVIK_C_EXPORT sorvik_status sorvik_queue_create(sorvik_queue** queue);
/* Readable while events wait. Owned by the queue: don't read or close it. */
SORVIK_C_EXPORT int sorvik_queue_descriptor(const sorvik_queue* queue);
/* Calls the callbacks of at most `max_events` waiting events on this thread and returns their
 * number. A callback may start, abort and free requests, its own one included. */
SORVIK_C_EXPORT size_t sorvik_queue_dispatch(sorvik_queue* queue, size_t max_events);
/* Aborts the requests of the queue; their callbacks aren't called any more. The requests are still
 * to be freed. Not within a callback. */
SORVIK_C_EXPORT void sorvik_queue_free(sorvik_queue* queue);

/* Where the events of a request go. */
typedef struct sorvik_receiver {
  sorvik_queue* queue;
  sorvik_callback callback;
  void* context;
} sorvik_receiver;

/* The start functions return at once. With `receiver` NULL, the events are fetched with
 * sorvik_request_next. The other arguments are those of the operations above; their texts are
 * copied. An error of an argument is returned by the start function, all others by END. */
SORVIK_C_EXPORT sorvik_status sorvik_start_open(const char* path, const char* provider,
                                                sorvik_open_mode mode,
                                                const sorvik_receiver* receiver,
                                                sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_list(const char* path, const char* provider,
                                                const sorvik_fields* fields,
                                                const sorvik_receiver* receiver,
                                                sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_read_entry(const char* path, const char* provider,
                                                      const char* key, const sorvik_fields* fields,
                                                      const sorvik_receiver* receiver,
                                                      sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_list_files(const char* path, const char* provider,
                                                      const char* key,
                                                      const sorvik_receiver* receiver,
                                                      sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_read_sources(const char* path, const char* provider,
                                                        const char* key,
                                                        const sorvik_receiver* receiver,
                                                        sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_list_parts(const char* path, const char* provider,
                                                      const char* key,
                                                      const sorvik_receiver* receiver,
                                                      sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_join(const char* path, const char* provider,
                                                const char* key, const sorvik_join_options* options,
                                                const sorvik_receiver* receiver,
                                                sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_check(const char* path, const char* provider,
                                                 sorvik_depth depth,
                                                 const sorvik_receiver* receiver,
                                                 sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_find_owner(const char* path,
                                                      const sorvik_receiver* receiver,
                                                      sorvik_request** request);
SORVIK_C_EXPORT sorvik_status sorvik_start_render_thumbnail(const char* path, const char* provider,
                                                            const char* key, int width, int height,
                                                            const sorvik_receiver* receiver,
                                                            sorvik_request** request);

SORVIK_C_EXPORT sorvik_status sorvik_start_render_picture(const char* path, const char* provider,
                                                          const char* key, int width, int height,
                                                          const sorvik_receiver* receiver,
                                                          sorvik_request** request);

enum {
  SORVIK_SCAN_NEARBY = 1, /* only the known places around the path instead of all folders below */
  SORVIK_SCAN_ENTRIES = 2 /* after each card a LISTING of its entries, or a PROBLEM */
};

/* Finds the cards at and below a path, and the one that contains it: an event CARD for each as it
 * is found. `flags` combines SORVIK_SCAN_...; `fields` are those of the listings. END has
 * SORVIK_NO_PROVIDER if there is no card, SORVIK_MISSING or SORVIK_UNREADABLE if the path can't be
 * searched. */
SORVIK_C_EXPORT sorvik_status sorvik_start_scan(const char* path, unsigned flags,
                                                const sorvik_fields* fields,
                                                const sorvik_receiver* receiver,
                                                sorvik_request** request);

/* Waits at most `milliseconds` (negative: forever) for the next event of a request without a
 * receiver. SORVIK_TIMED_OUT if none came, SORVIK_INVALID_ARGUMENT after END. */
SORVIK_C_EXPORT sorvik_status sorvik_request_next(sorvik_request* request, int milliseconds,
                                                  sorvik_event** event);
/* Asks the request to stop. Returns at once; without effect after its end. */
SORVIK_C_EXPORT void sorvik_request_abort(sorvik_request* request);
/* Aborts the request if it hasn't ended, and drops its events: its callback isn't called any
 * more. With a queue, only on the thread that dispatches. */
SORVIK_C_EXPORT void sorvik_request_free(sorvik_request* request);

/* ---- Catalogue ---- */

/* Receives a line of JSON with its newline. Returning false ends the run. */
typedef bool (*sorvik_line_callback)(sorvik_text line, void* context);
/* Called at least every 50 ms. Returning true ends the run within about 200 ms. */
typedef bool (*sorvik_stop_callback)(void* context);

/* Writes the catalogue of all cards at, around and below the paths, which docs/catalogue.md
 * describes: a line for each card, clip, file and problem, then one that says how it ended. Calls
 * both callbacks on this thread and returns when the run has ended; sorvik_shutdown waits for that.
 * `stop` may be NULL. SORVIK_ABORTED if a callback ended it, SORVIK_NO_PROVIDER if there is no
 * card. */
SORVIK_C_EXPORT sorvik_status sorvik_write_catalogue(const char* const* paths, size_t count,
                                                     sorvik_line_callback receive,
                                                     sorvik_stop_callback stop, void* context);

#ifdef __cplusplus
}
#endif

#endif /* SORVIKPROVIDER_C_SORVIK_H */
