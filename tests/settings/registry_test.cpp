#include "tvutil2/settings/registry.h"

#include "tvutil2/platform/base/last_error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

/// Both classes, on a key of the user.
template <class Key>
class Registry : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(m_key.Open(HKEY_CURRENT_USER, u"Test", 1, KEY_ALL_ACCESS), 0);
    }
    void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, u"Test"); }

    Key m_key;
};

int copy(CRegistry* source, CRegistry* target) {
    return RegRecursiveCopy(source, target);
}

int copy(NUtil::CRegistry* source, NUtil::CRegistry* target) {
    return NUtil::CRegistry::RegRecursiveCopy(source, target);
}

using Keys = testing::Types<CRegistry, NUtil::CRegistry>;
TYPED_TEST_SUITE(Registry, Keys);

TYPED_TEST(Registry, OwnsOneHandle) {
    auto& key = this->m_key;
    TypeParam other;
    EXPECT_EQ(other.Attach(nullptr), 0);
    ASSERT_NE(other.Open(&key, u"Other", 1, KEY_ALL_ACCESS), 0);

    const HKEY held = key.GetSafeHkey();
    EXPECT_EQ(key.Attach(other.GetSafeHkey()), 0);
    EXPECT_EQ(key.GetSafeHkey(), held);

    // A failure leaves the key that is held; without `create` nothing is made.
    EXPECT_EQ(key.Open(HKEY_CURRENT_USER, u"Test\\Missing", 0, KEY_READ), 0);
    EXPECT_EQ(key.GetSafeHkey(), held);

    HKEY ended = nullptr;
    {
        TypeParam copy = key;
        ended = copy.Detach();
        TypeParam owner;
        owner.Attach(key.Detach());
    }
    EXPECT_EQ(RegFlushKey(ended), ERROR_INVALID_HANDLE);
}

/// A stored value, and what the typed reads make of it with "d" and 42 as defaults.
struct Stored {
    const char* what;
    DWORD type;
    std::u16string data;
    std::u16string text;
    DWORD number = 42;
    DWORD odd_bytes = 0;  ///< less than data has
};

TYPED_TEST(Registry, ReadsByTypeOrFallsBack) {
    const std::u16string longest(32768, u'x');
    const std::u16string beyond_short(700, u'y');
    const Stored values[] = {
        {"text", REG_SZ, u"abc", u"abc"},
        {"text with its zero", REG_SZ, std::u16string(u"abc\0", 4), u"abc"},
        {"text with a zero inside", REG_SZ, std::u16string(u"ab\0c", 4), u"ab"},
        {"empty text", REG_SZ, u"", u""},
        {"half a unit at the end", REG_SZ, u"abc", u"ab", 42, 1},
        {"text of 512 units", REG_SZ, std::u16string(512, u'z'), std::u16string(512, u'z')},
        {"longer text", REG_SZ, beyond_short, beyond_short},
        {"longest text", REG_SZ, longest, longest},
        {"too long text", REG_SZ, longest + u'x', u"d"},
        {"long text of another type", REG_EXPAND_SZ, beyond_short, u"d"},
        {"texts", REG_MULTI_SZ, u"abc", u"d"},
        {"a number", REG_DWORD, u"\x5678\x1234", u"d", 0x12345678},
        {"four bytes of text", REG_SZ, u"ab", u"ab"},
        {"a number of eight bytes", REG_DWORD, u"abcd", u"d"},
    };
    for (const auto& value : values) {
        SCOPED_TRACE(value.what);
        ASSERT_EQ(RegSetValueExW(this->m_key.GetSafeHkey(), u"v", 0, value.type,
                                 reinterpret_cast<const BYTE*>(value.data.data()),
                                 static_cast<DWORD>(value.data.size() * 2) - value.odd_bytes),
                  ERROR_SUCCESS);
        EXPECT_EQ(this->m_key.GetValue(u"v", CString(u"d")).View(), value.text);
        EXPECT_EQ(this->m_key.GetValue(u"v", DWORD{42}), value.number);
    }
    EXPECT_EQ(this->m_key.GetValue(u"missing", CString(u"d")).View(), u"d");
    EXPECT_EQ(this->m_key.GetValue(u"missing", DWORD{42}), 42U);
}

