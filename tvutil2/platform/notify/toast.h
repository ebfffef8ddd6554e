// Toasts: notifications of the desktop, by the ids that programs registered for themselves
// (toast_store.h).
//
// Shown by the desktop's notification server (freedesktop.org's notifications) through the session
// bus, in the module of notifications. Show waits for the server's answer, 5 seconds at the
// longest. What the person answers reaches the class that the id is registered with (activation.h),
// also when the program has ended meanwhile.
//
// Objects are values; calls are safe from any thread on objects of their own. Failures are thrown
// as tvutil2::ResultError: ELEMENT_NOT_FOUND for an empty id or, without an id, for a process
// without package identity; WPN_E_PLATFORM_UNAVAILABLE without a session bus or a server, and when
// it dies while it is asked; ERROR_TIMEOUT, ERROR_MOD_NOT_FOUND, and in a child after a fork
// ERROR_NOT_SUPPORTED as HRESULTs; E_INVALIDARG for what is no toast.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/notify/desktop.h"
#include "tvutil2/platform/notify/xml_document.h"

#include <string>
#include <vector>

namespace Windows::UI::Notifications {

class TVUTIL_API ToastNotification {
  public:
    explicit ToastNotification(Data::Xml::Dom::XmlDocument content);
    [[nodiscard]] const Data::Xml::Dom::XmlDocument& Content() const { return m_content; }

  private:
    Data::Xml::Dom::XmlDocument m_content;
};

/// A toast that is to be shown at a time.
class TVUTIL_API ScheduledToastNotification {
  public:
    ScheduledToastNotification(Data::Xml::Dom::XmlDocument content, FILETIME delivery);
    [[nodiscard]] const Data::Xml::Dom::XmlDocument& Content() const { return m_content; }
    [[nodiscard]] FILETIME DeliveryTime() const { return m_delivery; }

  private:
    friend class ToastNotifier;
    Data::Xml::Dom::XmlDocument m_content;
    FILETIME m_delivery;
    std::u16string m_key;  // once it is in the schedule
};

class TVUTIL_API ToastNotifier {
  public:
    void Show(const ToastNotification& toast) const;

    /// Keeps the toast until its time comes, over ends of programs and of sessions. It is shown by
    /// a running program: this one, or one that serves the id's class. Where none runs at that time
    /// it is shown when the next one starts; without a server it is tried again every minute.
    /// E_INVALIDARG for a time that has passed; what the registry refuses as an HRESULT.
    void AddToSchedule(ScheduledToastNotification& toast) const;
    /// What is still to come, in the order of the times.
    [[nodiscard]] std::vector<ScheduledToastNotification> GetScheduledToastNotifications() const;
    /// Nothing happens when it isn't there any more.
    void RemoveFromSchedule(const ScheduledToastNotification& toast) const;

  private:
    friend class ToastNotificationManager;
    explicit ToastNotifier(std::u16string model_id);
    std::u16string m_model_id;
};

/// What the desktop still shows.
class TVUTIL_API ToastNotificationHistory {
  public:
    /// Takes all toasts back that the process's package, or an id, has shown. Nothing happens where
    /// no server is.
    void Clear() const;
    void Clear(const std::u16string& model_id) const;
};

class TVUTIL_API ToastNotificationManager {
  public:
    /// With the identity of the process's package, and with an id.
    [[nodiscard]] static ToastNotifier CreateToastNotifier();
    [[nodiscard]] static ToastNotifier CreateToastNotifier(const std::u16string& model_id);
    [[nodiscard]] static ToastNotificationHistory History() { return {}; }
};

}  // namespace Windows::UI::Notifications

namespace tvutil2 {

/// Takes back what the desktop was told of the program of an id, and forgets its toasts, scheduled
/// ones too. What the program wrote into the registry itself stays.
TVUTIL_API void withdraw_toasts(const std::u16string& model_id);

/// An id that has, or had, toasts.
struct ToastProgram {
    std::u16string model_id;
    std::u16string display_name;  ///< empty where it isn't registered any more
    std::u16string class_text;
    std::size_t shown = 0;      ///< by what is known of the server
    std::size_t scheduled = 0;  ///< still to come
};
[[nodiscard]] TVUTIL_API std::vector<ToastProgram> toast_programs();

}  // namespace tvutil2
