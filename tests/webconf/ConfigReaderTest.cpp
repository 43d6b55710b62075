#include "webconf/ConfigReader.h"

#include "platform/ComValues.h"
#include "platform/Xml.h"
#include "tests/webconf/ConfigDocument.h"

#include <gtest/gtest.h>

#include <comdef.h>

#include <climits>
#include <string>

namespace
{
class ConfigReader : public ::testing::Test
{
protected:
    /// Loads the text and stands on its root.
    void load(const std::string& text)
    {
        ASSERT_EQ(S_OK, aut::createXmlDocument(m_document, CLSCTX_ALL));
        ASSERT_TRUE(aut::loadXmlText(m_document.Get(), text.c_str()));
        m_root = aut::xmlRoot(m_document.Get());
    }
    std::string found(const char* name) { return static_cast<const char*>(aut::xmlText(find(name).Get())); }
    XmlNodePtr find(const char* name) { return aut::findConfigElement(m_root.Get(), name); }

    auttest::ComApartment m_apartment;
    XmlDocumentPtr m_document;
    XmlNodePtr m_root;
};

TEST_F(ConfigReader, TheNodeItselfMatchesFirst)
{
    load("<E>own<E>inner</E></E>");
    EXPECT_EQ("owninner", found("E"));
}

TEST_F(ConfigReader, AChildMatchesBeforeWhatLiesDeeperInAnEarlierSibling)
{
    load("<r><a><E>deep</E></a><E>child</E><E>second</E></r>");
    EXPECT_EQ("child", found("E"));
}

TEST_F(ConfigReader, WithoutAChildTheFirstMatchInDepthFirstOrderWins)
{
    load("<r><a/><b><c><E>1</E></c></b><d><E>2</E></d></r>");
    EXPECT_EQ("1", found("E"));
}

TEST_F(ConfigReader, AChildOfAnEarlierNodeWinsOverItsOwnGrandchildren)
{
    load("<r><b><c><E>deep</E></c><E>near</E></b></r>");
    EXPECT_EQ("near", found("E"));
}

TEST_F(ConfigReader, NothingMatchesOutsideTheNode)
{
    load("<r><a><b/></a><E>outside</E></r>");
    m_root = aut::selectXmlNode(m_document.Get(), "r/a");
    EXPECT_EQ(nullptr, find("E").Get());
}

TEST_F(ConfigReader, NamesCountWithRegardToCase)
{
    load("<r><e>x</e></r>");
    EXPECT_EQ(nullptr, find("E").Get());
}

TEST_F(ConfigReader, ElementsOfADefaultNamespaceAreFound)
{
    load("<r xmlns=\"urn:x\"><E>1</E></r>");
    EXPECT_EQ("1", found("E"));
}

TEST_F(ConfigReader, ANullNodeHasNothing)
{
    int value = 7;
    bool flag = true;
    char text[aut::kConfigTextSize] = "x";
    EXPECT_FALSE(aut::readConfigInt(nullptr, "E", value));
    EXPECT_FALSE(aut::readConfigFlag(nullptr, "E", flag));
    EXPECT_FALSE(aut::readConfigText(nullptr, "E", text));
    EXPECT_EQ(0, value);
    EXPECT_FALSE(flag);
    EXPECT_STREQ("", text);
    EXPECT_FALSE(aut::ConfigSection(nullptr, "S").exists());
    EXPECT_EQ(nullptr, aut::configurationNode(nullptr).Get());
}

TEST_F(ConfigReader, ReadsNumbersAsAtoiDoes)
{
    struct Number
    {
        const char* text;
        int value;
    };
    const Number numbers[] = {{"12", 12},
                              {" -3x", -3},
                              {"x", 0},
                              {"", 0},
                              {"0x10", 0},
                              {"+5", 5},
                              {"99999999999", INT_MAX},
                              {"-99999999999", INT_MIN}};
    for (const Number& number : numbers)
    {
        load("<r><E>" + std::string(number.text) + "</E></r>");
        int value = 7;
        EXPECT_TRUE(aut::readConfigInt(m_root.Get(), "E", value)) << number.text;
        EXPECT_EQ(number.value, value) << number.text;
    }
}

TEST_F(ConfigReader, AMissingElementClears)
{
    load("<r/>");
    int value = 7;
    bool flag = true;
    char text[aut::kConfigTextSize] = "x";
    EXPECT_FALSE(aut::readConfigInt(m_root.Get(), "E", value));
    EXPECT_FALSE(aut::readConfigFlag(m_root.Get(), "E", flag));
    EXPECT_FALSE(aut::readConfigText(m_root.Get(), "E", text));
    EXPECT_EQ(0, value);
    EXPECT_FALSE(flag);
    EXPECT_STREQ("", text);
}

TEST_F(ConfigReader, AFlagIsANumberOtherThanZero)
{
    load("<r><a>1</a><b>-2</b><c>0</c><d>true</d></r>");
    bool flag = false;
    EXPECT_TRUE(aut::readConfigFlag(m_root.Get(), "a", flag) && flag);
    EXPECT_TRUE(aut::readConfigFlag(m_root.Get(), "b", flag) && flag);
    EXPECT_TRUE(aut::readConfigFlag(m_root.Get(), "c", flag));
    EXPECT_FALSE(flag);
    EXPECT_TRUE(aut::readConfigFlag(m_root.Get(), "d", flag));
    EXPECT_FALSE(flag);
}

TEST_F(ConfigReader, LongTextsAreCut)
{
    load("<r><E>" + std::string(100'000, '0') + "5</E><F>" + std::string(62, '0') + "59</F></r>");
    int value = 7;
    char text[aut::kConfigTextSize];
    EXPECT_TRUE(aut::readConfigInt(m_root.Get(), "E", value));
    EXPECT_EQ(0, value);
    EXPECT_TRUE(aut::readConfigInt(m_root.Get(), "F", value));
    EXPECT_EQ(5, value); // the 64th character is cut off
    EXPECT_TRUE(aut::readConfigText(m_root.Get(), "E", text));
    EXPECT_EQ(std::string(259, '0'), text);
}

TEST_F(ConfigReader, AValueThatContradictsItsTypeRaises)
{
    load("<r xmlns:dt=\"urn:schemas-microsoft-com:datatypes\"><E dt:dt=\"i4\">seven</E></r>");
    int value = 7;
    EXPECT_THROW(aut::readConfigInt(m_root.Get(), "E", value), _com_error);
    EXPECT_EQ(0, value);
}

TEST_F(ConfigReader, ASectionHandsOutItsElementsOnly)
{
    load("<r><x><S><!--c--><a/>text<b/><?pi?></S></x></r>");
    aut::ConfigSection section(m_root.Get(), "S");
    ASSERT_TRUE(section.exists());
    EXPECT_EQ("a", aut::xmlName(section.next().Get()));
    EXPECT_EQ("b", aut::xmlName(section.next().Get()));
    EXPECT_EQ(nullptr, section.next().Get());
    EXPECT_EQ(nullptr, section.next().Get());
}

TEST_F(ConfigReader, TheSearchGoesDownAndUpThroughADeepDocument)
{
    // deeper than parsers allow, therefore put together by hand, from the inside out
    constexpr int kDepth = 1'000;
    load("<r/>");
    XmlNodePtr inner;
    for (int i = 0; i < kDepth; ++i)
    {
        Microsoft::WRL::ComPtr<IXMLDOMElement> outer;
        const aut::UniqueBstr name(::SysAllocString(i == 0 ? L"E" : L"n"));
        ASSERT_EQ(S_OK, m_document->createElement(name.get(), outer.GetAddressOf()));
        if (i > 0)
        {
            ASSERT_EQ(S_OK, outer->appendChild(inner.Get(), nullptr));
        }
        inner = XmlNodePtr(outer.Get());
    }
    EXPECT_NE(nullptr, aut::findConfigElement(inner.Get(), "E").Get());
    EXPECT_EQ(nullptr, aut::findConfigElement(inner.Get(), "F").Get());
}

TEST_F(ConfigReader, TheConfigurationNodeLiesAtItsPath)
{
    load(auttest::kernelData("<E/>"));
    EXPECT_EQ("AutomaticUpdateData", aut::xmlName(aut::configurationNode(m_document.Get()).Get()));
    load("<wcfgResponse><AutomaticUpdateData/></wcfgResponse>");
    EXPECT_EQ(nullptr, aut::configurationNode(m_document.Get()).Get());
}
} // namespace
