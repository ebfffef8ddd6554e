#include "tvutil2/platform/system/runtime_locale.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <clocale>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {
namespace {

constexpr struct {
    const char16_t* name;
    const char* host;
} kLanguages[] = {
    {u"English", "en_US"},  {u"French", "fr_FR"}, {u"German", "de_DE"},
    {u"Japanese", "ja_JP"}, {u"Korean", "ko_KR"}, {u"Portuguese", "pt_PT"},
    {u"Russian", "ru_RU"},  {u"Slovak", "sk_SK"}, {u"Spanish", "es_ES"},
};

std::string host_name(const char16_t* name) {
    for (const auto& language : kLanguages) {
        if (_wcsicmp(language.name, name) == 0) return language.host;
    }
    auto host = to_utf8(name).value_or("?");
    std::replace(host.begin(), host.end(), '-', '_');
    return host;
}

std::vector<char16_t>& told_to_thread() {
    thread_local std::vector<char16_t> text;
    return text;
}

const char* set(int category, const std::string& host) {
    if (host.find('.') == std::string::npos && host.find('_') != std::string::npos) {
        if (const auto* const taken = setlocale(category, (host + ".UTF-8").c_str())) return taken;
    }
    return setlocale(category, host.c_str());
}

}  // namespace
}  // namespace tvutil2

const char16_t* _wsetlocale(int category, const char16_t* name) {
    const auto* const taken = name == nullptr ? setlocale(category, nullptr)
                                              : tvutil2::set(category, tvutil2::host_name(name));
    if (taken == nullptr) return nullptr;
    const std::string_view told(taken);
    auto& text = tvutil2::told_to_thread();
    text.assign(told.begin(), told.end());
    text.push_back(0);
    return text.data();
}
