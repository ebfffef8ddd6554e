#include "tvutil2/platform/registry/database.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/host_error.h"
#include "tvutil2/platform/registry/registry.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

namespace tvutil2 {
namespace {

constexpr int kBusyMilliseconds = 5000;

// "TvRg", so that file(1) and a person can tell a hive from another database.
constexpr int kApplicationId = 0x54765267;
constexpr int kFormatVersion = 2;

// Names are blobs of big-endian units: any unit survives, and the order of the bytes is the order
// of the units. "folded" is the name in upper case. Row ids are never used twice (AUTOINCREMENT),
// so that a handle to a deleted key can't come to mean another one. Key 1 is the root.
//
// Small pages, because a small change writes each page that it touches whole. A draft that nobody
// else sees needs no journal on the disk, nor an error of one, whose cause is lost with it.
//
// "names_changed" and "values_changed" count the changes of a key's sub keys and values. What is
// deleted leaves its counts to its parent ("values_carried" for those of values, which aren't
// changes of the parent's own), so that the sum over a tree only grows and tells any change in it.
constexpr std::string_view kKeysTable = R"(CREATE TABLE keys (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    parent INTEGER NOT NULL,
    folded BLOB NOT NULL,
    name BLOB NOT NULL,
    depth INTEGER NOT NULL,
    written INTEGER NOT NULL,
    names_changed INTEGER NOT NULL DEFAULT 0,
    values_changed INTEGER NOT NULL DEFAULT 0,
    values_carried INTEGER NOT NULL DEFAULT 0
))";
constexpr std::string_view kKeysIndex = "CREATE UNIQUE INDEX keys_by_name ON keys (parent, folded)";
constexpr std::string_view kValuesTable = R"(CREATE TABLE "values" (
    key INTEGER NOT NULL,
    folded BLOB NOT NULL,
    name BLOB NOT NULL,
    type INTEGER NOT NULL,
    data BLOB NOT NULL,
    PRIMARY KEY (key, folded)
) WITHOUT ROWID)";

std::string text_of_new_hive() {
    std::string text = "PRAGMA page_size = 2048; PRAGMA journal_mode = MEMORY; BEGIN;";
    for (const auto part : {kKeysTable, kKeysIndex, kValuesTable}) text.append(part).append(";");
    return text +
           "INSERT INTO keys (id, parent, folded, name, depth, written)"
           " VALUES (1, 0, x'', x'', 0, 0);"
           "PRAGMA application_id = 1417040487; PRAGMA user_version = 2;"
           "COMMIT; PRAGMA journal_mode = WAL";
}
static_assert(kApplicationId == 1417040487 && kFormatVersion == 2);

