#include "tvutil2/text/text_file.h"

#include "tvutil2/text/read_ahead_file.h"
#include "tvutil2/text/text_conversion.h"

#include <algorithm>
#include <memory>
#include <utility>

using tvutil2::ReadAheadFile;

namespace {

void hold(CFile* file) {
    if (auto* const own = dynamic_cast<ReadAheadFile*>(file)) ++own->holders;
}

// Deletes with the last holder.
struct Release {
    void operator()(CFile* file) const {
        auto* const own = dynamic_cast<ReadAheadFile*>(file);
        if (own == nullptr || --own->holders == 0) delete file;
    }
};

}  // namespace

CTextFileBase::CTextFileBase(const CTextFileBase& other) {
    CopyFields(other);
    if (ownsFile) hold(file);
}

CTextFileBase::CTextFileBase(CTextFileBase&& other) noexcept {
    CopyFields(other);
    other.GiveUpFile();
}

CTextFileBase& CTextFileBase::operator=(const CTextFileBase& other) {
    if (this == &other) return *this;
    const bool is_same_file = file == other.file;
    if (!is_same_file) Close();
    CopyFields(other);
    if (ownsFile && !is_same_file) hold(file);
    return *this;
}

CTextFileBase& CTextFileBase::operator=(CTextFileBase&& other) noexcept {
    if (this == &other) return *this;
    const bool is_shared = ownsFile && file == other.file;
    try {
        if (file != other.file) Close();
    } catch (...) {
        // As in a destructor.
    }
    CopyFields(other);
    if (is_shared) Release()(other.file);
    other.GiveUpFile();
    return *this;
}

CTextFileBase::~CTextFileBase() {
    try {
        CTextFileBase::Close();
    } catch (...) {
        // Nobody is left to be told; see the header.
    }
}

// All of them: two objects that own one file count as its holders.
void CTextFileBase::CopyFields(const CTextFileBase& other) {
    encoding = other.encoding;
    file = other.file;
    ownsFile = other.ownsFile;
    atEnd = other.atEnd;
    std::copy(std::begin(other.buffer), std::end(other.buffer), buffer);
    position = other.position;
    bufferSize = other.bufferSize;
    unknownChar = other.unknownChar;
    dataLost = other.dataLost;
    codePage = other.codePage;
}

void CTextFileBase::GiveUpFile() {
    file = nullptr;
    atEnd = true;
    position = -1;
    bufferSize = 0;
}

int CTextFileBase::IsOpen() const {
    return file != nullptr && file->m_hFile != CFile::hFileNull ? 1 : 0;
}

void CTextFileBase::Close() {
    if (!ownsFile) return;
    const std::unique_ptr<CFile, Release> own(file);
    GiveUpFile();
    if (own) own->Close();
}

void CTextFileBase::OpenOwn(const char16_t* path, UINT flags) {
    file = new ReadAheadFile;
    ownsFile = true;
    file->Open(path, flags);
}

void CTextFileBase::ConvertCharToWstring(const char* text, std::u16string& out, unsigned int cp) {
    const tvutil2::WideText wide(text, cp);
    out = wide.view();
}

void CTextFileBase::ConvertWcharToString(const char16_t* text, std::string& out, unsigned int cp,
                                         bool* data_lost, char unknown_char) {
    const tvutil2::NarrowText narrow(text, cp, data_lost, unknown_char);
    out = narrow.view();
}

void CTextFileBase::CharToWstring(const char* text, std::u16string& out) const {
    ConvertCharToWstring(text, out, codePage);
}

void CTextFileBase::WcharToString(const char16_t* text, std::string& out) {
    ConvertWcharToString(text, out, codePage, &dataLost, unknownChar);
}
