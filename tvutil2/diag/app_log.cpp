#include "tvutil2/diag/app_log.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/text.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/diag/build_date.h"
#include "tvutil2/diag/log_file.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/text_length.h"
#include "tvutil2/platform/files/appended_file.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/system/date_format.h"
#include "tvutil2/services/environment.h"

#include <deque>
#include <limits>
#include <mutex>

namespace tvutil2 {

constinit std::atomic<int> g_log_mode{0};

namespace {

// A run's file, by its path and as what lines are appended to.
struct RunLog {
    explicit RunLog(const CString& log_path) : path(log_path), file(log_path) {}
    CString path;
    AppendedFile file;
};

// They are kept for the life of the process, so that a line that is being written needs no lock to
// hold its own.
constinit std::atomic<RunLog*> g_log{nullptr};

void set_log_path(const CString& path) {
    static std::mutex lock;
    static auto* const kept = new std::deque<RunLog>;
    const std::lock_guard guard(lock);
    g_log.store(&kept->emplace_back(path), std::memory_order_release);
}

// A program logs what went wrong before it looks at the last error.
class SameLastError {
  public:
    SameLastError() : m_error(GetLastError()) {}
    ~SameLastError() { SetLastError(m_error); }
    SameLastError(const SameLastError&) = delete;
    SameLastError& operator=(const SameLastError&) = delete;

  private:
    DWORD m_error;
};

CString formatted_time(const std::tm& parts, const char16_t* format) {
    char16_t text[128];
    wcsftime(text, std::size(text), format, &parts);
    return text;
}

std::u16string_view text_or_empty(const char16_t* text) {
    return text != nullptr ? std::u16string_view(text, text_length(text)) : std::u16string_view();
}

// The message of a call; `formatted` holds it where it has to be made.
std::u16string_view message_of(int format, const char16_t* text, FormatArguments arguments,
                               std::u16string& formatted) {
    if (format == 0) return text_or_empty(text);
    format_to(formatted, text_or_empty(text), arguments);
    // What lies behind a zero was never part of a text.
    return std::u16string_view(formatted.c_str()).substr(0, kLongestFormattedMessage);
}

bool has_room(std::u16string_view line) {
    return line.size() <= std::numeric_limits<DWORD>::max() / sizeof(char16_t);
}

int append_to_run(std::string_view bytes) {
    auto* const log = g_log.load(std::memory_order_acquire);
    if (log_mode() == 0 || log == nullptr) return 0;
    return log->file.append(bytes) != AppendedFile::Result::not_opened ? 1 : 0;
}

int write_line(std::u16string_view text, int type) {
    if (log_mode() == 0 || log_path().IsEmpty()) return 0;
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const auto line = log_line(now, text, type == kDebugLine);
    return has_room(line) ? append_to_run(bytes_of(line)) : 0;
}

// One start of a log: its path, and the header that its file begins with.
class LogStart {
  public:
    LogStart(const CString& folder, const char16_t* product)
        : m_start(folder + u"\\" + product + u"_") {
        const auto seconds = _time64(nullptr);
        SYSTEMTIME now{};
        GetLocalTime(&now);
        _localtime64_s(&m_time, &seconds);
        m_number = now.wMilliseconds;
        m_start += formatted_time(m_time, u"%y_%m_%d_%H_%M_%S");
        compose_path();
    }

