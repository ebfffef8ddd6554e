#include "tvutil2/platform/notify/xml_document.h"

#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/own_module.h"

namespace Windows::Data::Xml::Dom {
namespace {

using tvutil2::ResultError;
using tvutil2::XmlPlace;
using tvutil2::XmlTree;

tvutil2::ReadXml* reader() {
    static auto* const function = reinterpret_cast<tvutil2::ReadXml*>(
        tvutil2::own_module_function("notify", tvutil2::kReadXml));
    if (function == nullptr) throw ResultError(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    return function;
}

bool has_place(char16_t c) {
    return c >= u' ' ? c != 0xFFFE && c != 0xFFFF : c == u'\t' || c == u'\n' || c == u'\r';
}

std::string xml_text(std::u16string_view text) {
    std::u16string clean(text);
    for (auto& c : clean) {
        if (!has_place(c)) c = u'\uFFFD';
    }
    return tvutil2::to_utf8_lossy(clean);
}

std::u16string wide(const std::string& text) {
    return tvutil2::to_utf16_lossy(text);
}

std::vector<IXmlNode> select(const std::shared_ptr<XmlTree>& tree, XmlPlace from,
                             std::u16string_view path) {
    std::vector<XmlPlace> found;
    if (!tree->select(from, xml_text(path), found)) throw ResultError(E_INVALIDARG);
    std::vector<IXmlNode> nodes;
    nodes.reserve(found.size());
    for (const auto place : found) nodes.emplace_back(tree, place);
    return nodes;
}

IXmlNode first_of(const std::vector<IXmlNode>& nodes) {
    return nodes.empty() ? IXmlNode() : nodes.front();
}

}  // namespace

IXmlNode::IXmlNode(std::shared_ptr<XmlTree> tree, XmlPlace place)
    : m_tree(std::move(tree)), m_place(place) {}

XmlTree& IXmlNode::tree() const {
    if (m_place == nullptr) throw ResultError(E_POINTER);
    return *m_tree;
}

std::u16string IXmlNode::NodeName() const {
    return wide(tree().name(m_place));
}

std::u16string IXmlNode::InnerText() const {
    return wide(tree().text(m_place));
}

void IXmlNode::InnerText(std::u16string_view text) const {
    if (!tree().is_element(m_place)) throw ResultError(E_NOTIMPL);
    tree().set_text(m_place, xml_text(text));
}

std::vector<IXmlNode> IXmlNode::SelectNodes(std::u16string_view path) const {
    static_cast<void>(tree());
    return select(m_tree, m_place, path);
}

IXmlNode IXmlNode::SelectSingleNode(std::u16string_view path) const {
    return first_of(SelectNodes(path));
}

XmlElement::XmlElement(const IXmlNode& node) : IXmlNode(node) {
    if (!tree().is_element(m_place)) throw ResultError(E_NOINTERFACE);
}

std::u16string XmlElement::GetAttribute(std::u16string_view name) const {
    return wide(tree().attribute(m_place, xml_text(name)));
}

void XmlElement::SetAttribute(std::u16string_view name, std::u16string_view value) const {
    if (!tree().set_attribute(m_place, xml_text(name), xml_text(value))) {
        throw ResultError(E_INVALIDARG);
    }
}

XmlDocument::XmlDocument() : m_tree(std::make_shared<std::shared_ptr<XmlTree>>()) {}

void XmlDocument::LoadXml(std::u16string_view text) const {
    const auto utf8 = tvutil2::to_utf8(text);
    std::shared_ptr<XmlTree> read(utf8 ? reader()(*utf8) : nullptr);
    if (!read) throw ResultError(WEB_E_INVALID_XML);
    *m_tree = std::move(read);
}

std::u16string XmlDocument::GetXml() const {
    return *m_tree ? wide((*m_tree)->whole()) : std::u16string();
}

XmlElement XmlDocument::DocumentElement() const {
    return XmlElement(*m_tree ? IXmlNode(*m_tree, (*m_tree)->root()) : IXmlNode());
}

std::vector<IXmlNode> XmlDocument::SelectNodes(std::u16string_view path) const {
    return *m_tree ? select(*m_tree, nullptr, path) : std::vector<IXmlNode>();
}

IXmlNode XmlDocument::SelectSingleNode(std::u16string_view path) const {
    return first_of(SelectNodes(path));
}

}  // namespace Windows::Data::Xml::Dom
