// A stand-in for the update module: tells how it was started, and what the products told it.
//
// It lies beside the products as LiveUpdate.exe. Like them it writes to standard output, or to the
// file that TVUTIL_EXAMPLE_REPORT names.
#include "tvutil2/services/live_update.h"

#include "tvutil2/frame/product.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/settings/registry.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

namespace {

std::string record_of(unsigned int code) {
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\%d\\LiveUpdate", TvGetProductName(code),
                tvutil2::kMajorVersion);
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, path, 0, KEY_READ);
    return tvutil2::to_utf8_lossy(key.GetValue(u"LiveUpdateData", CString()).View());
}

void report(std::ostream& out, int argc, char** argv) {
    out << "switches:";
    for (int i = 1; i < argc; ++i) out << ' ' << argv[i];
    out << '\n';
    for (unsigned int code = 0; !TvGetProductName(code).IsEmpty(); ++code) {
        const auto record = record_of(code);
        if (!record.empty()) out << "record: " << record << '\n';
    }
    out << "id: " << tvutil2::to_utf8_lossy(TvCommonGUID()) << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    const char* const file = std::getenv("TVUTIL_EXAMPLE_REPORT");
    if (file == nullptr) {
        report(std::cout, argc, argv);
        return 0;
    }
    std::ofstream out(file);
    report(out, argc, argv);
    return out.flush() ? 0 : 4;
}
