// List views and trees as objects: each member sends the control the message of its name. What
// isn't there gives -1, null or an empty text.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/images.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"

class TVUTIL_API CListCtrl : public CWnd {
    DECLARE_DYNAMIC(CListCtrl)
  public:
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(WC_LISTVIEWW, u"", style, rect, parent, id);
    }

    // Columns. A width of -1 is left to the control.
    int InsertColumn(int column, const LVCOLUMNW* description);
    int InsertColumn(int column, const char16_t* title, int format = LVCFMT_LEFT, int width = -1,
                     int sub_item = -1);
    BOOL DeleteColumn(int column) { return ask(LVM_DELETECOLUMN, column); }
    [[nodiscard]] int GetColumnWidth(int column) const { return ask(LVM_GETCOLUMNWIDTH, column); }
    BOOL SetColumnWidth(int column, int width) { return ask(LVM_SETCOLUMNWIDTH, column, width); }
    /// The list stays the caller's; the one before.
    CImageList* SetImageList(CImageList* list, int which);

    // Items: the index that it has.
    int InsertItem(const LVITEMW* item);
    int InsertItem(int index, const char16_t* text);
    int InsertItem(int index, const char16_t* text, int image);
    BOOL GetItem(LVITEMW* item) const;
    BOOL SetItem(const LVITEMW* item);
    BOOL DeleteItem(int index) { return ask(LVM_DELETEITEM, index); }
    BOOL DeleteAllItems() { return ask(LVM_DELETEALLITEMS); }
    [[nodiscard]] int GetItemCount() const { return ask(LVM_GETITEMCOUNT); }
    /// With LVS_OWNERDATA.
    void SetItemCount(int count) { ask(LVM_SETITEMCOUNT, count); }
    BOOL SetItemText(int index, int sub_item, const char16_t* text);
    [[nodiscard]] CString GetItemText(int index, int sub_item) const;
    BOOL SetItemData(int index, DWORD_PTR data);
    [[nodiscard]] DWORD_PTR GetItemData(int index) const;

    // Selection (LVIS_ and LVNI_).
    BOOL SetItemState(int index, UINT state, UINT mask);
    [[nodiscard]] UINT GetItemState(int index, UINT mask) const {
        return static_cast<UINT>(ask(LVM_GETITEMSTATE, index, static_cast<LPARAM>(mask)));
    }
    [[nodiscard]] UINT GetSelectedCount() const {
        return static_cast<UINT>(ask(LVM_GETSELECTEDCOUNT));
    }
    [[nodiscard]] int GetNextItem(int after, int flags) const {
        return ask(LVM_GETNEXTITEM, after, flags);
    }
    /// Null for no selected item; GetNextSelectedItem gives it and moves on.
    [[nodiscard]] POSITION GetFirstSelectedItemPosition() const;
    int GetNextSelectedItem(POSITION& position) const;

    // Places.
    BOOL EnsureVisible(int index, BOOL partly) { return ask(LVM_ENSUREVISIBLE, index, partly); }
    [[nodiscard]] int GetTopIndex() const { return ask(LVM_GETTOPINDEX); }
    [[nodiscard]] int GetCountPerPage() const { return ask(LVM_GETCOUNTPERPAGE); }
    BOOL GetItemRect(int index, RECT* rect, UINT part) const;
    int HitTest(LVHITTESTINFO* info) const;
    int HitTest(POINT point, UINT* flags = nullptr) const;

  private:
    int ask(UINT message, int index = 0, LPARAM value = 0) const {
        return static_cast<int>(SendMessage(message, static_cast<WPARAM>(index), value));
    }
};

class TVUTIL_API CTreeCtrl : public CWnd {
    DECLARE_DYNAMIC(CTreeCtrl)
  public:
    BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {
        return CWnd::Create(WC_TREEVIEWW, u"", style, rect, parent, id);
    }
    /// The list stays the caller's; the one before.
    CImageList* SetImageList(CImageList* list, int which);

    HTREEITEM InsertItem(TVINSERTSTRUCTW* insert);
    HTREEITEM InsertItem(const char16_t* text, HTREEITEM parent = TVI_ROOT,
                         HTREEITEM after = TVI_LAST);
    HTREEITEM InsertItem(const char16_t* text, int image, int selected_image,
                         HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST);
    BOOL DeleteItem(HTREEITEM item) { return ask(TVM_DELETEITEM, 0, item); }
    BOOL DeleteAllItems() { return DeleteItem(TVI_ROOT); }
    [[nodiscard]] UINT GetCount() const { return static_cast<UINT>(SendMessage(TVM_GETCOUNT)); }
    BOOL GetItem(TVITEMW* item) const;
    BOOL SetItem(const TVITEMW* item);
    [[nodiscard]] CString GetItemText(HTREEITEM item) const;
    BOOL SetItemText(HTREEITEM item, const char16_t* text);
    [[nodiscard]] DWORD_PTR GetItemData(HTREEITEM item) const;
    BOOL SetItemData(HTREEITEM item, DWORD_PTR data);
    BOOL SetItemImage(HTREEITEM item, int image, int selected_image);
    /// TVIS_.
    [[nodiscard]] UINT GetItemState(HTREEITEM item, UINT mask) const;
    [[nodiscard]] BOOL ItemHasChildren(HTREEITEM item) const;

    [[nodiscard]] HTREEITEM GetNextItem(HTREEITEM item, UINT which) const {
        return reinterpret_cast<HTREEITEM>(
            SendMessage(TVM_GETNEXTITEM, which, reinterpret_cast<LPARAM>(item)));
    }
    [[nodiscard]] HTREEITEM GetRootItem() const { return GetNextItem(nullptr, TVGN_ROOT); }
    [[nodiscard]] HTREEITEM GetChildItem(HTREEITEM item) const {
        return GetNextItem(item, TVGN_CHILD);
    }
    [[nodiscard]] HTREEITEM GetParentItem(HTREEITEM item) const {
        return GetNextItem(item, TVGN_PARENT);
    }
    [[nodiscard]] HTREEITEM GetNextSiblingItem(HTREEITEM item) const {
        return GetNextItem(item, TVGN_NEXT);
    }
    [[nodiscard]] HTREEITEM GetPrevSiblingItem(HTREEITEM item) const {
        return GetNextItem(item, TVGN_PREVIOUS);
    }
    [[nodiscard]] HTREEITEM GetSelectedItem() const { return GetNextItem(nullptr, TVGN_CARET); }

    BOOL SelectItem(HTREEITEM item) { return ask(TVM_SELECTITEM, TVGN_CARET, item); }
    /// TVE_.
    BOOL Expand(HTREEITEM item, UINT how) { return ask(TVM_EXPAND, how, item); }
    BOOL EnsureVisible(HTREEITEM item) { return ask(TVM_ENSUREVISIBLE, 0, item); }
    /// Objects for the while; null for none.
    CEdit* EditLabel(HTREEITEM item);
    [[nodiscard]] CEdit* GetEditControl() const;
    BOOL GetItemRect(HTREEITEM item, RECT* rect, BOOL text_only) const;
    HTREEITEM HitTest(TVHITTESTINFO* info) const;
    HTREEITEM HitTest(POINT point, UINT* flags = nullptr) const;

  private:
    BOOL ask(UINT message, WPARAM how, HTREEITEM item) {
        return static_cast<BOOL>(SendMessage(message, how, reinterpret_cast<LPARAM>(item)));
    }
};
