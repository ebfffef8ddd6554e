#include "tvutil2/diag/log_file.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr std::u16string_view kDebugTag = u"[DEB] ";

// Owner of an open file.
class LogFile {
  public:
    LogFile(const char16_t* path, DWORD access, DWORD disposition)
        : m_file(CreateFileW(path, access, FILE_SHARE_READ, nullptr, disposition,
                             FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~LogFile() {
        if (*this) CloseHandle(m_file);
    }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] explicit operator bool() const { return m_file != INVALID_HANDLE_VALUE; }

    // The new position.
    [[nodiscard]] std::optional<LONGLONG> seek(LONGLONG distance, DWORD method) const {
        LARGE_INTEGER wanted{};
        LARGE_INTEGER position{};
        wanted.QuadPart = distance;
        if (SetFilePointerEx(m_file, wanted, &position, method) == FALSE) return std::nullopt;
        return position.QuadPart;
    }
    [[nodiscard]] bool write(std::string_view bytes) const {
        DWORD written = 0;
        return WriteFile(m_file, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                         nullptr) != FALSE;
    }
    // Bytes from a place on; fewer at the end of the file.
    [[nodiscard]] std::string read(LONGLONG offset, std::size_t size) const {
        std::string bytes(size, '\0');
        DWORD count = 0;
        if (!seek(offset, FILE_BEGIN) ||
            ReadFile(m_file, bytes.data(), static_cast<DWORD>(size), &count, nullptr) == FALSE) {
            count = 0;
        }
        bytes.resize(count);
        return bytes;
    }
    void cut(LONGLONG size) const {
        if (seek(size, FILE_BEGIN)) SetEndOfFile(m_file);
    }

  private:
    HANDLE m_file;
};

// Where the last whole line of a file ends; 0 when it has none.
LONGLONG end_of_last_line(const LogFile& file, LONGLONG size) {
    constexpr LONGLONG kBlock = 65536;
    const auto line_end = bytes_of(kLineEnd);
    const auto mark = static_cast<LONGLONG>(line_end.size());
    // Blocks overlap by what a mark can reach into the next one.
    for (LONGLONG start = std::max<LONGLONG>(0, (size - kBlock) & ~LONGLONG{1});;
         start = std::max<LONGLONG>(0, start - kBlock)) {
        const auto block =
            file.read(start, static_cast<std::size_t>(std::min(kBlock + mark, size - start)));
        for (auto at = block.rfind(line_end); at != std::string::npos && at != 0;
             at = block.rfind(line_end, at - 1)) {
            if (at % sizeof(char16_t) == 0) return start + static_cast<LONGLONG>(at) + mark;
        }
        if (start == 0) return 0;
    }
}

// A program that is killed in the middle of a write leaves a piece of its line: the system stops
// between two pages. Only what begins as a line of ours does is taken away.
void take_away_piece(const char16_t* path) {
    const LogFile file(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    if (!file) return;
    const auto size = file.seek(0, FILE_END).value_or(0);
    const auto end = end_of_last_line(file, size);
    if (end < size && file.read(end, sizeof(char16_t)) == bytes_of(u"[")) file.cut(end);
}

// Nothing when the file may end in a piece of a line, and that matters: nothing is written then.
std::optional<LogWrite> append_line(const char16_t* path, std::u16string_view line,
                                    bool pieces_matter) {
    // Pages, and blocks of a disk that is full, end at multiples of this: a file that ends
    // elsewhere has no broken line.
    constexpr LONGLONG kSmallestBlock = 512;
    const LogFile file(path, FILE_APPEND_DATA, OPEN_ALWAYS);
    if (!file) return LogWrite::not_opened;
    const auto end = file.seek(0, FILE_END).value_or(0);
    if (pieces_matter && end != 0 && end % kSmallestBlock == 0) return std::nullopt;
    return file.write(bytes_of(line)) ? LogWrite::done : LogWrite::failed;
}

// What stands in front of a line's text. Numbers take the place they need, as printf's do.
class LineStart {
  public:
    void add(char16_t unit) { m_units[m_size++] = unit; }
    void add_number(unsigned number, unsigned digits) {
        unsigned power = 1;
        for (unsigned i = 1; i < digits; ++i) power *= 10;
        while (number / power >= 10) power *= 10;
        for (; power != 0; power /= 10) add(static_cast<char16_t>(u'0' + number / power % 10));
    }
    void add_time(const SYSTEMTIME& time) {
        add_number(time.wHour, 2);
        add(u':');
        add_number(time.wMinute, 2);
        add(u':');
        add_number(time.wSecond, 2);
        add(u'.');
        add_number(time.wMilliseconds, 3);
        add(u']');
        add(u' ');
    }
    // The line as a whole, in one block.
    [[nodiscard]] std::u16string with(std::u16string_view tag, std::u16string_view text) const {
        std::u16string line;
        line.reserve(m_size + tag.size() + text.size() + kLineEnd.size());
        return line.append(m_units.data(), m_size).append(tag).append(text).append(kLineEnd);
    }

  private:
    std::array<char16_t, 64> m_units;  // seven words of up to five digits, and what is between them
    std::size_t m_size = 0;
};

}  // namespace

std::u16string log_line(const SYSTEMTIME& time, std::u16string_view text, bool is_debug) {
    LineStart start;
    start.add(u'[');
    start.add_time(time);
    return start.with(is_debug ? kDebugTag : std::u16string_view(), text);
}

std::u16string global_log_line(const SYSTEMTIME& time, std::u16string_view text) {
    LineStart start;
    start.add(u'[');
    start.add_number(time.wYear, 1);
    start.add(u'-');
    start.add_number(time.wMonth, 2);
    start.add(u'-');
    start.add_number(time.wDay, 2);
    start.add(u' ');
    start.add_time(time);
    return start.with({}, text);
}

LogWrite append_to_global_log(const char16_t* path, std::u16string_view line) {
    auto result = append_line(path, line, true);
    if (!result) {
        take_away_piece(path);
        result = append_line(path, line, false);
    }
    if (*result == LogWrite::failed) take_away_piece(path);
    return *result;
}

Sweep sweep_of(std::u16string_view name) {
    constexpr std::size_t kCompared = 3;
    if (name.size() < kCompared) return Sweep::keep;
    const std::u16string last(name.substr(name.size() - kCompared));
    if (_wcsicmp(last.c_str(), u"bak") == 0) return Sweep::remove;
    return _wcsicmp(last.c_str(), u"log") == 0 ? Sweep::back_up : Sweep::keep;
}

void sweep_logs(const char16_t* folder) {
    const std::u16string start = std::u16string(folder) + u'\\';
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW((start + u"*.*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
        auto path = start + data.cFileName;
        const auto action = sweep_of(data.cFileName);
        if (action == Sweep::remove) DeleteFileW(path.c_str());
        if (action == Sweep::back_up) {
            const auto log = path;
            path.replace(path.size() - 3, 3, u"bak");
            MoveFileW(log.c_str(), path.c_str());
        }
    } while (FindNextFileW(search, &data) != FALSE);
    FindClose(search);
}

}  // namespace tvutil2
