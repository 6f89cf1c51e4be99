#include "xml_support.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace XMLUtils;

TEST(XmlParse, TheRootStandsForTheDocumentElement)
{
    const XMLElementA root = parse("<?xml version='1.0'?><!-- c --><Settings a='1' b='2'>"
                                   "<Options><Language>1</Language></Options></Settings>");
    EXPECT_EQ(root.name(), "Settings");
    EXPECT_EQ(root.getAttribute("b"), "2");
    EXPECT_EQ(root.getChild("Options").getChild("Language").getInteger(), 1);
}

TEST(XmlParse, ARootWithANameAcceptsADocumentElementOfThatNameOnly)
{
    XMLElementA root("ConfigsIndex");
    readDocument("<ConfigsIndex/>", XMLEncoding::Utf8, {}, root);
    EXPECT_EQ(root.name(), "ConfigsIndex");
    try {
        readDocument("\n <Configs/>", XMLEncoding::Utf8, {}, root);
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.message(),
                  L"The document element is not \"ConfigsIndex\" (line 2, column 2)");
    }
}

TEST(XmlParse, FormerContentOfTheRootIsReplaced)
{
    XMLElementA root("A");
    root.setText("old");
    root.setAttribute("old", 1);
    root.addChild("Old");
    readDocument("<A><B/></A>", XMLEncoding::Utf8, {}, root);
    EXPECT_EQ(root, parse("<A><B/></A>"));
}

TEST(XmlParse, AFaultLeavesTheRootAsItWas)
{
    XMLElementA root("A");
    root.addChild("Kept");
    const XMLElementA before = root;
    EXPECT_THROW(readDocument("<A><B/>", XMLEncoding::Utf8, {}, root), XMLException);
    EXPECT_EQ(root, before);
}

TEST(XmlParse, TextIsGatheredAroundChildrenCommentsInstructionsAndCdata)
{
    EXPECT_EQ(parse("<A>a<B/>b<!-- x -->c<?x y?>d<![CDATA[<&>]]></A>").text(), "abcd<&>");
}

TEST(XmlParse, ReferencesAreResolved)
{
    const XMLElementA root = parse("<A b='&quot;&#x416;&apos;'>&lt;&amp;&gt;&#13;&#x1F600;</A>");
    EXPECT_EQ(root.getAttribute("b"), "\"\xD0\x96'");
    EXPECT_EQ(root.text(), "<&>\r\xF0\x9F\x98\x80");
}

TEST(XmlParse, LineEndsBecomeLineFeeds)
{
    EXPECT_EQ(parse("<A>a\r\nb\rc</A>").text(), "a\nb\nc");
}

TEST(XmlParse, IndentationIsNoTextAndTheWhiteSpaceOfAValueIsKept)
{
    const XMLElementA root = parse("<A>\n  <B> x </B>\r\n\t<C>  </C>\n</A>");
    EXPECT_EQ(root.text(), "");
    EXPECT_EQ(root.getChild("B").text(), " x ");
    EXPECT_EQ(root.getChild("C").text(), "  ");
}

TEST(XmlParse, GivenWhiteSpaceIsCutOffAtBothEndsOfEveryText)
{
    const XMLElementA root =
        parse("<A>\n x <B>\n  640\r\n</B><C>\t a b </C><D> \n </D></A>", " \t\r\n");
    EXPECT_EQ(root.text(), "x");
    EXPECT_EQ(root.getChild("B").getInteger(), 640);
    EXPECT_EQ(root.getChild("C").text(), "a b");
    EXPECT_EQ(root.getChild("D").text(), "");
}

TEST(XmlParse, OnlyTheGivenCharactersAreCutOff)
{
    EXPECT_EQ(parse("<A> \t_x_\t </A>", " _").text(), "\t_x_\t");
}

TEST(XmlParse, NamesKeepTheirPrefixesAndOtherAlphabets)
{
    const XMLElementA root = parse("<n:\xD0\x96 x:y='1'/>");
    EXPECT_EQ(root.name(), "n:\xD0\x96");
    EXPECT_EQ(root.getAttribute("x:y"), "1");
}

