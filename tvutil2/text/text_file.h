// Text files, line by line, in one of four encodings.
//
// A reader finds the encoding by itself: from a byte order mark, or else from the first byte above
// ASCII, which either begins a well-formed UTF-8 sequence or makes the file ANSI. Behind that byte
// nothing is looked at. Without one the file is UTF-8. A writer writes the mark of its encoding.
// CR LF, a lone CR and a lone LF end a line when reading; a writer ends lines with CR LF.
//
// UTF-8 is read and written a unit at a time: a surrogate half goes out as three bytes of its own,
// a character of four bytes comes in as one U+FFFD for each of its bytes, and of the continuation
// bytes nothing is tested. Who needs all of UTF-8 writes TE_ANSI with text converted beforehand.
//
// Text for a call ends at its first zero, also in a std::string. A zero in a file is kept in a line
// of more than 1023 units; in the last 1023 of them, or in a shorter line, the line ends there.
//
// Blocks of 1024 bytes go to a CFile, each as soon as the next byte has no room in it, and come
// from one: a killed writer loses no more than that. The file that a reader opens for itself reads
// 64 KiB ahead (ReadAheadFile).
//
// Failures have no codes: a failed open shows as IsOpen() 0 and, for a reader, Eof() true.
// Exceptions of CFile (CFileException) pass through, but not out of a destructor: who must know
// that all is written calls Close. A block whose writing failed isn't tried again, since part of it
// may be in the file.
//
// Copies share the file. When one copy of an object that opened its file is closed or destroyed,
// the file is closed for all of them; they then read nothing more than they hold, write nothing and
// throw nothing. An object belongs to one thread, and so do all copies of it together.
#pragma once

#include "tvutil2/framework/file.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace tvutil2 {
template <class Unit>
class TextLine;
}  // namespace tvutil2

/// What readers and writers share.
class TVUTIL_API CTextFileBase {
  public:
    enum TEXTENCODING {
        TE_ANSI = 0,      ///< narrow text in the object's code page; no mark
        TE_UTF16_BE = 1,  ///< mark FE FF
        TE_UTF16_LE = 2,  ///< mark FF FE
        TE_UTF8 = 3,      ///< mark EF BB BF
    };

    /// What stands for a character that the code page doesn't hold; 0 is the page's own default.
    void SetUnknownChar(char c) { unknownChar = c; }
    /// Whether a conversion of this object to its code page used a replacement, since the last
    /// reset.
    [[nodiscard]] bool IsDataLost() const { return dataLost; }
    void ResetDataLostFlag() { dataLost = false; }
    /// The page of narrow text, in the file and in calls; 0, the ANSI code page, until it is set.
    /// A file that isn't UTF-8 is read as wide text in 1252 where that is the ANSI code page.
    /// 65001 can be read as wide text only: see ConvertWcharToString.
    void SetCodePage(unsigned int cp) { codePage = cp; }
    [[nodiscard]] unsigned int GetCodePage() const { return codePage; }
    [[nodiscard]] TEXTENCODING GetEncoding() const { return encoding; }
    /// Non-zero while there is a file with a valid handle.
    [[nodiscard]] int IsOpen() const;
    /// Closes a file that the object opened. A caller's file stays open and attached.
    virtual void Close();

    /// `out` becomes the text in 16-bit units, up to its first zero; empty when the platform
    /// refuses (a page that isn't known, a text of 2^31 bytes).
    static void ConvertCharToWstring(const char* text, std::u16string& out, unsigned int cp);
    /// `out` becomes the text in that page; `*data_lost` is set when a replacement was used, and
    /// never cleared. Empty when the platform refuses: for 65001 by number it does so whenever
    /// `data_lost` isn't null or `unknown_char` isn't 0. The ANSI code page takes both, even where
    /// it is UTF-8.
    static void ConvertWcharToString(const char16_t* text, std::string& out, unsigned int cp,
                                     bool* data_lost, char unknown_char);

  protected:
    static constexpr int kBufferSize = 1024;

    CTextFileBase() = default;
    CTextFileBase(const CTextFileBase& other);
    /// Leaves `other` without a file.
    CTextFileBase(CTextFileBase&& other) noexcept;
    /// Closes first, if that is another file.
    CTextFileBase& operator=(const CTextFileBase& other);
    /// The same as a destructor and a move.
    CTextFileBase& operator=(CTextFileBase&& other) noexcept;
    ~CTextFileBase();

    /// With the page, the flag and the unknown character of the object.
    void CharToWstring(const char* text, std::u16string& out) const;
    void WcharToString(const char16_t* text, std::string& out);

    /// Opens a file that the object owns, whether that works or not.
    void OpenOwn(const char16_t* path, UINT flags);

