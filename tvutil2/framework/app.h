// The framework's application object and its start-up.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/framework/win_thread.h"

/// A program, or a library with resources of its own, as one object: a static one, built before
/// the module starts. It enters itself among the process's application objects, and stands for the
/// thread that the module is started on.
class TVUTIL_API CWinApp : public CWinThread {
    DECLARE_DYNAMIC(CWinApp)
  public:
    /// `name` is shown as the caption of messages; null stands for the executable's base name. The
    /// text isn't copied.
    explicit CWinApp(const char16_t* name = nullptr);
    ~CWinApp() override;

    /// The module's own start; FALSE fails the start.
    BOOL InitInstance() override { return TRUE; }

    /// One value of the application's settings; `fallback` (null is empty text) for what is
    /// missing, of another kind or can't be read. Settings lie in the registry once there is a
    /// registry key, HKCU\Software\<registry key>\<profile name>\<section>, as REG_DWORD and
    /// REG_SZ. Before, in the private-profile file of the profile's name, or of the executable's
    /// with ".INI": a bare name lies in the person's application data. Reading makes nothing. From
    /// any thread, but for the fields below.
    virtual UINT GetProfileInt(const char16_t* section, const char16_t* entry, int fallback);
    virtual CString GetProfileString(const char16_t* section, const char16_t* entry,
                                     const char16_t* fallback = nullptr);
    /// Sets one. A null `value` takes the entry away, a null `entry` the section. FALSE with the
    /// last error; also for what isn't there to be taken away from the registry, or for a section
    /// there that holds others.
    virtual BOOL WriteProfileInt(const char16_t* section, const char16_t* entry, int value);
    virtual BOOL WriteProfileString(const char16_t* section, const char16_t* entry,
                                    const char16_t* value);

    HINSTANCE m_hInstance = nullptr;
    const char16_t* m_pszAppName;
    /// Null until SetRegistryKey. Whoever sets one of them to a text of its own keeps that text.
    const char16_t* m_pszRegistryKey = nullptr;
    const char16_t* m_pszProfileName = nullptr;

  protected:
    /// Lets the settings lie in the registry, and names the profile after the application. The
    /// text, mostly the maker's name, or the string of the resources is copied. To be called before
    /// other threads ask for settings.
    void SetRegistryKey(const char16_t* key);
    void SetRegistryKey(UINT id);

  private:
    CString m_registry_key;
    CString m_profile_name;
};

/// A library that offers its resources to the process.
struct AFX_EXTENSION_MODULE {
    BOOL bInitialized = FALSE;
    HMODULE hModule = nullptr;
};

/// Makes a library known; FALSE for a null module. Called at its load.
TVUTIL_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module);
/// The end of that, at its unload.
TVUTIL_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state);

/// One library in the framework's resource chain: where AfxFindResourceHandle looks once the
/// application's own resources don't have something. Entered when it is built, taken out when it is
/// destroyed.
class TVUTIL_API CDynLinkLibrary {
  public:
    explicit CDynLinkLibrary(const AFX_EXTENSION_MODULE& state);
    ~CDynLinkLibrary();
    CDynLinkLibrary(const CDynLinkLibrary&) = delete;
    CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;

    HMODULE m_hModule;
};

/// The application object built last: the executable's, where it has one, else the library's. Null
/// before the first one.
TVUTIL_API CWinApp* AfxGetApp();

/// Gives the application object its instance, and the calling thread to it. FALSE with
/// ERROR_INVALID_PARAMETER when there is neither an application object nor an instance.
TVUTIL_API BOOL AfxWinInit(HINSTANCE instance);

/// Starts a module: AfxWinInit, then the application object's InitInstance. When that fails
/// ExitInstance runs and the result is FALSE: the module must not be used.
TVUTIL_API BOOL AfxStartModule(HINSTANCE instance);

/// Instance of the application object; the executable's until it has one.
TVUTIL_API HINSTANCE AfxGetInstanceHandle();
/// Where the application's resources are looked for first: its instance unless set otherwise.
TVUTIL_API HINSTANCE AfxGetResourceHandle();
TVUTIL_API void AfxSetResourceHandle(HINSTANCE module);
/// The module that has the resource: the application's first, then the chain's, the latest one
/// first. AfxGetResourceHandle() when none has.
TVUTIL_API HINSTANCE AfxFindResourceHandle(const char16_t* name, const char16_t* type);

/// MessageBoxW under the application's name, in front of the thread's active window, if it has one,
/// which can't be used meanwhile. A type without an icon gets the one that suits its buttons.
TVUTIL_API int AfxMessageBox(const char16_t* text, UINT type = 0, UINT help = 0);
/// The same with a string of the resources; the id itself is shown when there is no such string.
TVUTIL_API int AfxMessageBox(UINT id, UINT type = 0, UINT help = ~0U);