TYPED_TEST(Registry, EndsQueriedTextBehindItsLastUnit) {
    auto& key = this->m_key;
    ASSERT_NE(key.SetValue(u"v", u"abc"), 0);
    // On the heap and of exact size, for the sanitizer to see one unit too many.
    const auto text = std::make_unique<char16_t[]>(4);
    std::fill_n(text.get(), 4, u'?');
    EXPECT_EQ(key.QueryValue(u"v", text.get(), 2), 0);
    EXPECT_EQ(text[0], u'?');
    EXPECT_NE(key.QueryValue(u"v", text.get(), 3), 0);
    EXPECT_EQ(std::u16string(text.get()), u"abc");
    // More room than bytes can be counted.
    EXPECT_NE(key.QueryValue(u"v", text.get(), 0x80000002), 0);
    ASSERT_NE(key.SetValue(u"v", u""), 0);
    EXPECT_NE(key.QueryValue(u"v", text.get(), 0), 0);
    EXPECT_EQ(text[0], u'\0');
    EXPECT_EQ(key.QueryValue(u"v", static_cast<char16_t*>(nullptr), 4), 0);
}

TYPED_TEST(Registry, DeletesAllValuesThatItCan) {
    auto& key = this->m_key;
    for (const char16_t* name : {u"", u"a", u"b", u"c"}) ASSERT_NE(key.SetValue(name, u"x"), 0);
    char16_t name[8];

    TypeParam reader;
    ASSERT_NE(reader.Open(&key, nullptr, 0, KEY_READ), 0);
    EXPECT_EQ(reader.DeleteAllValues(), 1);
    EXPECT_NE(key.EnumValue(3, name, 8), 0);

    EXPECT_EQ(key.DeleteAllValues(), 1);
    EXPECT_EQ(key.EnumValue(0, name, 8), 0);
}

TYPED_TEST(Registry, CopiesUpToItsLimits) {
    const struct {
        const char* what;
        std::size_t name;
        std::size_t data;
        int result;
        bool is_copied;
    } cases[] = {
        {"largest value", 4, 8192, 1, true},
        {"too large a value", 4, 8193, 0, false},
        {"longest name", 1022, 8, 1, true},
        {"too long a name is no failure", 1023, 8, 1, false},
        {"empty name and value", 0, 0, 1, true},
    };
    for (const auto& limit : cases) {
        SCOPED_TRACE(limit.what);
        TypeParam source;
        TypeParam target;
        ASSERT_NE(source.Open(&this->m_key, u"from\\sub", 1, KEY_ALL_ACCESS), 0);
        const std::u16string name(limit.name, u'n');
        const std::vector<unsigned char> data(limit.data, 7);
        ASSERT_NE(source.SetValue(name.c_str(), data.data(), static_cast<DWORD>(data.size())), 0);
        source.Close();

        ASSERT_NE(source.Open(&this->m_key, u"from", 0, KEY_READ), 0);
        ASSERT_NE(target.Open(&this->m_key, u"to", 1, KEY_ALL_ACCESS), 0);
        EXPECT_EQ(copy(&source, &target), limit.result);
        TypeParam sub;
        EXPECT_NE(sub.Open(&target, u"sub", 0, KEY_READ), 0);
        std::vector<unsigned char> read(10000);
        auto size = static_cast<DWORD>(read.size());
        EXPECT_EQ(sub.QueryValue(name.c_str(), read.data(), &size) != 0, limit.is_copied);
        if (limit.is_copied) {
            EXPECT_EQ(size, limit.data);
        }
        this->m_key.DeleteKey(u"from", 0);
        this->m_key.DeleteKey(u"to", 0);
    }
}

TYPED_TEST(Registry, RenamesByMerging) {
    auto& key = this->m_key;
    TypeParam sub;
    for (const char16_t* name :
         {u"old", u"old\\both\\deep", u"old\\both", u"new\\both", u"new\\own"}) {
        ASSERT_NE(sub.Open(&key, name, 1, KEY_ALL_ACCESS), 0);
        ASSERT_NE(sub.SetValue(u"from", name), 0);
        ASSERT_NE(sub.SetValue(CString(name).Left(3), DWORD{1}), 0);
        sub.Close();
    }
    EXPECT_EQ(key.RenameKey(u"missing", u"other"), 0);
    EXPECT_NE(key.RenameKey(u"old", u"new"), 0);

    const struct {
        const char16_t* key;
        const char16_t* from;
        DWORD has_own;
    } after[] = {{u"new", u"old", 0},
                 {u"new\\both", u"old\\both", 1},
                 {u"new\\both\\deep", u"old\\both\\deep", 0},
                 {u"new\\own", u"new\\own", 1}};
    for (const auto& entry : after) {
        ASSERT_NE(sub.Open(&key, entry.key, 0, KEY_READ), 0);
        EXPECT_EQ(sub.GetValue(u"from", CString()).View(), entry.from);
        EXPECT_EQ(sub.GetValue(u"new", DWORD{0}), entry.has_own);
        sub.Close();
    }
    for (const char16_t* gone : {u"old", u"missing", u"other"}) {
        EXPECT_EQ(sub.Open(&key, gone, 0, KEY_READ), 0);
    }
}

