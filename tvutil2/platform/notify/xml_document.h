// XML documents: read, looked into by path expressions (XPath 1.0), and changed.
//
// Built on libxml2, in the module of notifications, which is loaded with the first document
// (without it LoadXml throws ERROR_MOD_NOT_FOUND as an HRESULT). Documents and nodes are
// references: copies stand for the same one. A node stays valid when what it was in is changed or
// the document loads another text. One document, with its nodes, is for one thread at a time.
//
// Failures are thrown as tvutil2::ResultError: E_POINTER from a node or document that is none,
// E_INVALIDARG for what is no path expression or no name, E_OUTOFMEMORY. In texts that are set,
// what XML 1.0 has no place for (controls, halves of surrogate pairs) becomes U+FFFD.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/notify/notify_errors.h"
#include "tvutil2/platform/notify/xml_tree.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Windows::Data::Xml::Dom {

class TVUTIL_API IXmlNode {
  public:
    /// No node.
    IXmlNode() = default;
    IXmlNode(std::shared_ptr<tvutil2::XmlTree> tree, tvutil2::XmlPlace place);
    [[nodiscard]] explicit operator bool() const { return m_place != nullptr; }

    [[nodiscard]] std::u16string NodeName() const;
    /// All text within.
    [[nodiscard]] std::u16string InnerText() const;
    /// Puts text in the place of all that an element holds. E_NOTIMPL for other nodes.
    void InnerText(std::u16string_view text) const;
    /// The first node, in the order of the document, that the expression stands for from here; no
    /// node if there is none.
    [[nodiscard]] IXmlNode SelectSingleNode(std::u16string_view path) const;
    [[nodiscard]] std::vector<IXmlNode> SelectNodes(std::u16string_view path) const;

  protected:
    [[nodiscard]] tvutil2::XmlTree& tree() const;

    std::shared_ptr<tvutil2::XmlTree> m_tree;
    tvutil2::XmlPlace m_place = nullptr;
};

class TVUTIL_API XmlElement : public IXmlNode {
  public:
    /// The element that a node is. E_NOINTERFACE for another kind of node.
    explicit XmlElement(const IXmlNode& node);
    /// Empty where there is none.
    [[nodiscard]] std::u16string GetAttribute(std::u16string_view name) const;
    void SetAttribute(std::u16string_view name, std::u16string_view value) const;
};

class TVUTIL_API XmlDocument {
  public:
    /// An empty document.
    XmlDocument();

    /// Reads a text, which takes the place of all that was there. WEB_E_INVALID_XML for one that
    /// isn't well-formed or has a document type, and for elements deeper than 256; the document is
    /// what it was then. Nothing outside the text is ever read.
    void LoadXml(std::u16string_view text) const;
    /// The whole document as text; empty for an empty document.
    [[nodiscard]] std::u16string GetXml() const;
    /// E_POINTER of an empty document.
    [[nodiscard]] XmlElement DocumentElement() const;
    /// As from a node. Nothing is found in an empty document.
    [[nodiscard]] IXmlNode SelectSingleNode(std::u16string_view path) const;
    [[nodiscard]] std::vector<IXmlNode> SelectNodes(std::u16string_view path) const;

  private:
    // What copies share.
    std::shared_ptr<std::shared_ptr<tvutil2::XmlTree>> m_tree;
};

}  // namespace Windows::Data::Xml::Dom
