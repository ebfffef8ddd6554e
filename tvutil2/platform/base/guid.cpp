#include "tvutil2/platform/base/guid.h"

#include <sys/random.h>

#include <cerrno>
#include <new>
#include <string>

namespace {

// Up to 256 bytes come at once or, where a signal arrives before the host's first random bytes do,
// not at all.
bool fill_randomly(void* bytes, std::size_t size) {
    ssize_t count = 0;
    do {
        count = getrandom(bytes, size, 0);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(size);
}

void append_hex(std::u16string& text, std::uint64_t value, unsigned int digits) {
    while (digits-- != 0) text += u"0123456789abcdef"[(value >> (4 * digits)) & 15];
}

std::u16string text_of(const GUID& id) {
    std::u16string text;
    append_hex(text, id.Data1, 8);
    text += u'-';
    append_hex(text, id.Data2, 4);
    text += u'-';
    append_hex(text, id.Data3, 4);
    for (std::size_t i = 0; i < sizeof id.Data4; ++i) {
        if (i == 0 || i == 2) text += u'-';
        append_hex(text, id.Data4[i], 2);
    }
    return text;
}

}  // namespace

HRESULT CoCreateGuid(GUID* id) {
    if (id == nullptr) return E_POINTER;
    if (!fill_randomly(id, sizeof *id)) return E_FAIL;
    id->Data3 = static_cast<WORD>((id->Data3 & 0x0FFF) | 0x4000);
    id->Data4[0] = static_cast<BYTE>((id->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

LONG UuidToStringW(const GUID* id, char16_t** text) {
    const auto characters = text_of(id != nullptr ? *id : GUID{});
    auto* const copy = new (std::nothrow) char16_t[characters.size() + 1];
    if (copy == nullptr) return RPC_S_OUT_OF_MEMORY;
    copy[characters.copy(copy, characters.size())] = 0;
    *text = copy;
    return RPC_S_OK;
}

LONG RpcStringFreeW(char16_t** text) {
    delete[] * text;
    *text = nullptr;
    return RPC_S_OK;
}
