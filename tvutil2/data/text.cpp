#include "tvutil2/data/text.h"

#include "tvutil2/framework/collections.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/process/modules.h"

#include <algorithm>
#include <string>

namespace {

constexpr std::u16string_view kForbidden = u"\\/:*?\"<>|";

}  // namespace

CString tvutil2::library_string(UINT id) {
    return MLS_TVUTIL_ID2STR_DLL(library_instance(), id);
}

CString csFmt(const char16_t* format, tvutil2::FormatArguments arguments) {
    CString text;
    text.FormatV(format, arguments);
    return text;
}

CString csFmt(UINT id, tvutil2::FormatArguments arguments) {
    CString format;
    if (format.LoadString(id) == FALSE) format = tvutil2::library_string(id);
    return csFmt(format.GetString(), arguments);
}

int StrTok(CStringArray& out, const CString& text, const char16_t* delimiter) {
    const std::u16string own(text.View());  // it may be an element of the array that grows
    std::u16string_view rest(own);
    const std::u16string_view between = delimiter != nullptr ? delimiter : u"";
    int count = 0;
    while (!rest.empty()) {
        const auto end = between.empty() ? rest.size() : std::min(rest.find(between), rest.size());
        if (end > 0) {
            out.Add(CString(rest.substr(0, end)));
            ++count;
        }
        rest.remove_prefix(std::min(end + between.size(), rest.size()));
    }
    return count;
}

CString GetNumberFormatByComma(const CString& digits) {
    const auto text = digits.View();
    const bool has_sign = text.starts_with(u'-') || text.starts_with(u'+');
    std::u16string out;
    out.reserve(text.size() + text.size() / 3);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_first = i <= (has_sign ? 1U : 0U);
        if (!is_first && (text.size() - i) % 3 == 0) out += u',';
        out += text[i];
    }
    return CString(std::move(out));
}

void TvCopyStringList(CStringList* from, CStringList* to) {
    if (from == to) return;
    to->RemoveAll();
    for (POSITION position = from->GetHeadPosition(); position != nullptr;) {
        to->AddTail(from->GetNext(position));
    }
}

int TvEqualStringList(CStringList* a, CStringList* b) {
    if (a->GetCount() != b->GetCount()) return 0;
    POSITION left = a->GetHeadPosition();
    POSITION right = b->GetHeadPosition();
    while (left != nullptr) {
        if (!(a->GetNext(left) == b->GetNext(right))) return 0;
    }
    return 1;
}

int IsValidFileName(const char16_t* name) {
    if (name == nullptr) return 0;
    return std::u16string_view(name).find_first_of(kForbidden) == std::u16string_view::npos ? 1 : 0;
}

void TvSmartFileRename(CString& name) {
    for (const auto c : kForbidden) name.Replace(c, u'_');
}
