// The framework's files.
#pragma once

#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/strings.h"

#include <cstdio>

/// What went wrong with a file.
class TVUTIL_API CFileException : public CException {
  public:
    enum Cause {
        none,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile,
    };

    CFileException() = default;
    /// From a last error.
    explicit CFileException(DWORD error, const char16_t* path = nullptr);
    [[nodiscard]] const char* what() const noexcept override;
    [[nodiscard]] static Cause OsErrorToException(DWORD error);

    Cause m_cause = none;
    LONG m_lOsError = -1;  ///< the last error
    CString m_strFileName;
};

/// A file of bytes. Each call reaches the system; nothing is kept back. Reading, writing, seeking
/// and asking for lengths throw CFileException. An object belongs to one thread at a time.
class TVUTIL_API CFile {
  public:
    enum OpenFlags : UINT {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,      ///< creates the file, or empties one that is there
        modeNoTruncate = 0x2000,  ///< with modeCreate: what is there is kept
        typeText = 0x4000,        ///< CStdioFile: line ends are translated, its default
        typeBinary = 0x8000,      ///< CStdioFile: bytes are what they are
    };
    enum SeekPosition : UINT { begin, current, end };

    /// What m_hFile is while no file is open.
    static inline const HANDLE hFileNull = INVALID_HANDLE_VALUE;

    CFile() = default;
    /// Over an open handle, which the destructor leaves open; Close closes it.
    explicit CFile(HANDLE file);
    /// Opens; throws CFileException.
    CFile(const char16_t* path, UINT flags);
    /// Closes what Open opened.
    virtual ~CFile();
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    /// 0 when it fails; the reason goes to `error`, if there is one. No sharing flag shares
    /// nothing. A file that was open here is closed first.
    virtual BOOL Open(const char16_t* path, UINT flags, CFileException* error = nullptr);
    /// Nothing when no file is open. Throws when what was written can't be brought out; the file is
    /// closed all the same.
    virtual void Close();

    /// Bytes read: fewer than asked for only at the end of the file.
    virtual UINT Read(void* buffer, UINT count);
    virtual void Write(const void* data, UINT count);
    /// Gives the new position. Behind the end is allowed.
    virtual ULONGLONG Seek(LONGLONG offset, UINT from);
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    void SeekToBegin() { Seek(0, begin); }
    [[nodiscard]] virtual ULONGLONG GetLength() const;
    [[nodiscard]] virtual ULONGLONG GetPosition() const;
    /// Hands over to the system whatever is kept back.
    virtual void Flush();

    [[nodiscard]] const CString& GetFilePath() const { return m_path; }

    HANDLE m_hFile = hFileNull;

  protected:
    /// Throws CFileException for a last error.
    [[noreturn]] void fail(DWORD error) const;

    CString m_path;
    bool m_is_closed_at_end = true;
};

/// A buffered file of text in the ANSI code page. In text mode, the default, "\n" is written as CR
/// LF unless a CR stands before it, and CR LF is read as "\n"; with typeBinary bytes stay what they
/// are.
class TVUTIL_API CStdioFile : public CFile {
  public:
    CStdioFile() = default;
    /// Over an open stream, which the destructor leaves open; Close closes it. The handle of such a
    /// file tells that it is open, and nothing can be done with it. `type`: typeText or typeBinary.
    explicit CStdioFile(std::FILE* stream, UINT type = typeText);
    CStdioFile(const char16_t* path, UINT flags);
    ~CStdioFile() override;

    BOOL Open(const char16_t* path, UINT flags, CFileException* error = nullptr) override;
    void Close() override;
    UINT Read(void* buffer, UINT count) override;
    void Write(const void* data, UINT count) override;
    ULONGLONG Seek(LONGLONG offset, UINT from) override;
    [[nodiscard]] ULONGLONG GetLength() const override;
    [[nodiscard]] ULONGLONG GetPosition() const override;
    void Flush() override;

    /// The next line without its end; 0 behind the last one.
    BOOL ReadString(CString& line);
    /// Text up to its zero; a line end is written where the text has one.
    void WriteString(const char16_t* text);

    std::FILE* m_pStream = nullptr;

  private:
    /// The stream; throws when none is open.
    [[nodiscard]] std::FILE* stream() const;
    [[noreturn]] void fail_stream() const;
    void write_bytes(const char* data, std::size_t count);
    void write_text(std::string_view text);
    /// Of the stream's failures the C library knows the reason, of those of an own file the
    /// platform.
    [[nodiscard]] DWORD stream_error() const;

    bool m_is_text = true;
    bool m_is_behind_cr = false;  ///< the last character written
    char* m_line = nullptr;       ///< the line that ReadString reads, as getline() grows it
    std::size_t m_line_room = 0;
};
