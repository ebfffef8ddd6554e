// The functions of ICU and OpenSSL that the library calls, bound at their first call.
//
// Loading and relocating the two costs more than everything else at the start of a program, and
// most programs never compare a text beyond ASCII or protect a string. So the library isn't linked
// with them: the functions below stand in their place, under their own names, with the types that
// the headers give them, and hand on. They are hidden: nobody else sees them. All are safe from any
// thread. A library that can't be loaded ends the program, as it would have at the start. Which
// ones there are stands in cmake/late_libraries.cmake.
#define OPENSSL_SUPPRESS_DEPRECATED  // MD5 and RC4 are what the format of protected strings is

#include "tvutil2/platform/late/openssl_start.h"

#include <dlfcn.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/md5.h>
#include <openssl/rc4.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/unorm2.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "late_libraries.h"

#define LATE_TEXT_OF(x) #x
#define LATE_TEXT(x) LATE_TEXT_OF(x)
// The real function of that name (which a header's macro may have given a version), in a variable.
#define LATE(library, name) \
    static auto* const real = address<decltype(name), k_##library>(LATE_TEXT(name))

namespace {

// Ends the program as the loader ends one that lacks a library it is linked with: one line, code
// 127.
[[noreturn]] void give_up(const LateLibrary& library) {
    const char* const reason = dlerror();
    std::fprintf(stderr, "%s: can't load %s, which Debian's package %s installs: %s\n",
                 program_invocation_short_name, library.file, library.package,
                 reason == nullptr ? "no reason given" : reason);
    std::_Exit(127);
}

void start_crypto(void* loaded) {
    using Start = decltype(OPENSSL_init_crypto);
    auto* const start = reinterpret_cast<Start*>(dlsym(loaded, "OPENSSL_init_crypto"));
    if (start != nullptr) static_cast<void>(start(tvutil2::kOpensslStart, nullptr));
}

void* load(const LateLibrary& library) {
    void* const loaded = dlopen(library.file, RTLD_LAZY | RTLD_LOCAL);
    if (loaded == nullptr) give_up(library);
    if (&library == &k_crypto) start_crypto(loaded);
    return loaded;
}

template <const LateLibrary& library>
void* loaded() {
    static void* const only = load(library);
    return only;
}

template <class Function, const LateLibrary& library>
Function* address(const char* name) {
    void* const found = dlsym(loaded<library>(), name);
    if (found == nullptr) give_up(library);
    return reinterpret_cast<Function*>(found);
}

}  // namespace

