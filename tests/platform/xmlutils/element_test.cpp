#include <xmlutils/element.h>
#include <xmlutils/exception.h>
#include <xmlutils/serializable.h>

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>

namespace {

using namespace XMLUtils;

XMLElementA withText(std::string_view text)
{
    XMLElementA element("Width");
    element.setText(text);
    return element;
}

// The elements of a chain from the top to the innermost one.
XMLElementA chain(size_t length)
{
    XMLElementA top("Level");
    XMLElementA* innermost = &top;
    for (size_t i = 1; i < length; ++i)
        innermost = &innermost->addChild("Level");
    return top;
}

TEST(XmlElement, PlainDecimalNumbersOf32BitsAreIntegers)
{
    EXPECT_EQ(withText("0").getInteger(), 0);
    EXPECT_EQ(withText("-1").getInteger(), -1);
    EXPECT_EQ(withText("1024").getInteger(), 1024);
    EXPECT_EQ(withText("2147483647").getInteger(), INT_MAX);
    EXPECT_EQ(withText("-2147483648").getInteger(), INT_MIN);
}

class XmlNotAnInteger : public testing::TestWithParam<std::string_view> {};

TEST_P(XmlNotAnInteger, IsRefused)
{
    const XMLElementA element = withText(GetParam());
    EXPECT_THROW(element.getInteger(), XMLException);
    EXPECT_THROW(element.getBoolean(), XMLException);
}

INSTANTIATE_TEST_SUITE_P(Texts, XmlNotAnInteger,
                         testing::Values("", " ", "-", "+5", " 5", "5 ", "5\n", "5x", "0x5", "1e3",
                                         "5.0", "-0", "00", "05", "-05", "--5", "2147483648",
                                         "-2147483649", "99999999999999999999",
                                         std::string_view("5\0", 2), "\xD9\xA3"));

TEST(XmlElement, WhatSetIntegerWritesGetIntegerReads)
{
    XMLElementA element;
    for (const int32_t value : {0, 1, -1, 10, INT_MAX, INT_MIN}) {
        element.setInteger(value);
        EXPECT_EQ(element.getInteger(), value);
    }
    EXPECT_EQ(element.text(), "-2147483648");
}

TEST(XmlElement, ARefusedIntegerNamesTheElementAndItsTextCutToAReadableLength)
{
    XMLElementA element("Left");
    element.setText("5x");
    try {
        element.getInteger();
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.message(), L"The text \"5x\" of element \"Left\" is not a 32-bit integer");
        EXPECT_EQ(error.line(), 0);
        EXPECT_EQ(error.column(), 0);
    }
    element.setText(std::string(1'000'000, 'x'));
    try {
        element.getInteger();
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_LT(error.message().size(), 200U);
    }
}

TEST(XmlElement, BooleansAreWrittenAs0Or1AndEveryOtherIntegerIsTrue)
{
    XMLElementA element;
    element.setBoolean(true);
    EXPECT_EQ(element.text(), "1");
    EXPECT_TRUE(element.getBoolean());
    element.setBoolean(false);
    EXPECT_EQ(element.text(), "0");
    EXPECT_FALSE(element.getBoolean());
    EXPECT_TRUE(withText("-7").getBoolean());
}

TEST(XmlElement, AStringIsTheSameInEveryEncoding)
{
    const std::wstring text = L" \u0416\u00e9\u20ac\U0001F600 ";
    for (const XMLEncoding encoding :
         {XMLEncoding::Utf8, XMLEncoding::Koi8R, XMLEncoding::Windows1251, XMLEncoding::Utf16LE,
          XMLEncoding::Utf16BE}) {
        XMLElementA element;
        element.setString(text, encoding);
        EXPECT_EQ(element.getString(encoding), text);
        EXPECT_EQ(element.getString(XMLEncoding::Utf8), text);
    }
}

TEST(XmlElement, AStringInNoEncodingIsRefused)
{
    XMLElementA element = withText("kept");
    EXPECT_THROW(element.getString(XMLEncoding::Unknown), XMLException);
    EXPECT_THROW(element.setString(L"x", static_cast<XMLEncoding>(77)), XMLException);
    EXPECT_EQ(element.text(), "kept");
}

TEST(XmlElement, AWideCharacterThatIsNoneBecomesAReplacementCharacter)
{
    XMLElementA element;
    element.setString(std::wstring{L'a', static_cast<wchar_t>(0xD800)}, XMLEncoding::Utf8);
    EXPECT_EQ(element.getString(XMLEncoding::Utf8), L"a\uFFFD");
}

TEST(XmlElement, AttributesKeepTheirOrderAndAreReplacedByName)
{
    XMLElementA element("Options");
    element.setAttribute("ClassName", "TypicalOptions");
    element.setAttribute("ClassVersion", 1);
    element.setAttribute("ClassName", "MyOptions");
    ASSERT_EQ(element.attributes().size(), 2U);
    EXPECT_EQ(element.attributes()[0], (XMLAttribute{"ClassName", "MyOptions"}));
    EXPECT_EQ(element.attributes()[1], (XMLAttribute{"ClassVersion", "1"}));
    EXPECT_EQ(element.getAttribute("ClassVersion"), "1");
}

TEST(XmlElement, AMissingAttributeIsNullOrThrown)
{
    const XMLElementA element("Options");
    EXPECT_EQ(element.findAttribute("ClassName"), nullptr);
    EXPECT_THROW(element.getAttribute("ClassName"), XMLException);
}

