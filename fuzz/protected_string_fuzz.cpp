// Protected strings: any text may be read, and what was written reads back under its key alone.
#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/url/url_info.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto mac = (data[0] & 1) != 0 ? CUrlInfo::MAC_MD5 : CUrlInfo::MAC_NONE;
    const bool is_wide = (data[0] & 2) != 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const CString text(is_wide ? fuzz::wide_text(data + 1, size - 1) : fuzz::widened(bytes));
    const std::string key(std::string(bytes.substr(0, bytes.size() % 40)).c_str());

    CString read(text);
    if (CUrlInfo::DecryptString(key.c_str(), read, mac, CUrlInfo::ENC_RC4) == 0) {
        fuzz::require(read == text);
    }
    // Once through the code page, so that what doesn't fit it is out of the way.
    const CString plain(CAnsiString(text.GetString()));
    CString written(plain);
    fuzz::require(CUrlInfo::EncryptString(key.c_str(), written, mac, CUrlInfo::ENC_RC4) == 1);
    // Two key streams can share their first bytes by chance, so only longer texts show a wrong key.
    if (mac == CUrlInfo::MAC_MD5 && plain.GetLength() >= 8) {
        CString foreign(written);
        const auto other = key + "x";
        fuzz::require(CUrlInfo::DecryptString(other.c_str(), foreign, mac, CUrlInfo::ENC_RC4) == 0);
    }
    fuzz::require(CUrlInfo::DecryptString(key.c_str(), written, mac, CUrlInfo::ENC_RC4) == 1);
    fuzz::require(written == plain);
    return 0;
}
