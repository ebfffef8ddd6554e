// What pango leaves to its callers where scripts meet in a paragraph.
#pragma once

#include <pango/pango.h>

#include <string>

namespace tvutil2 {

/// Full stops and commas of Chinese and Japanese are written as the language does behind a Latin
/// word, too, whose font has none. The layout has its text and its font.
void write_marks_as(PangoAttrList* list, PangoLayout* layout, PangoLanguage* language);

/// Lines of Korean end at blanks, as readers like it, and not within a word, but for one of more
/// characters than that.
void keep_words_whole(PangoAttrList* list, const std::string& text, int most_characters);

}  // namespace tvutil2
