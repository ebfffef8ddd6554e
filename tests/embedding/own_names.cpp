// A program that has a class and a function of its own under names of the library's, and headers of
// others that define the platform's constants as macros.
#define TRUE (!FALSE)
#define FALSE (0)
#define MAX_PATH 4096
#define INFINITE (-1)
#include <tvutil2/framework/strings.h>
#include <tvutil2/platform/files/find.h>
#include <tvutil2/url/string_protection.h>

#include <cstdio>

static int taken = 0;

// The library wipes secrets in its own class of this name.
class CBuffer {
  public:
    CBuffer(const unsigned char*, unsigned int);
    virtual ~CBuffer();
    unsigned char* AppendSpace(unsigned int);
    void Clear(int);
};
CBuffer::CBuffer(const unsigned char*, unsigned int) {
    ++taken;
}
CBuffer::~CBuffer() {
    ++taken;
}
unsigned char* CBuffer::AppendSpace(unsigned int) {
    ++taken;
    return nullptr;
}
void CBuffer::Clear(int) {
    ++taken;
}

int main() {
    static_assert(sizeof(WIN32_FIND_DATAW::cFileName) == 2 * 260 && MAX_PATH == 260);
    const CString secret(u"open sesame"), key(u"key");
    const CString shown(TvGetEncryptedString(key, secret));
    const bool works = CString(TvGetDecryptedString(key, shown)) == secret;
    if (taken != 0) std::printf("the library took this program's class %d times\n", taken);
    return works && taken == 0 ? 0 : 1;
}
