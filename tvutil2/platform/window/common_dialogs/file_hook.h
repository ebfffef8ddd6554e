// The child dialog that is the caller's own part of a dialog for files.
#pragma once

#include "tvutil2/platform/window/common_dialogs/open_file_hook.h"

#include <functional>

namespace tvutil2 {

/// Lives for one run of the dialog, on its thread. Whatever it tells may end and destroy the
/// dialog.
class FileHook {
  public:
    /// The record outlives it.
    explicit FileHook(OPENFILENAMEW& asked) : m_asked(asked) {}
    ~FileHook();
    FileHook(const FileHook&) = delete;
    FileHook& operator=(const FileHook&) = delete;

    [[nodiscard]] static bool is_wanted(const OPENFILENAMEW& asked);
    /// Looks for the template: 0, or a code of CommDlgExtendedError.
    [[nodiscard]] DWORD find();
    /// Makes the child, of an id that the dialog knows it by.
    [[nodiscard]] bool make(HWND dialog, int id);

    [[nodiscard]] bool has_failed() const { return m_has_failed; }

    /// Tells CDN_INITDONE, behind which others are told.
    void begin();
    void tell(UINT code);
    void tell_filter(std::size_t filter);
    /// Tells CDN_FILEOK: whether the caller wants another choice.
    [[nodiscard]] bool refuses();

  private:
    static INT_PTR procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    [[nodiscard]] DWORD find_in_memory();
    LRESULT send(UINT code);

    OPENFILENAMEW& m_asked;
    HINSTANCE m_module = nullptr;
    HGLOBAL m_locked = nullptr;        ///< the template's memory, where that is by handle
    const void* m_template = nullptr;  ///< null for a child without controls
    HWND m_window = nullptr;
    bool m_has_begun = false;
    bool m_has_failed = false;
};

}  // namespace tvutil2
