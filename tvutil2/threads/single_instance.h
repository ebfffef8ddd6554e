// Whether a program runs already, in two ways: by named objects, with a text for the first one to
// get, and by a hidden window that brings the first one to the front.
#pragma once

#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/objects/objects.h"

#include <atomic>

namespace NUtil {

/// One running program of a name. The first object of that name is the first instance for as long
/// as it lives; others, of any process of the user, hand it a text of up to 255 bytes as they are
/// created. Their text is lost when the first one is inside its hook at that moment, and when the
/// next start comes before it has been read.
///
/// Copies share the handles, and only the object that was created may be destroyed. A derived class
/// whose hook uses its own fields lets no start come any more before it is destroyed: the thread
/// that listens ends with this class's destructor only. Nobody destroys an object in its hook.
class TVUTIL_API CSingleInstance {
  public:
    CSingleInstance() = default;
    CSingleInstance(const CSingleInstance&) = default;
    CSingleInstance& operator=(const CSingleInstance&) = default;
    virtual ~CSingleInstance();

    /// Becomes the first instance, or hands a text to it: true for the first. False also says that
    /// the named objects couldn't be had. The first one's further calls change nothing; another one
    /// may try again. The narrow name is in the system's code page.
    bool Create(const char16_t* name) { return CreateW(name); }
    bool CreateW(const char16_t* name);
    bool CreateA(const char* name);
    [[nodiscard]] bool IsFirstInstance() const { return m_is_first; }

    /// Inside a hook, the text; else null, and null where there is no memory to share.
    [[nodiscard]] const char* GetData() const { return m_is_data_open ? m_view : nullptr; }
    /// Inside a hook, hands over a text, of which 255 bytes at most arrive; else nothing.
    void SetData(const char* text);

    /// In the second instance, during Create: the place for SetData. What it throws goes to who
    /// called Create, and the first instance hears nothing.
    virtual void OnSecondInstance() {}
    /// In the first instance, on a thread of its own: the place for GetData. No other instance has
    /// the text meanwhile, and all that start wait for the end of this. What it throws ends the
    /// program.
    virtual void OnSecondInstanceDetected() {}

  private:
    // Read by two threads, and copied with the object.
    class Flag {
      public:
        Flag() = default;
        Flag(const Flag& other) : m_value(other.m_value.load()) {}
        Flag& operator=(const Flag& other) {
            m_value = other.m_value.load();
            return *this;
        }
        Flag& operator=(bool value) {
            m_value = value;
            return *this;
        }
        operator bool() const { return m_value; }

      private:
        std::atomic<bool> m_value = false;
    };

    static DWORD EventHandler(void* object);
    void CreateInternal(const char16_t* name);
    void share_memory(const CString& name);
    void listen();
    void run_hook(void (CSingleInstance::*hook)());
    void release_memory();

    Flag m_is_first;
    Flag m_stop;
    HANDLE m_event = nullptr;
    HANDLE m_thread = nullptr;
    Flag m_is_data_open;
    char* m_view = nullptr;
    HANDLE m_mapping = nullptr;
    HANDLE m_mutex = nullptr;
};

}  // namespace NUtil

namespace NSingleInstance {

/// One running program of a name, by its hidden window. The window's messages: 2131 (0x853) brings
/// the main window of its thread to the front; 2132 (0x854) is posted on to the main window, too.
class TVUTIL_API CSingleInstance : public CWnd {
  public:
    CSingleInstance() = default;
    ~CSingleInstance() override = default;

    /// 0 when another program, or this one, has such a window, which is told to come to the front.
    /// Else 1: this object then has the window, if it could be made.
    int Create(const char16_t* name);

  protected:
    LRESULT OnSingleInstance(WPARAM wparam, LPARAM lparam);
    LRESULT OnSingleInstanceExMsg(WPARAM wparam, LPARAM lparam);
    DECLARE_MESSAGE_MAP()

  private:
    CString m_title;
};

}  // namespace NSingleInstance

namespace tvutil2 {

/// The class and the title of the hidden window of an instance name.
inline constexpr const char16_t* kInstanceWindowClass = u"STATIC";
[[nodiscard]] CString instance_window_title(const char16_t* name);

}  // namespace tvutil2
