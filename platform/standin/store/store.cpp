#include "store.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "platform/wire/file_descriptor.h"

namespace standin {
namespace {

constexpr int kApplicationId = 0x5154534e;
constexpr int kFormat = 1;
constexpr mode_t kOwnerOnly = 0600;
// Somebody who looks into the file with a shell may hold it for a moment.
constexpr int kBusyMilliseconds = 5000;
constexpr const char* kCannotRead = "cannot read the database";
constexpr const char* kCannotWrite = "cannot write the database";

struct CloseDatabase {
  void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

[[noreturn]] void fail_errno(const std::string& what, const std::string& file) {
  throw std::runtime_error(what + " " + file + ": " + std::generic_category().message(errno));
}

class SqliteStore final : public Store {
 public:
  explicit SqliteStore(const std::string& file);
  ~SqliteStore() override { shut(); }

  std::optional<std::string> get(std::string_view key) override;
  std::optional<Record> seek(std::string_view key) override;
  std::optional<Record> next(std::string_view key) override;
  void apply(const Batch& batch) override;
  void close() override { shut(); }

 private:
  // A statement in use: bound, stepped, and reset for the next one when it goes.
  class Run {
   public:
    Run(SqliteStore& store, const Statement& statement, const char* failure = kCannotRead);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    Run& bind(int index, std::string_view octets, sqlite3_destructor_type keep = SQLITE_STATIC);
    bool step();  // a row is there
    std::string column(int index) const;

   private:
    SqliteStore& store_;
    sqlite3_stmt* statement_;
    const char* failure_;
  };

  void lock();
  void protect() const;
  void open_database();
  void check_format();
  void use_write_ahead_log();
  void create_table();
  void prepare();
  void shut() noexcept;
  Statement prepare(const char* sql);
  void execute(const char* sql);
  int number(const char* sql);
  std::optional<Record> step_cursor();
  void drop_cursor() noexcept { cursor_.reset(); }
  void hold_snapshot();
  void release_snapshot();
  void write(const Batch& batch);
  [[noreturn]] void fail(const std::string& what) const;

