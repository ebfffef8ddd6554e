// Activation of a program by what its notification was answered with.
//
// A class object that a process registers with CoRegisterClassObject is served on the session bus:
// who activates the class reaches it there, and where no process has it the bus starts the command
// line of the class's "LocalServer32" key. That is done in the background, by a thread of the
// layer that lives as long as the process, and calls come on that thread, one at a time. Whoever
// may talk to the session bus may call, with any arguments: they are input from outside.
#pragma once

#include "tvutil2/platform/base/com.h"

#include <string>

inline constexpr DWORD REGCLS_MULTIPLEUSE = 1;
inline constexpr DWORD REGCLS_SUSPENDED = 4;

inline constexpr IID IID_INotificationActivationCallback{
    0x53E31837, 0x6600, 0x4A81, {0x93, 0x95, 0x75, 0xCF, 0xFE, 0x74, 0x6F, 0x94}};

/// What a person has put into one input field.
struct NOTIFICATION_USER_INPUT_DATA {
    const char16_t* Key;
    const char16_t* Value;
};

class INotificationActivationCallback : public IUnknown {
  public:
    /// Texts and data are the caller's. An exception ends the program.
    virtual HRESULT Activate(const char16_t* model_id, const char16_t* arguments,
                             const NOTIFICATION_USER_INPUT_DATA* data, DWORD count) = 0;

  protected:
    ~INotificationActivationCallback() = default;
};

/// Registers the factory of a class, to the end of the process or to CoRevokeClassObject; of two
/// for one class the later one holds. `context` is CLSCTX_LOCAL_SERVER, `flags` REGCLS_MULTIPLEUSE
/// and perhaps REGCLS_SUSPENDED, with which other processes don't reach it before
/// CoResumeClassObjects. E_INVALIDARG otherwise. That the bus can't be reached is no failure. Safe
/// from any thread.
TVUTIL_API HRESULT CoRegisterClassObject(const CLSID& class_id, IUnknown* object, DWORD context,
                                         DWORD flags, DWORD* cookie);
/// CO_E_OBJNOTREG for what isn't registered.
TVUTIL_API HRESULT CoRevokeClassObject(DWORD cookie);
TVUTIL_API HRESULT CoResumeClassObjects();

namespace tvutil2 {

/// Calls the activation callback of a class that this process has registered. False when it has
/// none.
bool activate_class(const CLSID& class_id, const std::u16string& model_id,
                    const std::u16string& arguments) noexcept;

}  // namespace tvutil2
