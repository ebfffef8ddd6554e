// Protects a string, reads it back, asks for a string of the library and prints a product's name:
// all from what is installed.
#include <tvutil2/tvutil2.h>

#include <cstdio>

int main() {
    const CString secret(u"gr\u00FC\u00DFe");
    const CString key(u"key");
    const CString shown(TvGetEncryptedString(key, secret));
    char16_t text[64];
    const bool works = shown != secret && CString(TvGetDecryptedString(key, shown)) == secret &&
                       LoadStringW(tvutil2::library_instance(), 14127, text, 64) > 0;
    std::puts(CStringA(TvGetProductName(tvutil2::kPelrin).GetString()));
    return works ? 0 : 1;
}
