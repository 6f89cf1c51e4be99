#include "xml_support.h"

#include <xmlutils/limits.h>

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

using namespace XMLUtils;

std::string repeated(std::string_view text, size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

std::string nested(size_t depth)
{
    return repeated("<A>", depth) + repeated("</A>", depth);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__OPTIMIZE__)
constexpr double secondsAllowed = 10; // in slowed and unoptimised builds
#else
constexpr double secondsAllowed = 1;
#endif

// Fails when the work takes a second of processor time or more.
template<class Work>
void expectUnderASecond(Work work)
{
    const std::clock_t begin = std::clock();
    work();
    EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, secondsAllowed);
}

// A document with all that documents may have.
const std::string good =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- c -->\n<Root a=\"1\">\n"
    "  <Options ClassName='T'><![CDATA[<x>]]> &amp; &#x416; \xD0\x96</Options>\n"
    "  <?pi x?><Empty/>\n</Root>";

TEST(XmlHostile, AGoodDocumentCutAtAnyByteIsRefused)
{
    ASSERT_FALSE(faultOf(good));
    for (size_t length = 0; length < good.size(); ++length)
        EXPECT_TRUE(faultOf(good.substr(0, length))) << length;
}

TEST(XmlHostile, AGoodDocumentWithAnyByteChangedIsReadOrRefused)
{
    for (size_t i = 0; i < good.size(); ++i) {
        for (const char c : {'\0', '<', '&', '"', '\xFF', '\x80'}) {
            std::string changed = good;
            changed[i] = c;
            const auto fault = faultOf(changed);
            if (fault)
                continue;
            EXPECT_TRUE(c != '\0' && c != '\xFF') << i;
            EXPECT_EQ(parse(writeDocument(parse(changed), XMLEncoding::Utf8)), parse(changed));
        }
    }
}

TEST(XmlHostile, RandomBytesAreRefused)
{
    std::mt19937 random(20240229);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 2000; ++round) {
        std::string document = round % 2 ? "<A>" : "";
        for (int i = 0; i < round; ++i)
            document += static_cast<char>(byte(random));
        EXPECT_TRUE(faultOf(document)) << round;
    }
}

TEST(XmlHostile, NestingIsReadTo256LevelsAndRefusedBeyond)
{
    EXPECT_FALSE(faultOf(nested(maxDepth)));
    EXPECT_EQ(messageOf(nested(maxDepth + 1)),
              L"Elements are nested too deeply (line 1, column 769)");
}

