#include "tvutil2/text/code_page.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <iterator>

namespace {

constexpr unsigned int kDefaultPage = 0xFFFFFFFF;
constexpr unsigned char kDefaultCharSet = 0x01;
constexpr unsigned int kHz = 52936;

struct Row {
    unsigned int group;
    unsigned int number;
    unsigned char char_set;
    const char16_t* name;
};

// In the order of display. "Japanese (EUC)" stands right before the page that it is made from.
constexpr Row kRows[] = {
    {10, kDefaultPage, kDefaultCharSet, u"Default Language"},
    {11, CP_UTF8, kDefaultCharSet, u"Unicode (UTF-8)"},
    {12, 708, 0xB2, u"Arabic (ASMO 708)"},
    {12, 720, 0xB2, u"Arabic (DOS)"},
    {12, 28596, 0xB2, u"Arabic (ISO)"},
    {12, 1256, 0xB2, u"Arabic (Windows)"},
    {13, 28594, 0xBA, u"Baltic (ISO)"},
    {13, 1257, 0xBA, u"Baltic (Windows)"},
    {14, 28592, 0xEE, u"Central European (ISO)"},
    {14, 1250, 0xEE, u"Central European (Windows)"},
    {15, 936, 0x86, u"Chinese Simplified (GBK)"},
    {15, 54936, 0x86, u"Chinese Simplified (GB18030)"},
    {15, 20936, 0x86, u"Chinese Simplified (GB2312)"},
    {15, kHz, 0x86, u"Chinese Simplified (HZ)"},
    {16, 950, 0x88, u"Chinese Traditional (Big5)"},
    {17, 28595, 0xCC, u"Cyrillic (ISO)"},
    {17, 20866, 0xCC, u"Cyrillic (KOI8-R)"},
    {17, 21866, 0xCC, u"Cyrillic (KOI8-U)"},
    {17, 1251, 0xCC, u"Cyrillic (Windows)"},
    {17, 866, 0xCC, u"Cyrillic (IBM-866)"},
    {18, 28597, 0xA1, u"Greek (ISO)"},
    {18, 1253, 0xA1, u"Greek (Windows)"},
    {19, 862, 0xB1, u"Hebrew (DOS)"},
    {19, 28598, 0xB1, u"Hebrew (ISO-Visual)"},
    {19, 38598, 0xB1, u"Hebrew (ISO-Logical)"},
    {19, 1255, 0xB1, u"Hebrew (Windows)"},
    {20, 51932, 0x80, u"Japanese (EUC)"},
    {20, 932, 0x80, u"Japanese (Shift-JIS)"},
    {21, 949, 0x81, u"Korean"},
    {21, 51949, 0x81, u"Korean (EUC)"},
    {22, 874, 0xDE, u"Thai (Windows)"},
    {23, 28599, 0xA2, u"Turkish (ISO)"},
    {23, 1254, 0xA2, u"Turkish (Windows)"},
    {24, 1258, 0xA3, u"Vietnamese (Windows)"},
    {25, 28591, 0x00, u"Western European (ISO)"},
    {25, 1252, 0x00, u"Western European (Windows)"},
};

const Row* find_row(unsigned int number) {
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [number](const Row& r) { return r.number == number; });
    return row == std::end(kRows) ? nullptr : row;
}

// The rows that are installed, built in its constructor and then only read.
class AvailableRows {
  public:
    AvailableRows() {
        add(&kRows[0]);
        add(&kRows[1]);
        s_being_built = this;
        EnumSystemCodePagesW(add_installed, CP_INSTALLED);
        s_being_built = nullptr;
        std::sort(m_rows.begin(), m_rows.begin() + m_count);
    }

    [[nodiscard]] int count() const { return m_count; }
    /// Null outside the list.
    [[nodiscard]] const Row* at(int index) const {
        return index < 0 || index >= m_count ? nullptr : m_rows[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] int index_of(unsigned int number) const {
        const auto end = m_rows.begin() + m_count;
        const auto found = std::find_if(m_rows.begin(), end,
                                        [number](const Row* row) { return row->number == number; });
        return found == end ? -1 : static_cast<int>(found - m_rows.begin());
    }

  private:
    void add(const Row* row) {
        const auto end = m_rows.begin() + m_count;
        if (std::find(m_rows.begin(), end, row) == end) {
            m_rows[static_cast<std::size_t>(m_count++)] = row;
        }
    }

    // EUC-JP comes and goes with 932, which does its work, and nothing decodes HZ.
    static BOOL add_installed(char16_t* text) {
        const auto number = static_cast<unsigned int>(_wtoi(text));
        if (number == CP_UTF8 || number == 51932 || number == kHz) return TRUE;
        const auto* const row = find_row(number);
        if (row == nullptr) return TRUE;
        if (number == 932) s_being_built->add(row - 1);
        s_being_built->add(row);
        return TRUE;
    }

    // The enumeration hands its callback nothing but the number.
    static inline AvailableRows* s_being_built = nullptr;

    std::array<const Row*, std::size(kRows)> m_rows{};
    int m_count = 0;
};

// The compiler's guard of the static object makes the first use safe from any thread.
const AvailableRows& available() {
    static const AvailableRows rows;
    return rows;
}

unsigned int page_of_language(LANGID language) {
    switch (PRIMARYLANGID(language)) {
        case 0x04: {
            const bool is_traditional =
                language == 0x0404 || language == 0x0C04 || language == 0x1404;
            return is_traditional ? 950 : 20936;
        }
        case 0x11:
            return 51932;
        case 0x12:
            return 949;
        default:
            return GetACP();
    }
}

}  // namespace

CCodePage::CCodePage(unsigned int number) : codePage(number), charSet(kDefaultCharSet) {
    const auto index = available().index_of(number);
    if (index > 0) {
        charSet = available().at(index)->char_set;
    } else {
        codePage = GetDefault();
    }
}

unsigned int CCodePage::GetDefault() {
    // Two threads that meet here work the same number out.
    static std::atomic<unsigned int> cached{kDefaultPage};
    auto number = cached.load(std::memory_order_relaxed);
    if (number == kDefaultPage) {
        number = page_of_language(GetSystemDefaultLangID());
        cached.store(number, std::memory_order_relaxed);
    }
    return number;
}

CCodePageList::CCodePageList() {
    available();
}

int CCodePageList::GetCount() {
    return available().count();
}

unsigned int CCodePageList::GetCodePage(int index) {
    const auto* const row = available().at(index);
    return row == nullptr ? GetACP() : row->number;
}

const char16_t* CCodePageList::GetName(int index) {
    const auto* const row = available().at(index);
    return row == nullptr ? u"" : row->name;
}

unsigned char CCodePageList::GetCharSet(int index) {
    const auto* const row = available().at(index);
    return row == nullptr ? kDefaultCharSet : row->char_set;
}

unsigned int CCodePageList::GetLangID(int index) {
    const auto* const row = available().at(index);
    return row == nullptr ? 0 : row->group;
}

int CCodePageList::FindIndex(unsigned int codePage) {
    return available().index_of(codePage);
}
