#include "tvutil2/framework/file.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <utility>

namespace {

DWORD access_of(UINT flags) {
    switch (flags & 3U) {
        case CFile::modeWrite:
            return GENERIC_WRITE;
        case CFile::modeReadWrite:
            return GENERIC_READ | GENERIC_WRITE;
        default:
            return GENERIC_READ;
    }
}

DWORD sharing_of(UINT flags) {
    switch (flags & 0x70U) {
        case CFile::shareDenyWrite:
            return FILE_SHARE_READ;
        case CFile::shareDenyRead:
            return FILE_SHARE_WRITE;
        case CFile::shareDenyNone:
            return FILE_SHARE_READ | FILE_SHARE_WRITE;
        default:
            return 0;
    }
}

DWORD disposition_of(UINT flags) {
    if ((flags & CFile::modeCreate) == 0) return OPEN_EXISTING;
    return (flags & CFile::modeNoTruncate) != 0 ? OPEN_ALWAYS : CREATE_ALWAYS;
}

}  // namespace

CFileException::CFileException(DWORD error, const char16_t* path)
    : m_cause(OsErrorToException(error)),
      m_lOsError(static_cast<LONG>(error)),
      m_strFileName(path) {}

const char* CFileException::what() const noexcept {
    return "a file operation failed";
}

CFileException::Cause CFileException::OsErrorToException(DWORD error) {
    switch (error) {
        case NO_ERROR:
            return none;
        case ERROR_FILE_NOT_FOUND:
            return fileNotFound;
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_PATHNAME:
        case ERROR_DIRECTORY:
        case ERROR_FILENAME_EXCED_RANGE:
            return badPath;
        case ERROR_TOO_MANY_OPEN_FILES:
            return tooManyOpenFiles;
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return accessDenied;
        case ERROR_INVALID_HANDLE:
            return invalidFile;
        case ERROR_CURRENT_DIRECTORY:
            return removeCurrentDir;
        case ERROR_CANNOT_MAKE:
            return directoryFull;
        case ERROR_NEGATIVE_SEEK:
            return badSeek;
        case ERROR_IO_DEVICE:
        case ERROR_GEN_FAILURE:
            return hardIO;
        case ERROR_SHARING_VIOLATION:
            return sharingViolation;
        case ERROR_LOCK_VIOLATION:
            return lockViolation;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return diskFull;
        case ERROR_HANDLE_EOF:
            return endOfFile;
        default:
            return genericException;
    }
}

CFile::CFile(HANDLE file) : m_hFile(file), m_is_closed_at_end(false) {}

CFile::CFile(const char16_t* path, UINT flags) {
    CFileException error;
    if (CFile::Open(path, flags, &error) == 0) throw error;
}

CFile::~CFile() {
    if (m_is_closed_at_end && m_hFile != hFileNull) CloseHandle(m_hFile);
}

BOOL CFile::Open(const char16_t* path, UINT flags, CFileException* error) {
    Close();
    m_path = path;
    const auto before = GetLastError();
    m_hFile = CreateFileW(m_path, access_of(flags), sharing_of(flags), nullptr,
                          disposition_of(flags), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (m_hFile == hFileNull) {
        if (error != nullptr) *error = CFileException(GetLastError(), m_path);
        return FALSE;
    }
    SetLastError(before);  // CreateFileW tells by it whether the file was there
    m_is_closed_at_end = true;
    return TRUE;
}

void CFile::Close() {
    if (m_hFile == hFileNull) return;
    if (CloseHandle(std::exchange(m_hFile, hFileNull)) == 0) fail(GetLastError());
}

UINT CFile::Read(void* buffer, UINT count) {
    DWORD read = 0;
    if (ReadFile(m_hFile, buffer, count, &read, nullptr) == 0) fail(GetLastError());
    return read;
}

void CFile::Write(const void* data, UINT count) {
    DWORD written = 0;
    if (WriteFile(m_hFile, data, count, &written, nullptr) == 0) fail(GetLastError());
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from) {
    LARGE_INTEGER distance{};
    distance.QuadPart = offset;
    LARGE_INTEGER position{};
    if (SetFilePointerEx(m_hFile, distance, &position, from) == 0) fail(GetLastError());
    return static_cast<ULONGLONG>(position.QuadPart);
}

ULONGLONG CFile::GetLength() const {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(m_hFile, &size) == 0) fail(GetLastError());
    return static_cast<ULONGLONG>(size.QuadPart);
}

ULONGLONG CFile::GetPosition() const {
    LARGE_INTEGER position{};
    if (SetFilePointerEx(m_hFile, {}, &position, FILE_CURRENT) == 0) fail(GetLastError());
    return static_cast<ULONGLONG>(position.QuadPart);
}

void CFile::Flush() {}

void CFile::fail(DWORD error) const {
    throw CFileException(error, m_path);
}