TEST(XmlHostile, ThreeHundredThousandLevelsAreRefusedAtOnce)
{
    expectUnderASecond([] { EXPECT_TRUE(faultOf(nested(300'000))); });
}

TEST(XmlHostile, TwelveMegabytesOfTextAreReadInUnderASecond)
{
    const std::string document = "<A>" + std::string(12 << 20, 'x') + "</A>";
    expectUnderASecond([&] { EXPECT_EQ(parse(document).text().size(), size_t{12} << 20); });
}

TEST(XmlHostile, TwelveMegabytesOfLineEndsAreReadInUnderASecond)
{
    // The parser reports each line on its own.
    const std::string document = "<A>" + std::string(12 << 20, '\n') + "</A>";
    expectUnderASecond([&] { EXPECT_EQ(parse(document).text().size(), size_t{12} << 20); });
}

TEST(XmlHostile, TwoHundredThousandAttributesAreReadInUnderASecond)
{
    std::string document = "<A";
    for (int i = 0; i < 200'000; ++i)
        document += " a" + std::to_string(i) + "=''";
    document += "/>";
    expectUnderASecond([&] { EXPECT_EQ(parse(document).attributes().size(), 200'000U); });
}

TEST(XmlHostile, TwoHundredThousandElementsAreReadInUnderASecond)
{
    const std::string document = "<A>" + repeated("<B c='1'>x</B>", 200'000) + "</A>";
    expectUnderASecond([&] { EXPECT_EQ(parse(document).childCount(), 200'000U); });
}

TEST(XmlHostile, MoreElementsThanTheBoundAreRefused)
{
    EXPECT_FALSE(faultOf("<A>" + repeated("<B/>", maxElements - 1) + "</A>"));
    EXPECT_EQ(messageOf("<A>\n" + repeated("<B/>", maxElements) + "</A>"),
              L"The document has too many elements (line 2, column 999997)");
}

TEST(XmlHostile, MoreAttributesThanTheBoundAreRefused)
{
    const std::string most = repeated("<B c='' d \n=\t \"\"/>", maxAttributes / 2);
    EXPECT_FALSE(faultOf("<A>" + most + "</A>"));
    EXPECT_EQ(messageOf("<A e=''>" + most + "</A>"), L"The document has too many attributes");
}

TEST(XmlHostile, AFileFullOfAttributesIsRefusedInUnderASecondInEveryEncoding)
{
    std::string utf8 = "<A";
    for (int i = 0; utf8.size() < maxDocumentSize / 2 - 20; ++i)
        utf8 += " a" + std::to_string(i) + "=''";
    utf8 += "/>";
    std::string utf16 = "\xFF\xFE";
    for (const char c : utf8)
        utf16 += {c, '\0'};
    expectUnderASecond([&] {
        EXPECT_TRUE(faultOf(utf8));
        EXPECT_TRUE(faultOf(utf16));
    });
}

TEST(XmlHostile, ElementsForAnAdderCountToo)
{
    class Adder final : public IXMLAdderA {
    public:
        void addElement(const XMLElementA&) const override { ++count; }
        mutable size_t count = 0;
    };
    const Adder adder;
    XMLElementA root;
    root.setAdder(&adder);
    const std::string document = "<A>" + repeated("<B/>", maxElements) + "</A>";
    EXPECT_THROW(readDocument(document, XMLEncoding::Utf8, {}, root), XMLException);
    EXPECT_EQ(adder.count, maxElements - 1);
}

TEST(XmlHostile, AFileFullOfTheSmallestElementsIsRefusedInUnderASecond)
{
    const std::string document = repeated("<A>", 255) + repeated("<B/>", 4'100'000);
    ASSERT_LT(document.size(), maxDocumentSize);
    expectUnderASecond([&] { EXPECT_TRUE(faultOf(document)); });
}

TEST(XmlHostile, ADocumentOverTheSizeBoundIsRefused)
{
    const std::string fill(maxDocumentSize - 7, 'x');
    EXPECT_FALSE(faultOf("<A>" + fill + "</A>"));
    EXPECT_TRUE(faultOf("<A>" + fill + "x</A>"));
}

const char* const bomb = "<!DOCTYPE A [<!ENTITY a '0123456789'>"
                         "<!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                         "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>"
                         "<!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'>"
                         "<!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'>"
                         "<!ENTITY f '&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;'>"
                         "<!ENTITY g '&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;'>]><A>&g;</A>";

TEST(XmlHostile, AnEntityBombIsRefusedAtItsDeclaration)
{
    expectUnderASecond([] {
        EXPECT_EQ(messageOf(bomb),
                  L"A document type declaration is not accepted (line 1, column 13)");
    });
}

class XmlDoctype : public testing::TestWithParam<const char*> {};

TEST_P(XmlDoctype, IsRefused)
{
    EXPECT_NE(messageOf(GetParam()).find(L"document type declaration"), std::wstring::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, XmlDoctype,
    testing::Values("<!DOCTYPE A><A/>", "<!DOCTYPE A SYSTEM 'file:///etc/hostname'><A/>",
                    "<!DOCTYPE A PUBLIC '-//x' 'http://localhost/x'><A/>",
                    "<!DOCTYPE A [<!ENTITY x 'y'>]><A>&x;</A>",
                    "<!DOCTYPE A [<!ENTITY % p SYSTEM 'file:///etc/hostname'> %p;]><A/>",
                    "<!DOCTYPE A [<!ATTLIST A b CDATA 'default'>]><A/>"));

// Tells whether a file was opened since the last question.
class OpenWatch {
public:
    explicit OpenWatch(const std::string& path)
        : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        EXPECT_GE(inotify_add_watch(m_fd, path.c_str(), IN_OPEN | IN_ACCESS), 0);
    }
    ~OpenWatch() { ::close(m_fd); }
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    bool wasOpened() const
    {
        char events[4096];
        return ::read(m_fd, events, sizeof events) > 0;
    }

private:
    int m_fd;
};

TEST(XmlHostile, AnExternalEntityIsNeverOpened)
{
    const std::string path =
        (std::filesystem::temp_directory_path() / ("xml-marker-" + std::to_string(getpid())))
            .string();
    std::ofstream(path) << "marker text";
    const OpenWatch watch(path);
    for (const std::string& declaration : {"<!ENTITY x SYSTEM '" + path + "'>]><A>&x;</A>",
                                           "<!ENTITY x SYSTEM 'file://" + path + "'>]><A>&x;</A>",
                                           "<!ENTITY % x SYSTEM '" + path + "'> %x;]><A/>"}) {
        XMLElementA root;
        try {
            readDocument("<!DOCTYPE A [" + declaration, XMLEncoding::Utf8, {}, root);
            ADD_FAILURE() << declaration;
        } catch (const XMLException& error) {
            EXPECT_EQ(error.message().find(L"marker text"), std::wstring::npos);
        }
        EXPECT_EQ(root, XMLElementA());
    }
    EXPECT_TRUE(faultOf("<!DOCTYPE A SYSTEM '" + path + "'><A/>"));
    EXPECT_FALSE(watch.wasOpened());

    std::ifstream again(path);
    EXPECT_TRUE(watch.wasOpened()) << "the watch itself must see an opening";
    std::filesystem::remove(path);
}

class XmlBadBytes : public testing::TestWithParam<std::string_view> {};

TEST_P(XmlBadBytes, AreRefusedInTextAndInAttributes)
{
    EXPECT_TRUE(faultOf("<A>" + std::string(GetParam()) + "</A>"));
    EXPECT_TRUE(faultOf("<A b='" + std::string(GetParam()) + "'/>"));
}

INSTANTIATE_TEST_SUITE_P(Texts, XmlBadBytes,
                         testing::Values(std::string_view("\0", 1), "\x01", "\x1B", "\xFF", "\x80",
                                         "\xC0\x80", "\xE2\x82", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                         "\xEF\xBF\xBF", "&#0;", "&#1;", "&#xD800;", "&#x110000;",
                                         "&#xFFFF;", "&none;", "&", "<"));

} // namespace
