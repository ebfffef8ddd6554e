// What the registry holds of toasts, in the user's hive.
//
//     SOFTWARE\Classes\AppUserModelId\ID      how a program presents itself: "DisplayName",
//                                             "IconUri", "CustomActivator" (a class id)
//     SOFTWARE\Classes\CLSID\{..}\LocalServer32   the command line that starts that class
//     SOFTWARE\Microsoft\Windows\CurrentVersion\Notifications\Toasts\ID
//         "Id", and "Launch": arguments of the latest toast that was shown
//         Shown      a value for each toast that the desktop still has, named by its number
//         Scheduled  a key for each toast that is to come, named so that the next one is the first
// ID is the user model id, in the last key with "%5C" for a backslash and "%25" for a percent sign.
//
// All functions are safe from any thread and any process, and pass over what can't be read.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/notify/desktop.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tvutil2 {

struct ToastRegistration {
    std::u16string display_name;
    std::u16string icon;
    std::u16string class_text;  ///< "{..}"; empty for a program that nobody can start
    std::u16string command;
};

/// All empty for an id that isn't registered.
[[nodiscard]] ToastRegistration toast_registration(const std::u16string& model_id);

struct ShownRecord {
    std::u16string model_id;
    std::u16string launch;
    std::string sender;  ///< its name on the bus
};

/// Notes a toast that the desktop has now. Toasts of servers that are gone are forgotten, and all
/// but the latest hundred.
void note_shown(const ShownToast& toast, const ShownRecord& record);
[[nodiscard]] std::optional<ShownRecord> find_shown(const ShownToast& toast);
void forget_shown(const ShownToast& toast);
/// All toasts of an id, which are forgotten.
[[nodiscard]] std::vector<ShownToast> take_shown(const std::u16string& model_id);
[[nodiscard]] std::size_t count_shown(const std::u16string& model_id);

/// The id that is registered with a class, of those that have shown toasts, and its "Launch".
[[nodiscard]] std::optional<ShownRecord> latest_of_class(const std::u16string& class_text);

struct ScheduledToast {
    std::u16string key;  ///< names it among those of its id
    std::u16string xml;
    FILETIME time{};
};

/// Notes a toast to come, and names it. False with the last error.
bool add_scheduled(const std::u16string& model_id, ScheduledToast& toast);
/// In the order of their times.
[[nodiscard]] std::vector<ScheduledToast> scheduled_toasts(const std::u16string& model_id);
/// False when it isn't there (any more): of several callers one alone has taken it.
bool take_scheduled(const std::u16string& model_id, const std::u16string& key);

/// The ids that have, or had, toasts.
[[nodiscard]] std::vector<std::u16string> ids_with_toasts();
/// Forgets all about an id's toasts.
void forget_toasts_of(const std::u16string& model_id);

}  // namespace tvutil2
