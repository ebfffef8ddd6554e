#include "tvutil2/data/path.h"

#include "tvutil2/data/text_view.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/process/environment.h"
#include "tvutil2/platform/process/modules.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr auto kNone = std::u16string_view::npos;

bool is_absolute(std::u16string_view path) {
    return path.starts_with(u"\\\\") || (path.size() >= 2 && path[1] == u':');
}

bool is_base(std::u16string_view path) {
    return path.starts_with(u"\\\\") || (path.size() >= 3 && path[2] == u'\\') ||
           (path.size() == 2 && path[1] == u':');
}

void append_segments(std::u16string& path, std::u16string_view tail) {
    while (!tail.empty()) {
        const auto end = std::min(tail.find(u'\\', 1), tail.size());
        const auto segment = tail.substr(0, end);
        tail.remove_prefix(std::min(end + 1, tail.size()));
        if (segment == u"..") {
            path.resize(std::min(path.rfind(u'\\'), path.size()));
        } else if (segment != u".") {
            path += u'\\';
            path += segment;
        }
    }
}

// The value; empty text for a variable that is set to nothing, no value for one that isn't set.
std::optional<std::u16string> environment_value(std::u16string_view name) {
    char16_t buffer[4096];
    SetLastError(ERROR_SUCCESS);
    const auto length =
        GetEnvironmentVariableW(std::u16string(name).c_str(), buffer, std::size(buffer));
    if (length == 0 && GetLastError() != ERROR_SUCCESS) return std::nullopt;
    if (length >= std::size(buffer)) return std::nullopt;
    return std::u16string(buffer, length);
}

std::u16string replaced(std::u16string_view text, std::u16string_view what,
                        std::u16string_view with) {
    std::u16string out;
    for (auto at = text.find(what); at != kNone; at = text.find(what)) {
        out += text.substr(0, at);
        out += with;
        text.remove_prefix(at + what.size());
    }
    return out.append(text);
}

// One run over the references of a path.
class Expansion {
  public:
    explicit Expansion(std::u16string_view path) : m_original(path), m_path(path) {}

    bool run() {
        auto scan = m_original;
        for (;;) {
            const auto first = scan.find(u'%');
            const auto second = first == kNone ? kNone : scan.find(u'%', first + 1);
            if (second == kNone) return m_any;
            const auto reference = scan.substr(first, second - first + 1);
            const auto value = environment_value(reference.substr(1, reference.size() - 2));
            if (value && !replace(reference, *value)) return m_any;
            // The second "%" of a name that isn't set may open the next reference.
            scan.remove_prefix(value ? second + 1 : second);
        }
    }

    [[nodiscard]] const std::u16string& path() const { return m_path; }

  private:
    // False when the path would grow too long.
    bool replace(std::u16string_view reference, const std::u16string& value) {
        // Each further occurrence in a long text would be a search for nothing.
        if (m_gone.count(reference) != 0) return true;
        auto path = replaced(m_path, reference, value);
        constexpr std::size_t kLongestPath = 32767;
        if (path.size() > std::max(kLongestPath, m_path.size())) return false;
        m_any = m_any || m_path.find(reference) != kNone;
        m_path = std::move(path);
        if (value.find(u'%') == kNone) {
            m_gone.insert(reference);
        } else {
            m_gone.clear();  // a value may have brought a reference back
        }
        return true;
    }

    std::u16string_view m_original;
    std::u16string m_path;
    std::set<std::u16string_view> m_gone;
    bool m_any = false;
};

}  // namespace

int AppendPath(CString& path, const char16_t* tail) {
    if (path.IsEmpty() || tail == nullptr) return 0;
    const std::u16string text(tail);  // it may be the path's own
    if (!path.View().ends_with(u'\\')) path += u'\\';
    path += std::u16string_view(text).substr(text.starts_with(u'\\') ? 1 : 0);
    return 1;
}

