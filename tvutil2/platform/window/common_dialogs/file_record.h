// What a choice of files leaves in the caller's record.
#pragma once

#include "tvutil2/platform/window/common_dialogs/file_dialog.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"

#include <string>

namespace tvutil2 {

/// Puts what was chosen, which is something, into the record. False where it doesn't fit: the first
/// unit of lpstrFile tells the size that it needs.
[[nodiscard]] bool put_choice(OPENFILENAMEW& asked, const ChosenNames& chosen);

/// Puts the record back at its end as it was at first, unless it is told to keep what was put
/// there: a program's own part of the dialog hears of choices, and may refuse them.
class RecordAtFirst {
  public:
    explicit RecordAtFirst(OPENFILENAMEW& asked);
    ~RecordAtFirst();
    RecordAtFirst(const RecordAtFirst&) = delete;
    RecordAtFirst& operator=(const RecordAtFirst&) = delete;

    void keep_choice() { m_is_kept = true; }

  private:
    OPENFILENAMEW& m_asked;
    const OPENFILENAMEW m_at_first;
    std::u16string m_file;
    std::u16string m_title;
    bool m_is_kept = false;
};

}  // namespace tvutil2
