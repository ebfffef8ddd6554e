// Message maps: which member function of a class hears which message.
//
// A map is a table of the class, and points to its base class's map. An entry's function is called
// with what the message's parameters mean, by a small function that the compiler makes from the
// handler's type; a handler of a wrong type doesn't compile.
#pragma once

#include "tvutil2/framework/object.h"
#include "tvutil2/platform/window/window_types.h"

class CCmdTarget;
struct NMHDR;

struct AFX_MSGMAP_ENTRY {
    UINT nMessage;  ///< 0 ends the table
    UINT nCode;     ///< of a control's notification: 16 bits
    UINT nID, nLastID;
    LRESULT (*pfn)(CCmdTarget& target, WPARAM wparam, LPARAM lparam);
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)();  ///< null for the topmost
    const AFX_MSGMAP_ENTRY* lpEntries;
};

/// What a control tells by WM_NOTIFY, on its way to a handler.
struct AFX_NOTIFY {
    LRESULT* pResult;
    NMHDR* pNMHDR;
};

class TVUTIL_API CCmdTarget : public CObject {
    DECLARE_DYNAMIC(CCmdTarget)
  public:
    /// A command, or a control's notification, for the first class from this one up that has an
    /// entry. Non-zero when there is one. The high half of the code is the message when that isn't
    /// WM_COMMAND; with WM_NOTIFY `extra` is an AFX_NOTIFY.
    virtual BOOL OnCmdMsg(UINT id, int code, void* extra, void* handler_info);

  protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    [[nodiscard]] virtual const AFX_MSGMAP* GetMessageMap() const;
    /// The entry for a message, from this class up; null for none.
    [[nodiscard]] const AFX_MSGMAP_ENTRY* find_entry(UINT message, UINT code, UINT id) const;
};

namespace tvutil2 {

// How each form of handler takes a message's parameters.
template <auto handler, class Type = decltype(handler)>
struct MessageCall;

template <class Class, LRESULT (Class::*handler)(WPARAM, LPARAM)>
struct MessageCall<handler, LRESULT (Class::*)(WPARAM, LPARAM)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        return (static_cast<Class&>(target).*handler)(wparam, lparam);
    }
};
template <class Class, void (Class::*handler)()>
struct MessageCall<handler, void (Class::*)()> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM /*lparam*/) {
        (static_cast<Class&>(target).*handler)();
        return 0;
    }
};
template <class Class, void (Class::*handler)(UINT_PTR)>
struct MessageCall<handler, void (Class::*)(UINT_PTR)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM /*lparam*/) {
        (static_cast<Class&>(target).*handler)(wparam);
        return 0;
    }
};
template <class Class, int (Class::*handler)(CREATESTRUCTW*)>
struct MessageCall<handler, int (Class::*)(CREATESTRUCTW*)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        return (static_cast<Class&>(target).*handler)(reinterpret_cast<CREATESTRUCTW*>(lparam));
    }
};
template <class Class, void (Class::*handler)(UINT, int, int)>
struct MessageCall<handler, void (Class::*)(UINT, int, int)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        const auto size = static_cast<std::uintptr_t>(lparam);
        (static_cast<Class&>(target).*handler)(static_cast<UINT>(wparam), LOWORD(size),
                                               HIWORD(size));
        return 0;
    }
};

}  // namespace tvutil2

#define DECLARE_MESSAGE_MAP()                     \
  protected:                                      \
    static const AFX_MSGMAP* GetThisMessageMap(); \
    [[nodiscard]] const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(class_name, base_name)          \
    const AFX_MSGMAP* class_name::GetMessageMap() const { \
        return GetThisMessageMap();                       \
    }                                                     \
    const AFX_MSGMAP* class_name::GetThisMessageMap() {   \
        using ThisClass = class_name;                     \
        using TheBaseClass = base_name;                   \
        static const AFX_MSGMAP_ENTRY entries[] = {
#define END_MESSAGE_MAP()                                                   \
    { 0, 0, 0, 0, nullptr }                                                 \
    }                                                                       \
    ;                                                                       \
    [[maybe_unused]] static constexpr ThisClass* this_class = nullptr;      \
    static const AFX_MSGMAP map{&TheBaseClass::GetThisMessageMap, entries}; \
    return &map;                                                            \
    }

#define TVUTIL_ENTRY(message, code, first, last, handler) \
    {message, static_cast<UINT>(code), first, last, &tvutil2::MessageCall<handler>::call},

// A handler is named with its class: ON_COMMAND(IDOK, &CSomeDialog::OnOK). Those of windows'
// messages are in message_forms.h.
#define ON_MESSAGE(message, handler) TVUTIL_ENTRY(message, 0, 0, 0, handler)
#define ON_COMMAND(id, handler) TVUTIL_ENTRY(WM_COMMAND, 0, id, id, handler)
#define ON_COMMAND_RANGE(first, last, handler) TVUTIL_ENTRY(WM_COMMAND, 0, first, last, handler)
#define ON_CONTROL(code, id, handler) TVUTIL_ENTRY(WM_COMMAND, code, id, id, handler)
#define ON_CONTROL_RANGE(code, first, last, handler) \
    TVUTIL_ENTRY(WM_COMMAND, code, first, last, handler)
#define ON_BN_CLICKED(id, handler) ON_CONTROL(0, id, handler)

/// Stands in front of handlers in the declarations of some programs, and means nothing.
#define afx_msg
