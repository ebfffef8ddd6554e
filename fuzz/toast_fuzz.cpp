// Toast documents of any content: what is read reads the same when it is written and read again,
// and nothing reaches a notification server but short, valid UTF-8 without controls.
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/notify/toast_view.h"

#include "fuzz/fuzz_input.h"

using Windows::Data::Xml::Dom::XmlDocument;

namespace {

bool load(const XmlDocument& document, std::u16string_view text) {
    try {
        document.LoadXml(text);
        return true;
    } catch (const tvutil2::ResultError& error) {
        fuzz::require(error.code() == WEB_E_INVALID_XML);
        return false;
    }
}

void require_harmless(const std::string& text) {
    const auto wide = tvutil2::to_utf16(text);
    fuzz::require(wide && wide->size() <= 4097);
    for (const auto c : *wide) {
        fuzz::require((c >= u' ' && (c < 0x7F || c >= 0xA0)) || c == u'\n' || c == u'\t');
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto utf8 = tvutil2::to_utf16(bytes);
    const auto text = utf8 ? *utf8 : fuzz::wide_text(data, size);
    const XmlDocument document;
    if (!load(document, text)) return 0;
    const XmlDocument again;
    fuzz::require(load(again, document.GetXml()));
    fuzz::require(again.DocumentElement().InnerText() == document.DocumentElement().InnerText());
    tvutil2::ToastContent content;
    if (!tvutil2::read_toast(document, {}, u"id", content)) return 0;
    require_harmless(content.view.title);
    require_harmless(content.view.body);
    for (const auto& [key, label] : content.view.actions) {
        require_harmless(label);
        fuzz::require(tvutil2::to_utf16(key).has_value());
    }
    document.DocumentElement().InnerText(text);
    fuzz::require(document.DocumentElement().InnerText().size() == text.size());
    return 0;
}
