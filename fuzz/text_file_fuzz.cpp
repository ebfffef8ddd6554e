// Text files against a reader and a writer of the plainest kind.
#include "tvutil2/text/text_file.h"

#include "fuzz/fuzz_input.h"
#include "tests/support/text_file_model.h"

namespace {

void check_reading(const std::string& bytes) {
    const auto expected = tests::TextFileModel(bytes).read();
    tests::MemoryFile file(bytes);
    CTextFileRead reader(&file);
    fuzz::require(reader.GetEncoding() == expected.encoding);
    for (const auto& line : expected.lines) {
        if (expected.encoding == CTextFileBase::TE_ANSI) {
            std::string text;
            fuzz::require(reader.ReadLine(text));
            fuzz::require(fuzz::widened(text) == line);
        } else {
            std::u16string text;
            fuzz::require(reader.ReadLine(text));
            fuzz::require(text == line);
        }
    }
    fuzz::require(reader.Eof());
}

// What is written is what the plain writer writes, and text without surrogates or line ends comes
// back.
void check_writing(std::u16string text, CTextFileBase::TEXTENCODING encoding) {
    text = text.c_str();
    tests::MemoryFile file;
    CTextFileWrite writer(&file, encoding);
    writer.Write(text);
    writer.Close();
    fuzz::require(file.bytes == tests::TextFileModel::written(text, encoding));
    CTextFileRead reader(&file);
    std::u16string back;
    fuzz::require(reader.GetEncoding() == encoding && reader.Read(back, u"\n"));
    if (text.find_first_of(u"\r\n") == std::u16string::npos) fuzz::require(back == text);
}

void check_pages(const std::string& bytes, UINT page) {
    tests::MemoryFile file(bytes);
    CTextFileRead reader(&file);
    reader.SetCodePage(page);
    std::string narrow;
    CString wide;
    while (reader.ReadLine(narrow) && reader.ReadLine(wide)) {
    }
    tests::MemoryFile target;
    CTextFileWrite writer(&target, static_cast<CTextFileBase::TEXTENCODING>(page % 4));
    writer.SetCodePage(page);
    writer << bytes << fuzz::widened(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    constexpr UINT kPages[] = {0, 65001, 1252, 932, 437, 4};
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    check_reading(bytes);
    check_writing(fuzz::wide_text(data + 1, size - 1),
                  static_cast<CTextFileBase::TEXTENCODING>(1 + data[0] % 3));
    check_pages(bytes, kPages[data[0] % std::size(kPages)]);
    return 0;
}
