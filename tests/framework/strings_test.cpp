#include "tvutil2/framework/strings.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/exceptions.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

class Random {
  public:
    int below(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned>(limit)); }
    // Of two letters, so that runs repeat and partial matches abound.
    std::u16string text(int longest) {
        std::u16string out(static_cast<std::size_t>(below(longest + 1)), u'a');
        for (auto& c : out) c = below(3) == 0 ? u'b' : u'a';
        return out;
    }

  private:
    std::mt19937 m_engine{11};
};

int position(std::size_t found) {
    return found == std::u16string::npos ? -1 : static_cast<int>(found);
}

int replace(std::u16string& text, const std::u16string& what, const std::u16string& with) {
    if (what.empty()) return 0;
    int count = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::u16string::npos; ++count) {
        text.replace(at, what.size(), with);
        at += with.size();
    }
    return count;
}

TEST(Strings, DoWhatTheModelDoes) {
    Random random;
    CString text;
    std::u16string model;
    for (int round = 0; round < 30000; ++round) {
        if (model.size() > 200) {
            text.Empty();
            model.clear();
        }
        const auto what = random.text(4);
        const auto with = random.text(6);
        const int at = random.below(static_cast<int>(model.size()) + 3);
        const auto inside = std::min(static_cast<std::size_t>(at), model.size());
        const int count = random.below(9);
        const auto counted = static_cast<std::size_t>(count);
        switch (random.below(10)) {
            case 0:
                text += with.c_str();
                model += with;
                break;
            case 1:
                text.AppendChar(u'b');
                model += u'b';
                break;
            case 2:
                ASSERT_EQ(text.Insert(at, with.c_str()),
                          static_cast<int>(model.size() + with.size()));
                model.insert(inside, with);
                break;
            case 3:
                text.Delete(at, count);
                model.erase(inside, counted);
                break;
            case 4:
                ASSERT_EQ(text.Replace(what.c_str(), with.c_str()), replace(model, what, with));
                break;
            case 5:
                ASSERT_EQ(text.Mid(at, count).View(), model.substr(inside, counted));
                break;
            case 6:
                ASSERT_EQ(text.Left(at).View(), model.substr(0, inside));
                break;
            case 7:
                ASSERT_EQ(text.Right(at).View(), model.substr(model.size() - inside));
                break;
            case 8: {
                const bool is_inside = static_cast<std::size_t>(at) <= model.size();
                const auto from = static_cast<std::size_t>(at);
                ASSERT_EQ(text.Find(what.c_str(), at),
                          is_inside ? position(model.find(what, from)) : -1);
                ASSERT_EQ(text.Find(u'b', at), is_inside ? position(model.find(u'b', from)) : -1);
                break;
            }
            default:
                ASSERT_EQ(text.Compare(with.c_str()) < 0, model < with);
                ASSERT_EQ(text.Compare(with.c_str()) == 0, model == with);
        }
        ASSERT_EQ(text.View(), model);
        ASSERT_EQ(text.GetString()[model.size()], 0);
    }
}

// Lengths around the width of a vector register, needles at each place, and half-way look-alikes.
TEST(Strings, FindSeesEveryPlace) {
    for (std::size_t length = 0; length < 40; ++length) {
        for (std::size_t size = 1; size <= 10; ++size) {
            for (std::size_t at = 0; at + size <= length; ++at) {
                std::u16string text(length, u'x');
                std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(at), size, u'n');
                text[at + size - 1] = u'\x100';
                const auto what = text.substr(at, size);
                ASSERT_EQ(CString(text).Find(what.c_str()), static_cast<int>(at));
                ASSERT_EQ(CString(text).Find(what.back()), static_cast<int>(at + size - 1));
                ASSERT_EQ(CString(text).Find(what.c_str(), static_cast<int>(at) + 1), -1);
            }
        }
    }
}