class XmlFaultPlace : public testing::TestWithParam<std::tuple<const char*, int, int>> {};

TEST_P(XmlFaultPlace, IsTheLineAndColumnFrom1)
{
    const auto [document, line, column] = GetParam();
    const auto fault = faultOf(document);
    ASSERT_TRUE(fault) << document;
    EXPECT_EQ(fault->line(), line) << document;
    EXPECT_EQ(fault->column(), column) << document;
    EXPECT_NE(fault->message().find(L"line " + std::to_wstring(line)), std::wstring::npos);
}

INSTANTIATE_TEST_SUITE_P(Documents, XmlFaultPlace,
                         testing::Values(std::tuple("", 1, 1), std::tuple("x", 1, 1),
                                         std::tuple("<A>\n <B>\n</C></A>", 3, 3),
                                         std::tuple("<A>\r\n<B x='1' x='2'/></A>", 2, 10),
                                         std::tuple("<A>\xD0\x96\xD0\x96&none;</A>", 1, 6),
                                         std::tuple("<A/><B/>", 1, 5),
                                         std::tuple("<A/>\n<?xml version='1.0'?>", 2, 1)));

TEST(XmlParse, AMessageSaysWhatIsWrong)
{
    EXPECT_EQ(messageOf("<A></B>"), L"Not well-formed: mismatched tag (line 1, column 6)");
    EXPECT_EQ(messageOf(""), L"Not well-formed: no element found (line 1, column 1)");
}

TEST(XmlAdder, IsHandedEveryChildOfTheDocumentElementAndTheRootKeepsNone)
{
    const CollectingAdder adder;
    XMLElementA root("ConfigsIndex");
    root.setAdder(&adder);
    readDocument("<ConfigsIndex v='1'>\n <Config><A><B>1</B></A></Config>\n <Other/>\n"
                 "</ConfigsIndex>",
                 XMLEncoding::Utf8, {}, root);
    ASSERT_EQ(adder.elements.size(), 2U);
    EXPECT_EQ(adder.elements[0], parse("<Config><A><B>1</B></A></Config>"));
    EXPECT_EQ(adder.elements[1], XMLElementA("Other"));
    EXPECT_FALSE(root.hasChildren());
    EXPECT_EQ(root.getAttribute("v"), "1");
    EXPECT_EQ(root.text(), "");
    EXPECT_EQ(root.adder(), &adder);
}

TEST(XmlAdder, GetsItsElementsAsTheyAreReadBeforeALaterFault)
{
    const CollectingAdder adder;
    XMLElementA root;
    root.setAdder(&adder);
    EXPECT_THROW(readDocument("<A><B/><C/><D></A>", XMLEncoding::Utf8, {}, root), XMLException);
    EXPECT_EQ(adder.elements.size(), 2U);
}

TEST(XmlAdder, IsNotCalledForADocumentElementOfAnotherName)
{
    const CollectingAdder adder;
    XMLElementA root("ConfigsIndex");
    root.setAdder(&adder);
    EXPECT_THROW(readDocument("<A><B/></A>", XMLEncoding::Utf8, {}, root), XMLException);
    EXPECT_TRUE(adder.elements.empty());
}

class ThrowingAdder final : public IXMLAdderA {
public:
    void addElement(const XMLElementA&) const override
    {
        ++calls;
        throw std::runtime_error("no more");
    }
    mutable int calls = 0;
};

TEST(XmlAdder, AnExceptionOfTheAdderEndsTheReadingAndComesOutOfIt)
{
    const ThrowingAdder adder;
    XMLElementA root;
    root.setAdder(&adder);
    EXPECT_THROW(readDocument("<A><B/><C/></A>", XMLEncoding::Utf8, {}, root), std::runtime_error);
    EXPECT_EQ(adder.calls, 1);
    EXPECT_EQ(root.name(), "");
}

} // namespace
