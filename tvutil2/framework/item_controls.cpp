#include "tvutil2/framework/item_controls.h"

#include "tvutil2/framework/temporaries.h"
#include "tvutil2/platform/window/parameters.h"

#include <cstring>
#include <string>

using tvutil2::as_lparam;

IMPLEMENT_DYNAMIC(CListCtrl, CWnd)
IMPLEMENT_DYNAMIC(CTreeCtrl, CWnd)

namespace {

// The platform's records don't take a text as constant, and don't change what they only give.
char16_t* field(const char16_t* text) {
    return const_cast<char16_t*>(text);
}

// Asks for a text, with ever more room until it has all of it. `ask` takes the buffer.
template <class Ask>
CString whole_text(Ask ask) {
    std::u16string buffer(256, u'\0');
    for (;;) {
        if (!ask(buffer)) return {};
        const auto length = std::u16string_view(buffer.c_str()).size();
        if (length + 1 < buffer.size()) return CString(buffer.c_str());
        buffer.assign(buffer.size() * 4, u'\0');
    }
}

CImageList* exchange_list(CWnd& control, UINT message, CImageList* list, int which) {
    auto* const handle = list != nullptr ? list->m_hImageList : nullptr;
    return CImageList::FromHandle(reinterpret_cast<HIMAGELIST>(
        control.SendMessage(message, static_cast<WPARAM>(which), as_lparam(handle))));
}

CEdit* edit_object(LRESULT window) {
    return tvutil2::Temporaries<CEdit>::of(reinterpret_cast<HWND>(window));
}

}  // namespace

int CListCtrl::InsertColumn(int column, const LVCOLUMNW* description) {
    return ask(LVM_INSERTCOLUMNW, column, as_lparam(description));
}

int CListCtrl::InsertColumn(int column, const char16_t* title, int format, int width,
                            int sub_item) {
    LVCOLUMNW description{LVCF_TEXT | LVCF_FMT, format, width, field(title), 0, sub_item};
    if (width != -1) description.mask |= LVCF_WIDTH;
    if (sub_item != -1) description.mask |= LVCF_SUBITEM;
    return InsertColumn(column, &description);
}

CImageList* CListCtrl::SetImageList(CImageList* list, int which) {
    return exchange_list(*this, LVM_SETIMAGELIST, list, which);
}

int CListCtrl::InsertItem(const LVITEMW* item) {
    return ask(LVM_INSERTITEMW, 0, as_lparam(item));
}

int CListCtrl::InsertItem(int index, const char16_t* text) {
    const LVITEMW item{LVIF_TEXT, index, 0, 0, 0, field(text), 0, 0, 0};
    return InsertItem(&item);
}

int CListCtrl::InsertItem(int index, const char16_t* text, int image) {
    const LVITEMW item{LVIF_TEXT | LVIF_IMAGE, index, 0, 0, 0, field(text), 0, image, 0};
    return InsertItem(&item);
}

BOOL CListCtrl::GetItem(LVITEMW* item) const {
    return ask(LVM_GETITEMW, 0, as_lparam(item));
}

BOOL CListCtrl::SetItem(const LVITEMW* item) {
    return ask(LVM_SETITEMW, 0, as_lparam(item));
}

BOOL CListCtrl::SetItemText(int index, int sub_item, const char16_t* text) {
    const LVITEMW item{LVIF_TEXT, index, sub_item, 0, 0, field(text), 0, 0, 0};
    return ask(LVM_SETITEMTEXTW, index, as_lparam(&item));
}

CString CListCtrl::GetItemText(int index, int sub_item) const {
    return whole_text([&](std::u16string& buffer) {
        LVITEMW item{LVIF_TEXT, index, sub_item, 0, 0, buffer.data(), 0, 0, 0};
        item.cchTextMax = static_cast<int>(buffer.size());
        return GetItem(&item) != FALSE;
    });
}

BOOL CListCtrl::SetItemData(int index, DWORD_PTR data) {
    const LVITEMW item{LVIF_PARAM, index, 0, 0, 0, nullptr, 0, 0, static_cast<LPARAM>(data)};
    return SetItem(&item);
}

DWORD_PTR CListCtrl::GetItemData(int index) const {
    LVITEMW item{LVIF_PARAM, index, 0, 0, 0, nullptr, 0, 0, 0};
    GetItem(&item);
    return static_cast<DWORD_PTR>(item.lParam);
}

BOOL CListCtrl::SetItemState(int index, UINT state, UINT mask) {
    const LVITEMW item{LVIF_STATE, 0, 0, state, mask, nullptr, 0, 0, 0};
    return ask(LVM_SETITEMSTATE, index, as_lparam(&item));
}

// A position is the index of the item that comes next, and one more.
POSITION CListCtrl::GetFirstSelectedItemPosition() const {
    const auto first = GetNextItem(-1, static_cast<int>(LVNI_SELECTED));
    return reinterpret_cast<POSITION>(static_cast<std::intptr_t>(first) + 1);
}

int CListCtrl::GetNextSelectedItem(POSITION& position) const {
    const auto index = static_cast<int>(reinterpret_cast<std::intptr_t>(position)) - 1;
    const auto next = GetNextItem(index, static_cast<int>(LVNI_SELECTED));
    position = reinterpret_cast<POSITION>(static_cast<std::intptr_t>(next) + 1);
    return index;
}

