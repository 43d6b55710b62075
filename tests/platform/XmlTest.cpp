#include "platform/Xml.h"

#include "platform/ComValues.h"
#include "tests/support/TestFolder.h"
#include "tests/webconf/ConfigDocument.h"

#include <gtest/gtest.h>

#include <comdef.h>

#include <string>
#include <thread>

namespace
{
class Xml : public ::testing::Test
{
protected:
    Xml()
    {
        EXPECT_EQ(S_OK, aut::createXmlDocument(m_document, CLSCTX_ALL));
        aut::setXmlSynchronous(m_document.Get());
    }
    bool load(const std::string& text) { return aut::loadXmlText(m_document.Get(), text.data(), text.size()); }
    String textAt(const char* path) { return aut::xmlText(aut::selectXmlNode(m_document.Get(), path).Get()); }

    auttest::ComApartment m_apartment;
    XmlDocumentPtr m_document;
};

TEST_F(Xml, ADocumentNeedsACOMApartment)
{
    HRESULT status = S_OK;
    std::thread(
        [&status]
        {
            XmlDocumentPtr document;
            status = aut::createXmlDocument(document, CLSCTX_ALL);
            EXPECT_EQ(nullptr, document.Get());
        })
        .join();
    EXPECT_EQ(CO_E_NOTINITIALIZED, status);
}

TEST_F(Xml, SetsADocumentSynchronous)
{
    m_document->put_async(VARIANT_TRUE);
    aut::setXmlSynchronous(m_document.Get());
    VARIANT_BOOL async = VARIANT_TRUE;
    ASSERT_EQ(S_OK, m_document->get_async(&async));
    EXPECT_EQ(VARIANT_FALSE, async);
}

TEST_F(Xml, LoadsTextAndSelectsInIt)
{
    ASSERT_TRUE(load("<a><b>1</b><b>2</b></a>"));
    EXPECT_STREQ("1", textAt("a/b"));
    EXPECT_STREQ("a", aut::xmlName(aut::xmlRoot(m_document.Get()).Get()).c_str());
    EXPECT_STREQ("<b>1</b>", aut::xmlMarkup(aut::selectXmlNode(m_document.Get(), "a/b").Get()));
}

TEST_F(Xml, LoadsATerminatedText)
{
    EXPECT_TRUE(aut::loadXmlText(m_document.Get(), "<a>x</a>"));
    EXPECT_STREQ("x", textAt("a"));
}

TEST_F(Xml, BelievesADeclaredEncodingThroughoutALongText)
{
    // long enough that a parser which switched its decoding behind the declaration would garble the end
    std::string text = "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a><b>";
    text += std::string(100'000, 'x') + "</b><c>\xE9</c></a>";
    ASSERT_TRUE(load(text));
    EXPECT_EQ(100'000, textAt("a/b").GetLength());
    EXPECT_STREQ("\xE9", textAt("a/c"));
}

TEST_F(Xml, GivesTextsInTheAnsiCodePage)
{
    ASSERT_EQ(1252u, ::GetACP());
    ASSERT_TRUE(load("<a>\xC3\xA9\xE2\x82\xAC</a>"));
    EXPECT_STREQ("\xE9\x80", textAt("a"));
}

TEST_F(Xml, ShowsACharacterThatTheCodePageLacksAsAQuestionMark)
{
    ASSERT_TRUE(load("<a>\xD0\x96</a>"));
    EXPECT_STREQ("?", textAt("a"));
}

TEST_F(Xml, ShowsACharacterThatOnlyLooksLikeABackslashAsAQuestionMark)
{
    ASSERT_TRUE(load("<a>..\xEF\xBC\xBC..</a>")); // U+FF3C
    EXPECT_STREQ("..?..", textAt("a"));
}

TEST_F(Xml, KnowsNamesOutsideAscii)
{
    ASSERT_EQ(1252u, ::GetACP());
    ASSERT_TRUE(load("<\xC3\xA9/>"));
    EXPECT_STREQ("\xE9", aut::xmlName(aut::xmlRoot(m_document.Get()).Get()).c_str());
}

TEST_F(Xml, RefusesWhatIsNotWellFormed)
{
    EXPECT_FALSE(load("<a>"));
    EXPECT_FALSE(load(""));
    EXPECT_FALSE(load("no markup"));
    EXPECT_FALSE(load(std::string("<a/>\0<b/>", 9)));
    EXPECT_FALSE(aut::loadXmlText(m_document.Get(), nullptr));
    EXPECT_FALSE(aut::loadXmlText(nullptr, "<a/>"));
}

TEST_F(Xml, TellsWhatTheParserSaid)
{
    ASSERT_TRUE(load("<a/>"));
    EXPECT_EQ(0, aut::xmlParseError(m_document.Get()).code);
    ASSERT_FALSE(load("<a>"));
    const aut::XmlParseError error = aut::xmlParseError(m_document.Get());
    EXPECT_NE(0, error.code); // code, line and column are the parser's own
    EXPECT_FALSE(error.reason.IsEmpty());
    EXPECT_EQ(-1, error.reason.Find('\n'));
    EXPECT_EQ(0, aut::xmlParseError(nullptr).code);
}

TEST_F(Xml, WhatCannotBeDecodedIsAnErrorOfTheDocumentToo)
{
    for (const std::string& text : {std::string(), std::string("<a/>\0", 5), std::string(100, '\0'),
                                    std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?><a>\xE9</a>")})
    {
        ASSERT_TRUE(load("<b/>"));
        ASSERT_FALSE(load(text));
        EXPECT_NE(0, aut::xmlParseError(m_document.Get()).code);
        EXPECT_EQ(nullptr, aut::xmlRoot(m_document.Get()).Get()) << "the former document is gone";
    }
}

TEST_F(Xml, LoadsAFile)
{
    const auttest::TestFolder folder;
    EXPECT_TRUE(aut::loadXmlFile(m_document.Get(), folder.writeFile("good.xml", "<a>x</a>").c_str()));
    EXPECT_STREQ("x", textAt("a"));
    EXPECT_FALSE(aut::loadXmlFile(m_document.Get(), folder.writeFile("bad.xml", "<a>").c_str()));
    EXPECT_FALSE(aut::loadXmlFile(m_document.Get(), (folder / "missing.xml").c_str()));
    EXPECT_FALSE(aut::loadXmlFile(m_document.Get(), ""));
    EXPECT_FALSE(aut::loadXmlFile(m_document.Get(), nullptr));
    EXPECT_FALSE(aut::loadXmlFile(nullptr, "x"));
}

TEST_F(Xml, FindsNothingWithoutAnError)
{
    ASSERT_TRUE(load("<a/>"));
    EXPECT_EQ(nullptr, aut::selectXmlNode(m_document.Get(), "a/b").Get());
    EXPECT_EQ(nullptr, aut::selectXmlNode(nullptr, "a").Get());
    EXPECT_EQ(nullptr, aut::xmlRoot(nullptr).Get());
}

TEST_F(Xml, RaisesForAnExpressionThatIsNoPath)
{
    ASSERT_TRUE(load("<a/>"));
    // not one with a syntax error: Wine itself may crash on those
    EXPECT_THROW(aut::selectXmlNode(m_document.Get(), "b()"), _com_error);
    EXPECT_THROW(aut::selectXmlNode(m_document.Get(), ""), _com_error);
}

TEST_F(Xml, AnEmptyDocumentHasNoRoot) { EXPECT_EQ(nullptr, aut::xmlRoot(m_document.Get()).Get()); }

TEST_F(Xml, NullNodesHaveEmptyTexts)
{
    EXPECT_STREQ("", aut::xmlText(nullptr));
    EXPECT_STREQ("", aut::xmlTypedText(nullptr));
    EXPECT_STREQ("", aut::xmlMarkup(nullptr));
    EXPECT_EQ("", aut::xmlName(nullptr));
}

TEST_F(Xml, GivesATypedValueAsText)
{
    ASSERT_TRUE(load("<a xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"><i dt:dt=\"i4\">007</i><s>007</s><e/>"
                     "<bad dt:dt=\"i4\">seven</bad></a>"));
    EXPECT_STREQ("7", aut::xmlTypedText(aut::selectXmlNode(m_document.Get(), "a/i").Get()));
    EXPECT_STREQ("007", aut::xmlTypedText(aut::selectXmlNode(m_document.Get(), "a/s").Get()));
    EXPECT_STREQ("", aut::xmlTypedText(aut::selectXmlNode(m_document.Get(), "a/e").Get()));
    EXPECT_STREQ("", aut::xmlTypedText(m_document.Get())); // a document has no value at all
    EXPECT_THROW(aut::xmlTypedText(aut::selectXmlNode(m_document.Get(), "a/bad").Get()), _com_error);
}

TEST_F(Xml, WalksChildrenInOrder)
{
    ASSERT_TRUE(load("<a><b/><!--c--><d/>text</a>"));
    aut::XmlChildren children(aut::xmlRoot(m_document.Get()).Get());
    std::string names;
    while (const XmlNodePtr child = children.next())
        names += aut::xmlName(child.Get()) + " ";
    EXPECT_EQ("b #comment d #text ", names);
    EXPECT_EQ(nullptr, children.next().Get());
}

TEST_F(Xml, NothingHasNoChildren) { EXPECT_EQ(nullptr, aut::XmlChildren(nullptr).next().Get()); }

TEST_F(Xml, SurvivesDeepNesting)
{
    constexpr int kDepth = 100'000;
    std::string text;
    for (int i = 0; i < kDepth; ++i)
        text += "<a>";
    for (int i = 0; i < kDepth; ++i)
        text += "</a>";
    load(text); // whether a parser takes it is its own limit
    EXPECT_TRUE(load("<a>after</a>"));
    EXPECT_STREQ("after", textAt("a"));
}

TEST_F(Xml, SurvivesAHundredMegabytesOfText)
{
    std::string text = "<a>" + std::string(100'000'000, 'x') + "</a>";
    const bool loaded = load(text); // whether a parser takes so long a text is its own limit
    EXPECT_EQ(loaded ? 100'000'000 : 0, textAt("a").GetLength());
}

TEST(UniqueVariant, FreesWhatItHeldBeforeItIsFilledAgain)
{
    aut::UniqueVariant value(aut::UniqueBstr(::SysAllocString(L"12")));
    EXPECT_EQ(S_OK, value.changeType(VT_I4));
    EXPECT_EQ(12, value.get().lVal);
    EXPECT_EQ(VT_EMPTY, value.put()->vt);
}
} // namespace
