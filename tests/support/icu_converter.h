// ICU's converter of a code page, which code pages are held against and measured beside.
#pragma once

#include <unicode/ucnv.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace tests {

/// Refuses what it has no exact mapping for. One thread at a time.
class IcuConverter {
  public:
    explicit IcuConverter(const char* name) {
        UErrorCode status = U_ZERO_ERROR;
        m_converter = ucnv_open(name, &status);
        ucnv_setToUCallBack(m_converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                            &status);
        ucnv_setFromUCallBack(m_converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                              &status);
        ucnv_setFallback(m_converter, 0);
    }
    ~IcuConverter() { ucnv_close(m_converter); }
    IcuConverter(const IcuConverter&) = delete;
    IcuConverter& operator=(const IcuConverter&) = delete;

    [[nodiscard]] UConverter* get() const { return m_converter; }

    /// Into the room that `out` has; how much was written, or -1.
    std::int32_t widen(std::string_view bytes, std::u16string& out) const {
        UErrorCode status = U_ZERO_ERROR;
        const auto count =
            ucnv_toUChars(m_converter, out.data(), static_cast<std::int32_t>(out.size()),
                          bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
        return U_SUCCESS(status) ? count : -1;
    }
    std::int32_t narrow(std::u16string_view text, std::string& out) const {
        UErrorCode status = U_ZERO_ERROR;
        const auto count =
            ucnv_fromUChars(m_converter, out.data(), static_cast<std::int32_t>(out.size()),
                            text.data(), static_cast<std::int32_t>(text.size()), &status);
        return U_SUCCESS(status) ? count : -1;
    }

  private:
    UConverter* m_converter = nullptr;
};

}  // namespace tests
