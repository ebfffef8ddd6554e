#include "tvutil2/frame/base64.h"

#include "tvutil2/frame/base64_reader.h"
#include "tvutil2/platform/base/text_length.h"
#include "tvutil2/platform/base/wide_text.h"

#include <climits>
#include <new>

namespace tvutil2 {

void encode_base64(const Base64Kernel& kernel, const unsigned char* data, std::size_t size,
                   char16_t* to) {
    std::size_t taken = kernel.encode(data, size, to);
    taken += kPortableBase64.encode(data + taken, size - taken, to + taken / 3 * 4);
    const std::size_t left = size - taken;
    if (left == 0) return;
    const unsigned char last[3] = {data[taken], left == 2 ? data[taken + 1] : BYTE{0}, 0};
    to += taken / 3 * 4;
    kPortableBase64.encode(last, 3, to);
    to[3] = u'=';
    if (left == 1) to[2] = u'=';
}

Base64Reader::Base64Reader(const Base64Kernel& kernel, std::u16string_view text, unsigned char* to)
    : m_kernel(kernel), m_next(text.data()), m_end(text.data() + text.size()), m_to(to) {}

int Base64Reader::read() {
    for (;;) {
        take_clean_groups(m_kernel);
        take_clean_groups(kPortableBase64);
        const auto end = read_group();
        if (end) return *end;
    }
}

void Base64Reader::take_clean_groups(const Base64Kernel& kernel) {
    const auto taken = kernel.decode(m_next, static_cast<std::size_t>(m_end - m_next), m_to);
    m_next += taken;
    m_to += taken / 4 * 3;
}

std::optional<int> Base64Reader::read_group() {
    unsigned int group = 0;
    unsigned int seen = 0;
    while (seen < 4) {
        if (m_next == m_end) return seen == 0 ? 1 : 0;
        const char16_t c = *m_next++;
        const unsigned int value = c < kBase64Values.size() ? kBase64Values[c] : kNoBase64Value;
        if (value != kNoBase64Value) {
            group = group << 6U | value;
            ++seen;
        } else if (c == u'=') {
            return read_padding(group, seen);
        } else if (!is_space(c)) {
            return 0;
        }
    }
    put(group, 3);
    return std::nullopt;
}

// Behind the first "=" of a group of which `seen` characters have been read.
int Base64Reader::read_padding(unsigned int group, unsigned int seen) {
    if (seen < 2) return 0;
    if (seen == 2) {
        skip_space();
        if (m_next == m_end || *m_next++ != u'=') return 0;
    }
    skip_space();
    if (m_next != m_end) return 0;
    // 4 of the 12 bits of two characters are spare, 2 of the 18 bits of three.
    const unsigned int spare = seen == 2 ? 0xF : 0x3;
    if ((group & spare) != 0) return -1;
    put(group << (seen == 2 ? 12U : 6U), seen - 1);
    return 1;
}

void Base64Reader::skip_space() {
    while (m_next != m_end && *m_next != u'=' && is_space(*m_next)) ++m_next;
}

// The upper bytes of a group of 24 bits.
void Base64Reader::put(unsigned int group, unsigned int count) {
    for (unsigned int i = 0; i < count; ++i) {
        *m_to++ = static_cast<unsigned char>(group >> (16U - 8 * i));
    }
}

int decode_base64(const Base64Kernel& kernel, std::u16string_view text, CBuffer& out) {
    const std::size_t most = text.size() / 4 * 3 + 3;
    if (text.empty() || most > UINT_MAX) {
        out.Clear(1);
        if (!text.empty()) throw std::bad_alloc();
        return 1;
    }
    const auto room = static_cast<unsigned int>(most);
    unsigned char* const to = out.Renew(room);
    Base64Reader reader(kernel, text, to);
    const int result = reader.read();
    out.ConsumeEnd(room - static_cast<unsigned int>(reader.end() - to));
    return result;
}

}  // namespace tvutil2

void CBase64::Encode(const unsigned char* data, unsigned int len, CString& out) {
    if (data == nullptr || len == 0) {
        out.Empty();
        return;
    }
    const std::size_t size = (std::size_t{len} + 2) / 3 * 4;
    if (size > INT_MAX) throw std::bad_alloc();
    tvutil2::encode_base64(tvutil2::base64_kernels().back(), data, len,
                           out.GetBufferSetLength(static_cast<int>(size)));
}

void CBase64::Encode(const CBuffer& data, CString& out) {
    Encode(data.Ptr(), data.Len(), out);
}

int CBase64::Decode(const char16_t* text, CBuffer& out) {
    const auto& kernel = tvutil2::base64_kernels().back();
    return tvutil2::decode_base64(kernel, {text, tvutil2::text_length(text)}, out);
}