// In the order of Sql. A walk below a key takes the depth of its sub keys (?2) and goes down by one
// at each step, so that it comes by each row once, whatever a row says of its parent.
constexpr std::array<const char*, static_cast<std::size_t>(Sql::count)> kTexts = {
    /* format */
    "SELECT application_id, user_version "
    "FROM pragma_application_id, pragma_user_version",
    /* schema */ "SELECT type, name, tbl_name, sql FROM sqlite_schema ORDER BY name",
    /* begin */ "BEGIN",
    /* begin_write */ "BEGIN IMMEDIATE",
    /* commit */ "COMMIT",
    /* rollback */ "ROLLBACK",
    /* key_exists */ "SELECT depth FROM keys WHERE id = ?1",
    /* find_sub_key */ "SELECT id, depth FROM keys WHERE parent = ?1 AND folded = ?2",
    /* parent_of */ "SELECT parent FROM keys WHERE id = ?1",
    /* add_key */
    "INSERT INTO keys (parent, folded, name, depth, written) "
    "VALUES (?1, ?2, ?3, ?4, ?5)",
    /* touch_names */
    "UPDATE keys SET names_changed = names_changed + 1, written = ?2 WHERE id = ?1",
    /* touch_values */
    "UPDATE keys SET values_changed = values_changed + 1, written = ?2 WHERE id = ?1",
    /* key_info */ "SELECT written FROM keys WHERE id = ?1",
    /* sub_key_info */ "SELECT count(*), max(length(name)) FROM keys WHERE parent = ?1",
    /* value_info */
    "SELECT count(*), max(length(name)), max(length(data)) FROM \"values\" "
    "WHERE key = ?1",
    /* sub_key_at */
    "SELECT folded, name, depth, written FROM keys WHERE parent = ?1 "
    "ORDER BY folded LIMIT ?3 OFFSET ?2",
    /* sub_key_after */
    "SELECT folded, name, depth, written FROM keys WHERE parent = ?1 AND folded >= ?2 "
    "ORDER BY folded LIMIT ?3",
    /* value_at */
    "SELECT folded, name, type, data FROM \"values\" WHERE key = ?1 "
    "ORDER BY folded LIMIT ?3 OFFSET ?2",
    /* value_after */
    "SELECT folded, name, type, data FROM \"values\" "
    "WHERE key = ?1 AND folded >= ?2 ORDER BY folded LIMIT ?3",
    /* get_value */ "SELECT type, data FROM \"values\" WHERE key = ?1 AND folded = ?2",
    /* set_value */
    "INSERT INTO \"values\" (key, folded, name, type, data) "
    "VALUES (?1, ?2, ?3, ?4, ?5) ON CONFLICT DO UPDATE "
    "SET type = excluded.type, data = excluded.data",
    /* rename_key */ "UPDATE keys SET folded = ?2, name = ?3 WHERE id = ?1",
    /* delete_value */ "DELETE FROM \"values\" WHERE key = ?1 AND folded = ?2",
    /* carry_changes_below */
    "WITH RECURSIVE below(id, depth, names, vals) AS ("
    "SELECT id, depth, names_changed, values_changed + values_carried FROM keys "
    "WHERE parent = ?1 AND depth = ?2 "
    "UNION ALL SELECT keys.id, keys.depth, names_changed, values_changed + values_carried "
    "FROM below JOIN keys ON keys.parent = below.id AND keys.depth = below.depth + 1) "
    "UPDATE keys SET (names_changed, values_carried) = "
    "(SELECT names_changed + coalesce(sum(names), 0), values_carried + coalesce(sum(vals), 0) "
    "FROM below) WHERE id = ?1",
    /* carry_changes */
    "UPDATE keys SET (names_changed, values_carried) = "
    "(SELECT keys.names_changed + gone.names_changed, "
    "keys.values_carried + gone.values_changed + gone.values_carried "
    "FROM keys AS gone WHERE gone.id = ?1) WHERE id = ?2",
    /* delete_values_below */
    "WITH RECURSIVE below(id, depth) AS ("
    "SELECT id, depth FROM keys WHERE parent = ?1 AND depth = ?2 "
    "UNION ALL SELECT keys.id, keys.depth FROM below "
    "JOIN keys ON keys.parent = below.id AND keys.depth = below.depth + 1) "
    "DELETE FROM \"values\" WHERE key IN (SELECT id FROM below)",
    /* delete_keys_below */
    "WITH RECURSIVE below(id, depth) AS ("
    "SELECT id, depth FROM keys WHERE parent = ?1 AND depth = ?2 "
    "UNION ALL SELECT keys.id, keys.depth FROM below "
    "JOIN keys ON keys.parent = below.id AND keys.depth = below.depth + 1) "
    "DELETE FROM keys WHERE id IN (SELECT id FROM below)",
    /* delete_values_of */ "DELETE FROM \"values\" WHERE key = ?1",
    /* delete_key */ "DELETE FROM keys WHERE id = ?1",
    /* changes_of_key */ "SELECT names_changed, values_changed FROM keys WHERE id = ?1",
    /* changes_of_tree */
    "WITH RECURSIVE tree(id, depth, names, vals) AS ("
    "SELECT id, depth, names_changed, values_changed + values_carried FROM keys WHERE id = ?1 "
    "UNION ALL SELECT keys.id, keys.depth, names_changed, values_changed + values_carried "
    "FROM tree JOIN keys ON keys.parent = tree.id AND keys.depth = tree.depth + 1) "
    "SELECT sum(names), sum(vals) FROM tree",
};

