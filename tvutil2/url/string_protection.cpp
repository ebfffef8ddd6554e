// MD5 and RC4 are used through their plain functions: they need no provider and no allocation, and
// the format has no choice of algorithms that the newer interface would serve.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "tvutil2/url/string_protection.h"

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/frame/base64.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/conversion.h"
#include "tvutil2/platform/process/account.h"

#include <openssl/md5.h>
#include <openssl/rc4.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace tvutil2 {
namespace {

constexpr int kNoMac = 0;
constexpr int kMd5Mac = 1;

using Digest = std::array<unsigned char, MD5_DIGEST_LENGTH>;

Digest md5(const void* data, std::size_t size) {
    Digest digest;
    MD5_CTX context;
    MD5_Init(&context);
    MD5_Update(&context, data, size);
    MD5_Final(digest.data(), &context);
    return digest;
}

// RC4 before its first byte.
RC4_KEY start_under(const char* key_text) {
    const auto key = md5(key_text, std::strlen(key_text));
    RC4_KEY start;
    RC4_set_key(&start, static_cast<int>(key.size()), key.data());
    return start;
}

// In place: the bytes never stand anywhere but in the block that is wiped at the end.
void apply_cipher(RC4_KEY cipher, unsigned char* bytes, std::size_t size) {
    RC4(&cipher, size, bytes, bytes);
}

// The plain bytes of a text, with `more` bytes of room behind them; nothing when no page could hold
// so long a text. One block from the beginning: growth would leave the secret in the old one.
std::optional<unsigned int> put_plain_bytes(const CString& text, unsigned int more, CBuffer& out) {
    const auto units = text.View().substr(0, text.View().find(u'\0'));
    const auto room = codepage::byte_room(CP_ACP, units.size());
    auto* const bytes =
        reinterpret_cast<char*>(out.InsertSpace(static_cast<unsigned int>(room) + more));
    const auto put =
        codepage::put_bytes(CP_ACP, WC_COMPOSITECHECK, units, std::span(bytes, room), "?");
    if (!put) return std::nullopt;
    const auto size = static_cast<unsigned int>(*put);
    out.ConsumeEnd(out.Len() - size);
    return size;
}

// The first live byte, to be written to.
unsigned char* bytes_of(CBuffer& buffer) {
    return buffer.InsertSpace(0);
}

struct FreeLocal {
    void operator()(char16_t* text) const { LocalFree(reinterpret_cast<HLOCAL>(text)); }
};
using LocalText = std::unique_ptr<char16_t, FreeLocal>;

// The identifier of an account as text; null when it has none.
LocalText identifier_of(const char16_t* account) {
    unsigned char sid[4096];
    DWORD sid_size = sizeof sid;
    char16_t domain[1024];
    DWORD domain_size = 1023;
    int use = 0;
    char16_t* text = nullptr;
    if (LookupAccountNameW(nullptr, account, sid, &sid_size, domain, &domain_size, &use) == 0 ||
        ConvertSidToStringSidW(sid, &text) == 0) {
        return nullptr;
    }
    return LocalText(text);
}

// What the versions of a key text make of an account.
enum class KeyForm {
    identifier,  // up to "5.2"
    name_first,  // up to "7.0", session URLs among them: they say "5.3"
    backwards    // above
};

bool put_account_key(CString& out, KeyForm form) {
    char16_t name[256] = {};
    DWORD name_size = 255;
    if (GetUserNameW(name, &name_size) == 0) return false;
    const auto identifier = identifier_of(name);
    out.Empty();
    if (!identifier) return false;
    if (form == KeyForm::name_first) out = name;
    out += identifier.get();
    if (form == KeyForm::backwards) {
        out.MakeReverse();
        out += name;
    }
    return true;
}

struct CipherKey {
    char text[256] = {};
};

CipherKey make_cipher_key() {
    CipherKey key;
    DWORD room = sizeof key.text;
    GetUserNameA(key.text, &room);
    auto size = std::strlen(key.text);
    if (size + 1 < sizeof key.text) key.text[size++] = ':';
    room = static_cast<DWORD>(sizeof key.text - size);
    GetComputerNameA(key.text + size, &room);
    return key;
}

// The text's own storage, which stays where it is until the text is changed.
char16_t* storage_of(CString& text) {
    const int length = text.GetLength();
    char16_t* const storage = text.GetBuffer(length);
    text.ReleaseBuffer(length);
    return storage;
}

bool encrypt(const RC4_KEY& start, CString& text, bool with_digest) {
    CBuffer work;
    const auto size = put_plain_bytes(text, with_digest ? MD5_DIGEST_LENGTH : 0, work);
    if (!size) return false;
    const auto digest = with_digest ? md5(work.Ptr(), *size) : Digest{};
    apply_cipher(start, bytes_of(work), *size);
    if (with_digest) work.Append(digest.data(), MD5_DIGEST_LENGTH);
    CBase64::Encode(work, text);
    return true;
}

bool decrypt(const RC4_KEY& start, CString& text, bool with_digest) {
    CBuffer work;
    if (CBase64::Decode(text, work) == 0) return false;
    Digest expected{};
    if (with_digest) {
        if (work.Len() < expected.size()) return false;
        const auto size = work.Len() - MD5_DIGEST_LENGTH;
        std::memcpy(expected.data(), work.Ptr() + size, expected.size());
        work.ConsumeEnd(MD5_DIGEST_LENGTH);
    }
    apply_cipher(start, bytes_of(work), work.Len());
    if (with_digest && md5(work.Ptr(), work.Len()) != expected) return false;
    work.PutByte(0);
    text = reinterpret_cast<const char*>(work.Ptr());
    return true;
}

// The cipher under the key of the current account; nothing when the account can't be had. Made anew
// each time: whose account it is, and whether it can be had, is asked at every secret.
std::optional<RC4_KEY> account_start() {
    CString key;
    if (!put_account_key(key, KeyForm::name_first)) return std::nullopt;
    return start_under(CAnsiString(key.GetString()));
}

}  // namespace

