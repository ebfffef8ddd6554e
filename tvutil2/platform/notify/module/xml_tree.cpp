// XML documents on libxml2.
#include "tvutil2/platform/notify/xml_tree.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace tvutil2 {
namespace {

const xmlChar* xml(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string taken(xmlChar* text) {
    if (text == nullptr) return {};
    std::string copy = reinterpret_cast<const char*>(text);
    xmlFree(text);
    return copy;
}

xmlNode* node_of(XmlPlace place) {
    return reinterpret_cast<xmlNode*>(place);
}
XmlPlace place_of(xmlNode* node) {
    return reinterpret_cast<XmlPlace>(node);
}

struct ContextEnd {
    void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};
struct XPathEnd {
    void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};
struct ParserEnd {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

void say_nothing(void* /*context*/, xmlErrorPtr /*error*/) {}
void print_nothing(void* /*context*/, const char* /*format*/, ...) {}

// Some mistakes in expressions are printed, past the context's own way for errors. Holds for the
// calling thread.
class NothingPrinted {
  public:
    NothingPrinted() { xmlSetGenericErrorFunc(nullptr, print_nothing); }
    ~NothingPrinted() { xmlSetGenericErrorFunc(m_context, m_function); }
    NothingPrinted(const NothingPrinted&) = delete;
    NothingPrinted& operator=(const NothingPrinted&) = delete;

  private:
    xmlGenericErrorFunc m_function = xmlGenericError;
    void* m_context = xmlGenericErrorContext;
};

class Tree final : public XmlTree {
  public:
    explicit Tree(xmlDoc* document) : m_document(document) {}
    ~Tree() override {
        for (auto* const node : m_removed) xmlFreeNode(node);
        xmlFreeDoc(m_document);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] XmlPlace root() const override {
        return place_of(xmlDocGetRootElement(m_document));
    }

    bool select(XmlPlace from, const std::string& path, std::vector<XmlPlace>& found) override {
        const std::unique_ptr<xmlXPathContext, ContextEnd> context(xmlXPathNewContext(m_document));
        if (!context) throw std::bad_alloc();
        context->error = say_nothing;
        context->node = from != nullptr ? node_of(from) : reinterpret_cast<xmlNode*>(m_document);
        const NothingPrinted quiet;
        const std::unique_ptr<xmlXPathObject, XPathEnd> result(
            xmlXPathEvalExpression(xml(path), context.get()));
        if (!result || result->type != XPATH_NODESET) return false;
        auto* const nodes = result->nodesetval;
        if (nodes == nullptr) return true;
        xmlXPathNodeSetSort(nodes);
        for (int i = 0; i < nodes->nodeNr; ++i) {
            // Those are made for the result, and gone with it.
            if (nodes->nodeTab[i]->type == XML_NAMESPACE_DECL) continue;
            found.push_back(place_of(nodes->nodeTab[i]));
        }
        return true;
    }

    [[nodiscard]] bool is_element(XmlPlace place) const override {
        return node_of(place)->type == XML_ELEMENT_NODE;
    }
    [[nodiscard]] std::string name(XmlPlace place) const override {
        const auto* const text = node_of(place)->name;
        return text != nullptr ? reinterpret_cast<const char*>(text) : "";
    }
    [[nodiscard]] std::string text(XmlPlace place) const override {
        return taken(xmlNodeGetContent(node_of(place)));
    }

    // What is taken out is kept: somebody may hold a place in it.
    void set_text(XmlPlace element, const std::string& text) override {
        auto* const node = node_of(element);
        while (auto* const child = node->children) {
            m_removed.push_back(child);
            xmlUnlinkNode(child);
        }
        if (text.empty()) return;
        auto* const made = xmlNewDocText(m_document, xml(text));
        if (made == nullptr || xmlAddChild(node, made) == nullptr) throw std::bad_alloc();
    }

    [[nodiscard]] std::string attribute(XmlPlace element, const std::string& name) const override {
        return taken(xmlGetNoNsProp(node_of(element), xml(name)));
    }
    bool set_attribute(XmlPlace element, const std::string& name,
                       const std::string& value) override {
        if (xmlValidateNCName(xml(name), 0) != 0) return false;
        auto* const node = node_of(element);
        if (auto* const old = xmlHasProp(node, xml(name)); old != nullptr) {
            // The attribute stays what it is, its text goes the way of an element's.
            while (auto* const child = old->children) {
                m_removed.push_back(child);
                xmlUnlinkNode(child);
            }
            auto* const made = xmlNewDocText(m_document, xml(value));
            if (made == nullptr) throw std::bad_alloc();
            made->parent = reinterpret_cast<xmlNode*>(old);
            old->children = made;
            old->last = made;
            return true;
        }
        if (xmlNewProp(node, xml(name), xml(value)) == nullptr) throw std::bad_alloc();
        return true;
    }

    [[nodiscard]] std::string whole() const override {
        xmlChar* bytes = nullptr;
        int size = 0;
        xmlDocDumpMemoryEnc(m_document, &bytes, &size, "UTF-8");
        return taken(bytes);
    }

  private:
    xmlDoc* m_document;
    std::vector<xmlNode*> m_removed;
};

// What a document type declares could grow without end, or lie elsewhere.
void refuse_type(void* parser, const xmlChar* /*name*/, const xmlChar* /*external*/,
                 const xmlChar* /*system*/) {
    auto* const context = static_cast<xmlParserCtxt*>(parser);
    context->wellFormed = 0;
    context->disableSAX = 1;
    xmlStopParser(context);
}

xmlDoc* parse(const std::string& text) {
    const std::unique_ptr<xmlParserCtxt, ParserEnd> parser(xmlNewParserCtxt());
    if (!parser) return nullptr;
    parser->sax->internalSubset = refuse_type;
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                             XML_PARSE_IGNORE_ENC | XML_PARSE_NOCDATA;
    auto* const document = xmlCtxtReadMemory(
        parser.get(), text.data(), static_cast<int>(text.size()), nullptr, "UTF-8", kOptions);
    if (document == nullptr || parser->wellFormed != 0) return document;
    xmlFreeDoc(document);
    return nullptr;
}

// When the process ends the library gives its tables up, without a look at threads that still read
// documents; but not where memory is given back by another function than "free". That is looked for
// instead of the tables' use: a lock that the end takes would keep it waiting for such a thread.
void free_all_the_same(void* memory) {
    std::free(memory);
}

bool prepare_library() {
    xmlInitParser();
    // A program that has functions of its own there keeps them.
    if (xmlFree == std::free) xmlMemSetup(free_all_the_same, std::malloc, std::realloc, strdup);
    return true;
}

}  // namespace

extern "C" TVUTIL_API XmlTree* tvutil2_read_xml(const std::string& text);

XmlTree* tvutil2_read_xml(const std::string& text) {
    static const bool is_ready = prepare_library();
    if (!is_ready || text.size() > INT_MAX) return nullptr;
    auto* const document = parse(text);
    return document != nullptr ? std::make_unique<Tree>(document).release() : nullptr;
}

}  // namespace tvutil2