// Quadratic searching would need some 10^11 steps here.
TEST(Strings, SearchAndReplaceTakeLinearTimeOnHostileText) {
    constexpr std::size_t kHalf = 300000;
    const std::u16string run(2 * kHalf, u'a');
    std::u16string near_miss(kHalf, u'a');
    near_miss[kHalf / 2] = u'b';
    CString text(run);
    EXPECT_EQ(text.Find(near_miss.c_str()), -1);
    EXPECT_EQ(text.Replace(near_miss.c_str(), u""), 0);
    text += near_miss.c_str();
    EXPECT_EQ(text.Find(near_miss.c_str()), static_cast<int>(2 * kHalf));
    EXPECT_EQ(CString(run).Replace(u"a", u"bb"), static_cast<int>(2 * kHalf));
}

TEST(Strings, ArgumentsMayLieInTheTextItself) {
    const std::u16string original(u"ab%sab");
    const auto changed = [&](auto change) {
        CString text(original);
        text.GetBuffer(6);  // no room to spare, so that growing moves the storage
        change(text);
        return std::u16string(text);
    };
    EXPECT_EQ(changed([](CString& s) { s += s; }), original + original);
    EXPECT_EQ(changed([](CString& s) { s += s.GetString() + 4; }), original + u"ab");
    EXPECT_EQ(changed([](CString& s) { s.Append(s.GetString() + 1, 2); }), original + u"b%");
    EXPECT_EQ(changed([](CString& s) { s = s.GetString() + 2; }), u"%sab");
    EXPECT_EQ(changed([](CString& s) { s = s; }), original);
    EXPECT_EQ(changed([](CString& s) { s.Insert(1, s); }), u"aab%sabb%sab");
    EXPECT_EQ(changed([](CString& s) { s.Replace(s.Left(2), s); }), u"ab%sab%sab%sab");
    EXPECT_EQ(changed([](CString& s) { s.Replace(s.GetString() + 4, s.GetString() + 3); }),
              u"sab%ssab");
    EXPECT_EQ(changed([](CString& s) { s.Format(s, s); }), u"abab%sabab");
    EXPECT_EQ(changed([](CString& s) { s.AppendFormat(s, s); }), original + u"abab%sabab");
    EXPECT_EQ(changed([](CString& s) { s.Trim(s.GetString() + 4); }), u"%s");
    EXPECT_EQ(changed([](CString& s) { s = s + s + s; }), original + original + original);
}

TEST(Strings, CountsAndPositionsOutsideTheTextAreHarmless) {
    const CString text(u"abc");
    EXPECT_EQ(text.Left(-1), u"");
    EXPECT_EQ(text.Left(9), u"abc");
    EXPECT_EQ(text.Right(-1), u"");
    EXPECT_EQ(text.Right(9), u"abc");
    EXPECT_EQ(text.Mid(-1, 2), u"ab");
    EXPECT_EQ(text.Mid(3), u"");
    EXPECT_EQ(text.Mid(9, 9), u"");
    EXPECT_EQ(text.Mid(1, -1), u"");
    EXPECT_EQ(text.Find(u'a', -1), -1);
    EXPECT_EQ(text.Find(u"", 3), 3);
    EXPECT_EQ(text.Find(u"", 4), -1);
    EXPECT_EQ(CString(u'x', -1), u"");
    EXPECT_EQ(CString(u"abc", -1), u"");
    EXPECT_EQ(text.GetAt(3), 0);
    EXPECT_THROW((void)text.GetAt(4), CInvalidArgException);
    EXPECT_THROW(text[-1], CInvalidArgException);
    CString changed(text);
    EXPECT_THROW(changed.SetAt(3, u'x'), CInvalidArgException);
    EXPECT_EQ(changed.Delete(1, 2147483647), 1);
    EXPECT_EQ(changed.Delete(-1, -1), 1);
    EXPECT_EQ(changed.Insert(9, u'z'), 2);
    EXPECT_EQ(changed, u"az");
}

