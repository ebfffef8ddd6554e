// What tells the desktop and the bus how to start a program that a notification belongs to: a
// desktop entry and a bus service of one name, below the user's data folder (formats of
// freedesktop.org: desktop entries with D-Bus activation, and D-Bus service files).
#pragma once

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/notify/toast_store.h"

#include <string>

namespace tvutil2 {

/// The name that a class answers to on the bus; empty for a text that is no class id.
[[nodiscard]] std::string name_of_class(const CLSID& id);
[[nodiscard]] std::string name_of_class(const std::u16string& class_text);
/// The way back: "{..}" in small letters; empty for a name of another kind.
[[nodiscard]] std::u16string class_of_name(const std::string& name);

enum class Published { no, as_before, anew };

/// Writes the two files where they aren't as they should be. `no` when there is nothing to start,
/// or they can't be written.
Published publish_program(const ToastRegistration& registration, const std::string& program_name);
void withdraw_program(const ToastRegistration& registration);

}  // namespace tvutil2
