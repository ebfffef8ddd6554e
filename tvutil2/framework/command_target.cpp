#include "tvutil2/framework/command_target.h"

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)

const AFX_MSGMAP* CCmdTarget::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, 0, 0, 0, nullptr}};
    static const AFX_MSGMAP map{nullptr, entries};
    return &map;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const {
    return GetThisMessageMap();
}

const AFX_MSGMAP_ENTRY* CCmdTarget::find_entry(UINT message, UINT code, UINT id) const {
    for (const auto* map = GetMessageMap(); map != nullptr;) {
        for (const auto* entry = map->lpEntries; entry->nMessage != 0; ++entry) {
            if (entry->nMessage == message && entry->nCode == code && id >= entry->nID &&
                id <= entry->nLastID) {
                return entry;
            }
        }
        map = map->pfnGetBaseMap != nullptr ? map->pfnGetBaseMap() : nullptr;
    }
    return nullptr;
}

BOOL CCmdTarget::OnCmdMsg(UINT id, int code, void* extra, void* /*handler_info*/) {
    const auto number = static_cast<WORD>(code);
    const auto message = HIWORD(static_cast<DWORD>(code));
    const auto* const entry = find_entry(message != 0 ? message : WM_COMMAND, number, id);
    if (entry == nullptr) return FALSE;
    entry->pfn(*this, MAKEWPARAM(static_cast<WORD>(id), number), reinterpret_cast<LPARAM>(extra));
    return TRUE;
}