bool is_on_read_only_disk(sqlite3* connection) {
    const char* file = sqlite3_db_filename(connection, "main");
    struct statvfs info {};
    return file != nullptr && statvfs(file, &info) == 0 && (info.f_flag & ST_RDONLY) != 0;
}

LONG write_error(int host_error) {
    const bool is_full = host_error == ENOSPC || host_error == EDQUOT || host_error == EFBIG;
    return static_cast<LONG>(is_full ? ERROR_DISK_FULL : ERROR_CANTWRITE);
}

// Of the file that wasn't written. The connection's own number is no help here: rolling back has
// overwritten it by the time that a commit returns.
int errno_of_write(sqlite3* connection) {
    for (const int which : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(connection, "main", which, &file);
        if (file == nullptr || file->pMethods == nullptr) continue;
        int host_error = 0;
        file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &host_error);
        if (host_error != 0) return host_error;
    }
    return 0;
}

LONG io_error(sqlite3* connection, int code) {
    const int host_error = sqlite3_system_errno(connection);
    switch (code) {
        case SQLITE_IOERR_WRITE:
            return write_error(errno_of_write(connection));
        case SQLITE_IOERR_FSYNC:
        case SQLITE_IOERR_DIR_FSYNC:
        case SQLITE_IOERR_TRUNCATE:
        case SQLITE_IOERR_SHMSIZE:
        case SQLITE_IOERR_SHMMAP:
        case SQLITE_IOERR_SHMOPEN:
            return write_error(host_error);
        case SQLITE_IOERR_NOMEM:
            return static_cast<LONG>(ERROR_NOT_ENOUGH_MEMORY);
        default:
            return static_cast<LONG>(ERROR_CANTREAD);
    }
}

LONG platform_error(sqlite3* connection, int code) {
    switch (code & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return ERROR_SUCCESS;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return static_cast<LONG>(ERROR_BUSY);
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            return static_cast<LONG>(ERROR_NOT_ENOUGH_MEMORY);
        case SQLITE_READONLY:
            return static_cast<LONG>(is_on_read_only_disk(connection) ? ERROR_WRITE_PROTECT
                                                                      : ERROR_ACCESS_DENIED);
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return static_cast<LONG>(ERROR_ACCESS_DENIED);
        case SQLITE_FULL:
            return static_cast<LONG>(ERROR_DISK_FULL);
        case SQLITE_CANTOPEN: {
            const int host_error = sqlite3_system_errno(connection);
            const bool is_denied = host_error == EACCES || host_error == EPERM;
            return static_cast<LONG>(is_denied ? ERROR_ACCESS_DENIED : ERROR_CANTOPEN);
        }
        case SQLITE_IOERR:
            return io_error(connection, code);
        default:
            // What isn't a database, is damaged, or lacks our tables.
            return static_cast<LONG>(ERROR_REGISTRY_CORRUPT);
    }
}

// An empty file of the right owner and mode for SQLite to fill; it takes the mode of its companion
// files from it. The mode is set apart from the umask.
LONG make_empty_file(const std::string& file, mode_t mode) {
    const Descriptor made(::open(file.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode));
    if (made.get() < 0 || fchmod(made.get(), mode) != 0) return errno_error();
    return ERROR_SUCCESS;
}

// What was linked must still be there after a power cut.
void sync_folder(const std::string& folder) {
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.get() >= 0) fsync(opened.get());
}

LONG fill_new_hive(const std::string& file) {
    sqlite3* connection = nullptr;
    int code = sqlite3_open_v2(file.c_str(), &connection,
                               SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code == SQLITE_OK) {
        sqlite3_extended_result_codes(connection, 1);
        code = sqlite3_exec(connection, text_of_new_hive().c_str(), nullptr, nullptr, nullptr);
    }
    const auto error = platform_error(connection, code);
    sqlite3_close(connection);
    return error;
}

}  // namespace

