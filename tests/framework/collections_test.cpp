#include "tvutil2/framework/collections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace {

CString key_of(unsigned long number) {
    CString key;
    key.Format(u"key %lu", number);
    return key;
}

std::map<std::u16string, std::u16string> content_of(const CMapStringToString& map) {
    std::map<std::u16string, std::u16string> content;
    for (auto position = map.GetStartPosition(); position != nullptr;) {
        CString key;
        CString value;
        map.GetNextAssoc(position, key, value);
        const bool is_new = content.emplace(key.GetString(), value.GetString()).second;
        EXPECT_TRUE(is_new) << "an element came twice";
    }
    return content;
}

std::vector<std::u16string> content_of(const CStringList& list) {
    std::vector<std::u16string> forwards;
    for (auto position = list.GetHeadPosition(); position != nullptr;) {
        forwards.emplace_back(list.GetNext(position).GetString());
    }
    std::vector<std::u16string> backwards;
    for (auto position = list.GetTailPosition(); position != nullptr;) {
        backwards.emplace_back(list.GetPrev(position).GetString());
    }
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(forwards, backwards);
    EXPECT_EQ(static_cast<std::size_t>(list.GetCount()), forwards.size());
    return forwards;
}

// Few keys, so that each is entered and removed over and over again, at every load.
TEST(Maps, DoWhatAnOrderedMapDoes) {
    std::mt19937 random(7);
    CMapStringToString map(10);
    std::map<std::u16string, std::u16string> model;
    for (int round = 0; round < 20000; ++round) {
        const unsigned range = round % 4000 < 2000 ? 300 : 20;
        const auto key = key_of(random() % range);
        CString value;
        switch (random() % 6) {
            case 0:
                value = CString(u'v', static_cast<int>(random() % 20));
                map.SetAt(key, value);
                model[key.GetString()] = value;
                break;
            case 1:
                map[key] += u'+';
                model[key.GetString()] += u'+';
                break;
            case 2:
                value = map[key];
                ASSERT_EQ(value.View(), model[key.GetString()]);
                break;
            case 3:
                ASSERT_EQ(map.RemoveKey(key) != 0, model.erase(key.GetString()) != 0);
                break;
            default: {
                const auto found = model.find(key.GetString());
                ASSERT_EQ(map.Lookup(key, value) != 0, found != model.end());
                if (found != model.end()) {
                    ASSERT_EQ(value.View(), found->second);
                }
            }
        }
        ASSERT_EQ(static_cast<std::size_t>(map.GetCount()), model.size());
    }
    EXPECT_EQ(content_of(map), model);
}

// A value's own text, and parts of it, taken while it stands behind its key and while it is a
// string.
TEST(Maps, TextOfTheMapCanBeSetInIt) {
    for (const bool is_string : {false, true}) {
        CMapStringToString map;
        map.SetAt(u"key", u"some text that is long enough");
        const std::u16string_view text = is_string ? map[u"key"].View() : [&map] {
            std::u16string_view found;
            map.ForEach(
                [&found](std::u16string_view, std::u16string_view value) { found = value; });
            return found;
        }();
        map.Set(text, text);
        map.Set(u"key", text.substr(5));
        EXPECT_EQ(content_of(map),
                  (std::map<std::u16string, std::u16string>{
                      {u"key", u"text that is long enough"},
                      {u"some text that is long enough", u"some text that is long enough"}}));
    }
}

TEST(Maps, AWalkSurvivesTheRemovalOfWhatItIsAt) {
    CMapStringToString map(10);
    for (unsigned i = 0; i < 500; ++i) map.SetAt(key_of(i), key_of(i));
    int visited = 0;
    for (auto position = map.GetStartPosition(); position != nullptr; ++visited) {
        CString key;
        CString value;
        map.GetNextAssoc(position, key, value);
        EXPECT_TRUE(map.RemoveKey(key));
    }
    EXPECT_EQ(visited, 500);
    EXPECT_TRUE(map.IsEmpty());
}

TEST(Maps, AReadThroughTheIndexEntersTheKeyAndReferencesHold) {
    CMapStringToPtr map(10);
    void*& first = map[u"first"];
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(map.GetCount(), 1);
    for (unsigned i = 0; i < 1000; ++i) map[key_of(i)] = nullptr;
    int thing = 0;
    first = &thing;
    void* found = nullptr;
    EXPECT_TRUE(map.Lookup(u"first", found));
    EXPECT_EQ(found, &thing);
    EXPECT_FALSE(map.Lookup(u"First", found));
    EXPECT_EQ(found, &thing);
    EXPECT_FALSE(map.Lookup(nullptr, found));
    map[nullptr] = &thing;
    EXPECT_TRUE(map.Lookup(u"", found));
}

