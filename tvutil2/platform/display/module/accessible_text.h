// The text of a field as ATK asks for it. Offsets are counted in characters there.
#pragma once

#include <atk/atk.h>

#include <string>

namespace tvutil2 {

struct AccessibleText {
    std::u16string text;
    int caret = 0;  ///< in units of the text
};

/// Fills an interface for objects whose text `text_of` gives.
void fill_text(AtkTextIface& table, AccessibleText (*text_of)(gpointer object));

/// The same for what can be changed: `put_text` gives an object another text, later.
void fill_editable_text(AtkEditableTextIface& table, AccessibleText (*text_of)(gpointer object),
                        void (*put_text)(gpointer object, std::u16string text));

/// Says what was typed or deleted, and where the caret is now.
void tell_text_change(AtkObject* object, const AccessibleText& before, const AccessibleText& now);

}  // namespace tvutil2
