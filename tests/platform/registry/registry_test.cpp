#include "tvutil2/platform/registry/registry.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

LONG code(DWORD error) {
    return static_cast<LONG>(error);
}

LONG create(HKEY base, const std::u16string& path, HKEY& key, DWORD access = KEY_ALL_ACCESS,
            DWORD* disposition = nullptr) {
    return RegCreateKeyExW(base, path.c_str(), 0, nullptr, 0, access, nullptr, &key, disposition);
}

HKEY made(const std::u16string& path, DWORD access = KEY_ALL_ACCESS) {
    HKEY key = nullptr;
    EXPECT_EQ(create(HKEY_CURRENT_USER, path, key, access), 0);
    return key;
}

LONG set(HKEY key, const char16_t* name, const std::string& data, DWORD type = REG_BINARY) {
    return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                          static_cast<DWORD>(data.size()));
}

LONG query(HKEY key, const char16_t* name) {
    return RegQueryValueExW(key, name, nullptr, nullptr, nullptr, nullptr);
}

std::u16string key_at(HKEY key, DWORD index) {
    std::array<char16_t, 256> name{};
    return RegEnumKeyW(key, index, name.data(), 256) == 0 ? name.data() : u"";
}

TEST(Registry, PathsAreTakenApartOrRefused) {
    made(u"P\\Q");
    std::u16string levels = u"D";
    for (DWORD i = 1; i < REG_MAX_NEW_LEVELS; ++i) levels += u"\\D";
    struct Case {
        std::u16string path;
        DWORD open, create;
    };
    const Case cases[] = {
        {u"", 0, 0},
        {u"P\\Q", 0, 0},
        {u"p\\q\\", 0, 0},
        {u"\\P", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        {u"\\", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        {u"P\\\\\\Q", 0, 0},
        {u"P\\Q\\\\", 0, 0},
        {u"P\\R", ERROR_FILE_NOT_FOUND, 0},
        {std::u16string(255, u'x'), ERROR_FILE_NOT_FOUND, 0},
        {std::u16string(256, u'x'), ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
        {levels + u"\\D", ERROR_FILE_NOT_FOUND, ERROR_INVALID_PARAMETER},
        {levels, ERROR_FILE_NOT_FOUND, 0},
    };
    for (const auto& test : cases) {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, test.path.c_str(), 0, KEY_READ, &key),
                  code(test.open));
        EXPECT_EQ(create(HKEY_CURRENT_USER, test.path, key), code(test.create));
    }
}

TEST(Registry, DepthHasALimit) {
    auto* key = made(u"1");
    for (DWORD depth = 2; depth <= REG_MAX_DEPTH; ++depth) {
        HKEY next = nullptr;
        ASSERT_EQ(create(key, u"x", next), 0) << depth;
        RegCloseKey(key);
        key = next;
    }
    HKEY below = nullptr;
    EXPECT_EQ(create(key, u"x", below), code(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(SHDeleteKeyW(HKEY_CURRENT_USER, u"1"), 0);
    EXPECT_EQ(query(key, u""), code(ERROR_KEY_DELETED));
}

TEST(Registry, AHandleDoesWhatItWasOpenedFor) {
    made(u"Rights\\Below");
    set(made(u"Rights"), u"v", "x");
    for (const DWORD right : {KEY_QUERY_VALUE, KEY_SET_VALUE, KEY_CREATE_SUB_KEY,
                              KEY_ENUMERATE_SUB_KEYS, KEY_NOTIFY, KEY_READ, KEY_WRITE}) {
        SCOPED_TRACE(right);
        const auto expected = [right](DWORD needed) {
            return (right & needed & 0x1F) != 0 ? 0 : code(ERROR_ACCESS_DENIED);
        };
        auto* const key = made(u"Rights", right);
        HKEY below = nullptr;
        EXPECT_EQ(query(key, u"v"), expected(KEY_QUERY_VALUE));
        EXPECT_EQ(set(key, u"v", "x"), expected(KEY_SET_VALUE));
        EXPECT_EQ(create(key, u"Made", below), expected(KEY_CREATE_SUB_KEY));
        EXPECT_EQ(create(key, u"Below", below), 0);
        std::array<char16_t, 256> name{};
        EXPECT_EQ(RegEnumKeyW(key, 0, name.data(), 256), expected(KEY_ENUMERATE_SUB_KEYS));
        RegDeleteKeyW(HKEY_CURRENT_USER, u"Rights\\Made");
        RegCloseKey(key);
    }
}

TEST(Registry, NamesKeepTheirSpellingAndAreListedInOrder) {
    auto* const key = made(u"Order");
    for (const auto* name : {u"b", u"Ärger", u"C", u"a_", u"aB"})
        made(u"Order\\" + std::u16string(name));
    DWORD disposition = 0;
    HKEY again = nullptr;
    EXPECT_EQ(create(key, u"äRGER", again, KEY_READ, &disposition), 0);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    std::vector<std::u16string> names;
    for (DWORD i = 0; !key_at(key, i).empty(); ++i) names.push_back(key_at(key, i));
    EXPECT_EQ(names, (std::vector<std::u16string>{u"aB", u"a_", u"b", u"C", u"Ärger"}));
    EXPECT_EQ(key_at(key, 2), u"b");
    EXPECT_EQ(key_at(key, 0), u"aB");
}

TEST(Registry, SizesOfAValue) {
    auto* const key = made(u"Sizes");
    const std::string text("a\0b\0", 4);
    ASSERT_EQ(set(key, u"v", text, REG_SZ), 0);
    struct Case {
        DWORD room, error;
        std::string buffer;
    };
    const Case cases[] = {
        {3, ERROR_MORE_DATA, "######"},
        {4, 0, std::string("a\0b\0##", 6)},
        {5, 0, std::string("a\0b\0##", 6)},
        {6, 0, std::string("a\0b\0\0\0", 6)},
    };
    for (const auto& test : cases) {
        std::string buffer(6, '#');
        DWORD size = test.room;
        DWORD type = 0;
        EXPECT_EQ(RegQueryValueExW(key, u"V", nullptr, &type,
                                   reinterpret_cast<BYTE*>(buffer.data()), &size),
                  code(test.error));
        EXPECT_EQ(size, 4U);
        EXPECT_EQ(type, REG_SZ);
        EXPECT_EQ(buffer, test.buffer);
    }
    EXPECT_EQ(query(key, u"none"), code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(set(key, std::u16string(16384, u'n').c_str(), "x"), code(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(set(key, std::u16string(16383, u'n').c_str(), "x"), 0);
    EXPECT_EQ(RegSetValueExW(key, u"v", 0, REG_BINARY, nullptr, 1), code(ERROR_INVALID_PARAMETER));
}

TEST(Registry, ValuesAreListedInOrderAsFarAsTheyFit) {
    auto* const key = made(u"Values");
    ASSERT_EQ(set(key, u"b", "12", REG_BINARY), 0);
    ASSERT_EQ(set(key, u"A", std::string("t\0", 2), REG_SZ), 0);
    ASSERT_EQ(set(key, u"", "", REG_NONE), 0);
    ASSERT_EQ(set(key, u"cc", "1234", REG_DWORD), 0);
    struct Case {
        DWORD index, name_room, data_room, error;
        std::u16string name;
        DWORD type;
        std::string data;
    };
    const Case cases[] = {
        {0, 1, 0, 0, u"", REG_NONE, ""},
        {1, 2, 4, 0, u"A", REG_SZ, std::string("t\0", 2)},
        {2, 9, 9, 0, u"b", REG_BINARY, "12"},
        {3, 3, 4, 0, u"cc", REG_DWORD, "1234"},
        {4, 9, 9, ERROR_NO_MORE_ITEMS, u"", 0, ""},
        {3, 2, 9, ERROR_MORE_DATA, u"", 0, ""},
        {0, 0, 9, ERROR_MORE_DATA, u"", 0, ""},
        {3, 3, 3, ERROR_MORE_DATA, u"cc", REG_DWORD, "####"},
        {3, 3, 4, 0, u"cc", REG_DWORD, "1234"},
        {0xFFFFFFFF, 9, 9, ERROR_NO_MORE_ITEMS, u"", 0, ""},
        {0, 9, 9, 0, u"", REG_NONE, ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.index);
        std::array<char16_t, 9> name{};
        std::string data(9, '#');
        DWORD count = test.name_room, size = test.data_room, type = 0;
        EXPECT_EQ(RegEnumValueW(key, test.index, name.data(), &count, nullptr, &type,
                                reinterpret_cast<BYTE*>(data.data()), &size),
                  code(test.error));
        EXPECT_EQ(name.data(), test.name);
        EXPECT_EQ(type, test.type);
        EXPECT_EQ(data.substr(0, test.data.size()), test.data);
        if (test.error == 0 || type != 0) {
            EXPECT_EQ(count, test.name.size());
            EXPECT_EQ(size, test.data.size());
        }
    }
    std::array<char16_t, 9> name{};
    DWORD count = 9, size = 0;
    EXPECT_EQ(RegEnumValueW(key, 3, name.data(), &count, nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, 4U);
    count = 9;
    EXPECT_EQ(RegDeleteValueW(key, u"A"), 0);
    EXPECT_EQ(RegEnumValueW(key, 1, name.data(), &count, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(std::u16string(name.data()), u"b");
}

TEST(Registry, AListIsGoneThroughWhileItChanges) {
    auto* const key = made(u"List");
    const auto value_at = [key](DWORD index) {
        std::array<char16_t, 9> name{};
        DWORD count = 9;
        const auto error =
            RegEnumValueW(key, index, name.data(), &count, nullptr, nullptr, nullptr, nullptr);
        return error == 0 ? std::u16string(name.data()) : u"";
    };
    for (const auto* name : {u"b", u"d", u"f", u"h"}) set(key, name, "x");
    EXPECT_EQ(value_at(0), u"b");
    set(made(u"Elsewhere"), u"v", "x");
    EXPECT_EQ(value_at(1), u"d");
    set(key, u"a", "x");  // before and behind: neither is met twice nor passed over
    set(key, u"e", "x");
    EXPECT_EQ(value_at(2), u"e");
    set(key, u"e", "changed");
    EXPECT_EQ(value_at(2), u"e");
    RegDeleteValueW(key, u"a");
    EXPECT_EQ(value_at(3), u"f");
    RegDeleteValueW(key, u"f");  // the very one: the index counts
    EXPECT_EQ(value_at(3), u"h");
    EXPECT_EQ(value_at(4), u"");
    EXPECT_EQ(value_at(0), u"b");
}

TEST(Registry, ALongListReadAheadIsWhole) {
    auto* const key = made(u"Long");
    const std::string large(40'000, 'l');  // two of these are more than is read ahead
    for (DWORD i = 0; i < 700; ++i) {
        const std::u16string name{static_cast<char16_t>(0x4E00 + i)};
        ASSERT_EQ(set(key, name.c_str(), i % 100 < 5 ? large : "s"), 0);
        made(u"Long\\" + name);
    }
    for (const bool is_root : {false, true}) {
        DWORD met = 0;
        auto* const listed = is_root ? HKEY_CURRENT_USER : key;
        if (is_root) {
            for (char16_t c = 0x4E00; c < 0x4F00; ++c) set(listed, std::u16string{c}.c_str(), "s");
        }
        for (;; ++met) {
            std::array<char16_t, 9> name{};
            DWORD count = 9;
            const auto error =
                RegEnumValueW(listed, met, name.data(), &count, nullptr, nullptr, nullptr, nullptr);
            if (error != 0) break;
            ASSERT_EQ(name[0], 0x4E00 + met);
        }
        EXPECT_EQ(met, is_root ? 256U : 700U);
    }
    DWORD met = 0;
    while (key_at(key, met) == std::u16string{static_cast<char16_t>(0x4E00 + met)}) ++met;
    EXPECT_EQ(met, 700U);
}

TEST(Registry, ValuesBeyondTheCachesRoomAreStillRight) {
    auto* const key = made(u"Many");
    const std::string padding(4000, 'p');
    const auto text_of = [&](DWORD i) { return std::to_string(i) + padding; };
    const auto name_of = [](DWORD i) { return std::u16string{static_cast<char16_t>(0x4E00 + i)}; };
    for (DWORD i = 0; i < 1500; ++i) ASSERT_EQ(set(key, name_of(i).c_str(), text_of(i)), 0);
    for (DWORD i = 0; i < 4500; ++i) {
        std::string data(5000, '#');
        DWORD size = 5000;
        ASSERT_EQ(RegQueryValueExW(key, name_of(i % 1500).c_str(), nullptr, nullptr,
                                   reinterpret_cast<BYTE*>(data.data()), &size),
                  0);
        ASSERT_EQ(data.substr(0, size), text_of(i % 1500));
    }
}

TEST(Registry, AKeyIsRenamed) {
    auto* const key = made(u"Names\\Foo\\Below");
    made(u"Names\\Bar");
    auto* const parent = made(u"Names");
    set(key, u"v", "x");
    const struct {
        const char16_t* path;
        const char16_t* name;
        DWORD error;
        const char16_t* second;  // of the parent's sub keys
    } cases[] = {
        {u"Foo", u"FOO", 0, u"FOO"},
        {u"foo\\", u"bar", ERROR_ALREADY_EXISTS, u"FOO"},
        {u"foo", u"a\\b", ERROR_INVALID_PARAMETER, u"FOO"},
        {u"foo", u"", ERROR_INVALID_PARAMETER, u"FOO"},
        {u"none", u"x", ERROR_FILE_NOT_FOUND, u"FOO"},
        {u"foo", u"Zoo", 0, u"Zoo"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(RegRenameKey(parent, test.path, test.name), code(test.error));
        EXPECT_EQ(key_at(parent, 1), test.second);
        EXPECT_EQ(query(key, u"v"), 0);
    }
    EXPECT_EQ(RegRenameKey(made(u"Names", KEY_READ), u"Zoo", u"x"), code(ERROR_ACCESS_DENIED));
    EXPECT_EQ(RegRenameKey(HKEY_CURRENT_USER, nullptr, u"x"), code(ERROR_ACCESS_DENIED));
}

TEST(Registry, TheLargestValue) {
    auto* const key = made(u"Large");
    std::string data(REG_MAX_VALUE_DATA, 'x');
    data.back() = 'y';
    EXPECT_EQ(set(key, u"v", data), 0);
    EXPECT_EQ(set(key, u"v", data + 'z'), code(ERROR_NOT_ENOUGH_MEMORY));
    std::string read(data.size(), '#');
    auto size = static_cast<DWORD>(read.size());
    EXPECT_EQ(
        RegQueryValueExW(key, u"v", nullptr, nullptr, reinterpret_cast<BYTE*>(read.data()), &size),
        0);
    EXPECT_TRUE(read == data);
}

TEST(Registry, WhatIsNoOpenKeyIsRefusedByAll) {
    auto* const closed = made(u"Closed");
    ASSERT_EQ(RegCloseKey(closed), 0);
    auto* const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HKEY handles[] = {nullptr, closed, reinterpret_cast<HKEY>(event),
                            reinterpret_cast<HKEY>(std::uintptr_t{0x80000003}),
                            reinterpret_cast<HKEY>(~std::uintptr_t{0})};
    const std::function<LONG(HKEY)> calls[] = {
        [](HKEY key) { return RegOpenKeyExW(key, u"x", 0, KEY_READ, &key); },
        [](HKEY key) { return create(key, u"x", key); },
        [](HKEY key) { return RegCloseKey(key); },
        [](HKEY key) { return query(key, u"v"); },
        [](HKEY key) { return set(key, u"v", "x"); },
        [](HKEY key) { return RegDeleteValueW(key, u"v"); },
        [](HKEY key) {
            char16_t name[2];
            return RegEnumKeyW(key, 0, name, 2);
        },
        [](HKEY key) {
            char16_t name[2];
            DWORD count = 2;
            return RegEnumValueW(key, 0, name, &count, nullptr, nullptr, nullptr, nullptr);
        },
        [](HKEY key) { return RegDeleteKeyW(key, u"x"); },
        [](HKEY key) { return SHDeleteKeyW(key, u"x"); },
        [](HKEY key) { return RegDeleteTreeW(key, nullptr); },
        [](HKEY key) {
            return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, nullptr, nullptr);
        },
        [](HKEY key) { return RegFlushKey(key); },
        [event](HKEY key) {
            return RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_NAME, event, 1);
        },
    };
    for (auto* const handle : handles) {
        for (const auto& call : calls) {
            EXPECT_EQ(call(handle), code(ERROR_INVALID_HANDLE)) << handle << &call - calls;
        }
    }
    EXPECT_NE(CloseHandle(event), 0);
}

TEST(Registry, ANotificationWantsAnEvent) {
    auto* const key = made(u"Told");
    auto* const mutex = CreateMutexW(nullptr, 0, nullptr);
    auto* const closed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    CloseHandle(closed);
    const auto notify = [key](HANDLE event) {
        return RegNotifyChangeKeyValue(key, 0, REG_NOTIFY_CHANGE_NAME, event, TRUE);
    };
    EXPECT_EQ(notify(nullptr), code(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(notify(mutex), code(ERROR_INVALID_HANDLE));
    EXPECT_EQ(notify(closed), code(ERROR_INVALID_HANDLE));
    CloseHandle(mutex);
}

TEST(Registry, ARootIsEmptiedButStays) {
    made(u"Any\\Below");
    set(HKEY_CURRENT_USER, u"v", "x");
    for (const auto* name : {u"", static_cast<const char16_t*>(nullptr)}) {
        const auto denied = code(name == nullptr ? ERROR_INVALID_PARAMETER : ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, name), denied);
        EXPECT_EQ(SHDeleteKeyW(HKEY_CURRENT_USER, name), code(ERROR_ACCESS_DENIED));
    }
    EXPECT_EQ(query(HKEY_CURRENT_USER, u"v"), 0);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, nullptr), 0);
    EXPECT_EQ(query(HKEY_CURRENT_USER, u"v"), code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(key_at(HKEY_CURRENT_USER, 0), u"");
    made(u"Again");
}

TEST(Registry, ADeletedKeyStaysDeletedForItsHandles) {
    auto* const old = made(u"Gone\\Leaf");
    set(old, u"v", "old");
    EXPECT_EQ(query(old, u"v"), 0);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, u"Gone"), code(ERROR_ACCESS_DENIED));
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, nullptr), code(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, u"Gone\\Leaf"), 0);
    auto* const fresh = made(u"Gone\\Leaf");
    EXPECT_EQ(query(old, u"v"), code(ERROR_KEY_DELETED));
    EXPECT_EQ(set(old, u"v", "x"), code(ERROR_KEY_DELETED));
    EXPECT_EQ(query(fresh, u"v"), code(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, u"Gone"), 0);
    EXPECT_EQ(query(fresh, u"v"), code(ERROR_KEY_DELETED));
    EXPECT_EQ(RegCloseKey(old), 0);
    EXPECT_EQ(RegCloseKey(old), code(ERROR_INVALID_HANDLE));
    EXPECT_EQ(query(old, u"v"), code(ERROR_INVALID_HANDLE));
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
    EXPECT_EQ(query(HKEY_CURRENT_USER, u"v"), code(ERROR_FILE_NOT_FOUND));
}

TEST(Registry, CountsAndTheTimeOfTheLastWrite) {
    const FILETIME time{0x12345678, 0x01D00000};
    auto* const key = made(u"Info");
    made(u"Info\\Four");
    made(u"Info\\Sixsix");
    set(key, u"abc", "12345");
    tvutil2::set_clock(&time);
    set(key, u"", "1");
    tvutil2::set_clock(nullptr);
    DWORD keys = 0, key_name = 0, values = 0, value_name = 0, data = 0;
    FILETIME written{};
    EXPECT_EQ(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, &key_name, nullptr, &values,
                               &value_name, &data, nullptr, &written),
              0);
    const std::vector<DWORD> found{keys, key_name, values, value_name, data};
    EXPECT_EQ(found, (std::vector<DWORD>{2, 6, 2, 3, 5}));
    EXPECT_EQ(written.dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(written.dwHighDateTime, time.dwHighDateTime);
}

TEST(Registry, ThreadsShareAHandleAndSeeWholeValues) {
    auto* const key = made(u"Threads");
    ASSERT_EQ(set(key, u"v", std::string(64, 'a')), 0);
    std::vector<std::thread> threads;
    for (const char fill : {'a', 'b'}) {
        threads.emplace_back([key, fill] {
            for (int i = 0; i < 100; ++i) EXPECT_EQ(set(key, u"v", std::string(64, fill)), 0);
        });
        threads.emplace_back([key] {
            for (int i = 0; i < 2000; ++i) {
                std::string data(64, '#');
                DWORD size = 64;
                ASSERT_EQ(RegQueryValueExW(key, u"v", nullptr, nullptr,
                                           reinterpret_cast<BYTE*>(data.data()), &size),
                          0);
                ASSERT_EQ(data, std::string(64, data.front()));
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
