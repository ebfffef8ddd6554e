// Registry values beside prepared statements on a SQLite file of the same durability: as little as
// holds one value, and, for writes, with the row of the value's key, which tells when it changed.
#include "tvutil2/settings/registry.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdlib>
#include <string>

#include "bench/support/profile.h"

namespace {

// The peer: one table of the same shape, in WAL mode, with the same durability.
class Peer {
  public:
    Peer() {
        const auto file = bench::profile_folder() + "/peer.db";
        if (sqlite3_open(file.c_str(), &m_database) != SQLITE_OK) std::abort();
        sqlite3_exec(m_database,
                     "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                     "CREATE TABLE v (key INTEGER, name BLOB, type INTEGER, data BLOB,"
                     " PRIMARY KEY (key, name)) WITHOUT ROWID;"
                     "CREATE TABLE k (id INTEGER PRIMARY KEY, name BLOB, written INTEGER);"
                     "INSERT INTO k VALUES (1, x'004e', 0);"
                     "INSERT INTO v VALUES (1, x'004e', 4, x'2a000000')",
                     nullptr, nullptr, nullptr);
        prepare("SELECT type, data FROM v WHERE key = 1 AND name = x'004e'", m_select);
        prepare("INSERT OR REPLACE INTO v VALUES (1, x'004e', 4, ?1)", m_insert);
        prepare("UPDATE k SET written = ?1 WHERE id = 1", m_update);
        prepare("BEGIN IMMEDIATE", m_begin);
        prepare("COMMIT", m_commit);
    }
    ~Peer() {
        for (auto* statement : {m_select, m_insert, m_update, m_begin, m_commit}) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(m_database);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    int select() {
        sqlite3_step(m_select);
        const int type = sqlite3_column_int(m_select, 0);
        benchmark::DoNotOptimize(sqlite3_column_blob(m_select, 1));
        sqlite3_reset(m_select);
        return type;
    }
    // A new number each time: SQLite writes nothing where nothing changes.
    void insert() {
        ++m_number;
        sqlite3_bind_blob(m_insert, 1, &m_number, sizeof m_number, SQLITE_STATIC);
        run(m_insert);
    }
    void insert_with_key() {
        run(m_begin);
        sqlite3_bind_int64(m_update, 1, m_number);
        run(m_update);
        insert();
        run(m_commit);
    }

  private:
    void prepare(const char* sql, sqlite3_stmt*& statement) {
        if (sqlite3_prepare_v2(m_database, sql, -1, &statement, nullptr) != SQLITE_OK) std::abort();
    }

    static void run(sqlite3_stmt* statement) {
        if (sqlite3_step(statement) != SQLITE_DONE) std::abort();
        sqlite3_reset(statement);
    }

    DWORD m_number = 0;
    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_select = nullptr;
    sqlite3_stmt* m_insert = nullptr;
    sqlite3_stmt* m_update = nullptr;
    sqlite3_stmt* m_begin = nullptr;
    sqlite3_stmt* m_commit = nullptr;
};

Peer& peer() {
    static Peer instance;
    return instance;
}

CRegistry& key() {
    static CRegistry instance;
    if (instance.GetSafeHkey() == nullptr) {
        instance.Open(HKEY_CURRENT_USER, u"Software\\Bench", 1, KEY_ALL_ACCESS);
        instance.SetValue(u"N", DWORD{42});
        instance.SetValue(u"T", u"a text of some length");
    }
    return instance;
}

void read_number(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(key().GetValue(u"N", DWORD{0}));
}
void read_text(benchmark::State& state) {
    const CString fallback;
    for (auto _ : state) benchmark::DoNotOptimize(key().GetValue(u"T", fallback));
}
void read_after_write(benchmark::State& state) {
    DWORD number = 0;
    for (auto _ : state) {
        key().SetValue(u"N", ++number);
        benchmark::DoNotOptimize(key().GetValue(u"N", DWORD{0}));
    }
}
void write_number(benchmark::State& state) {
    DWORD number = 0;
    for (auto _ : state) key().SetValue(u"N", ++number);
}
void peer_read(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(peer().select());
}
void peer_write(benchmark::State& state) {
    for (auto _ : state) peer().insert();
}
void peer_write_with_key(benchmark::State& state) {
    for (auto _ : state) peer().insert_with_key();
}
void peer_read_after_write(benchmark::State& state) {
    for (auto _ : state) {
        peer().insert_with_key();
        benchmark::DoNotOptimize(peer().select());
    }
}

BENCHMARK(read_number)->Name("read a number|ours");
BENCHMARK(peer_read)->Name("read a number|SQLite SELECT");
BENCHMARK(read_text)->Name("read a text|ours");
BENCHMARK(peer_read)->Name("read a text|SQLite SELECT");
BENCHMARK(write_number)->Name("write a number|ours");
BENCHMARK(peer_write)->Name("write a number|SQLite INSERT");
BENCHMARK(peer_write_with_key)->Name("write a number|SQLite, two rows");
BENCHMARK(read_after_write)->Name("write and read|ours");
BENCHMARK(peer_read_after_write)->Name("write and read|SQLite, two rows");

}  // namespace
