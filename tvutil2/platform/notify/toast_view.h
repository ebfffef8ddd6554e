// From a toast's document to what the desktop is to show.
#pragma once

#include "tvutil2/platform/notify/desktop.h"
#include "tvutil2/platform/notify/toast_store.h"
#include "tvutil2/platform/notify/xml_document.h"

#include <string>
#include <string_view>

namespace tvutil2 {

struct ToastContent {
    ToastView view;
    std::u16string launch;  ///< arguments of the toast itself
};

/// Texts: the first is the title, the others are lines of the body. 4,096 characters of each are
/// shown, and 200 of a button; controls become U+FFFD. Pictures: the one that is placed as the
/// logo, else the first that can be had; what isn't the path of a plain file is passed over, and so
/// is a button without a text. The key of a button carries its arguments. False when the document's
/// element is no "toast".
TVUTIL_API bool read_toast(const Windows::Data::Xml::Dom::XmlDocument& document,
                           const ToastRegistration& registration, const std::u16string& model_id,
                           ToastContent& content);

/// The arguments of a button by its key; `launch` for the toast's own.
[[nodiscard]] std::u16string arguments_of(std::string_view key, const std::u16string& launch);

/// "file://" address of a platform path; empty when no plain file is there.
[[nodiscard]] std::string file_address(const std::u16string& path);

}  // namespace tvutil2
