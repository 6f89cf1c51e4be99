#include "xml_support.h"

#include <xmlutils/limits.h>

#include <gtest/gtest.h>

namespace {

using namespace XMLUtils;

std::string body(const XMLElementA& root)
{
    const std::string document = writeDocument(root, XMLEncoding::Utf8);
    return document.substr(document.find('\n') + 1);
}

TEST(XmlWrite, ADocumentIsDeclaredAndIndentedByTwoBlanks)
{
    XMLElementA root;
    XMLElementA& options = root.addChild("Options");
    options.setAttribute("ClassName", "TypicalOptions");
    options.setAttribute("ClassVersion", 1);
    options.addChild("Language").setInteger(1);
    options.addChild("MainFormRect").addChild("Left").setInteger(-5);
    options.addChild("LastLoadDirectory");
    EXPECT_EQ(writeDocument(root, XMLEncoding::Utf8),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Root>\n"
              "  <Options ClassName=\"TypicalOptions\" ClassVersion=\"1\">\n"
              "    <Language>1</Language>\n"
              "    <MainFormRect>\n"
              "      <Left>-5</Left>\n"
              "    </MainFormRect>\n"
              "    <LastLoadDirectory/>\n"
              "  </Options>\n"
              "</Root>\n");
}

TEST(XmlWrite, ARootWithANameKeepsIt)
{
    EXPECT_EQ(body(XMLElementA("Settings")), "<Settings/>\n");
}

TEST(XmlWrite, WhatIsWrittenReadsBackEqual)
{
    XMLElementA root("Root");
    root.setAttribute("a", "<&>\"' \t\r\n ]]>");
    root.addChild("Markup").setText("<&>\"']]> &amp;");
    root.addChild("Lines").setText(" a\r\nb\rc\n\td ");
    root.addChild("Blanks").setText(" \t\r\n");
    root.addChild("Mixed").setText("text\n");
    root.getChild("Mixed").addChild("B").addChild("C").setText("x");
    root.addChild("Empty");
    EXPECT_EQ(parse(writeDocument(root, XMLEncoding::Utf8)), root);
}

TEST(XmlWrite, NoWhiteSpaceIsAddedInsideAnElementWithText)
{
    XMLElementA root("A");
    root.setText("text");
    root.addChild("B").addChild("C");
    EXPECT_EQ(body(root), "<A>text<B><C/></B></A>\n");
}

TEST(XmlWrite, CharactersThatXmlCannotHoldBecomeReplacementCharacters)
{
    XMLElementA root("A");
    root.setText(std::string_view("a\0b\x01\x1F\x7F\xEF\xBF\xBE\xEF\xBF\xBF\xFF", 13));
    root.setAttribute("b", "\x1B");
    const XMLElementA back = parse(writeDocument(root, XMLEncoding::Utf8));
    EXPECT_EQ(back.getString(XMLEncoding::Utf8), L"a\uFFFDb\uFFFD\uFFFD\x7F\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(back.getAttribute("b"), "\xEF\xBF\xBD");
    EXPECT_EQ(parse(writeDocument(root, XMLEncoding::Koi8R)), back);
}

class XmlNotAName : public testing::TestWithParam<std::string_view> {};

TEST_P(XmlNotAName, IsRefusedAsElementAndAsAttribute)
{
    XMLElementA root("Root");
    XMLElementA asElement = root;
    asElement.addChild(GetParam());
    EXPECT_THROW(writeDocument(asElement, XMLEncoding::Utf8), XMLException);
    XMLElementA asAttribute = root;
    asAttribute.setAttribute(GetParam(), "x");
    EXPECT_THROW(writeDocument(asAttribute, XMLEncoding::Utf8), XMLException);
}

INSTANTIATE_TEST_SUITE_P(Texts, XmlNotAName,
                         testing::Values("", " ", "1a", "-a", ".a", "a b", "a>", "a/", "a=", "a\"",
                                         "a'", "<a", "a&", "a\n", "\xC3\x97", "a\xFF",
                                         std::string_view("a\0", 2)));

TEST(XmlWrite, NamesMayHaveDigitsDotsAndDashesBehindTheFirstLetter)
{
    const XMLElementA root("_a-1.b:c");
    EXPECT_EQ(parse(writeDocument(root, XMLEncoding::Utf8)), root);
}

TEST(XmlWrite, WhatCouldNotBeReadBackIsRefused)
{
    XMLElementA deep("A");
    XMLElementA* innermost = &deep;
    for (size_t i = 1; i < maxDepth; ++i)
        innermost = &innermost->addChild("A");
    EXPECT_EQ(parse(writeDocument(deep, XMLEncoding::Utf8)), deep);
    innermost->addChild("A");
    EXPECT_THROW(writeDocument(deep, XMLEncoding::Utf8), XMLException);

    XMLElementA wide("A");
    for (size_t i = 1; i < maxElements; ++i)
        wide.addChild("B");
    EXPECT_EQ(parse(writeDocument(wide, XMLEncoding::Utf8)).childCount(), maxElements - 1);
    wide.addChild("B");
    EXPECT_THROW(writeDocument(wide, XMLEncoding::Utf8), XMLException);

    XMLElementA attributed("A");
    attributed.setAttributes(std::vector<XMLAttribute>(maxAttributes + 1, {"b", ""}));
    EXPECT_THROW(writeDocument(attributed, XMLEncoding::Utf8), XMLException);

    XMLElementA large("A");
    large.setText(std::string(maxDocumentSize, 'x'));
    EXPECT_THROW(writeDocument(large, XMLEncoding::Utf8), XMLException);
}

} // namespace
