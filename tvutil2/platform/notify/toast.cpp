#include "tvutil2/platform/notify/toast.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/notify/desktop_files.h"
#include "tvutil2/platform/notify/toast_desk.h"
#include "tvutil2/platform/notify/toast_store.h"
#include "tvutil2/platform/process/package.h"

#include <utility>

namespace Windows::UI::Notifications {
namespace {

using Data::Xml::Dom::XmlDocument;
using tvutil2::check_result;
using tvutil2::ResultError;

std::u16string package_id() {
    DWORD length = 0;
    GetPackageFamilyName(GetCurrentProcess(), &length, nullptr);
    std::u16string name(length, 0);
    if (GetPackageFamilyName(GetCurrentProcess(), &length, name.data()) != 0) {
        throw ResultError(ELEMENT_NOT_FOUND);
    }
    name.resize(length - 1);
    return name;
}

}  // namespace

ToastNotification::ToastNotification(XmlDocument content) : m_content(std::move(content)) {}

ScheduledToastNotification::ScheduledToastNotification(XmlDocument content, FILETIME delivery)
    : m_content(std::move(content)), m_delivery(delivery) {}

ToastNotifier::ToastNotifier(std::u16string model_id) : m_model_id(std::move(model_id)) {}

void ToastNotifier::Show(const ToastNotification& toast) const {
    check_result(tvutil2::show_toast(m_model_id, toast.Content()));
}

void ToastNotifier::AddToSchedule(ScheduledToastNotification& toast) const {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    if (CompareFileTime(&toast.m_delivery, &now) <= 0 ||
        !toast.m_content.SelectSingleNode(u"/toast")) {
        throw ResultError(E_INVALIDARG);
    }
    tvutil2::ScheduledToast entry{{}, toast.m_content.GetXml(), toast.m_delivery};
    if (!tvutil2::add_scheduled(m_model_id, entry)) {
        throw ResultError(HRESULT_FROM_WIN32(GetLastError()));
    }
    toast.m_key = entry.key;
    tvutil2::deliver_scheduled(m_model_id);
}

std::vector<ScheduledToastNotification> ToastNotifier::GetScheduledToastNotifications() const {
    std::vector<ScheduledToastNotification> toasts;
    for (const auto& entry : tvutil2::scheduled_toasts(m_model_id)) {
        const XmlDocument document;
        try {
            document.LoadXml(entry.xml);
        } catch (const ResultError&) {
            continue;  // nothing that AddToSchedule wrote
        }
        toasts.emplace_back(document, entry.time).m_key = entry.key;
    }
    return toasts;
}

void ToastNotifier::RemoveFromSchedule(const ScheduledToastNotification& toast) const {
    if (!toast.m_key.empty()) tvutil2::take_scheduled(m_model_id, toast.m_key);
}

void ToastNotificationHistory::Clear() const {
    Clear(package_id());
}

void ToastNotificationHistory::Clear(const std::u16string& model_id) const {
    if (model_id.empty()) throw ResultError(ELEMENT_NOT_FOUND);
    check_result(tvutil2::clear_toasts(model_id));
}

ToastNotifier ToastNotificationManager::CreateToastNotifier() {
    return ToastNotifier(package_id());
}

ToastNotifier ToastNotificationManager::CreateToastNotifier(const std::u16string& model_id) {
    if (model_id.empty()) throw ResultError(ELEMENT_NOT_FOUND);
    return ToastNotifier(model_id);
}

}  // namespace Windows::UI::Notifications

namespace tvutil2 {

void withdraw_toasts(const std::u16string& model_id) {
    withdraw_program(toast_registration(model_id));
    forget_toasts_of(model_id);
}

std::vector<ToastProgram> toast_programs() {
    std::vector<ToastProgram> programs;
    for (const auto& model_id : ids_with_toasts()) {
        const auto registration = toast_registration(model_id);
        programs.push_back({model_id, registration.display_name, registration.class_text,
                            count_shown(model_id), scheduled_toasts(model_id).size()});
    }
    return programs;
}

}  // namespace tvutil2
