// INI documents: sections of keys and values, in memory, read from a file and written back whole.
//
// A line "[name]", with nothing before or behind it, begins a section; a line "key=value" inside
// one is an entry; all other lines are passed over, and are gone with the next write. There are no
// comments, escapes, quotes or continuation lines, and no white space is trimmed. Names compare
// exactly. Of two lines with one key the later one holds.
//
// Files are read in UTF-16 (little-endian, with its mark), UTF-8 and the ANSI code page, and are
// written in UTF-16, or in the ANSI code page on request; lines end with CR LF. What does not come
// back as it went in: text with a line break, a key that holds "=", that is empty, or that begins
// with "[" while its value ends with "]", the empty section name, and a section without keys.
//
// A document belongs to one thread at a time. Threads and processes that write one file take turns,
// and readers wait for them: the file holds one document or the other, never a mix. A wait ends
// after five seconds (ERROR_LOCK_VIOLATION). The file stays the same file, for those that have it
// open: it is overwritten by one call, for which everything was made ready. A process that is
// killed leaves the old document or the new one, except within that call, where one of more than a
// page (4096 bytes) may be left in both. What must survive even that, and a loss of power, goes
// into a private-profile file.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/export.h"

#include <cstdio>

namespace tvutil2 {
class IniParser;
}  // namespace tvutil2

/// Keys and values of one section.
class TVUTIL_API CIniSection {
  public:
    CIniSection();
    ~CIniSection();

    /// Non-zero if the key was there.
    int RemoveKey(const char16_t* key);
    void SetValue(const char16_t* key, int value);
    void SetValue(const char16_t* key, const char16_t* value);
    /// Stores `size` bytes as Base64; empty text for none.
    void SetValue(const char16_t* key, const unsigned char* data, DWORD size);
    /// The number at the front of the text (_wtoi). 0 only for the text "0"; all else that gives no
    /// number, and a missing key, give `fallback`.
    [[nodiscard]] int GetValue(const char16_t* key, int fallback) const;
    /// The text, be it empty; `fallback` for a missing key.
    [[nodiscard]] CString GetValue(const char16_t* key, const char16_t* fallback) const;

    /// All keys and their values.
    [[nodiscard]] const CMapStringToString& Values() const { return m_values; }

  private:
    friend class tvutil2::IniParser;

    CMapStringToString m_values{10};
};

/// The document. It owns its sections.
class TVUTIL_API CIniFile {
  public:
    /// Reads `path`, if there is one, without telling how that went.
    CIniFile(const char16_t* path = nullptr);
    CIniFile(const CIniFile&) = delete;
    CIniFile& operator=(const CIniFile&) = delete;
    virtual ~CIniFile();

    /// Deletes all sections and makes `path` an empty file, if it can.
    virtual void ClearAll(const char16_t* path);
    /// Reads `path`, deletes a section, and writes the document back in UTF-16.
    virtual void ClearSection(const char16_t* path, const char16_t* section);

    /// Merges a file into the document: sections stay, values of the same key are replaced. 1, or 0
    /// when the file can't be opened, with the reason as the last error.
    ///
    /// A file that is neither UTF-16 nor UTF-8 is in the ANSI code page, or in 1252 where that is
    /// UTF-8. It is written back in UTF-16 at once, pure ASCII included; whether that works isn't
    /// told. It isn't written when a byte of it would be lost: when some are wrong in that page
    /// (they come as its replacement, and cost nothing around them), when it is in UTF-16 of the
    /// other byte order, which isn't understood, or when somebody has changed it meanwhile. A file
    /// of more than a gigabyte isn't read (ERROR_FILE_TOO_LARGE).
    int Read(const char16_t* path);

    /// Writes the document: in UTF-16 if `unicode` is non-zero or a UTF-16 file was read, else in
    /// the ANSI code page. Text that the page doesn't hold makes the file UTF-16 all the same,
    /// rather than losing it. With `flush` 1 a UTF-16 file is on the disk when this returns. 1, or
    /// 0 with the reason as the last error when the file can't be opened or written, on a full disk
    /// (ERROR_DISK_FULL) for one; the file then stays as it was.
    int Write(const char16_t* path, int unicode, int flush);

    /// Removes a key. A missing section is entered with a null pointer.
    void RemoveKey(const char16_t* section, const char16_t* key);
    /// As in CIniSection; the section is made if it is missing.
    void SetValue(const char16_t* section, const char16_t* key, int value);
    void SetValue(const char16_t* section, const char16_t* key, const char16_t* value);
    void SetValue(const char16_t* section, const char16_t* key, const unsigned char* data,
                  DWORD size);
    /// As in CIniSection, with `fallback` for a missing section, which is entered with a null
    /// pointer. Such entries read as missing, and nothing of them is written.
    int GetValue(const char16_t* section, const char16_t* key, int fallback);
    CString GetValue(const char16_t* section, const char16_t* key, const char16_t* fallback);

    /// 1 when the first byte of 0x80 or above, from where the stream stands, begins a sequence of
    /// as many continuation bytes as it announces; 0 for all else, pure ASCII included. Nothing
    /// behind that sequence is looked at.
    static int IsUTF8NotBom(std::FILE* stream);

    CMapStringToPtr sections{10};  ///< name to owned CIniSection, which may be null
    int unicodeFile = 0;           ///< a file with the mark of UTF-16 was read
    int utf8File = 0;              ///< the last file without it was UTF-8

  protected:
    /// The section of that name, made if it is missing.
    CIniSection& SectionFor(std::u16string_view name);

  private:
    friend class tvutil2::IniParser;

    [[nodiscard]] CIniSection* FindSection(const char16_t* name);
    void DeleteSections();
};
