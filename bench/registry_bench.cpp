// Registry values beside prepared statements on a SQLite file of the same durability: as little as
// holds one value, and, for writes, with the row of the value's key, which tells when it changed.
#include "tvutil2/settings/registry.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

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
        sqlite3_exec(m_database,
                     "WITH n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 10000)"
                     " INSERT INTO v SELECT 2, CAST(printf('%08d%08d', i, i) AS BLOB), 4,"
                     " x'2a000000' FROM n",
                     nullptr, nullptr, nullptr);
        prepare("SELECT name, type, data FROM v WHERE key = 2 ORDER BY name", m_select_all);
        prepare("BEGIN IMMEDIATE", m_begin);
        prepare("COMMIT", m_commit);
    }
    ~Peer() {
        for (auto* statement : {m_select, m_select_all, m_insert, m_update, m_begin, m_commit}) {
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
    // As many rows as the key below has values, all of them read in one statement.
    std::int64_t select_all() {
        std::int64_t bytes = 0;
        while (sqlite3_step(m_select_all) == SQLITE_ROW) {
            bytes += sqlite3_column_bytes(m_select_all, 0) + sqlite3_column_int(m_select_all, 1);
            benchmark::DoNotOptimize(sqlite3_column_blob(m_select_all, 0));
            benchmark::DoNotOptimize(sqlite3_column_blob(m_select_all, 2));
        }
        sqlite3_reset(m_select_all);
        return bytes;
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
    sqlite3_stmt* m_select_all = nullptr;
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

CString numbered(int number) {
    CString name;
    name.Format(u"%08d", number);
    return name;
}

// A key of that many values, made at its first use.
CRegistry& key_of(int values) {
    static std::map<int, CRegistry> keys;
    auto& made = keys[values];
    if (made.GetSafeHkey() == nullptr) {
        CString path;
        path.Format(u"Software\\Bench%d", values);
        made.Open(HKEY_CURRENT_USER, path, 1, KEY_ALL_ACCESS);
        for (int i = 0; i < values; ++i) made.SetValue(numbered(i), DWORD(i));
    }
    return made;
}

constexpr int kMany = 10000;

int list(CRegistry& listed, bool is_beside_writer) {
    char16_t name[64];
    DWORD index = 0;
    for (;; ++index) {
        DWORD count = 64;
        DWORD data = 0;
        DWORD size = sizeof data;
        DWORD type = 0;
        if (is_beside_writer && index % 10 == 0) listed.SetValue(u"00000000", index);
        if (RegEnumValueW(listed.GetSafeHkey(), index, name, &count, nullptr, &type,
                          reinterpret_cast<BYTE*>(&data), &size) != ERROR_SUCCESS) {
            return static_cast<int>(index);
        }
    }
}

void list_values(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(list(key_of(kMany), false));
}
void list_beside_writer(benchmark::State& state) {
    auto& listed = key_of(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(list(listed, true));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
void peer_list(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(peer().select_all());
}

void rename_key(benchmark::State& state) {
    CRegistry parent;
    parent.Open(HKEY_CURRENT_USER, u"Software\\BenchNames", 1, KEY_ALL_ACCESS);
    CRegistry first;
    first.Open(&parent, u"a", 1, KEY_ALL_ACCESS);
    for (int i = 0; i < state.range(0); ++i) first.SetValue(numbered(i), DWORD(i));
    bool is_back = false;
    for (auto _ : state) {
        parent.RenameKey(is_back ? u"b" : u"a", is_back ? u"a" : u"b");
        is_back = !is_back;
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    RegDeleteTreeW(parent.GetSafeHkey(), nullptr);
}

void read_in_turns(benchmark::State& state) {
    const auto values = static_cast<int>(state.range(0));
    auto& read = key_of(values);
    std::vector<CString> names;
    for (int i = 0; i < values; ++i) names.push_back(numbered(i));
    for (const auto& name : names) benchmark::DoNotOptimize(read.GetValue(name, DWORD{0}));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(read.GetValue(names[next], DWORD{0}));
        if (++next == names.size()) next = 0;
    }
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
BENCHMARK(read_in_turns)->Name("read a number|ours, one of")->Arg(100)->Arg(10000)->Arg(40000);
BENCHMARK(read_text)->Name("read a text|ours");
BENCHMARK(peer_read)->Name("read a text|SQLite SELECT");
BENCHMARK(write_number)->Name("write a number|ours");
BENCHMARK(peer_write)->Name("write a number|SQLite INSERT");
BENCHMARK(peer_write_with_key)->Name("write a number|SQLite, two rows");
BENCHMARK(read_after_write)->Name("write and read|ours");
BENCHMARK(peer_read_after_write)->Name("write and read|SQLite, two rows");
BENCHMARK(list_values)->Name("list 10000 values|ours");
BENCHMARK(peer_list)->Name("list 10000 values|SQLite SELECT over all");
BENCHMARK(list_beside_writer)->Name("list beside a writer|ours, of")->Arg(1000)->Arg(10000);
BENCHMARK(rename_key)->Name("rename a key|ours, values")->Arg(1000)->Arg(10000);

}  // namespace