  std::string file_;
  FileDescriptor lock_;
  Database db_;
  Statement get_, seek_, put_, remove_, snapshot_, begin_, commit_, rollback_;
  // `seek_` while it runs, and the key where it stands.
  std::unique_ptr<Run> cursor_;
  std::string cursor_key_;
};

SqliteStore::Run::Run(SqliteStore& store, const Statement& statement, const char* failure)
    : store_(store), statement_(statement.get()), failure_(failure) {
  if (!statement_) throw std::runtime_error("the database " + store.file_ + " is closed");
}

SqliteStore::Run::~Run() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

SqliteStore::Run& SqliteStore::Run::bind(int index, std::string_view octets,
                                         sqlite3_destructor_type keep) {
  // A null pointer would bind NULL instead of no octets.
  const char* data = octets.empty() ? "" : octets.data();
  if (sqlite3_bind_blob64(statement_, index, data, octets.size(), keep) != SQLITE_OK)
    store_.fail(failure_);
  return *this;
}

bool SqliteStore::Run::step() {
  const int rc = sqlite3_step(statement_);
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) store_.fail(failure_);
  return rc == SQLITE_ROW;
}

std::string SqliteStore::Run::column(int index) const {
  const void* data = sqlite3_column_blob(statement_, index);
  const int size = sqlite3_column_bytes(statement_, index);
  return data ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
              : std::string();
}

SqliteStore::SqliteStore(const std::string& file) : file_(file) {
  lock();
  protect();
  open_database();
  check_format();
  use_write_ahead_log();
  create_table();
  prepare();
}

// A file of its own carries the lock: closing any descriptor of the database itself would drop
// SQLite's locks on it (POSIX record locks belong to the process, not to the descriptor).
void SqliteStore::lock() {
  const std::string lock_file = file_ + "-lock";
  lock_ = FileDescriptor(::open(lock_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
  if (!lock_) fail_errno("cannot open the database", file_);
  if (::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) return;
  if (errno == EWOULDBLOCK)
    throw std::runtime_error("the database " + file_ + " is in use by another server");
  fail_errno("cannot lock the database", file_);
}

// SQLite gives the files beside the database the database's own mode.
void SqliteStore::protect() const {
  const FileDescriptor fd(::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
  if (!fd || ::fchmod(fd.get(), kOwnerOnly) != 0) fail_errno("cannot open the database", file_);
}

void SqliteStore::open_database() {
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(file_.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  db_.reset(db);
  if (rc != SQLITE_OK) fail("cannot open the database");
  sqlite3_extended_result_codes(db, 1);
  sqlite3_busy_timeout(db, kBusyMilliseconds);
}

void SqliteStore::check_format() {
  const int application = number("PRAGMA application_id");
  const int format = number("PRAGMA user_version");
  // A server that was killed before its first commit leaves an empty database.
  if (application == 0 && format == 0 && number("SELECT count(*) FROM sqlite_master") == 0) return;
  if (application != kApplicationId)
    throw std::runtime_error(file_ + " is a database of another program");
  if (format != kFormat)
    throw std::runtime_error("the database " + file_ + " is of format " + std::to_string(format) +
                             "; this server reads format " + std::to_string(kFormat));
}

// SQLite answers the mode that it took; some file systems cannot have a log.
void SqliteStore::use_write_ahead_log() {
  const Statement statement = prepare("PRAGMA journal_mode = WAL");
  Run run(*this, statement);
  if (!run.step() || run.column(0) != "wal")
    throw std::runtime_error("the file system of " + file_ + " cannot hold a write-ahead log");
  execute("PRAGMA synchronous = FULL");
}

void SqliteStore::create_table() {
  if (number("PRAGMA application_id") == kApplicationId) return;
  const std::string sql =
      "BEGIN IMMEDIATE;"
      "PRAGMA application_id = " +
      std::to_string(kApplicationId) +
      ";"
      "PRAGMA user_version = " +
      std::to_string(kFormat) +
      ";"
      "CREATE TABLE record (key BLOB NOT NULL PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID;"
      "COMMIT";
  execute(sql.c_str());
}

void SqliteStore::prepare() {
  get_ = prepare("SELECT value FROM record WHERE key = ?");
  seek_ = prepare("SELECT key, value FROM record WHERE key >= ? ORDER BY key");
  put_ = prepare("REPLACE INTO record (key, value) VALUES (?, ?)");
  remove_ = prepare("DELETE FROM record WHERE key = ?");
  snapshot_ = prepare("BEGIN");
  begin_ = prepare("BEGIN IMMEDIATE");
  commit_ = prepare("COMMIT");
  rollback_ = prepare("ROLLBACK");
}

Statement SqliteStore::prepare(const char* sql) {
  sqlite3_stmt* s = nullptr;
  if (sqlite3_prepare_v3(db_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr) != SQLITE_OK)
    fail(kCannotRead);
  return Statement(s);
}

void SqliteStore::execute(const char* sql) {
  if (sqlite3_exec(db_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    fail("cannot open the database");
}

int SqliteStore::number(const char* sql) {
  const Statement statement = prepare(sql);
  Run run(*this, statement);
  run.step();
  return sqlite3_column_int(statement.get(), 0);
}

void SqliteStore::shut() noexcept {
  drop_cursor();
  for (Statement* s : {&get_, &seek_, &put_, &remove_, &snapshot_, &begin_, &commit_, &rollback_})
    s->reset();
  db_.reset();
  lock_.reset();
}

void SqliteStore::fail(const std::string& what) const {
  throw std::runtime_error(what + " " + file_ + ": " + sqlite3_errmsg(db_.get()));
}

// Reads stay in one read transaction from write to write: to lock the file and to look for news of
// other processes, which there are none, would cost more than the read itself.
void SqliteStore::hold_snapshot() {
  if (db_ && sqlite3_get_autocommit(db_.get())) Run(*this, snapshot_).step();
}

void SqliteStore::release_snapshot() {
  if (db_ && !sqlite3_get_autocommit(db_.get())) Run(*this, commit_).step();
}

std::optional<std::string> SqliteStore::get(std::string_view key) {
  hold_snapshot();
  Run run(*this, get_);
  if (!run.bind(1, key).step()) return std::nullopt;
  return run.column(0);
}

// A walk asks for keys that grow in small steps, and one step of the cursor is a fraction of a
// search from the root: so a step is tried first.
std::optional<Record> SqliteStore::seek(std::string_view key) {
  if (cursor_ && cursor_key_ < key) {
    auto record = step_cursor();
    if (!record || record->first >= key) return record;
  }
  drop_cursor();
  hold_snapshot();
  auto run = std::make_unique<Run>(*this, seek_);
  // SQLite keeps a copy: the cursor outlives the caller's key.
  run->bind(1, key, SQLITE_TRANSIENT);
  cursor_ = std::move(run);
  return step_cursor();
}

std::optional<Record> SqliteStore::next(std::string_view key) {
  // No octet string stands between a key and the key with a zero octet behind it.
  return seek(std::string(key).append(1, '\0'));
}

// At the end there is no cursor any more.
std::optional<Record> SqliteStore::step_cursor() {
  if (!cursor_->step()) {
    drop_cursor();
    return std::nullopt;
  }
  cursor_key_ = cursor_->column(0);
  return Record(cursor_key_, cursor_->column(1));
}

void SqliteStore::write(const Batch& batch) {
  for (const auto& [key, value] : batch) {
    if (value)
      Run(*this, put_, kCannotWrite).bind(1, key).bind(2, *value).step();
    else
      Run(*this, remove_, kCannotWrite).bind(1, key).step();
  }
}

void SqliteStore::apply(const Batch& batch) {
  drop_cursor();
  release_snapshot();
  Run(*this, begin_, kCannotWrite).step();
  try {
    write(batch);
    Run(*this, commit_, kCannotWrite).step();
  } catch (...) {
    // Some failures (a full disk among them) have ended the transaction already.
    if (!sqlite3_get_autocommit(db_.get())) sqlite3_step(rollback_.get());
    sqlite3_reset(rollback_.get());
    throw;
  }
}

}  // namespace

std::unique_ptr<Store> Store::open(const std::string& file) {
  return std::make_unique<SqliteStore>(file);
}

}  // namespace standin