    // The first file of this start's names that nobody has made yet becomes the log, also when it
    // can't be made.
    void open() {
        for (;;) {
            while (DoesFileExist(m_path) != 0) next_path();
            m_file = CreateFileW(m_path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
            if (m_file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS) break;
            next_path();
        }
        set_log_path(m_path);
    }

    void write_header() {
        if (m_file == INVALID_HANDLE_VALUE) return;
        write(std::string_view("\xFF\xFE"));
        write(csFmt(u"%s\r\n[%s] Log started(mode: %d)(Type: %d)...\r\n", m_path,
                    formatted_time(m_time, u"%H:%M:%S %A, %B %d, %Y"), log_mode(),
                    TvGetPackageType()));
        char16_t module[MAX_PATH] = {};
        CString version;
        SYSTEMTIME now{};
        GetLocalTime(&now);
        GetModuleFileNameW(nullptr, module, MAX_PATH);
        TvGetFileVersion(module, version);
        const auto write_fact = [&](const CString& fact) {
            write(CString(log_line(now, fact.View(), false)));
        };
        write_fact(csFmt(u"Module Path: %s", module));
        write_fact(csFmt(u"Module Version: %s", version));
        write_fact(csFmt(u"Module Built: %s", build_date()));
        write_fact(csFmt(u"OS Information: %s", TvGetOSFriendlyName()));
        write_fact(csFmt(u"Package Type: %u", TvGetPackageType()));
        CloseHandle(m_file);
    }

  private:
    void compose_path() { m_path.Format(u"%s_%03d.log", m_start, m_number); }
    void next_path() {
        ++m_number;
        compose_path();
    }
    void write(std::string_view bytes) const {
        DWORD written = 0;
        WriteFile(m_file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    }
    void write(const CString& text) const { write(bytes_of(text.View())); }

    CString m_start;
    CString m_path;
    std::tm m_time{};
    int m_number = 0;
    HANDLE m_file = INVALID_HANDLE_VALUE;
};

}  // namespace

const CString& log_path() {
    static const auto* const empty = new CString;
    const auto* const log = g_log.load(std::memory_order_acquire);
    return log != nullptr ? log->path : *empty;
}

void write_log(int type, int format, const char16_t* text, FormatArguments arguments) {
    const SameLastError same;
    std::u16string formatted;
    write_line(message_of(format, text, arguments, formatted), type);
}

int write_global_log(int format, const char16_t* text, FormatArguments arguments) {
    const SameLastError same;
    char16_t data[MAX_PATH];
    if (TvGetUserDataPath(data) == 0) return 0;
    const CString folder = CString(data) + u"\\Common\\Log";
    EnsureFolderExistRecursive(folder);
    std::u16string formatted;
    const auto message = message_of(format, text, arguments, formatted);
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const auto line = global_log_line(now, message);
    if (!has_room(line)) return 0;
    return append_to_global_log(folder + u"\\GlobalLog.txt", line) == LogWrite::done ? 1 : 0;
}

}  // namespace tvutil2

void _InitApplicationLog(const char16_t* folder, const char16_t* product, int mode, int sweep) {
    if (mode == 0) return;
    const tvutil2::SameLastError same;
    tvutil2::g_log_mode.store(mode, std::memory_order_relaxed);
    const CString logs = CString(folder) + u"\\applog";
    if (sweep != 0) tvutil2::sweep_logs(logs);
    EnsureFolderExistRecursive(logs);
    tvutil2::LogStart start(logs, product != nullptr ? product : u"");
    start.open();
    start.write_header();
}

void _SetWriteAppLog(int mode, const char16_t* folder, const char16_t* product) {
    tvutil2::g_log_mode.store(mode, std::memory_order_relaxed);
    if (mode > 0 && tvutil2::log_path().IsEmpty()) _InitApplicationLog(folder, product, mode, 0);
}

int _WriteApplicationLog(const char16_t* text, int type) {
    const tvutil2::SameLastError same;
    return tvutil2::write_line(tvutil2::text_or_empty(text), type);
}

int _WriteApplicationLog(const unsigned char* data, unsigned int length) {
    if (data == nullptr) return 0;
    const tvutil2::SameLastError same;
    return tvutil2::append_to_run({reinterpret_cast<const char*>(data), length});
}

void TvInstallWriteGlobalAppLog(const char16_t* text) {
    __WriteGlobalAppLog(0, text);
}

CString GetDateString() {
    char16_t text[256] = {};
    GetDateFormatW(LOCALE_USER_DEFAULT, 0, nullptr, u"yyyyMMdd", text,
                   static_cast<int>(std::size(text)));
    return text;
}