int encrypt_string(const char* key, CString& text, int mac) {
    if (mac != kNoMac && mac != kMd5Mac) return 0;
    if (key == nullptr) key = TvGetCipherKey();
    return encrypt(start_under(key), text, mac == kMd5Mac) ? 1 : 0;
}

int decrypt_string(const char* key, CString& text, int mac) {
    if (mac != kNoMac && mac != kMd5Mac) return 0;
    if (key == nullptr) key = TvGetCipherKey();
    return decrypt(start_under(key), text, mac == kMd5Mac) ? 1 : 0;
}

bool protect_for_account(CString& text) {
    const auto start = account_start();
    if (!start) return false;
    return encrypt(*start, text, true);
}

bool reveal_for_account(CString& text) {
    const auto start = account_start();
    if (!start) return false;
    decrypt(*start, text, true);
    return true;
}

}  // namespace tvutil2

const char* TvGetCipherKey() {
    static const tvutil2::CipherKey key = tvutil2::make_cipher_key();
    return key.text;
}

char16_t* TvGetEncryptedString(const char16_t* key, const char16_t* text) {
    static CString result;
    result.Format(u"%s", text);
    tvutil2::encrypt_string(CAnsiString(key), result, tvutil2::kMd5Mac);
    return tvutil2::storage_of(result);
}

char16_t* TvGetDecryptedString(const char16_t* key, const char16_t* text) {
    static CString result;
    result.Format(u"%s", text);
    tvutil2::decrypt_string(CAnsiString(key), result, tvutil2::kMd5Mac);
    return tvutil2::storage_of(result);
}

int GetCurSID(CString& out, const char16_t* version) {
    using tvutil2::KeyForm;
    const auto form = lstrcmpW(version, u"5.2") <= 0   ? KeyForm::identifier
                      : lstrcmpW(version, u"7.0") <= 0 ? KeyForm::name_first
                                                       : KeyForm::backwards;
    return tvutil2::put_account_key(out, form) ? 1 : 0;
}
