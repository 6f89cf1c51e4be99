#include "xml_support.h"

#include <oviapi/text.h>

#include <gtest/gtest.h>

#include <iconv.h>

namespace {

using namespace XMLUtils;

// Converts with the system's converter alone, so that the tables are not tested with themselves.
std::string fromUtf8(std::string_view text, const char* encoding)
{
    const iconv_t converter = iconv_open(encoding, "UTF-8");
    std::string in(text);
    std::string out(4 * in.size() + 4, '\0');
    char* from = in.data();
    char* to = out.data();
    size_t fromLeft = in.size();
    size_t toLeft = out.size();
    EXPECT_EQ(iconv(converter, &from, &fromLeft, &to, &toLeft), 0U);
    iconv_close(converter);
    out.resize(out.size() - toLeft);
    return out;
}

// "Zhuk" and the letter io in Russian letters.
const std::string russian = "\xD0\x96\xD1\x83\xD0\xBA \xD1\x91";

std::string declared(const char* name)
{
    return "<?xml version=\"1.0\" encoding=\"" + std::string(name) + "\"?><A b='" + russian + "'>" +
           russian + "</A>";
}

void expectRussian(std::string_view document, XMLEncoding encoding)
{
    EXPECT_EQ(detectEncoding(document), encoding);
    const XMLElementA root = parse(document);
    EXPECT_EQ(root.text(), russian);
    EXPECT_EQ(root.getAttribute("b"), russian);
}

TEST(XmlEncoding, Utf8IsReadWithAndWithoutMarkAndDeclaration)
{
    const std::string mark = "\xEF\xBB\xBF";
    expectRussian(declared("UTF-8"), XMLEncoding::Utf8);
    expectRussian(mark + declared("utf-8"), XMLEncoding::Utf8);
    expectRussian("<A b='" + russian + "'>" + russian + "</A>", XMLEncoding::Utf8);
    expectRussian(mark + "<A b='" + russian + "'>" + russian + "</A>", XMLEncoding::Utf8);
}

TEST(XmlEncoding, Koi8RIsRead)
{
    expectRussian(fromUtf8(declared("KOI8-R"), "KOI8-R"), XMLEncoding::Koi8R);
    expectRussian(fromUtf8(declared("koi8-r"), "KOI8-R"), XMLEncoding::Koi8R);
}

TEST(XmlEncoding, Windows1251IsRead)
{
    expectRussian(fromUtf8(declared("windows-1251"), "CP1251"), XMLEncoding::Windows1251);
}

TEST(XmlEncoding, Utf16IsReadInBothByteOrders)
{
    for (const char* name : {"UTF-16", "utf-16"}) {
        expectRussian("\xFF\xFE" + fromUtf8(declared(name), "UTF-16LE"), XMLEncoding::Utf16LE);
        expectRussian("\xFE\xFF" + fromUtf8(declared(name), "UTF-16BE"), XMLEncoding::Utf16BE);
    }
    expectRussian("\xFF\xFE" + fromUtf8(declared("UTF-16LE"), "UTF-16LE"), XMLEncoding::Utf16LE);
    const std::string undeclared = "<A b='" + russian + "'>" + russian + "</A>";
    expectRussian("\xFE\xFF" + fromUtf8(undeclared, "UTF-16BE"), XMLEncoding::Utf16BE);
}

TEST(XmlEncoding, TheDeclarationIsFoundHoweverItIsSpaced)
{
    EXPECT_EQ(detectEncoding("<?xml\tversion = '1.0'\n encoding\n=\r'KOI8-R' ?><A/>"),
              XMLEncoding::Koi8R);
    EXPECT_EQ(parse("<?xml\tversion = '1.0'\n encoding\n=\r'KOI8-R' ?><A>\xF6</A>").text(),
              "\xD0\x96");
}

TEST(XmlEncoding, OnlyTheDeclarationNamesTheEncoding)
{
    EXPECT_EQ(detectEncoding("<A encoding='KOI8-R'/>"), XMLEncoding::Utf8);
    EXPECT_EQ(detectEncoding("<?xml-x encoding='KOI8-R'?><A/>"), XMLEncoding::Utf8);
    EXPECT_EQ(detectEncoding(" <?xml version='1.0' encoding='KOI8-R'?><A/>"), XMLEncoding::Utf8);
    EXPECT_EQ(detectEncoding("<?xml version='1.0'?><A encoding='KOI8-R'/>"), XMLEncoding::Utf8);
    EXPECT_EQ(detectEncoding(""), XMLEncoding::Utf8);
}

class XmlWrongEncoding : public testing::TestWithParam<std::string> {};

TEST_P(XmlWrongEncoding, IsRefused)
{
    EXPECT_TRUE(faultOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, XmlWrongEncoding,
    testing::Values(
        "<?xml version='1.0' encoding='no-such'?><A/>",
        "<?xml version='1.0' encoding='ISO-8859-1'?><A/>",
        "<?xml version='1.0' encoding='../../tmp/KOI8-R'?><A/>",
        "<?xml version='1.0' encoding='UTF-16'?><A/>",
        "\xEF\xBB\xBF<?xml version='1.0' encoding='KOI8-R'?><A/>",
        "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-16LE'?><A/>",
        "\xFF\xFE" + fromUtf8("<?xml version='1.0' encoding='UTF-8'?><A/>", "UTF-16LE"),
        "\xFF\xFE" + fromUtf8("<?xml version='1.0' encoding='KOI8-R'?><A/>", "UTF-16LE"),
        "\xFF\xFE" + fromUtf8("<?xml version='1.0' encoding='UTF-16BE'?><A/>", "UTF-16LE"),
        "\xFF\xFE" + fromUtf8("<A/>", "UTF-16BE"), fromUtf8("<A/>", "UTF-16LE"),
        "\xFF\xFE" + fromUtf8("<A/>", "UTF-16LE") + "\n", fromUtf8("<A>\xD0\x96</A>", "KOI8-R"),
        "<?xml version='1.0' encoding='windows-1251'?><A>\x98</A>"));

TEST(XmlEncoding, AnUnknownNameIsQuotedInTheMessage)
{
    EXPECT_EQ(messageOf("<?xml version='1.0' encoding='EBCDIC'?><A/>"),
              L"Unknown encoding \"EBCDIC\" (line 1, column 1)");
}

TEST(XmlEncoding, TextOfAllPlanesIsWrittenAndReadBackInEveryEncoding)
{
    XMLElementA root("Root");
    root.addChild("A").setString(L"Zh \u0416 \u00e9 \u20ac \u2500 \U0001F600 \uE000",
                                 XMLEncoding::Utf8);
    root.child(0).setAttribute("b", russian + "\xE2\x82\xAC\xC3\xA9");
    for (const XMLEncoding encoding :
         {XMLEncoding::Utf8, XMLEncoding::Koi8R, XMLEncoding::Windows1251, XMLEncoding::Utf16LE,
          XMLEncoding::Utf16BE}) {
        const std::string document = writeDocument(root, encoding);
        EXPECT_EQ(detectEncoding(document), encoding);
        EXPECT_EQ(parse(document), root) << encodingName(encoding);
    }
}

TEST(XmlEncoding, WhatTheEncodingHasIsWrittenInItAndTheRestAsReferences)
{
    XMLElementA root("A");
    root.setText(russian + "\xE2\x82\xAC");
    EXPECT_NE(writeDocument(root, XMLEncoding::Koi8R).find(fromUtf8(russian, "KOI8-R") + "&#8364;"),
              std::string::npos);
    EXPECT_NE(
        writeDocument(root, XMLEncoding::Windows1251).find(fromUtf8(russian, "CP1251") + "\x88"),
        std::string::npos);
}

TEST(XmlEncoding, NamesOutsideTheEncodingAreRefused)
{
    const XMLElementA root("\xC3\xA9t\xC3\xA9");
    EXPECT_NO_THROW(writeDocument(root, XMLEncoding::Utf8));
    EXPECT_THROW(writeDocument(root, XMLEncoding::Koi8R), XMLException);
    EXPECT_EQ(parse(writeDocument(XMLElementA(russian.substr(0, 6)), XMLEncoding::Koi8R)).name(),
              russian.substr(0, 6));
}

TEST(XmlEncoding, WhatIsNoEncodingIsRefused)
{
    EXPECT_THROW(writeDocument(XMLElementA("A"), XMLEncoding::Unknown), XMLException);
    EXPECT_THROW(encodingName(static_cast<XMLEncoding>(6)), XMLException);
}

} // namespace
