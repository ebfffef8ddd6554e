// An XML document, as the module of notifications keeps it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>
#include <vector>

namespace tvutil2 {

/// A node of a tree: an element, an attribute, a text ... It is there as long as its tree is.
using XmlPlace = struct XmlPlace__*;

/// For one thread at a time. Text is UTF-8 of characters that XML 1.0 has a place for.
class XmlTree {
  public:
    XmlTree() = default;
    virtual ~XmlTree() = default;
    XmlTree(const XmlTree&) = delete;
    XmlTree& operator=(const XmlTree&) = delete;

    /// The document's element.
    [[nodiscard]] virtual XmlPlace root() const = 0;
    /// The nodes that an XPath 1.0 expression stands for, seen from `from` (null: the document), in
    /// the order of the document. False for what is no such expression, or isn't one of nodes.
    virtual bool select(XmlPlace from, const std::string& path, std::vector<XmlPlace>& found) = 0;
    [[nodiscard]] virtual bool is_element(XmlPlace place) const = 0;
    [[nodiscard]] virtual std::string name(XmlPlace place) const = 0;
    /// All text within.
    [[nodiscard]] virtual std::string text(XmlPlace place) const = 0;
    /// Puts text in the place of all that an element holds.
    virtual void set_text(XmlPlace element, const std::string& text) = 0;
    /// Empty where there is none.
    [[nodiscard]] virtual std::string attribute(XmlPlace element,
                                                const std::string& name) const = 0;
    /// False for what is no name.
    virtual bool set_attribute(XmlPlace element, const std::string& name,
                               const std::string& value) = 0;
    /// The whole document as text.
    [[nodiscard]] virtual std::string whole() const = 0;
};

/// One of the module's functions: reads a document. Null for what isn't well-formed, for one with a
/// document type, and for lack of memory.
using ReadXml = XmlTree*(const std::string& text);
inline constexpr auto kReadXml = "tvutil2_read_xml";

}  // namespace tvutil2
