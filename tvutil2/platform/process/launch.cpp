#include "tvutil2/platform/process/launch.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/processes.h"
#include "tvutil2/platform/process/start_program.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tvutil2 {
namespace {

constexpr int kStarted = 33;

int result_of(int error) {
    switch (error) {
        case 0:
            return kStarted;
        case EACCES:
        case EPERM:
            return SE_ERR_ACCESSDENIED;
        case ENOTDIR:
            return SE_ERR_PNF;
        case ETXTBSY:
            return SE_ERR_SHARE;
        case ENOENT:  // the file is there, so it is its interpreter that isn't
        case ENOEXEC:
        case ELIBBAD:
            return SE_ERR_BAD_FORMAT;
        default:
            return SE_ERR_OOM;
    }
}

int start_with(const std::string& file, const std::vector<std::string>& arguments,
               const char* folder, HANDLE* process) {
    std::vector<char*> pointers{const_cast<char*>(file.c_str())};
    for (const auto& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    Program program{file.c_str(), pointers.data(), folder};
    if (process == nullptr) return result_of(start_for_nobody(program));
    program.has_own_session = true;
    int error = 0;
    *process = start_process(program, error);
    return *process == nullptr && error == 0 ? SE_ERR_OOM : result_of(error);
}

std::optional<std::vector<std::string>> host_arguments(const char16_t* parameters) {
    std::vector<std::string> arguments;
    if (parameters == nullptr) return arguments;
    for (const auto& argument : split_command_line(parameters)) {
        auto text = to_utf8(argument);
        if (!text) return std::nullopt;
        arguments.push_back(std::move(*text));
    }
    return arguments;
}

std::optional<std::string> desktop_opener() {
    const char* path = secure_getenv("PATH");
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const auto folder = rest.substr(0, rest.find(':'));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (!folder.starts_with('/')) continue;
        auto file = std::string(folder) + "/xdg-open";
        if (access(file.c_str(), X_OK) == 0) return file;
    }
    return std::nullopt;
}

int open_document(const std::string& file, const char* folder) {
    const auto opener = desktop_opener();
    return opener ? start_with(*opener, {file}, folder, nullptr) : SE_ERR_NOASSOC;
}

bool is_folder(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// A program without the permission to run is no document for the desktop to open.
bool is_named_as_program(std::string_view file) {
    constexpr std::string_view kExtension = ".exe";
    return file.size() >= kExtension.size() &&
           strncasecmp(file.end() - kExtension.size(), kExtension.data(), kExtension.size()) == 0;
}

int missing(const std::string& file) {
    const auto slash = file.find_last_of('/');
    return is_folder(file.substr(0, std::max<std::size_t>(slash, 1))) ? SE_ERR_FNF : SE_ERR_PNF;
}

std::optional<std::string> web_address(std::u16string_view text) {
    return web_address_rest(text).empty() ? std::nullopt : to_utf8(text);
}

int execute(const char16_t* verb, const char16_t* file, const char16_t* parameters,
            const char16_t* folder, HANDLE* process) {
    if (verb != nullptr && *verb != 0 && _wcsicmp(verb, u"open") != 0) return SE_ERR_NOASSOC;
    const auto address = web_address(file != nullptr ? file : u"");
    const auto host_file = address ? address : host_path(file != nullptr ? file : u"");
    if (!host_file) return GetLastError() == ERROR_INVALID_NAME ? SE_ERR_FNF : SE_ERR_PNF;
    std::optional<std::string> host_folder;
    if (folder != nullptr && *folder != 0) {
        host_folder = host_path(folder);
        if (!host_folder || !is_folder(*host_folder)) return SE_ERR_PNF;
    }
    const char* const start_folder = host_folder ? host_folder->c_str() : nullptr;
    if (address) return open_document(*address, start_folder);
    struct stat info {};
    if (stat(host_file->c_str(), &info) != 0) {
        return errno == EACCES ? SE_ERR_ACCESSDENIED : missing(*host_file);
    }
    const bool is_program = S_ISREG(info.st_mode) && (info.st_mode & 0111) != 0;
    if (!is_program && S_ISREG(info.st_mode) && is_named_as_program(*host_file)) {
        return SE_ERR_ACCESSDENIED;
    }
    if (!is_program) return open_document(*host_file, start_folder);
    const auto arguments = host_arguments(parameters);
    return arguments ? start_with(*host_file, *arguments, start_folder, process)
                     : SE_ERR_BAD_FORMAT;
}

// Most results are error numbers; the others have one of their own.
DWORD last_error_of(int result) {
    if (result == SE_ERR_NOASSOC) return ERROR_NO_ASSOCIATION;
    if (result == SE_ERR_SHARE) return ERROR_SHARING_VIOLATION;
    return static_cast<DWORD>(result);
}

// Where a command line's text stands while it is split.
class Splitter {
  public:
    explicit Splitter(std::u16string_view text) : m_rest(text) {}

    bool next(std::u16string& argument) {
        while (!m_rest.empty() && is_blank(m_rest.front())) m_rest.remove_prefix(1);
        if (m_rest.empty()) return false;
        argument.clear();
        bool in_quotes = false;
        while (!m_rest.empty() && (in_quotes || !is_blank(m_rest.front()))) {
            take_backslashes(argument);
            if (m_rest.empty() || (!in_quotes && is_blank(m_rest.front()))) break;
            take_unit(argument, in_quotes);
        }
        return true;
    }

  private:
    static bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

    // Backslashes mean something only in front of a quote; an odd one out makes the quote plain.
    void take_backslashes(std::u16string& argument) {
        const auto count = std::min(m_rest.find_first_not_of(u'\\'), m_rest.size());
        m_rest.remove_prefix(count);
        const bool before_quote = m_rest.starts_with(u'"');
        argument.append(before_quote ? count / 2 : count, u'\\');
        if (!before_quote || count % 2 == 0) return;
        argument.push_back(u'"');
        m_rest.remove_prefix(1);
    }

    void take_unit(std::u16string& argument, bool& in_quotes) {
        const auto c = m_rest.front();
        if (c == u'\\') return;
        m_rest.remove_prefix(1);
        if (c != u'"') {
            argument.push_back(c);
        } else if (in_quotes && m_rest.starts_with(u'"')) {
            argument.push_back(u'"');
            m_rest.remove_prefix(1);
        } else {
            in_quotes = !in_quotes;
        }
    }

    std::u16string_view m_rest;
};

}  // namespace

std::u16string_view web_address_rest(std::u16string_view text) {
    for (const std::u16string_view scheme : {u"http://", u"https://"}) {
        const auto start = std::u16string(text.substr(0, scheme.size()));
        if (_wcsicmp(start.c_str(), scheme.data()) == 0) return text.substr(scheme.size());
    }
    return {};
}

std::vector<std::u16string> split_command_line(std::u16string_view text) {
    std::vector<std::u16string> arguments;
    Splitter splitter(text);
    for (std::u16string argument; splitter.next(argument);) arguments.push_back(argument);
    return arguments;
}

std::u16string quoted_argument(std::u16string_view argument) {
    if (!argument.empty() && argument.find_first_of(u" \t\"") == std::u16string_view::npos) {
        return std::u16string(argument);
    }
    std::u16string quoted = u"\"";
    std::size_t backslashes = 0;  // at the end of what is written
    for (const auto c : argument) {
        if (c == u'"') quoted.append(backslashes + 1, u'\\');
        quoted.push_back(c);
        backslashes = c == u'\\' ? backslashes + 1 : 0;
    }
    quoted.append(backslashes, u'\\');
    return quoted + u'"';
}

}  // namespace tvutil2

HINSTANCE ShellExecuteW(HWND /*owner*/, const char16_t* verb, const char16_t* file,
                        const char16_t* parameters, const char16_t* folder, int /*show*/) {
    const int result = tvutil2::execute(verb, file, parameters, folder, nullptr);
    if (result <= 32) SetLastError(tvutil2::last_error_of(result));
    return reinterpret_cast<HINSTANCE>(static_cast<std::intptr_t>(result));
}

BOOL ShellExecuteExW(SHELLEXECUTEINFOW* info) {
    if (info == nullptr || info->cbSize != sizeof *info) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    info->hProcess = nullptr;
    const bool wants_process = (info->fMask & SEE_MASK_NOCLOSEPROCESS) != 0;
    const int result =
        tvutil2::execute(info->lpVerb, info->lpFile, info->lpParameters, info->lpDirectory,
                         wants_process ? &info->hProcess : nullptr);
    info->hInstApp = reinterpret_cast<HINSTANCE>(static_cast<std::intptr_t>(result));
    return result > 32 || tvutil2::fail_with(tvutil2::last_error_of(result)) ? TRUE : FALSE;
}
