// SPDX-License-Identifier: MIT
#include <sqlite3.h>

#include <array>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "CatalogueOutput.h"
#include "Failure.h"

namespace host {
namespace {

// The columns are taken from the line by SQLite's own JSON functions; ?1 is the line.
constexpr char kSchema[] = R"(
create table if not exists card(
  id text primary key, identity text, path text, provider text, score integer, clips integer,
  files integer, bytes integer, complete integer, depth text, errors integer, warnings integer,
  modified text, tool text, json text);
create table if not exists clip(
  card text, key text, identity text, name text, created text, start text, frames integer,
  seconds real, width integer, height integer, make text, model text, serial text, good integer,
  json text, primary key(card, key));
create table if not exists file(
  card text, path text, role text, part text, owner text, bytes integer, modified text,
  present integer, json text, primary key(card, path));
create table if not exists problem(
  card text, path text, kind text, severity text, role text, detail text, json text);
create index if not exists card_identity on card(identity);
create index if not exists card_path on card(path);
create index if not exists clip_identity on clip(identity);
create index if not exists clip_created on clip(created);
create index if not exists clip_model on clip(model, created);
create index if not exists file_path on file(path);
create index if not exists file_present on file(present);
create index if not exists problem_card on problem(card);
create index if not exists problem_path on problem(path);
)";

struct LineKind {
  std::string_view prefix;  // of the line
  const char* sql;
};

constexpr LineKind kKinds[] = {
    {R"({"type":"card")", R"(
insert or replace into card values(?1->>'id', ?1->>'identity', ?1->>'path', ?1->>'provider',
  ?1->>'score', ?1->>'clips', ?1->>'files', ?1->>'bytes', ?1->>'complete', ?1->>'depth',
  ?1->>'errors', ?1->>'warnings', ?1->>'modified', ?1->>'tool', ?1))"},
    {R"({"type":"clip")", R"(
insert or replace into clip values(?1->>'card', ?1->>'key', ?1->>'identity',
  ?1->>'$.fields.Name', ?1->>'$.fields.CreateDate', ?1->>'$.fields.startTimecode.timecode',
  ?1->>'$.fields.duration.count',
  cast(?1->>'$.fields.duration.count' as real)
    / cast(?1->>'$.fields.duration.rate' as real)
    * cast(substr(?1->>'$.fields.duration.rate',
                  instr(?1->>'$.fields.duration.rate', '/') + 1) as real),
  ?1->>'$.fields.videoFrameSize.width', ?1->>'$.fields.videoFrameSize.height',
  ?1->>'$.fields.Make', coalesce(?1->>'$.fields.Model', ?1->>'$.fields.cameraModel'),
  ?1->>'$.fields.SerialNumber', ?1->>'$.fields.good', ?1))"},
    {R"({"type":"file")", R"(
insert or replace into file values(?1->>'card', ?1->>'path', ?1->>'role', ?1->>'part',
  ?1->>'$.owners[0]', ?1->>'bytes', ?1->>'modified', ?1->>'present', ?1))"},
    {R"({"type":"problem")", R"(
insert into problem values(?1->>'card', ?1->>'path', ?1->>'kind', ?1->>'severity', ?1->>'role',
  ?1->>'detail', ?1))"},
};

// Removes what an earlier run wrote about the card, or about the folder that had a problem.
constexpr const char* kRemovals[] = {
    "delete from clip where card = ?1->>'id'", "delete from file where card = ?1->>'id'",
    "delete from problem where card = ?1->>'id' or (card is null and path = ?1->>'path')"};
constexpr char kRemoveProblem[] =
    "delete from problem where card is null and ?1->>'card' is null and path = ?1->>'path'";

class DatabaseWriter final : public LineWriter {
 public:
  explicit DatabaseWriter(std::string path) : path_(std::move(path)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(path_.c_str(), &opened);
    database_.reset(opened);
    if (result != SQLITE_OK) Fail();
    sqlite3_busy_timeout(opened, kBusyMilliseconds);
    Execute("begin immediate");
    Execute(kSchema);
    for (std::size_t i = 0; i < inserts_.size(); ++i) inserts_[i] = Prepare(kKinds[i].sql);
    for (std::size_t i = 0; i < removals_.size(); ++i) removals_[i] = Prepare(kRemovals[i]);
    removeProblem_ = Prepare(kRemoveProblem);
  }

  void Write(std::string_view line) override {
    for (std::size_t i = 0; i < inserts_.size(); ++i) {
      if (!line.starts_with(kKinds[i].prefix)) continue;
      if (i == kCard) {
        for (const Statement& removal : removals_) Run(removal, line);
      }
      if (i == kProblem) Run(removeProblem_, line);
      Run(inserts_[i], line);
    }
  }

  void Finish() override { Execute("commit"); }

 private:
  static constexpr int kBusyMilliseconds = 60'000;
  static constexpr std::size_t kCard = 0;
  static constexpr std::size_t kProblem = 3;

  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  [[noreturn]] void Fail() const {
    throw Failure(kFailed, path_,
                  std::string("cannot write (") + sqlite3_errmsg(database_.get()) + ")");
  }

  void Execute(const char* sql) {
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
  }

  Statement Prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database_.get(), sql, -1, &statement, nullptr) != SQLITE_OK) Fail();
    return Statement(statement);
  }

  void Run(const Statement& statement, std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    sqlite3_bind_text(statement.get(), 1, line.data(), static_cast<int>(line.size()),
                      SQLITE_STATIC);
    const int result = sqlite3_step(statement.get());
    sqlite3_reset(statement.get());
    if (result != SQLITE_DONE) Fail();
  }

  const std::string path_;
  std::unique_ptr<sqlite3, Close> database_;
  std::array<Statement, std::size(kKinds)> inserts_;
  std::array<Statement, std::size(kRemovals)> removals_;
  Statement removeProblem_;
};

}  // namespace

std::unique_ptr<LineWriter> WriteLinesToDatabase(const std::string& path) {
  return std::make_unique<DatabaseWriter>(path);
}

}  // namespace host
