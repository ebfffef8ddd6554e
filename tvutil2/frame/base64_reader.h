// Base64 with a kernel of the caller's choice: what CBase64 stands on, and what holds its kernels
// against one another.
#pragma once

#include "tvutil2/frame/base64_kernels.h"
#include "tvutil2/frame/buffer.h"

#include <optional>
#include <string_view>

namespace tvutil2 {

/// Writes (size + 2) / 3 * 4 characters.
TVUTIL_API void encode_base64(const Base64Kernel& kernel, const unsigned char* data,
                              std::size_t size, char16_t* to);

/// CBase64::Decode.
TVUTIL_API int decode_base64(const Base64Kernel& kernel, std::u16string_view text, CBuffer& out);

/// Reads one text. `to` has room for three bytes for each four characters begun.
class Base64Reader {
  public:
    Base64Reader(const Base64Kernel& kernel, std::u16string_view text, unsigned char* to);
    /// 1, 0 or -1, as CBase64::Decode.
    [[nodiscard]] int read();
    /// Behind the last byte written.
    [[nodiscard]] const unsigned char* end() const { return m_to; }

  private:
    void take_clean_groups(const Base64Kernel& kernel);
    /// One group with whatever stands between its characters; the result when the text ends there.
    std::optional<int> read_group();
    [[nodiscard]] int read_padding(unsigned int group, unsigned int seen);
    void skip_space();
    void put(unsigned int group, unsigned int count);

    const Base64Kernel& m_kernel;
    const char16_t* m_next;
    const char16_t* m_end;
    unsigned char* m_to;
};

}  // namespace tvutil2