Query::~Query() {
    if (m_statement == nullptr) return;
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

Query& Query::bind(std::int64_t value) {
    if (m_statement != nullptr) sqlite3_bind_int64(m_statement, ++m_bound, value);
    return *this;
}

Query& Query::bind(std::string_view bytes) {
    // A null pointer would bind NULL where an empty blob is meant.
    const char* data = bytes.data() != nullptr ? bytes.data() : "";
    if (m_statement != nullptr) {
        sqlite3_bind_blob64(m_statement, ++m_bound, data, bytes.size(), SQLITE_STATIC);
    }
    return *this;
}

bool Query::next() {
    if (m_error != ERROR_SUCCESS) return false;
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW) return true;
    m_error = platform_error(sqlite3_db_handle(m_statement), code);
    return false;
}

LONG Query::run() {
    while (next()) {
    }
    return m_error;
}

std::int64_t Query::integer(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

bool Query::is_null(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

std::string_view Query::bytes(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
    return data == nullptr ? std::string_view() : std::string_view(data, size);
}

// Made under a name of its own and linked into place: a process killed in between leaves no half
// of a hive, and of two that make one at once the first one's stays.
LONG Database::create(const std::string& file, bool is_private) {
    const auto draft = file + ".new-" + std::to_string(getpid());
    ::unlink(draft.c_str());  // left behind by a killed process of the same number
    auto error = make_empty_file(draft, is_private ? 0600 : 0644);
    if (error == ERROR_SUCCESS) error = fill_new_hive(draft);
    if (error == ERROR_SUCCESS && ::link(draft.c_str(), file.c_str()) != 0 && errno != EEXIST) {
        error = errno_error();
    }
    for (const auto* suffix : {"", "-wal", "-shm"}) ::unlink((draft + suffix).c_str());
    if (error == ERROR_SUCCESS) sync_folder(file.substr(0, file.find_last_of('/')));
    return error;
}

LONG Database::open(const std::string& file, bool may_write) {
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0) {
        const bool is_missing = errno == ENOENT || errno == ENOTDIR;
        return is_missing ? static_cast<LONG>(ERROR_FILE_NOT_FOUND) : errno_error();
    }
    const int access = may_write ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY;
    const int code = sqlite3_open_v2(file.c_str(), &m_connection,
                                     access | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_NOFOLLOW, nullptr);
    auto error = platform_error(m_connection, code);
    if (error == ERROR_SUCCESS) {
        sqlite3_extended_result_codes(m_connection, 1);
        sqlite3_busy_timeout(m_connection, kBusyMilliseconds);
        // The WAL and its index stay behind, so that one who may only read can still do so.
        int persist = 1;
        sqlite3_file_control(m_connection, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
        // Closing must not wait for the disk: a fork closes (see Hive).
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        distrust();
        error = check_format();
        if (error == ERROR_SUCCESS) error = check_schema();
    }
    if (error != ERROR_SUCCESS) close();
    return error;
}

LONG Database::check_format() {
    auto error = execute(
        "PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 2000; "
        "PRAGMA journal_size_limit = 4194304; PRAGMA cell_size_check = ON");
    if (error != ERROR_SUCCESS) return error;
    auto format = query(Sql::format);
    if (format.next() &&
        (format.integer(0) != kApplicationId || format.integer(1) != kFormatVersion)) {
        return static_cast<LONG>(ERROR_REGISTRY_CORRUPT);
    }
    return format.error();
}

// The file may come from anybody: nothing in it is run, and nothing in it is larger than what this
// registry writes.
void Database::distrust() {
    sqlite3_db_config(m_connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    for (const int unwanted : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_TRIGGER,
                               SQLITE_DBCONFIG_ENABLE_VIEW}) {
        sqlite3_db_config(m_connection, unwanted, 0, nullptr);
    }
    constexpr int kRowOverhead = 1 << 17;  // the names twice, and the row's head
    sqlite3_limit(m_connection, SQLITE_LIMIT_LENGTH, int{REG_MAX_VALUE_DATA} + kRowOverhead);
}

// Word by word what create() has made: no view or trigger, no column more, no computed one.
LONG Database::check_schema() {
    struct Object {
        std::string_view type, name, table, text;
    };
    constexpr Object kObjects[] = {
        {"table", "keys", "keys", kKeysTable},
        {"index", "keys_by_name", "keys", kKeysIndex},
        {"table", "sqlite_sequence", "sqlite_sequence", "CREATE TABLE sqlite_sequence(name,seq)"},
        {"table", "values", "values", kValuesTable},
    };
    std::size_t met = 0;
    auto rows = query(Sql::schema);
    while (rows.next()) {
        if (met == std::size(kObjects)) return static_cast<LONG>(ERROR_REGISTRY_CORRUPT);
        const auto& object = kObjects[met++];
        if (rows.bytes(0) != object.type || rows.bytes(1) != object.name ||
            rows.bytes(2) != object.table || rows.bytes(3) != object.text) {
            return static_cast<LONG>(ERROR_REGISTRY_CORRUPT);
        }
    }
    if (rows.error() != ERROR_SUCCESS) return rows.error();
    return static_cast<LONG>(met == std::size(kObjects) ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT);
}

void Database::close() {
    for (auto*& statement : m_statements) {
        sqlite3_finalize(statement);
        statement = nullptr;
    }
    sqlite3_close(m_connection);
    m_connection = nullptr;
}

Query Database::query(Sql which) {
    auto*& statement = m_statements[static_cast<std::size_t>(which)];
    int code = SQLITE_OK;
    if (statement == nullptr) {
        code = sqlite3_prepare_v3(m_connection, kTexts[static_cast<std::size_t>(which)], -1,
                                  SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    }
    return {statement, platform_error(m_connection, code)};
}

int Database::changed_rows() const {
    return sqlite3_changes(m_connection);
}

std::int64_t Database::last_row_id() const {
    return sqlite3_last_insert_rowid(m_connection);
}

bool Database::is_stale() const {
    const int code = sqlite3_extended_errcode(m_connection);
    return code == SQLITE_READONLY_DBMOVED || code == SQLITE_READONLY_RECOVERY ||
           code == SQLITE_READONLY_CANTINIT;
}

// What was committed is in the log, or was taken from there into the hive's file, which SQLite
// brings to the disk before it writes over the log.
LONG Database::sync() {
    sqlite3_file* log = nullptr;
    sqlite3_file_control(m_connection, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    if (log == nullptr || log->pMethods == nullptr) return ERROR_SUCCESS;
    const bool is_done = log->pMethods->xSync(log, SQLITE_SYNC_NORMAL) == SQLITE_OK;
    return is_done ? LONG{ERROR_SUCCESS} : write_error(errno_of_write(m_connection));
}

LONG Database::execute(const char* sql) {
    return platform_error(m_connection, sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr));
}

// Asked of SQLite's own file object and not mapped from a descriptor of ours: closing one would
// drop every lock that SQLite holds on the index in this process.
const volatile std::uint64_t* Database::wal_index() {
    constexpr int kIndexBlock = 32768;
    sqlite3_file* file = nullptr;
    sqlite3_file_control(m_connection, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2) {
        return nullptr;
    }
    volatile void* block = nullptr;
    const int code = file->pMethods->xShmMap(file, 0, kIndexBlock, 0, &block);
    if (code != SQLITE_OK && code != SQLITE_READONLY) return nullptr;
    return static_cast<const volatile std::uint64_t*>(block);
}

Transaction::Transaction(Database& database, Sql how)
    : m_database(database), m_error(database.query(how).run()), m_open(m_error == ERROR_SUCCESS) {}

Transaction::~Transaction() {
    if (m_open) m_database.query(Sql::rollback).run();
}

LONG Transaction::commit() {
    m_error = m_database.query(Sql::commit).run();
    m_open = m_error != ERROR_SUCCESS;
    return m_error;
}

}  // namespace tvutil2
