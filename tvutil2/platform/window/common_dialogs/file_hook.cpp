#include "tvutil2/platform/window/common_dialogs/file_hook.h"

#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/common_dialogs/file_part.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/properties.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

// The caller's procedure may put what it likes into the window's own words.
constexpr auto kFileHookProperty = u"tvutil2.file_hook";

}  // namespace

FileHook::~FileHook() {
    // Behind an exception the child outlives this by a little.
    if (m_window != nullptr) RemovePropW(m_window, kFileHookProperty);
    if (m_locked != nullptr) GlobalUnlock(m_locked);
}

bool FileHook::is_wanted(const OPENFILENAMEW& asked) {
    constexpr DWORD kPart = OFN_ENABLEHOOK | OFN_ENABLETEMPLATE | OFN_ENABLETEMPLATEHANDLE;
    return (asked.Flags & kPart) != 0;
}

DWORD FileHook::find() {
    if ((m_asked.Flags & OFN_ENABLEHOOK) != 0 && m_asked.lpfnHook == nullptr) return CDERR_NOHOOK;
    if ((m_asked.Flags & OFN_ENABLETEMPLATEHANDLE) != 0) return find_in_memory();
    m_module = m_asked.hInstance;
    if ((m_asked.Flags & OFN_ENABLETEMPLATE) == 0) return 0;
    if (m_asked.lpTemplateName == nullptr) return CDERR_NOTEMPLATE;
    auto* const found = FindResourceW(m_asked.hInstance, m_asked.lpTemplateName, RT_DIALOG);
    if (found == nullptr) return CDERR_FINDRESFAILURE;
    m_template = LockResource(LoadResource(m_asked.hInstance, found));
    return m_template != nullptr ? 0 : CDERR_LOADRESFAILURE;
}

DWORD FileHook::find_in_memory() {
    if (m_asked.hInstance == nullptr) return CDERR_NOTEMPLATE;
    auto* const memory = reinterpret_cast<HGLOBAL>(m_asked.hInstance);
    if (GlobalSize(memory) > 0) m_locked = memory;
    m_template = m_locked != nullptr ? GlobalLock(memory) : static_cast<const void*>(memory);
    return 0;
}

bool FileHook::make(HWND dialog, int id) {
    const auto empty = empty_template(0);
    auto* const child = make_child_dialog({m_module, m_template != nullptr ? m_template : &empty,
                                           dialog, procedure, reinterpret_cast<LPARAM>(this)});
    m_has_failed = child == nullptr;
    if (m_has_failed) return false;
    SetWindowLongPtrW(child, GWLP_ID, id);
    cut_part_to_monitor(child);
    return IsWindow(child) != 0;
}

INT_PTR FileHook::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        auto& hook = *reinterpret_cast<FileHook*>(lparam);
        hook.m_window = window;
        SetPropW(window, kFileHookProperty, reinterpret_cast<HANDLE>(&hook));
        lparam = reinterpret_cast<LPARAM>(&hook.m_asked);
    }
    const auto* const hook = reinterpret_cast<FileHook*>(GetPropW(window, kFileHookProperty));
    if (hook == nullptr || (hook->m_asked.Flags & OFN_ENABLEHOOK) == 0) return FALSE;
    return static_cast<INT_PTR>(hook->m_asked.lpfnHook(window, message, wparam, lparam));
}

LRESULT FileHook::send(UINT code) {
    if (!m_has_begun) return 0;
    OFNOTIFYW told{{GetParent(m_window), 0, code}, &m_asked, nullptr};
    return SendMessageW(m_window, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&told));
}

void FileHook::begin() {
    m_has_begun = true;
    tell(CDN_INITDONE);
}

void FileHook::tell(UINT code) {
    static_cast<void>(send(code));
}

void FileHook::tell_filter(std::size_t filter) {
    m_asked.nFilterIndex = static_cast<DWORD>(filter + 1);
    tell(CDN_TYPECHANGE);
}

bool FileHook::refuses() {
    return send(CDN_FILEOK) != 0;
}

}  // namespace tvutil2
