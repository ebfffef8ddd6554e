// The code pages that the products offer for terminal sessions, and the default among them.
#pragma once

#include "tvutil2/platform/base/export.h"

/// A stored code-page number as a usable pair of code page and character set.
class TVUTIL_API CCodePage {
  public:
    /// A page of the catalogue that is available, with its character set. Any other number, the one
    /// for "Default Language" (0xFFFFFFFF) included, gives GetDefault() with DEFAULT_CHARSET (1).
    CCodePage(unsigned int number);

    /// The page of the system's language: 950 or 20936 for Chinese, 51932 for Japanese, 949 for
    /// Korean, GetACP() for any other. Worked out once a process; safe from any thread.
    static unsigned int GetDefault();

    unsigned int codePage;
    /// The byte by which fonts are asked for the characters.
    unsigned int charSet;
};

/// The catalogue as far as its pages are installed, in the order of display. All objects see the
/// same list. It is built by the first construction, which any thread may do, and never changes:
/// everything here is safe from any thread.
class TVUTIL_API CCodePageList {
  public:
    CCodePageList();

    /// At least 2: "Default Language" (0xFFFFFFFF) and UTF-8 are always there, in this order.
    [[nodiscard]] int GetCount();

    /// Of the entry at `index`, from 0 to GetCount() - 1. Outside: GetACP(), "", DEFAULT_CHARSET
    /// (1) and 0.
    [[nodiscard]] unsigned int GetCodePage(int index);
    /// Valid for the life of the process.
    [[nodiscard]] const char16_t* GetName(int index);
    [[nodiscard]] unsigned char GetCharSet(int index);
    /// The language group: pages of one group are alternatives for one family of languages.
    [[nodiscard]] unsigned int GetLangID(int index);

    /// Where a page stands in the list; -1 for one that isn't offered.
    [[nodiscard]] int FindIndex(unsigned int codePage);
};
