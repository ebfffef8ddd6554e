#include "tvutil2/platform/notify/toast_view.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/utf.h"

#include <sys/stat.h>

#include <cstdio>

namespace tvutil2 {
namespace {

using Windows::Data::Xml::Dom::IXmlNode;
using Windows::Data::Xml::Dom::XmlDocument;
using Windows::Data::Xml::Dom::XmlElement;

constexpr std::size_t kLongestText = 4096;
constexpr std::size_t kLongestLabel = 200;

bool is_control(char16_t c) {
    return (c < u' ' && c != u'\n' && c != u'\t') || (c >= 0x7F && c < 0xA0);
}

// Nobody reads more of it, and servers that lay it all out stand still meanwhile.
std::string shown_text(std::u16string_view text, std::size_t limit) {
    const bool is_cut = text.size() > limit;
    if (is_cut) {
        const bool splits_pair = (text[limit] & 0xFC00U) == 0xDC00U;
        text = text.substr(0, splits_pair ? limit - 1 : limit);
    }
    std::u16string shown(text);
    for (auto& c : shown) {
        if (is_control(c)) c = u'\uFFFD';
    }
    if (is_cut) shown += u'\u2026';
    return to_utf8_lossy(shown);
}

void read_texts(const XmlDocument& document, ToastView& view) {
    std::u16string title;
    std::u16string body;
    bool is_first = true;
    for (const auto& node : document.SelectNodes(u"/toast/visual/binding//text")) {
        const auto text = node.InnerText();
        if (is_first) {
            title = text;
        } else if (!text.empty()) {
            if (!body.empty()) body += u'\n';
            body += text;
        }
        is_first = false;
        if (body.size() > kLongestText) break;
    }
    // A title is one line.
    for (auto& c : title) {
        if (c == u'\n' || c == u'\t') c = u' ';
    }
    view.title = title.empty() ? view.program : shown_text(title, kLongestText);
    view.body = shown_text(body, kLongestText);
}

void read_pictures(const XmlDocument& document, ToastView& view) {
    for (const auto& node : document.SelectNodes(u"/toast/visual/binding//image")) {
        const XmlElement image(node);
        const bool is_logo = image.GetAttribute(u"placement") == u"appLogoOverride";
        if (!view.picture.empty() && !is_logo) continue;
        const auto address = file_address(image.GetAttribute(u"src"));
        if (address.empty()) continue;
        view.picture = address;
        if (is_logo) return;
    }
}

void read_actions(const XmlDocument& document, ToastView& view) {
    view.actions.emplace_back(kDefaultAction, "");
    for (const auto& node : document.SelectNodes(u"/toast/actions/action")) {
        const XmlElement action(node);
        const auto label = action.GetAttribute(u"content");
        if (label.empty()) continue;
        const auto number = std::to_string(view.actions.size());
        view.actions.emplace_back(number + ":" + to_utf8_lossy(action.GetAttribute(u"arguments")),
                                  shown_text(label, kLongestLabel));
    }
}

}  // namespace

std::string file_address(const std::u16string& path) {
    if (path.empty()) return {};
    const auto host = host_path(path);
    struct stat info {};
    if (!host || stat(host->c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    std::string address = "file://";
    for (const char c : *host) {
        const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                              (c >= '0' && c <= '9') || c == '/' || c == '-' || c == '.' ||
                              c == '_' || c == '~';
        if (is_plain) {
            address += c;
        } else {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(c));
            address += escape;
        }
    }
    return address;
}

bool read_toast(const XmlDocument& document, const ToastRegistration& registration,
                const std::u16string& model_id, ToastContent& content) {
    const auto root = document.SelectSingleNode(u"/toast");
    if (!root) return false;
    auto& view = content.view;
    view.program = shown_text(
        registration.display_name.empty() ? model_id : registration.display_name, kLongestLabel);
    view.icon = file_address(registration.icon);
    content.launch = XmlElement(root).GetAttribute(u"launch");
    read_texts(document, view);
    read_pictures(document, view);
    read_actions(document, view);
    const auto audio = document.SelectSingleNode(u"/toast/audio");
    view.is_silent = audio && XmlElement(audio).GetAttribute(u"silent") == u"true";
    return true;
}

std::u16string arguments_of(std::string_view key, const std::u16string& launch) {
    if (key == kDefaultAction) return launch;
    const auto colon = key.find(':');
    return to_utf16_lossy(colon == key.npos ? key : key.substr(colon + 1));
}

}  // namespace tvutil2
