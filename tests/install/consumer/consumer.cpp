// Protects a string, reads it back, and asks for a string of the library: all from what is
// installed.
#include <tvutil2/tvutil2.h>

int main() {
    const CString secret(u"gr\u00FC\u00DFe");
    const CString key(u"key");
    const CString shown(TvGetEncryptedString(key, secret));
    char16_t text[64];
    const bool works = shown != secret && CString(TvGetDecryptedString(key, shown)) == secret &&
                       LoadStringW(tvutil2::library_instance(), 14127, text, 64) > 0;
    return works ? 0 : 1;
}