TEST(Maps, CopiesAreIndependent) {
    CMapStringToString map;
    map.SetAt(u"a", u"1");
    CMapStringToString copy(map);
    copy.SetAt(u"a", u"2");
    copy.SetAt(u"b", u"3");
    EXPECT_EQ(map[u"a"], u"1");
    EXPECT_EQ(map.GetCount(), 1);
    map = copy;
    copy.RemoveAll();
    EXPECT_EQ(content_of(map),
              (std::map<std::u16string, std::u16string>{{u"a", u"2"}, {u"b", u"3"}}));
    const CMapStringToString moved(std::move(map));
    EXPECT_EQ(moved.GetCount(), 2);
    copy.SetAt(u"again", u"4");
    EXPECT_EQ(copy.GetCount(), 1);
}

// Keys that agree in all but one place are what a weak hash takes for the same.
TEST(Maps, HashesOfSimilarKeysDiffer) {
    std::vector<std::uint64_t> hashes;
    for (std::size_t length = 0; length < 40; ++length) {
        std::u16string key(length, u'\0');
        hashes.push_back(tvutil2::hash_of(key));
        for (auto& unit : key) {
            for (unsigned bit = 0; bit < 16; ++bit) {
                unit = static_cast<char16_t>(1U << bit);
                hashes.push_back(tvutil2::hash_of(key));
            }
            unit = 0;
        }
    }
    std::sort(hashes.begin(), hashes.end());
    EXPECT_EQ(std::adjacent_find(hashes.begin(), hashes.end()), hashes.end());
}

TEST(StringList, DoesWhatAVectorDoes) {
    std::mt19937 random(7);
    CStringList list(10);
    std::vector<std::u16string> model;
    for (int round = 0; round < 3000; ++round) {
        const auto text = key_of(random() % 50);
        const auto index = model.empty() ? 0 : random() % model.size();
        const auto at = model.begin() + static_cast<std::ptrdiff_t>(index);
        const auto position = list.FindIndex(static_cast<int>(index));
        switch (random() % 6) {
            case 0:
                list.AddHead(text), model.insert(model.begin(), text.GetString());
                break;
            case 1:
                list.AddTail(text), model.emplace_back(text.GetString());
                break;
            case 2:
                list.InsertBefore(position, text);
                model.insert(at, text.GetString());
                break;
            case 3:
                list.InsertAfter(position, text);
                model.insert(model.empty() ? at : at + 1, text.GetString());
                break;
            default:
                if (model.empty()) break;
                list.RemoveAt(position);
                model.erase(at);
        }
        ASSERT_EQ(content_of(list), model);
    }
    const CStringList copy(list);
    list.RemoveAll();
    EXPECT_EQ(content_of(copy), model);
    EXPECT_TRUE(content_of(list).empty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
}

TEST(StringList, FindLooksBehindAPosition) {
    CStringList list(10);
    const auto* const texts = u"abab";
    for (int i = 0; i < 4; ++i) list.AddTail(CString(texts[i]));
    const auto first = list.Find(u"a");
    const auto second = list.Find(u"a", first);
    EXPECT_EQ(first, list.FindIndex(0));
    EXPECT_EQ(second, list.FindIndex(2));
    EXPECT_EQ(list.Find(u"a", second), nullptr);
    EXPECT_EQ(list.Find(u"A"), nullptr);
    EXPECT_EQ(list.Find(u"a", list.GetTailPosition()), nullptr);
}

TEST(StringList, NoPositionAndNoElementAreRefused) {
    CStringList list(10);
    POSITION none = nullptr;
    EXPECT_THROW(list.GetNext(none), CInvalidArgException);
    EXPECT_THROW(list.RemoveAt(none), CInvalidArgException);
    EXPECT_THROW((void)list.GetHead(), CInvalidArgException);
    EXPECT_THROW(list.RemoveTail(), CInvalidArgException);
    EXPECT_EQ(list.FindIndex(0), nullptr);
}

TEST(StringArray, GrowsWhereItIsToldTo) {
    CStringArray array;
    array.SetAtGrow(2, u"c");
    EXPECT_EQ(array.GetSize(), 3);
    EXPECT_EQ(array[0], u"");
    array.SetAtGrow(0, array[2]);
    EXPECT_EQ(array[0], u"c");
    EXPECT_EQ(array.Add(array[0]), 3);
    array.InsertAt(1, u"b");
    array.RemoveAt(0);
    EXPECT_EQ(array[0], u"b");
    EXPECT_EQ(array.GetUpperBound(), 3);
    array.InsertAt(6, u"far");
    EXPECT_EQ(array.GetSize(), 7);
    array.RemoveAll();
    EXPECT_TRUE(array.IsEmpty());
}

TEST(StringArray, IndicesOutsideThrow) {
    CStringArray array;
    array.Add(u"only");
    for (const int index : {-1, 1, 2147483647, -2147483647}) {
        EXPECT_THROW(array[index], CInvalidArgException) << index;
        EXPECT_THROW((void)std::as_const(array).GetAt(index), CInvalidArgException) << index;
        EXPECT_THROW(array.SetAt(index, u"x"), CInvalidArgException) << index;
        EXPECT_THROW(array.RemoveAt(0, index == 1 ? 2 : index), CInvalidArgException) << index;
    }
    EXPECT_THROW(array.SetAtGrow(-1, u"x"), CInvalidArgException);
    EXPECT_EQ(array.GetSize(), 1);
}

}  // namespace
