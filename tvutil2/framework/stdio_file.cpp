#include "tvutil2/framework/file.h"
#include "tvutil2/framework/narrow_text.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/placeholder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace {

// A file of the platform as a stream of the C library, which brings the buffer. The functions below
// are its way to the handle; the reason of a failure stays behind as the last error.
HANDLE handle_of(void* cookie) {
    return static_cast<HANDLE>(cookie);
}

ssize_t read_handle(void* cookie, char* buffer, std::size_t size) {
    DWORD read = 0;
    const auto room = static_cast<DWORD>(std::min<std::size_t>(size, 0x7FFFFFFF));
    if (ReadFile(handle_of(cookie), buffer, room, &read, nullptr) == 0) return -1;
    return static_cast<ssize_t>(read);
}

ssize_t write_handle(void* cookie, const char* data, std::size_t size) {
    DWORD written = 0;
    const auto count = static_cast<DWORD>(std::min<std::size_t>(size, 0x7FFFFFFF));
    if (WriteFile(handle_of(cookie), data, count, &written, nullptr) == 0) return 0;
    return static_cast<ssize_t>(written);
}

int seek_handle(void* cookie, off64_t* offset, int whence) {
    static_assert(FILE_BEGIN == SEEK_SET && FILE_CURRENT == SEEK_CUR && FILE_END == SEEK_END);
    LARGE_INTEGER distance{};
    distance.QuadPart = *offset;
    LARGE_INTEGER position{};
    if (SetFilePointerEx(handle_of(cookie), distance, &position, static_cast<DWORD>(whence)) == 0) {
        return -1;
    }
    *offset = position.QuadPart;
    return 0;
}

// Closing the stream leaves the handle to its owner.
std::FILE* open_stream(HANDLE file, UINT flags) {
    const char* const mode = (flags & CFile::modeReadWrite) != 0 ? "r+"
                             : (flags & CFile::modeWrite) != 0   ? "w"
                                                                 : "r";
    return fopencookie(file, mode, {read_handle, write_handle, seek_handle, nullptr});
}

}  // namespace

CStdioFile::CStdioFile(std::FILE* stream, UINT type)
    : m_pStream(stream), m_is_text((type & typeBinary) == 0) {
    m_is_closed_at_end = false;
    if (stream != nullptr) m_hFile = tvutil2::open_placeholder();
}

CStdioFile::CStdioFile(const char16_t* path, UINT flags) {
    CFileException error;
    if (CStdioFile::Open(path, flags, &error) == 0) throw error;
}

CStdioFile::~CStdioFile() {
    if (m_is_closed_at_end && m_pStream != nullptr) std::fclose(m_pStream);
    // The base closes the handle of an own file, and leaves other people's.
    if (!m_is_closed_at_end && m_hFile != hFileNull) CloseHandle(m_hFile);
    std::free(m_line);
}

BOOL CStdioFile::Open(const char16_t* path, UINT flags, CFileException* error) {
    Close();
    if (CFile::Open(path, flags, error) == 0) return FALSE;
    m_is_text = (flags & typeBinary) == 0;
    m_pStream = open_stream(m_hFile, flags);
    if (m_pStream != nullptr) return TRUE;
    CFile::Close();
    if (error != nullptr) *error = CFileException(ERROR_NOT_ENOUGH_MEMORY, m_path);
    return FALSE;
}

void CStdioFile::Close() {
    if (m_pStream == nullptr) return;
    const bool is_written = std::fclose(std::exchange(m_pStream, nullptr)) == 0;
    const auto error = stream_error();
    m_is_behind_cr = false;
    CFile::Close();
    if (!is_written) fail(error);
}

UINT CStdioFile::Read(void* buffer, UINT count) {
    auto* const bytes = static_cast<char*>(buffer);
    if (!m_is_text) {
        const auto read = std::fread(bytes, 1, count, stream());
        if (read < count && std::ferror(m_pStream) != 0) fail_stream();
        return static_cast<UINT>(read);
    }
    UINT read = 0;
    for (int c = 0; read < count && (c = std::getc(stream())) != EOF; ++read) {
        if (c == '\r') {
            const int next = std::getc(m_pStream);
            if (next == '\n') {
                c = next;
            } else if (next != EOF) {
                std::ungetc(next, m_pStream);
            }
        }
        bytes[read] = static_cast<char>(c);
    }
    if (read < count && std::ferror(m_pStream) != 0) fail_stream();
    return read;
}

void CStdioFile::Write(const void* data, UINT count) {
    const auto* const bytes = static_cast<const char*>(data);
    if (m_is_text) return write_text({bytes, count});
    write_bytes(bytes, count);
}

ULONGLONG CStdioFile::Seek(LONGLONG offset, UINT from) {
    if (fseeko(stream(), offset, static_cast<int>(from)) != 0) {
        // What leads in front of the start may never reach the handle.
        fail(errno == EINVAL ? ERROR_NEGATIVE_SEEK : stream_error());
    }
    m_is_behind_cr = false;
    return GetPosition();
}

ULONGLONG CStdioFile::GetLength() const {
    const auto position = ftello(stream());
    if (position < 0 || fseeko(m_pStream, 0, SEEK_END) != 0) fail_stream();
    const auto length = ftello(m_pStream);
    if (length < 0 || fseeko(m_pStream, position, SEEK_SET) != 0) fail_stream();
    return static_cast<ULONGLONG>(length);
}

ULONGLONG CStdioFile::GetPosition() const {
    const auto position = ftello(stream());
    if (position < 0) fail_stream();
    return static_cast<ULONGLONG>(position);
}

void CStdioFile::Flush() {
    if (m_pStream != nullptr && std::fflush(m_pStream) != 0) fail_stream();
}

BOOL CStdioFile::ReadString(CString& line) {
    const auto size = getline(&m_line, &m_line_room, stream());
    if (size < 0) {
        if (std::ferror(m_pStream) != 0) fail_stream();
        line.Empty();
        return FALSE;
    }
    std::string_view text(m_line, static_cast<std::size_t>(size));
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
        if (m_is_text && text.ends_with('\r')) text.remove_suffix(1);
    }
    line = tvutil2::from_ansi(text);
    return TRUE;
}

void CStdioFile::WriteString(const char16_t* text) {
    if (text == nullptr) return;
    const auto bytes = tvutil2::to_ansi(text);
    if (m_is_text) return write_text(bytes);
    write_bytes(bytes.data(), bytes.size());
}

std::FILE* CStdioFile::stream() const {
    if (m_pStream == nullptr) fail(ERROR_INVALID_HANDLE);
    return m_pStream;
}

void CStdioFile::fail_stream() const {
    const auto error = stream_error();
    std::clearerr(m_pStream);
    fail(error);
}

DWORD CStdioFile::stream_error() const {
    return m_is_closed_at_end ? GetLastError() : tvutil2::error_from_errno(errno);
}

void CStdioFile::write_bytes(const char* data, std::size_t count) {
    if (std::fwrite(data, 1, count, stream()) != count) fail_stream();
}

void CStdioFile::write_text(std::string_view text) {
    while (!text.empty()) {
        const auto line = std::min(text.find('\n'), text.size());
        write_bytes(text.data(), line);
        if (line != 0) m_is_behind_cr = text[line - 1] == '\r';
        text.remove_prefix(line);
        if (text.empty()) return;
        write_bytes(m_is_behind_cr ? "\n" : "\r\n", m_is_behind_cr ? 1 : 2);
        m_is_behind_cr = false;
        text.remove_prefix(1);
    }
}
