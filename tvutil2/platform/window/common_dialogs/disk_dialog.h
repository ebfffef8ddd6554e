// What the dialogs for folders and for files have in common: a window whose parts are laid out in
// pixels, and questions to the disk that are answered when they are.
#pragma once

#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/common_dialogs/folder_questions.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/window_types.h"

#include <memory>
#include <string>

namespace tvutil2 {

/// Lives for one run, on the thread that runs it.
class DiskDialog {
  public:
    virtual ~DiskDialog();
    DiskDialog(const DiskDialog&) = delete;
    DiskDialog& operator=(const DiskDialog&) = delete;

    /// IDOK, IDCANCEL, or -1 with the last error. `frame` is a style of windows.
    INT_PTR run(HWND owner, DWORD frame);

  protected:
    DiskDialog();

    /// Fills the window, which is there, and has its icons and its questions.
    virtual void build() = 0;
    virtual void lay_out() = 0;
    /// icons() has others, of another size.
    virtual void icons_changed() = 0;
    /// With the frame.
    [[nodiscard]] virtual SIZE least_size() const = 0;
    virtual LRESULT notified(NMHDR& header) = 0;
    virtual void commanded(int id, WORD code) = 0;
    virtual void answered(FolderAnswer answer) = 0;
    /// A question has no answer yet, and may never have one.
    virtual void unanswered(std::uint64_t question) = 0;
    /// A message that belongs to nothing above; false for one that isn't the dialog's either.
    virtual bool hear_other(UINT message, WPARAM wparam, LPARAM lparam) = 0;
    /// A key, or another message of the loop, that no control gets.
    virtual bool takes(const MSG& message) = 0;

    [[nodiscard]] HWND window() const { return m_window; }
    [[nodiscard]] HWND item(int id) const;
    [[nodiscard]] HIMAGELIST icons() const { return m_icons; }
    [[nodiscard]] LANGID language() const { return m_language; }
    [[nodiscard]] FolderQuestions& disk() { return *m_disk; }
    [[nodiscard]] const char16_t* word(FolderWord which) const {
        return folder_word(which, m_language);
    }
    /// A message box about a path, which stands for %s: the button.
    int say(const char16_t* text, const std::u16string& path, UINT type) const;

  private:
    static INT_PTR procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    void scale_changed(const RECT& place);
    INT_PTR hear(UINT message, WPARAM wparam, LPARAM lparam);

    LANGID m_language;
    HWND m_window = nullptr;
    HIMAGELIST m_icons = nullptr;
    std::unique_ptr<FolderQuestions> m_disk;
    bool m_is_built = false;
};

}  // namespace tvutil2
