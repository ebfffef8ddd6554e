// Code pages and the peers that convert them, ICU's converters and the C library's iconv, with
// texts that all of them hold.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <iconv.h>

#include <cstdint>
#include <string>

#include "tests/support/icu_converter.h"

namespace bench {

inline constexpr std::size_t kSize = std::size_t{1} << 20U;

struct Page {
    UINT number;
    const char* icu;
    /// Null where the C library doesn't know the page.
    const char* host;
};

inline constexpr Page kPages[] = {
    {708, nullptr, nullptr},
    {720, "ibm-720_P100-1997", nullptr},
    {28596, "ISO-8859-6", "ISO-8859-6"},
    {1256, "ibm-9448_X100-2005", "CP1256"},
    {28594, "ISO-8859-4", "ISO-8859-4"},
    {1257, "ibm-9449_P100-2002", "CP1257"},
    {28592, "ISO-8859-2", "ISO-8859-2"},
    {1250, "ibm-5346_P100-1998", "CP1250"},
    {936, "windows-936-2000", "CP936"},
    {54936, "gb18030", "GB18030"},
    {20936, "EUC-CN", "EUC-CN"},
    {950, "windows-950-2000", "BIG5"},
    {28595, "ISO-8859-5", "ISO-8859-5"},
    {20866, "ibm-878_P100-1996", "KOI8-R"},
    {21866, "ibm-1168_P100-2002", "KOI8-U"},
    {1251, "ibm-5347_P100-1998", "CP1251"},
    {866, "ibm-866_P100-1995", "CP866"},
    {28597, "ISO-8859-7", "ISO-8859-7"},
    {1253, "ibm-5349_P100-1998", "CP1253"},
    {862, "ibm-862_P100-1995", "CP862"},
    {28598, "ISO-8859-8", "ISO-8859-8"},
    {38598, "ISO-8859-8", "ISO-8859-8"},
    {1255, "ibm-9447_P100-2002", "CP1255"},
    {51932, "EUC-JP", "EUC-JP-MS"},
    {932, "ibm-943_P15A-2003", "CP932"},
    {949, "windows-949-2000", "UHC"},
    {51949, "EUC-KR", "EUC-KR"},
    {874, "windows-874-2000", "CP874"},
    {28599, "ISO-8859-9", "ISO-8859-9"},
    {1254, "ibm-5350_P100-1998", "CP1254"},
    {1258, "ibm-5354_P100-1998", "CP1258"},
    {28591, "ISO-8859-1", "ISO-8859-1"},
    {1252, "ibm-5348_P100-1997", "CP1252"},
};

using Icu = tests::IcuConverter;

class Host {
  public:
    Host(const char* to, const char* from) : m_converter(iconv_open(to, from)) {}
    ~Host() { iconv_close(m_converter); }
    [[nodiscard]] iconv_t get() const { return m_converter; }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    template <class From, class To>
    bool convert(const From& from, To& out) const {
        iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(from.data()));
        std::size_t left = from.size() * sizeof from[0];
        auto* to = reinterpret_cast<char*>(out.data());
        std::size_t room = out.size() * sizeof out[0];
        return iconv(m_converter, &in, &left, &to, &room) == 0 &&
               iconv(m_converter, nullptr, nullptr, &to, &room) == 0;
    }

  private:
    iconv_t m_converter;
};

/// Characters of a page beyond ASCII that all peers hold: letters, as far as there are some, of one
/// or two bytes or of `size` bytes.
[[nodiscard]] std::u16string letters_of(const Page& page, int size = 0);

/// About 1 MiB of words of such letters with spaces, every fourth word in ASCII.
[[nodiscard]] std::u16string mixed_text(const std::u16string& letters);

}  // namespace bench
