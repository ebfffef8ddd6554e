#include "tvutil2/platform/notify/xml_document.h"

#include "tvutil2/platform/base/result_error.h"
#include "tvutil2/platform/base/utf.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tvutil2::ResultError;
using Windows::Data::Xml::Dom::XmlDocument;
using Windows::Data::Xml::Dom::XmlElement;

std::string narrow(std::u16string_view text) {
    return tvutil2::to_utf8_lossy(text);
}

template <class Work>
HRESULT failure_of(Work work) {
    try {
        work();
    } catch (const ResultError& error) {
        return error.code();
    }
    return S_OK;
}

XmlDocument document_of(const std::u16string& text) {
    XmlDocument document;
    document.LoadXml(text);
    return document;
}

TEST(XmlDocument, RefusesWhatIsNoDocument) {
    const std::u16string deep = std::u16string(3, u' ') + [] {
        std::u16string text;
        for (int i = 0; i < 1000; ++i) text += u"<a>";
        return text;
    }();
    const std::u16string cases[] = {
        u"",
        u"text",
        u"<a>",
        u"<a></b>",
        u"<a/><b/>",
        u"<a b='1' b='2'/>",
        u"<a b='x<y'/>",
        u"<a>\u0001</a>",
        u"<a>&unknown;</a>",
        u"<a>&#0;</a>",
        u"<p:a/>x",
        u"<a>\xD800</a>",
        std::u16string(u"<a>\0</a>", 8),
        u"<!DOCTYPE a><a/>",
        u"<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>",
        u"<!DOCTYPE a [<!ENTITY x 'xxxxxxxxxx'><!ENTITY y '&x;&x;&x;&x;&x;&x;'>]><a b='&y;'/>",
        deep,
    };
    const auto document = document_of(u"<kept/>");
    for (const auto& text : cases) {
        EXPECT_EQ(failure_of([&] { document.LoadXml(text); }), WEB_E_INVALID_XML)
            << narrow(text.substr(0, 80));
    }
    EXPECT_EQ(document.DocumentElement().NodeName(), u"kept");
    // What it says of its encoding isn't that of a text.
    document.LoadXml(u"<?xml version='1.0' encoding='UTF-16'?><a>\u00FC<![CDATA[<&>]]></a>");
    EXPECT_EQ(document.DocumentElement().InnerText(), u"\u00FC<&>");
}

TEST(XmlDocument, FindsByPath) {
    const auto document = document_of(
        u"<toast launch='go'><b><text>one</text><text>two</text></b>"
        u"<c><text>three</text><!--n--></c></toast>");
    const struct {
        const char16_t* path;
        const char16_t* text;  // null: nothing is found
    } cases[] = {
        {u"//text[1]", u"one"},
        {u"//text[2]", u"two"},
        {u"//text[3]", nullptr},
        {u"(//text)[3]", u"three"},
        {u"//text[. = 'two']/following::text", u"three"},
        {u"/toast/@launch", u"go"},
        {u"//c/text/text()", u"three"},
        {u"//comment()", u"n"},
        {u"/", u"onetwothree"},
        {u"//c | //b", u"onetwo"},
        {u"//namespace::*", nullptr},
    };
    for (const auto& [path, text] : cases) {
        const auto node = document.SelectSingleNode(path);
        ASSERT_EQ(static_cast<bool>(node), text != nullptr) << narrow(path);
        if (text != nullptr) {
            EXPECT_EQ(node.InnerText(), text) << narrow(path);
        }
    }
    for (const auto* path : {u"", u"//", u"//x:text", u"1 + 1", u"f()", u"\xD800"}) {
        EXPECT_EQ(failure_of([&] { static_cast<void>(document.SelectSingleNode(path)); }),
                  E_INVALIDARG)
            << narrow(path);
    }
    const auto inner = document.SelectSingleNode(u"//c");
    EXPECT_EQ(inner.SelectSingleNode(u"text").InnerText(), u"three");
    EXPECT_EQ(inner.SelectNodes(u"/toast/b/text").size(), 2U);
    EXPECT_EQ(failure_of([&] { XmlElement(document.SelectSingleNode(u"//@launch")); }),
              E_NOINTERFACE);
    EXPECT_EQ(failure_of([] { static_cast<void>(XmlDocument().DocumentElement()); }), E_POINTER);
    EXPECT_EQ(failure_of([&] { document.SelectSingleNode(u"//none").InnerText(u""); }), E_POINTER);
    EXPECT_EQ(failure_of([&] { document.SelectSingleNode(u"//@launch").InnerText(u""); }),
              E_NOTIMPL);
}

TEST(XmlDocument, KeepsAnyTextThatIsSet) {
    const auto document = document_of(u"<a k='1'><b>old<c/></b></a>");
    const auto element = XmlElement(document.SelectSingleNode(u"//b"));
    const std::u16string hostile = u"</b>&lt;&x;\"'<![CDATA[\t\n \U0001F600";
    const auto old_child = document.SelectSingleNode(u"//c");
    element.InnerText(hostile);
    element.SetAttribute(u"k", u"first");
    const auto attribute = document.SelectSingleNode(u"//b/@k/child::node() | //b/@k");
    element.SetAttribute(u"k", hostile);
    EXPECT_EQ(element.InnerText(), hostile);
    EXPECT_EQ(element.GetAttribute(u"k"), hostile);
    EXPECT_EQ(attribute.InnerText(), hostile);
    EXPECT_EQ(old_child.NodeName(), u"c");
    const auto again = document_of(document.GetXml());
    EXPECT_EQ(again.SelectSingleNode(u"//b").InnerText(), hostile);
    EXPECT_EQ(XmlElement(again.SelectSingleNode(u"//b")).GetAttribute(u"k"), hostile);

    const std::u16string controls(u"a\0\x01\x7F\xDC00\uFFFE", 6);
    element.InnerText(controls);
    EXPECT_EQ(element.InnerText(), u"a\uFFFD\uFFFD\x7F\uFFFD\uFFFD");
    EXPECT_EQ(document_of(document.GetXml()).DocumentElement().InnerText(), element.InnerText());
    const std::u16string huge(100000, u'\u20AC');
    element.InnerText(huge);
    EXPECT_EQ(element.InnerText(), huge);
    for (const auto* name : {u"", u"1", u"a b", u"a:b", u"a="}) {
        EXPECT_EQ(failure_of([&] { element.SetAttribute(name, u"x"); }), E_INVALIDARG);
    }
    // A node outlives its document, and what replaced it.
    auto kept = XmlDocument();
    {
        const auto other = document_of(u"<a><b>x</b></a>");
        kept = other;
        const auto node = other.SelectSingleNode(u"//b");
        other.LoadXml(u"<z/>");
        EXPECT_EQ(node.InnerText(), u"x");
    }
    EXPECT_EQ(kept.DocumentElement().NodeName(), u"z");
}

}  // namespace
