// A SQLite connection to one hive file, with its prepared statements and its errors in the
// platform's terms.
//
// A connection is used by one thread at a time; its owner holds the lock.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <array>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tvutil2 {

/// The statements of a hive. The text of each stands in database.cpp.
enum class Sql : std::uint8_t {
    format,
    schema,
    begin,
    begin_write,
    commit,
    rollback,
    key_exists,
    find_sub_key,
    parent_of,
    add_key,
    touch_names,
    touch_values,
    key_info,
    sub_key_info,
    value_info,
    sub_key_at,
    sub_key_after,
    value_at,
    value_after,
    get_value,
    set_value,
    rename_key,
    delete_value,
    carry_changes_below,
    carry_changes,
    delete_values_below,
    delete_keys_below,
    delete_values_of,
    delete_key,
    changes_of_key,
    changes_of_tree,
    count
};

/// A statement being run: bound from the left, stepped, and reset when it goes out of scope.
class Query {
  public:
    Query(sqlite3_stmt* statement, LONG error) : m_statement(statement), m_error(error) {}
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& bind(std::int64_t value);
    /// The bytes must outlive the query.
    Query& bind(std::string_view bytes);

    /// True when there is a row to read; false at the end and on failure, which error() tells.
    bool next();
    /// Runs a statement that gives no row.
    LONG run();
    [[nodiscard]] LONG error() const { return m_error; }

    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] bool is_null(int column) const;
    /// Valid until the next step.
    [[nodiscard]] std::string_view bytes(int column) const;

  private:
    sqlite3_stmt* m_statement;
    LONG m_error;
    int m_bound = 0;
};

class Database {
  public:
    Database() = default;
    ~Database() { close(); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Makes a new, empty hive at `file` unless there is one: it appears whole or not at all. Its
    /// folder exists. Readable by all unless it is private to the user.
    static LONG create(const std::string& file, bool is_private);

    /// ERROR_FILE_NOT_FOUND when there is no such file; ERROR_REGISTRY_CORRUPT when it is no hive.
    /// What others may have put into the file (views, triggers, tables of another form) is never
    /// run. No part of the path is a link.
    LONG open(const std::string& file, bool may_write);
    void close();
    [[nodiscard]] bool is_open() const { return m_connection != nullptr; }

    [[nodiscard]] Query query(Sql which);
    /// Rows changed by the last statement.
    [[nodiscard]] int changed_rows() const;
    [[nodiscard]] std::int64_t last_row_id() const;

    /// Whether the last failure may go away by opening the file again: it was replaced, or the
    /// process that had to tidy up behind a killed one is gone.
    [[nodiscard]] bool is_stale() const;

    /// Returns when all that was committed before, by anyone, is on the disk. The connection has
    /// read before.
    LONG sync();

    /// The head of the mapped WAL index (48 bytes, twice), or null when there is none to share.
    /// Valid until the connection is closed.
    [[nodiscard]] const volatile std::uint64_t* wal_index();

  private:
    void distrust();
    LONG check_format();
    LONG check_schema();
    LONG execute(const char* sql);

    sqlite3* m_connection = nullptr;
    std::array<sqlite3_stmt*, static_cast<std::size_t>(Sql::count)> m_statements{};
};

/// A transaction that is rolled back unless it is committed.
class Transaction {
  public:
    Transaction(Database& database, Sql how);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    [[nodiscard]] LONG error() const { return m_error; }
    LONG commit();

  private:
    Database& m_database;
    LONG m_error;
    bool m_open;
};

}  // namespace tvutil2