    TEXTENCODING encoding = TE_ANSI;
    CFile* file = nullptr;
    bool ownsFile = false;
    bool atEnd = true;  ///< the end was read, or there is no file
    unsigned char buffer[kBufferSize] = {};
    int position = -1;   ///< index of the last byte used; -1 when none is
    int bufferSize = 0;  ///< bytes from the last read
    char unknownChar = 0;
    bool dataLost = false;
    unsigned int codePage = 0;

  private:
    void CopyFields(const CTextFileBase& other);
    void GiveUpFile();
};

/// Reads a file from its start, or from behind the mark at which a caller's file stands.
class TVUTIL_API CTextFileRead : public CTextFileBase {
  public:
    CTextFileRead(const char16_t* path);
    /// Over a caller's file that can be read and sought in; null is a reader at its end. Finding
    /// the encoding may throw.
    CTextFileRead(CFile* source);
    CTextFileRead(std::nullptr_t) {}

    [[nodiscard]] bool Eof() const { return atEnd; }
    /// The next line without its end; false, and the line as it was, at the end of the file. Behind
    /// the last line end there is one more line, if only an empty one. Narrow text of a file in
    /// UTF-16 or UTF-8 is converted to the object's code page, and may set the data-lost flag.
    bool ReadLine(std::string& line);
    bool ReadLine(std::u16string& line);
    bool ReadLine(CString& line);
    /// The rest of the file, its lines joined by `separator`. False only when no file is open.
    bool Read(std::string& out, std::string separator);
    bool Read(std::u16string& out, std::u16string separator);
    bool Read(CString& out, CString separator);

  private:
    void DetectEncoding();
    void ReadBOM();
    bool IsUTF8NotBom();
    void ResetFilePointer();
    int GuessCharacterCount();
    void FillBuffer();
    [[nodiscard]] std::string_view UnreadBytes() const;
    void ReadByte(unsigned char& byte);
    void ReadWchar(char16_t& unit);
    bool ReadCharLine(std::string& line);
    bool ReadWcharLine(std::u16string& line);
    void ReadUnit(char& unit);
    void ReadUnit(char16_t& unit) { ReadWchar(unit); }
    template <class Unit>
    bool GatherLine(tvutil2::TextLine<Unit>& line);
    void GatherBuffered(tvutil2::TextLine<char>& line);
    void GatherBuffered(tvutil2::TextLine<char16_t>& line);
    template <class Text>
    bool ReadRest(Text& out, const Text& separator);

    bool hasPushedBack = false;
    bool firstLine = true;  ///< no line has begun
    char16_t pushedBack = 0;
};

/// Writes a file in blocks of 1024 bytes; the last one when it is closed. Writing without an open
/// file does nothing.
class TVUTIL_API CTextFileWrite : public CTextFileBase {
  public:
    /// Creates the file, or empties one that is there.
    CTextFileWrite(const char16_t* path, TEXTENCODING text_encoding);
    /// Over a caller's file that can be written.
    CTextFileWrite(CFile* target, TEXTENCODING text_encoding);
    CTextFileWrite(const CTextFileWrite&) = default;
    CTextFileWrite(CTextFileWrite&& other) noexcept = default;
    CTextFileWrite& operator=(const CTextFileWrite&) = default;
    CTextFileWrite& operator=(CTextFileWrite&& other) noexcept = default;
    /// Closes; what can't be written any more is lost in silence.
    ~CTextFileWrite();

    /// Narrow text is in the object's code page.
    void Write(const char* text);
    void Write(const char16_t* text);
    void Write(const std::string& text);
    void Write(const std::u16string& text);
    CTextFileWrite& operator<<(const char* text);
    CTextFileWrite& operator<<(const char16_t* text);
    CTextFileWrite& operator<<(const std::string& text);
    CTextFileWrite& operator<<(const std::u16string& text);
    CTextFileWrite& operator<<(char c);
    CTextFileWrite& operator<<(char16_t c);
    /// CR LF.
    void WriteEndl();
    /// Writes out what is buffered, into a caller's file too. The object's own file is closed even
    /// when that throws.
    void Close() override;

  private:
    void WriteBOM();
    void WriteByte(unsigned char byte);
    void WriteWchar(char16_t unit);
    void WriteAsciiString(const char* text);
    void Flush();
    /// How many bytes fit, after making room in a full buffer.
    std::size_t RoomInBuffer();
    void WriteBytes(std::string_view bytes);
    void WriteNarrow(std::string_view text);
    void WriteWide(std::u16string_view text);
    void WriteUnits(std::u16string_view units);
    void WriteUtf8(std::u16string_view units);
    void WriteUtf16(std::u16string_view units);
};