// As callers do that hold a pointer they haven't looked at.
template <class Key>
__attribute__((noinline, no_sanitize("null", "undefined"))) HKEY handle_of(const Key* key) {
    return key->GetSafeHkey();
}

TYPED_TEST(Registry, ANullObjectHasNoHandle) {
    EXPECT_EQ(handle_of<TypeParam>(nullptr), nullptr);
    EXPECT_EQ(handle_of(&this->m_key), this->m_key.GetSafeHkey());
}

TYPED_TEST(Registry, KeepsAllWhenOnlyTheSpellingChanges) {
    auto& key = this->m_key;
    TypeParam sub;
    ASSERT_NE(sub.Open(&key, u"a\\Foo\\below", 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(sub.SetValue(u"v", DWORD{1}), 0);
    const std::pair<const char16_t*, const char16_t*> names[] = {
        {u"a\\Foo", u"A\\FOO"}, {u"a\\foo", u"a\\\\FOO\\\\"}, {u"", u""}};
    for (const auto& [old_name, new_name] : names) {
        EXPECT_NE(key.RenameKey(old_name, new_name), 0);
        EXPECT_EQ(sub.GetValue(u"v", DWORD{0}), 1U);
        TypeParam parent;
        char16_t name[8] = {};
        ASSERT_NE(parent.Open(&key, u"a", 0, KEY_READ), 0);
        EXPECT_NE(parent.EnumKey(0, name, 8), 0);
        EXPECT_EQ(std::u16string(name), u"FOO");
    }
}

TYPED_TEST(Registry, KeepsTheOldKeyWhenItCantBeRenamed) {
    auto& key = this->m_key;
    TypeParam old;
    ASSERT_NE(old.Open(&key, u"old", 1, KEY_ALL_ACCESS), 0);
    const std::vector<unsigned char> large(8193);
    ASSERT_NE(old.SetValue(u"a", DWORD{1}), 0);
    ASSERT_NE(old.SetValue(u"b", large.data(), static_cast<DWORD>(large.size())), 0);
    EXPECT_EQ(key.RenameKey(u"old", u"new"), 0);
    EXPECT_EQ(old.GetValue(u"a", DWORD{0}), 1U);
    TypeParam copied;
    ASSERT_NE(copied.Open(&key, u"new", 0, KEY_READ), 0);
    EXPECT_EQ(copied.GetValue(u"a", DWORD{0}), 1U);

    // Into itself: every level finds the one just made, down to the registry's greatest depth.
    ASSERT_NE(old.DeleteValue(u"b"), 0);
    EXPECT_EQ(key.RenameKey(u"old", u"old\\below"), 0);
    EXPECT_EQ(old.GetValue(u"a", DWORD{0}), 1U);
}

TEST(RegistryKey, TellsTypesAndCounts) {
    CRegistry key;
    CRegistry sub;
    ASSERT_NE(key.Open(HKEY_CURRENT_USER, u"Counted", 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(sub.Open(&key, u"sub\\sub", 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(key.SetValue(u"number", DWORD{1}), 0);
    ASSERT_NE(key.SetValue(u"text", u"abcd"), 0);
    DWORD type = REG_NONE;
    char16_t name[7];
    EXPECT_EQ(key.EnumValueWithType(0, name, 6, &type), 0);
    EXPECT_NE(key.EnumValueWithType(0, name, 7, &type), 0);
    EXPECT_EQ(type, REG_DWORD);

    DWORD found[5] = {};
    EXPECT_EQ(key.QueryInfoKey(nullptr, nullptr, nullptr, &found[0], &found[1], nullptr, &found[2],
                               &found[3], &found[4], nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(std::vector(found, found + 5), (std::vector<DWORD>{1, 3, 2, 6, 8}));
}

TEST(PelrinRegistry, MakesItsKeyBelowTheClients) {
    CRegistry key;
    EXPECT_EQ(CPelrinRegistry().GetSafeHkey(), nullptr);
    const CPelrinRegistry sessions(u"Sessions");
    EXPECT_NE(sessions.GetSafeHkey(), nullptr);
    EXPECT_NE(key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Pelrin\\8\\Sessions", 0, KEY_READ),
              0);

    CPelrinRegistry root;
    ASSERT_NE(root.Open(nullptr), 0);
    EXPECT_NE(root.DeleteTree(u"Sessions"), 0);
}

}  // namespace