TEST(Strings, NullCountsAsEmpty) {
    const char16_t* const none = nullptr;
    CString text(none);
    text += none;
    text.Append(none, 5);
    text.Insert(0, none);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.Compare(none), 0);
    EXPECT_EQ(text.CompareNoCase(none), 0);
    text = u"abc";
    EXPECT_GT(text.Compare(none), 0);
    EXPECT_EQ(text.Replace(none, u"x"), 0);
    EXPECT_EQ(text.Replace(u"b", none), 1);
    EXPECT_EQ(text.FindOneOf(none), -1);
    EXPECT_EQ(text.Find(none), 0);
    EXPECT_EQ(text + none, u"ac");
    text = none;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(Strings, OrderIsByCodeUnit) {
    const std::vector<CString> ascending{CString(u""),       CString(u"A"),     CString(u"B"),
                                         CString(u"a"),      CString(u"ab"),    CString(u"b"),
                                         CString(u"\xD800"), CString(u"\xFFFD")};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const int order = (i > j) - (i < j);
            EXPECT_EQ(ascending[i].Compare(ascending[j]), order) << i << " " << j;
            EXPECT_EQ(ascending[i] < ascending[j], order < 0);
            EXPECT_EQ(ascending[i] >= ascending[j].GetString(), order >= 0);
            EXPECT_EQ(ascending[i].GetString() == ascending[j], order == 0);
        }
    }
    EXPECT_EQ(CString(u"ÄÖÜß").CompareNoCase(u"äöüß"), 0);
    EXPECT_LT(CString(u"a").CompareNoCase(u"B"), 0);
}

TEST(Strings, TrimsWhiteSpaceUnitsAndSets) {
    const auto trimmed = [](const char16_t* text, auto... what) {
        CString all(text);
        CString left(text);
        CString right(text);
        all.Trim(what...);
        EXPECT_EQ(left.TrimLeft(what...).TrimRight(what...), all);
        EXPECT_EQ(right.TrimRight(what...).TrimLeft(what...), all);
        return std::u16string(all);
    };
    EXPECT_EQ(trimmed(u" \t\r\n\u00a0\u3000a b\u2028 "), u"a b");
    EXPECT_EQ(trimmed(u"  \t "), u"");
    EXPECT_EQ(trimmed(u""), u"");
    EXPECT_EQ(trimmed(u"\"a\"b\"\"", u'"'), u"a\"b");
    EXPECT_EQ(trimmed(u"-+-a-+", u"+-"), u"a");
    EXPECT_EQ(trimmed(u" a ", u""), u" a ");
}

TEST(Strings, TokensAreTheRunsBetweenDelimiters) {
    const auto tokens = [](const char16_t* text, const char16_t* set) {
        std::vector<std::u16string> out;
        const CString whole(text);
        int at = 0;
        for (CString token = whole.Tokenize(set, at); at != -1; token = whole.Tokenize(set, at)) {
            out.emplace_back(token.GetString());
        }
        return out;
    };
    using List = std::vector<std::u16string>;
    EXPECT_EQ(tokens(u",a;;bc,", u",;"), (List{u"a", u"bc"}));
    EXPECT_EQ(tokens(u"a", u","), List{u"a"});
    EXPECT_EQ(tokens(u",;,", u",;"), List{});
    EXPECT_EQ(tokens(u"", u","), List{});
    EXPECT_EQ(tokens(u"a,b", u""), List{u"a,b"});
    int outside = 7;
    EXPECT_EQ(CString(u"a,b").Tokenize(u",", outside), u"");
    EXPECT_EQ(outside, -1);
}

