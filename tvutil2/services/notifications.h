// Notifications of the desktop, for a product without package identity.
//
// A product calls Register first and then OnActivated, before any notification exists: the static
// members have no lock. Failures of the notification and XML classes are thrown as
// tvutil2::ResultError, with the code; see toast.h for which there are.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/notify/activation.h"
#include "tvutil2/platform/notify/string_map.h"
#include "tvutil2/platform/notify/toast.h"

#include <functional>
#include <string>

/// What a notification was answered with.
class TVUTIL_API DesktopNotificationActivatedEventArgsCompat {
  public:
    DesktopNotificationActivatedEventArgsCompat(
        std::u16string argument, Windows::Foundation::Collections::StringMap user_input);
    /// The arguments of the notification, or of the button, as they stand in its document. They
    /// come from outside: whoever may talk to the session bus can send any.
    [[nodiscard]] const std::u16string& Argument() const { return m_argument; }
    /// Keys and values of its input fields.
    [[nodiscard]] const Windows::Foundation::Collections::StringMap& UserInput() const {
        return m_user_input;
    }

  private:
    std::u16string m_argument;
    Windows::Foundation::Collections::StringMap m_user_input;
};

/// What the desktop still shows of a user model id.
class TVUTIL_API DesktopNotificationHistoryCompat {
  public:
    DesktopNotificationHistoryCompat(std::u16string model_id,
                                     Windows::UI::Notifications::ToastNotificationHistory history);
    /// Takes it back: that of the id, or without one that of the process's package.
    void Clear() const;

  private:
    std::u16string m_model_id;
    Windows::UI::Notifications::ToastNotificationHistory m_history;
};

class TVUTIL_API DesktopNotificationManagerCompat {
  public:
    /// Makes the executable known under a user model id, with the name and the icon (a path, or
    /// empty) that notifications show, and its class, whose id is class_id_of() of the user model
    /// id, to the end of the process. Nothing with package identity. Failures of the registry are
    /// passed over. Throws CO_E_CLASSSTRING for an id that gives no class id: one of at most 16
    /// units with one above 255.
    static void Register(std::u16string aumid, const std::u16string& displayName,
                         const std::u16string& iconPath);

    /// Stores the handler in the place of the former one, and lets activations in. It is called on
    /// a thread of the platform's, one call at a time, and must not throw. Throws "Must call
    /// Register first." (const char*) where that has been missed.
    static void OnActivated(
        std::function<void(DesktopNotificationActivatedEventArgsCompat)> handler);

    /// Throws ELEMENT_NOT_FOUND without package identity and without Register.
    [[nodiscard]] static Windows::UI::Notifications::ToastNotifier CreateToastNotifier();

    /// Throws "Must call Register first." as OnActivated does.
    [[nodiscard]] static DesktopNotificationHistoryCompat History();

    /// Takes back the scheduled notifications, those that are shown, what the desktop was told of
    /// the program, and the id's key in the registry; the class's key stays, and so does what this
    /// process knows. Nothing when the program runs inside its package.
    static void Uninstall();
};

/// Shows a notification with a title, a text, a picture (a file below the executable's folder) and
/// a button. `strButton` stands in the document as it is given: it must be valid inside an
/// attribute.
TVUTIL_API void TVSendToast(CString strTitle, CString strText, CString strButton, CString strImage);

namespace tvutil2 {

/// The class id that belongs to a user model id, without braces: its units in hexadecimal digits,
/// zeros for what is missing of 16, or of a longer id the digits of its 32-bit FNV-1a hash.
[[nodiscard]] TVUTIL_API std::u16string class_id_of(const std::u16string& model_id);

}  // namespace tvutil2