extern "C" {

const EVP_MD* EVP_sha256() {
    LATE(crypto, EVP_sha256);
    return real();
}

unsigned char* HMAC(const EVP_MD* method, const void* key, int key_size, const unsigned char* data,
                    std::size_t size, unsigned char* digest, unsigned int* digest_size) {
    LATE(crypto, HMAC);
    return real(method, key, key_size, data, size, digest, digest_size);
}

int MD5_Init(MD5_CTX* context) {
    LATE(crypto, MD5_Init);
    return real(context);
}

int MD5_Update(MD5_CTX* context, const void* data, std::size_t size) {
    LATE(crypto, MD5_Update);
    return real(context, data, size);
}

int MD5_Final(unsigned char* digest, MD5_CTX* context) {
    LATE(crypto, MD5_Final);
    return real(digest, context);
}

void RC4_set_key(RC4_KEY* key, int size, const unsigned char* data) {
    LATE(crypto, RC4_set_key);
    real(key, size, data);
}

void RC4(RC4_KEY* key, std::size_t size, const unsigned char* in, unsigned char* out) {
    LATE(crypto, RC4);
    real(key, size, in, out);
}

std::int32_t u_charDigitValue(UChar32 c) {
    LATE(icu_common, u_charDigitValue);
    return real(c);
}

std::int8_t u_charType(UChar32 c) {
    LATE(icu_common, u_charType);
    return real(c);
}

void u_enumCharTypes(UCharEnumTypeRange* callback, const void* context) {
    LATE(icu_common, u_enumCharTypes);
    real(callback, context);
}

UChar32 u_tolower(UChar32 c) {
    LATE(icu_common, u_tolower);
    return real(c);
}

UChar32 u_toupper(UChar32 c) {
    LATE(icu_common, u_toupper);
    return real(c);
}

UConverter* ucnv_open(const char* name, UErrorCode* error) {
    LATE(icu_common, ucnv_open);
    return real(name, error);
}

void ucnv_close(UConverter* converter) {
    LATE(icu_common, ucnv_close);
    real(converter);
}

void ucnv_setFallback(UConverter* converter, UBool uses_fallback) {
    LATE(icu_common, ucnv_setFallback);
    real(converter, uses_fallback);
}

void ucnv_setToUCallBack(UConverter* converter, UConverterToUCallback action, const void* context,
                         UConverterToUCallback* old_action, const void** old_context,
                         UErrorCode* error) {
    LATE(icu_common, ucnv_setToUCallBack);
    real(converter, action, context, old_action, old_context, error);
}

void ucnv_setFromUCallBack(UConverter* converter, UConverterFromUCallback action,
                           const void* context, UConverterFromUCallback* old_action,
                           const void** old_context, UErrorCode* error) {
    LATE(icu_common, ucnv_setFromUCallBack);
    real(converter, action, context, old_action, old_context, error);
}

void UCNV_TO_U_CALLBACK_SKIP(const void* context, UConverterToUnicodeArgs* arguments,
                             const char* bytes, std::int32_t size, UConverterCallbackReason reason,
                             UErrorCode* error) {
    LATE(icu_common, UCNV_TO_U_CALLBACK_SKIP);
    real(context, arguments, bytes, size, reason, error);
}

void UCNV_FROM_U_CALLBACK_SKIP(const void* context, UConverterFromUnicodeArgs* arguments,
                               const UChar* units, std::int32_t size, UChar32 character,
                               UConverterCallbackReason reason, UErrorCode* error) {
    LATE(icu_common, UCNV_FROM_U_CALLBACK_SKIP);
    real(context, arguments, units, size, character, reason, error);
}

void ucnv_toUnicode(UConverter* converter, UChar** to, const UChar* to_end, const char** from,
                    const char* from_end, std::int32_t* offsets, UBool is_last, UErrorCode* error) {
    LATE(icu_common, ucnv_toUnicode);
    real(converter, to, to_end, from, from_end, offsets, is_last, error);
}

void ucnv_fromUnicode(UConverter* converter, char** to, const char* to_end, const UChar** from,
                      const UChar* from_end, std::int32_t* offsets, UBool is_last,
                      UErrorCode* error) {
    LATE(icu_common, ucnv_fromUnicode);
    real(converter, to, to_end, from, from_end, offsets, is_last, error);
}

std::int32_t uloc_addLikelySubtags(const char* locale, char* out, std::int32_t room,
                                   UErrorCode* error) {
    LATE(icu_common, uloc_addLikelySubtags);
    return real(locale, out, room, error);
}

std::int32_t uloc_getCountry(const char* locale, char* out, std::int32_t room, UErrorCode* error) {
    LATE(icu_common, uloc_getCountry);
    return real(locale, out, room, error);
}

std::int32_t uloc_getLanguage(const char* locale, char* out, std::int32_t room, UErrorCode* error) {
    LATE(icu_common, uloc_getLanguage);
    return real(locale, out, room, error);
}

std::uint32_t uloc_getLCID(const char* locale) {
    LATE(icu_common, uloc_getLCID);
    return real(locale);
}

const UNormalizer2* unorm2_getNFCInstance(UErrorCode* error) {
    LATE(icu_common, unorm2_getNFCInstance);
    return real(error);
}

UChar32 unorm2_composePair(const UNormalizer2* normalizer, UChar32 a, UChar32 b) {
    LATE(icu_common, unorm2_composePair);
    return real(normalizer, a, b);
}

UBreakIterator* ubrk_open(UBreakIteratorType type, const char* locale, const UChar* text,
                          std::int32_t size, UErrorCode* error) {
    LATE(icu_common, ubrk_open);
    return real(type, locale, text, size, error);
}

void ubrk_close(UBreakIterator* breaks) {
    LATE(icu_common, ubrk_close);
    real(breaks);
}

void ubrk_setText(UBreakIterator* breaks, const UChar* text, std::int32_t size, UErrorCode* error) {
    LATE(icu_common, ubrk_setText);
    real(breaks, text, size, error);
}

std::int32_t ubrk_following(UBreakIterator* breaks, std::int32_t at) {
    LATE(icu_common, ubrk_following);
    return real(breaks, at);
}

std::int32_t ubrk_preceding(UBreakIterator* breaks, std::int32_t at) {
    LATE(icu_common, ubrk_preceding);
    return real(breaks, at);
}

UCollator* ucol_open(const char* locale, UErrorCode* error) {
    LATE(icu_collation, ucol_open);
    return real(locale, error);
}

void ucol_setAttribute(UCollator* collator, UColAttribute attribute, UColAttributeValue value,
                       UErrorCode* error) {
    LATE(icu_collation, ucol_setAttribute);
    real(collator, attribute, value, error);
}

std::int32_t ucol_getSortKey(const UCollator* collator, const UChar* text, std::int32_t size,
                             std::uint8_t* key, std::int32_t room) {
    LATE(icu_collation, ucol_getSortKey);
    return real(collator, text, size, key, room);
}

void ucol_setStrength(UCollator* collator, UCollationStrength strength) {
    LATE(icu_collation, ucol_setStrength);
    real(collator, strength);
}

UCollationResult ucol_strcoll(const UCollator* collator, const UChar* a, std::int32_t a_size,
                              const UChar* b, std::int32_t b_size) {
    LATE(icu_collation, ucol_strcoll);
    return real(collator, a, a_size, b, b_size);
}
}
