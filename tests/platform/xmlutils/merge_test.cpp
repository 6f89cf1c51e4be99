#include <xmlutils/element.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace XMLUtils;

XMLElementA leaf(std::string_view name, std::string_view text)
{
    XMLElementA element(name);
    element.setText(text);
    return element;
}

XMLElementA rect(std::string_view left, std::string_view top)
{
    XMLElementA element("MainFormRect");
    element.addChild(leaf("Left", left));
    element.addChild(leaf("Top", top));
    return element;
}

TEST(XmlMerge, TheTextOfTheOtherElementReplacesTheText)
{
    XMLElementA element = leaf("Size", "10");
    element.merge(leaf("Size", "12"));
    EXPECT_EQ(element.text(), "12");
}

TEST(XmlMerge, AnEmptyValueReplacesAValue)
{
    XMLElementA element = leaf("LastLoadDirectory", "/home");
    element.merge(XMLElementA("LastLoadDirectory"));
    EXPECT_EQ(element.text(), "");
}

TEST(XmlMerge, AnElementWithChildrenAndNoTextLeavesTheTextAlone)
{
    XMLElementA element = leaf("A", "text");
    XMLElementA other("A");
    other.addChild("B");
    element.merge(other);
    EXPECT_EQ(element.text(), "text");
    EXPECT_EQ(element.childCount(), 1U);
}

TEST(XmlMerge, AttributesReplaceThoseOfTheSameNameAndAreAppendedOtherwise)
{
    XMLElementA element("A");
    element.setAttribute("x", 1);
    element.setAttribute("y", 2);
    XMLElementA other("A");
    other.setAttribute("z", 4);
    other.setAttribute("x", 3);
    element.merge(other);
    XMLElementA expected("A");
    expected.setAttribute("x", 3);
    expected.setAttribute("y", 2);
    expected.setAttribute("z", 4);
    EXPECT_EQ(element, expected);
}

TEST(XmlMerge, ChildrenOfTheSameNameAreMergedAndAbsentOnesAppendedInOrder)
{
    XMLElementA element("Options");
    element.addChild(rect("1", "2"));
    XMLElementA other("Options");
    other.addChild(leaf("Language", "1"));
    other.addChild("MainFormRect").addChild(leaf("Top", "20"));
    other.addChild(leaf("LastAction", "2"));
    element.merge(other);

    XMLElementA expected("Options");
    expected.addChild(rect("1", "20"));
    expected.addChild(leaf("Language", "1"));
    expected.addChild(leaf("LastAction", "2"));
    EXPECT_EQ(element, expected);
}

TEST(XmlMerge, TheSecondOfANameIsMergedIntoTheSecond)
{
    XMLElementA element("Recent");
    element.addChild(leaf("File", "a"));
    element.addChild(leaf("File", "b"));
    XMLElementA other("Recent");
    other.addChild(leaf("File", "c"));
    other.addChild(leaf("File", "d"));
    other.addChild(leaf("File", "e"));
    element.merge(other);
    EXPECT_EQ(element, other);
}

TEST(XmlMerge, TheNameStays)
{
    XMLElementA element("A");
    element.merge(leaf("B", "x"));
    EXPECT_EQ(element, leaf("A", "x"));
}

TEST(XmlMerge, TheOtherElementIsNotChanged)
{
    XMLElementA element("MainFormRect");
    const XMLElementA other = rect("1", "2");
    element.merge(other);
    EXPECT_EQ(other, rect("1", "2"));
    EXPECT_EQ(element, other);
}

TEST(XmlMerge, MergingIntoItselfOrACopyChangesNothing)
{
    XMLElementA element("Options");
    element.addChild(rect("1", "2"));
    element.addChild(rect("3", "4"));
    const XMLElementA copy = element;
    element.merge(copy);
    EXPECT_EQ(element, copy);
    element.merge(element);
    EXPECT_EQ(element, copy);
}

TEST(XmlMerge, AnElementMayBeMergedWithItsOwnChildAndWithItsParent)
{
    XMLElementA element("A");
    element.addChild("A").addChild("A").addChild(leaf("B", "1"));
    XMLElementA down = element;
    down.merge(down.child(0));
    EXPECT_EQ(down.child(0).child(1), leaf("B", "1"));
    XMLElementA up = element;
    up.child(0).merge(up);
    EXPECT_EQ(up.child(0).child(0).childCount(), 2U);
}

TEST(XmlMerge, ManyAttributesAndChildrenOfDifferentNamesAreMergedInLinearTime)
{
    // Comparing each with each would take minutes here.
    XMLElementA element("A");
    XMLElementA other("A");
    std::vector<XMLAttribute> attributes;
    for (int i = 0; i < 100'000; ++i) {
        const std::string name = "n" + std::to_string(i);
        element.addChild(name);
        other.addChild(leaf(name, "x"));
        attributes.push_back({name, "x"});
    }
    element.setAttributes(attributes);
    other.setAttributes(attributes);
    element.merge(other);
    EXPECT_EQ(element, other);
}

} // namespace