TEST(Strings, BuffersAreFilledFromOutside) {
    CString text(u"abc");
    char16_t* buffer = text.GetBuffer(10);
    EXPECT_EQ(std::u16string(buffer), u"abc");
    std::copy_n(u"path", 5, buffer);
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_EQ(text, u"path");

    std::copy_n(u"0123456789", 10, text.GetBufferSetLength(10));
    EXPECT_EQ(text.GetLength(), 10);
    text.GetBuffer();
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, u"012");
    text.ReleaseBuffer(100);
    EXPECT_EQ(text, u"012");

    CStringA narrow;
    std::copy_n("xyz", 4, narrow.GetBuffer(100));
    narrow.ReleaseBuffer();
    EXPECT_EQ(narrow, "xyz");
}

TEST(Strings, TextMayHoldZeros) {
    const CString text(u"a\0b", 3);
    CString copy(text);
    copy += text;
    EXPECT_EQ(copy.GetLength(), 6);
    EXPECT_EQ(copy.Find(u'\0', 2), 4);
    EXPECT_EQ(copy.Replace(u'\0', u'-'), 2);
    EXPECT_EQ(copy, u"a-ba-b");
    EXPECT_NE(text, CString(u"a"));
    EXPECT_EQ(text.Compare(u"a"), 0);  // as everything that sees a plain pointer does
}

TEST(Strings, CaseIsMappedUnitByUnit) {
    CString text(u"straße ÿ Ω \xD835\xDC00");
    text.MakeUpper();
    EXPECT_EQ(text, u"STRAßE Ÿ Ω \xD835\xDC00");
    text.MakeLower();
    EXPECT_EQ(text, u"straße ÿ ω \xD835\xDC00");
    EXPECT_EQ(CString(u"abc").MakeReverse(), u"cba");
}

TEST(Strings, NarrowTwinSharesTheRules) {
    const CStringA text("abcabc");
    EXPECT_EQ(text.Left(2), "ab");
    EXPECT_EQ(text.Right(9), "abcabc");
    EXPECT_EQ(text.Mid(4, 9), "bc");
    EXPECT_EQ(text.Find('c', 3), 5);
    EXPECT_EQ(text.Find("bc", 2), 4);
    EXPECT_EQ(text.Find("bc", 7), -1);
    EXPECT_THROW((void)text.GetAt(7), CInvalidArgException);
    CStringA sum(text);
    sum += sum;
    sum += 'x';
    EXPECT_EQ(sum, "abcabcabcabcx");
}

TEST(Strings, NarrowTextIsInTheAnsiCodePage) {
    EXPECT_EQ(CString("gr\xC3\xBC\xC3\x9F"), u"grüß");
    EXPECT_EQ(CStringA(u"grüß"), "gr\xC3\xBC\xC3\x9F");
    EXPECT_EQ(CStringA(u"u\u0308\xD800"), "\xC3\xBC?");
    CString text(u"old");
    text = "\xF0\x9F\x98\x80\xFF";
    EXPECT_EQ(text, u"\xD83D\xDE00\xFFFD");
}

TEST(Strings, LoadFromTheApplicationsResources) {
    // A compiled image: its empty first entry, then block 2 of the strings, where only the one at
    // index 1, id 17, has text.
    alignas(4) const char16_t image[] = {
        0,  0, 32,   0,    0xFFFF, 0, 0xFFFF, 0, 0, 0, 0,      0, 0, 0, 0, 0,  // 32 bytes
        38, 0, 32,   0,    0xFFFF, 6, 0xFFFF, 2, 0, 0, 0x1030, 0, 0, 0, 0, 0,  // its header
        0,  3, u'w', u'e', u'b',   0, 0,      0, 0, 0, 0,      0, 0, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_TRUE(tvutil2::add_module_resources(nullptr, image, sizeof image));
    // A program without an application object of its own says whose resources it reads.
    AfxSetResourceHandle(GetModuleHandleW(nullptr));
    CString text(u"old");
    EXPECT_TRUE(text.LoadString(17));
    EXPECT_EQ(text, u"web");
    for (const UINT id : {16U, 18U, 1U, 70000U}) {
        EXPECT_FALSE(text.LoadString(id)) << id;
        EXPECT_TRUE(text.IsEmpty()) << id;
    }
}

}  // namespace