BOOL CListCtrl::GetItemRect(int index, RECT* rect, UINT part) const {
    rect->left = static_cast<LONG>(part);
    return ask(LVM_GETITEMRECT, index, as_lparam(rect));
}

int CListCtrl::HitTest(LVHITTESTINFO* info) const {
    return ask(LVM_HITTEST, 0, as_lparam(info));
}

int CListCtrl::HitTest(POINT point, UINT* flags) const {
    LVHITTESTINFO info{point, 0, -1, 0};
    const auto index = HitTest(&info);
    if (flags != nullptr) *flags = info.flags;
    return index;
}

CImageList* CTreeCtrl::SetImageList(CImageList* list, int which) {
    return exchange_list(*this, TVM_SETIMAGELIST, list, which);
}

HTREEITEM CTreeCtrl::InsertItem(TVINSERTSTRUCTW* insert) {
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_INSERTITEMW, 0, as_lparam(insert)));
}

HTREEITEM CTreeCtrl::InsertItem(const char16_t* text, HTREEITEM parent, HTREEITEM after) {
    TVINSERTSTRUCTW insert{parent, after, {TVIF_TEXT, nullptr, 0, 0, field(text), 0, 0, 0, 0, 0}};
    return InsertItem(&insert);
}

HTREEITEM CTreeCtrl::InsertItem(const char16_t* text, int image, int selected_image,
                                HTREEITEM parent, HTREEITEM after) {
    TVINSERTSTRUCTW insert{
        parent,
        after,
        {TVIF_TEXT | TVIF_IMAGE, nullptr, 0, 0, field(text), 0, image, selected_image, 0, 0}};
    return InsertItem(&insert);
}

BOOL CTreeCtrl::GetItem(TVITEMW* item) const {
    return static_cast<BOOL>(SendMessage(TVM_GETITEMW, 0, as_lparam(item)));
}

BOOL CTreeCtrl::SetItem(const TVITEMW* item) {
    return static_cast<BOOL>(SendMessage(TVM_SETITEMW, 0, as_lparam(item)));
}

CString CTreeCtrl::GetItemText(HTREEITEM item) const {
    return whole_text([&](std::u16string& buffer) {
        TVITEMW asked{TVIF_TEXT, item, 0, 0, buffer.data(), 0, 0, 0, 0, 0};
        asked.cchTextMax = static_cast<int>(buffer.size());
        return GetItem(&asked) != FALSE;
    });
}

BOOL CTreeCtrl::SetItemText(HTREEITEM item, const char16_t* text) {
    const TVITEMW changed{TVIF_TEXT, item, 0, 0, field(text), 0, 0, 0, 0, 0};
    return SetItem(&changed);
}

DWORD_PTR CTreeCtrl::GetItemData(HTREEITEM item) const {
    TVITEMW asked{TVIF_PARAM, item, 0, 0, nullptr, 0, 0, 0, 0, 0};
    GetItem(&asked);
    return static_cast<DWORD_PTR>(asked.lParam);
}

BOOL CTreeCtrl::SetItemData(HTREEITEM item, DWORD_PTR data) {
    const TVITEMW changed{TVIF_PARAM, item, 0, 0, nullptr, 0, 0, 0, 0, static_cast<LPARAM>(data)};
    return SetItem(&changed);
}

BOOL CTreeCtrl::SetItemImage(HTREEITEM item, int image, int selected_image) {
    const TVITEMW changed{TVIF_IMAGE, item, 0, 0, nullptr, 0, image, selected_image, 0, 0};
    return SetItem(&changed);
}

UINT CTreeCtrl::GetItemState(HTREEITEM item, UINT mask) const {
    TVITEMW asked{TVIF_STATE, item, 0, mask, nullptr, 0, 0, 0, 0, 0};
    GetItem(&asked);
    return asked.state & mask;
}

BOOL CTreeCtrl::ItemHasChildren(HTREEITEM item) const {
    TVITEMW asked{TVIF_CHILDREN, item, 0, 0, nullptr, 0, 0, 0, 0, 0};
    GetItem(&asked);
    return asked.cChildren != 0 ? TRUE : FALSE;
}

CEdit* CTreeCtrl::EditLabel(HTREEITEM item) {
    return edit_object(SendMessage(TVM_EDITLABELW, 0, as_lparam(item)));
}

CEdit* CTreeCtrl::GetEditControl() const {
    return edit_object(SendMessage(TVM_GETEDITCONTROL));
}

// The control looks for the item where it puts the rectangle.
BOOL CTreeCtrl::GetItemRect(HTREEITEM item, RECT* rect, BOOL text_only) const {
    std::memcpy(rect, &item, sizeof(void*));
    return static_cast<BOOL>(
        SendMessage(TVM_GETITEMRECT, static_cast<WPARAM>(text_only), as_lparam(rect)));
}

HTREEITEM CTreeCtrl::HitTest(TVHITTESTINFO* info) const {
    return reinterpret_cast<HTREEITEM>(SendMessage(TVM_HITTEST, 0, as_lparam(info)));
}

HTREEITEM CTreeCtrl::HitTest(POINT point, UINT* flags) const {
    TVHITTESTINFO info{point, 0, nullptr};
    auto* const item = HitTest(&info);
    if (flags != nullptr) *flags = info.flags;
    return item;
}
