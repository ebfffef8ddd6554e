// The process's link to the desktop's notifications: what it has shown, what was answered, what is
// to be shown later.
//
// One thread of the layer, started at the first need, lives as long as the process: what the
// desktop tells, class objects that are served, and scheduled toasts are its work. A child after a
// fork has neither the thread nor the link of its parent: there HRESULTs are ERROR_NOT_SUPPORTED's.
#pragma once

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/notify/xml_document.h"

#include <string>

namespace tvutil2 {

/// Shows a toast now. E_INVALIDARG for a document that is no toast, the desktop's errors
/// (desktop.h), ERROR_MOD_NOT_FOUND without the module.
HRESULT show_toast(const std::u16string& model_id,
                   const Windows::Data::Xml::Dom::XmlDocument& document);

/// Takes back what the desktop still shows of an id; what can't be reached shows nothing.
HRESULT clear_toasts(const std::u16string& model_id);

/// Serves a class on the bus, and delivers the scheduled toasts of its programs, from soon on.
void serve_class(const CLSID& id);

/// Delivers an id's scheduled toasts, as long as the process lives.
void deliver_scheduled(const std::u16string& model_id);

}  // namespace tvutil2