int AppendPathEx(CString& path, const char16_t* tail_text) {
    if (tail_text == nullptr || path.GetLength() < 2 || !is_base(path.View())) return 0;
    const std::u16string tail(tail_text);
    std::u16string result(path.View());
    if (tail.size() >= 2 && tail[1] == u':') {
        result = tail;
    } else if (tail.starts_with(u'\\')) {
        result.replace(2, kNone, tail);
    } else {
        append_segments(result, tail);
    }
    path = CString(std::move(result));
    return 1;
}

CString GetFnameofPath(const char16_t* path) {
    const auto text = view(path);
    return CString(text.substr(text.rfind(u'\\') + 1));
}

void ReplaceFnameOfPath(CString& out, const char16_t* path, const char16_t* name) {
    constexpr std::size_t kSize = 256;
    char16_t drive[kSize];
    char16_t folder[kSize];
    char16_t old_name[kSize];
    char16_t extension[kSize];
    _wsplitpath_s(path, drive, kSize, folder, kSize, old_name, kSize, extension, kSize);
    CString result(drive);
    result += folder;
    result += name;
    result += extension;
    out = result;
}

int GetLongFileName(char16_t* out, const char16_t* path) {
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW(path, &data);
    const bool found = search != INVALID_HANDLE_VALUE;
    if (found) FindClose(search);
    const auto text = found ? std::u16string_view(data.cFileName) : view(path);
    const auto length = text.copy(out, MAX_PATH - 1);
    out[length] = 0;
    return found ? 1 : 0;
}

void AfxGetModulePath(CString& out, const char16_t* tail) {
    std::vector<char16_t> buffer(MAX_PATH);
    constexpr std::size_t kLongestPath = 32768;
    DWORD length = GetModuleFileNameW(nullptr, buffer.data(), MAX_PATH);
    if (length == MAX_PATH) {
        buffer.resize(kLongestPath);
        length = GetModuleFileNameW(nullptr, buffer.data(), kLongestPath);
    }
    const std::u16string_view path(buffer.data(), length);
    const auto separator = path.rfind(u'\\');
    const auto folder = path.substr(0, separator == kNone ? 0 : separator);
    CString result(folder);
    if (tail != nullptr) {
        result += u'\\';
        result += tail;
    }
    out = result;
}

void AfxConvertPath(CString& path, const char16_t* base, int to_absolute) {
    if (path.IsEmpty()) return;
    if (to_absolute == 0) {
        path.Replace(base, u"");
        if (path.View().starts_with(u'\\')) path.Delete(0);
        return;
    }
    const auto text = path.View();
    if (is_absolute(text) || text.starts_with(u'\\')) return;
    CString result(base);
    if (text != u".") {
        result += u'\\';
        result += path;
    }
    path = result;
}

int ChangePathWithEnv(CString& path) {
    Expansion expansion(path.View());
    if (!expansion.run()) return 0;
    path = CString(expansion.path());
    return 1;
}

int SplitNameForSaveAs(const char16_t* name, CString& stem, int& number) {
    const std::u16string text(view(name));
    if (text.empty()) return 0;
    number = 0;
    stem = CString(text);
    if (text.size() < 2 || text.back() != u')') return 0;
    const auto digits_end = text.size() - 1;
    auto digits = digits_end;
    while (digits > 0 && text[digits - 1] >= u'0' && text[digits - 1] <= u'9') --digits;
    if (digits == 0 || text[digits - 1] != u'(') return 0;
    std::int64_t value = 0;
    for (auto i = digits; i < digits_end; ++i) {
        value =
            std::min<std::int64_t>(value * 10 + (text[i] - u'0'), std::numeric_limits<int>::max());
    }
    number = static_cast<int>(value);
    stem = CString(std::u16string_view(text).substr(0, digits - 1));
    stem.TrimRight();
    return 1;
}

CString TvTruncatePath(const char16_t* path, int max_length) {
    const auto text = view(path);
    if (max_length >= 0 && text.size() <= static_cast<std::size_t>(max_length)) {
        return CString(text);
    }
    const auto kept = static_cast<std::size_t>(std::max(max_length / 2 - 3, 0));
    CString result(text.substr(0, kept));
    result += u"......";
    result += text.substr(text.size() - kept);
    return result;
}