TEST(XmlElement, ChildrenKeepTheirOrderAndTheFirstOfANameIsFound)
{
    XMLElementA element;
    element.addChild("B").setText("1");
    element.addChild("A").setText("2");
    element.addChild("A").setText("3");
    ASSERT_EQ(element.childCount(), 3U);
    EXPECT_EQ(element.child(0).name(), "B");
    EXPECT_EQ(element.child(2).text(), "3");
    EXPECT_EQ(element.findChild("A")->text(), "2");
    EXPECT_EQ(&element.getChild("A"), element.findChild("A"));
}

TEST(XmlElement, AMissingChildIsNullOrThrown)
{
    XMLElementA element("Options");
    element.addChild("Language");
    EXPECT_EQ(element.findChild("language"), nullptr) << "names are compared with case";
    EXPECT_EQ(element.findChild(""), nullptr);
    try {
        element.getChild("Font");
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_STREQ(error.what(), "Element \"Options\" has no child \"Font\"");
    }
}

TEST(XmlElement, AReferenceToAChildStaysValidWhileOthersAreAdded)
{
    XMLElementA element;
    XMLElementA& first = element.addChild("First");
    for (int i = 0; i < 1000; ++i)
        element.addChild("Other");
    first.setText("still here");
    EXPECT_EQ(element.child(0).text(), "still here");
}

TEST(XmlElement, ACopyIsDeepAndEqual)
{
    XMLElementA element("A");
    element.setAttribute("x", 1);
    element.addChild("B").addChild("C").setText("t");
    XMLElementA copy(element);
    EXPECT_EQ(copy, element);
    copy.child(0).child(0).setText("other");
    EXPECT_EQ(element.child(0).child(0).text(), "t");
    EXPECT_FALSE(copy == element);
}

TEST(XmlElement, EqualityLooksAtNameTextAttributesAndOrder)
{
    XMLElementA ab;
    ab.addChild("A");
    ab.addChild("B");
    XMLElementA ba;
    ba.addChild("B");
    ba.addChild("A");
    EXPECT_FALSE(ab == ba);
    EXPECT_FALSE(XMLElementA("A") == XMLElementA("B"));
    EXPECT_FALSE(withText("1") == withText("2"));
    XMLElementA attributed = withText("1");
    attributed.setAttribute("x", 1);
    EXPECT_FALSE(withText("1") == attributed);
}

TEST(XmlElement, AnElementMayBeAssignedAPartOfItself)
{
    XMLElementA element("A");
    element.addChild("B").addChild("C").setText("t");
    XMLElementA moved = element;
    element = element.child(0);
    EXPECT_EQ(element.name(), "B");
    EXPECT_EQ(element.child(0).text(), "t");
    moved = std::move(moved.child(0));
    EXPECT_EQ(moved, element);
}

TEST(XmlElement, AnElementMayBecomeItsOwnChild)
{
    XMLElementA element("A");
    element.addChild("B");
    element.addChild(element);
    ASSERT_EQ(element.childCount(), 2U);
    EXPECT_EQ(element.child(1).name(), "A");
    EXPECT_EQ(element.child(1).childCount(), 1U);
}

TEST(XmlElement, AHundredThousandLevelsAreCopiedComparedMergedAndDestroyedOnAnOrdinaryStack)
{
    // Recursion would need over 80 bytes of stack a level, all that there is.
    XMLElementA deep = chain(100'000);
    XMLElementA copy(deep);
    EXPECT_TRUE(copy == deep);
    copy.merge(deep);
    EXPECT_TRUE(copy == deep);
    copy = XMLElementA();
    EXPECT_FALSE(copy.hasChildren());
}

// A record as applications write them, to see that the interface can be implemented and that its
// operations come in the stated order.
class Size final : public IXMLSerializableA {
public:
    void serialize(XMLElementA& element, XMLEncoding) const override
    {
        element.addChild("Width").setInteger(width);
    }
    void deserialize(const XMLElementA& element, XMLEncoding) override
    {
        width = element.getChild("Width").getInteger();
    }
    int32_t width = 0;
};

TEST(XmlSerializable, ARecordComesBackFromTheElementItWasWrittenInto)
{
    Size size;
    size.width = 640;
    XMLElementA element("Size");
    static_cast<const IXMLSerializableA&>(size).serialize(element, XMLEncoding::Utf8);
    Size other;
    static_cast<IXMLSerializableA&>(other).deserialize(element, XMLEncoding::Utf8);
    EXPECT_EQ(other.width, 640);
    EXPECT_THROW(other.deserialize(XMLElementA("Size"), XMLEncoding::Utf8), XMLException);
}

TEST(XmlException, TheMessageEndsWithThePlaceWhenItIsKnown)
{
    EXPECT_EQ(XMLException(L"Bad").message(), L"Bad");
    EXPECT_EQ(XMLException(L"Bad").file(), L"");
    const XMLException placed(L"Bad \u0416", 3, 14);
    EXPECT_EQ(placed.message(), L"Bad \u0416 (line 3, column 14)");
    EXPECT_STREQ(placed.what(), "Bad \xD0\x96 (line 3, column 14)");
    EXPECT_EQ(placed.line(), 3);
    EXPECT_EQ(placed.column(), 14);
}

} // namespace
