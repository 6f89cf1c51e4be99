#include <oviapi/text.h>
#include <xmlutils/adder.h>
#include <xmlutils/element.h>
#include <xmlutils/exception.h>
#include <xmlutils/limits.h>
#include <xmlutils/reader.h>
#include <xmlutils/writer.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using namespace XMLUtils;
namespace fs = std::filesystem;

// Every test has a folder of its own, and the locale is UTF-8.
class XmlFile : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
        std::string name = (fs::temp_directory_path() / "xmlfile-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
    }
    void TearDown() override
    {
        fs::remove_all(folder);
        std::setlocale(LC_CTYPE, "C");
    }

    std::wstring path(const char* name) const
    {
        return OviAPI::localeToWide((folder / name).native());
    }
    void store(const char* name, const std::string& bytes) const
    {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    }
    std::string content(const char* name) const
    {
        std::ostringstream all;
        all << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return all.str();
    }

    fs::path folder;
};

std::wstring readFault(const std::wstring& path)
{
    try {
        XMLElementA root;
        XMLFILEReaderA(path).read(root);
        return {};
    } catch (const XMLException& error) {
        return error.message();
    }
}

TEST_F(XmlFile, OptionsWrittenFromANamelessRootReadBack)
{
    XMLElementA root;
    XMLElementA& options = root.addChild("Options");
    options.addChild("LastLoadDirectory").setString(L" /home/\u0416 ", XMLEncoding::Utf8);
    XMLFILEWriterA(path("options.dat"), XMLEncoding::Utf8).write(root);

    const XMLFILEReaderA reader(path("options.dat"));
    EXPECT_EQ(reader.encoding(), XMLEncoding::Utf8);
    XMLElementA back;
    reader.read(back);
    EXPECT_EQ(back.getChild("Options"), options);
    EXPECT_EQ(back.getChild("Options").getChild("LastLoadDirectory").getString(reader.encoding()),
              L" /home/\u0416 ");
}

TEST_F(XmlFile, AHandWrittenIndexGoesToTheAdderWithItsWhiteSpaceCutOff)
{
    class Adder final : public IXMLAdderA {
    public:
        void addElement(const XMLElementA& config) const override
        {
            width += config.getChild("TermDesc").getChild("ScreenWidth").getInteger();
        }
        mutable int width = 0;
    };
    const Adder adder;
    store("defaults.xml",
          "<?xml version='1.0' encoding='KOI8-R'?>\n<ConfigsIndex>\n"
          "<Config><TermDesc><ScreenWidth>\n 640 </ScreenWidth></TermDesc></Config>\n"
          "<Config><TermDesc><ScreenWidth>800</ScreenWidth></TermDesc></Config>\n"
          "</ConfigsIndex>\n");
    const XMLFILEReaderA reader(path("defaults.xml"), " \t\r\n");
    EXPECT_EQ(reader.encoding(), XMLEncoding::Koi8R) << "known before the document is read";
    XMLElementA root("ConfigsIndex");
    root.setAdder(&adder);
    reader.read(root);
    EXPECT_EQ(adder.width, 1440);
    EXPECT_FALSE(root.hasChildren());
}

TEST_F(XmlFile, AFileMayBeReadTwice)
{
    store("a.xml", "<A><B/></A>");
    const XMLFILEReaderA reader(path("a.xml"));
    XMLElementA first;
    XMLElementA second;
    reader.read(first);
    reader.read(second);
    EXPECT_EQ(first, second);
}

TEST_F(XmlFile, AMissingFileIsNamedInTheMessage)
{
    EXPECT_EQ(readFault(path("none.xml")), L"The file \"" + path("none.xml") +
                                               L"\" could not be read: No such file or directory");
}

TEST_F(XmlFile, AnEmptyFileIsRefused)
{
    store("empty.xml", "");
    EXPECT_NE(readFault(path("empty.xml")), L"");
}

TEST_F(XmlFile, AnUnknownEncodingIsRefusedWhenTheFileIsOpened)
{
    store("a.xml", "<?xml version='1.0' encoding='EBCDIC'?><A/>");
    EXPECT_THROW(XMLFILEReaderA{path("a.xml")}, XMLException);
}

TEST_F(XmlFile, ADirectoryIsRefused)
{
    EXPECT_NE(readFault(path("")).find(L"Is a directory"), std::wstring::npos);
}

TEST_F(XmlFile, APipeIsRefusedWithoutWaitingForAWriter)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_NE(readFault(path("pipe")).find(L"not a regular file"), std::wstring::npos);
}

TEST_F(XmlFile, ADeviceIsRefused)
{
    EXPECT_NE(readFault(L"/dev/zero").find(L"not a regular file"), std::wstring::npos);
    EXPECT_NE(readFault(L"/dev/null").find(L"not a regular file"), std::wstring::npos);
}

TEST_F(XmlFile, ASymbolicLinkToAFileIsFollowedAndOneToAPipeRefused)
{
    store("a.xml", "<A/>");
    fs::create_symlink("a.xml", folder / "link");
    EXPECT_EQ(readFault(path("link")), L"");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder / "link2");
    EXPECT_NE(readFault(path("link2")), L"");
    fs::create_symlink("loop", folder / "loop");
    EXPECT_NE(readFault(path("loop")), L"");
}

TEST_F(XmlFile, AFileThatReportsNoSizeIsReadWhole)
{
    // Files of /proc have size 0 and content; this one is no XML, and that is what is reported.
    const std::wstring fault = readFault(L"/proc/self/status");
    EXPECT_NE(fault.find(L"Not well-formed: "), std::wstring::npos);
    EXPECT_EQ(fault.find(L"no element found"), std::wstring::npos) << "it was taken as empty";
}

TEST_F(XmlFile, AFileOverTheSizeBoundIsRefusedBeforeItIsRead)
{
    store("large.xml", "<A>");
    fs::resize_file(folder / "large.xml", maxDocumentSize + 1);
    EXPECT_NE(readFault(path("large.xml")).find(L"too large"), std::wstring::npos);
    fs::resize_file(folder / "large.xml", uintmax_t{1} << 40);
    EXPECT_NE(readFault(path("large.xml")).find(L"too large"), std::wstring::npos);
}

TEST_F(XmlFile, APathWithANulOrOutsideTheCharacterSetIsRefusedAndOpensNoOtherFile)
{
    store("a", "<A/>");
    EXPECT_NE(readFault(path("a") + std::wstring(L"\0.xml", 5)), L"");
    store("?", "<A/>");
    std::setlocale(LC_CTYPE, "C");
    EXPECT_NE(readFault(path("") + L"\u0416"), L"");
}

TEST_F(XmlFile, APathInAnotherAlphabetIsReadAndWritten)
{
    const std::wstring russian = path("") + L"\u0416.xml";
    XMLFILEWriterA(russian).write(XMLElementA("A"));
    EXPECT_EQ(readFault(russian), L"");
    EXPECT_TRUE(fs::exists(folder / "\xD0\x96.xml"));
}

TEST_F(XmlFile, AFileIsReplacedAsAWhole)
{
    store("a.xml", "old");
    XMLFILEWriterA(path("a.xml"), XMLEncoding::Utf8).write(XMLElementA("A"));
    EXPECT_EQ(content("a.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<A/>\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST_F(XmlFile, ARefusedDocumentLeavesTheFileAsItWas)
{
    store("a.xml", "old");
    XMLElementA root("Root");
    root.addChild("not a name");
    EXPECT_THROW(XMLFILEWriterA(path("a.xml")).write(root), XMLException);
    EXPECT_EQ(content("a.xml"), "old");
}

TEST_F(XmlFile, AFailureToWriteIsAnXmlExceptionWithTheReason)
{
    try {
        XMLFILEWriterA(path("none/\xD0\x96.xml")).write(XMLElementA("A"));
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_NE(error.message().find(L"No such file or directory"), std::wstring::npos);
        EXPECT_NE(error.message().find(path("none/\xD0\x96.xml")), std::wstring::npos);
    }
}

TEST_F(XmlFile, AnErrorInADocumentNamesItsFileAndKeepsThePlace)
{
    store("broken.xml", "<A>\n</B>");
    const std::wstring broken = path("broken.xml");
    try {
        XMLElementA root;
        XMLFILEReaderA(broken).read(root);
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.file(), broken);
        EXPECT_EQ(error.line(), 2);
        EXPECT_EQ(error.message(), L"The file \"" + broken +
                                       L"\" could not be read: Not well-formed: mismatched tag "
                                       L"(line 2, column 3)");
        EXPECT_EQ(OviAPI::utf8ToWide(error.what()), error.message());
    }
}

TEST_F(XmlFile, AnUnknownEncodingNamesTheFileToo)
{
    store("odd.xml", "<?xml version=\"1.0\" encoding=\"odd\"?><A/>");
    try {
        const XMLFILEReaderA reader(path("odd.xml"));
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.file(), path("odd.xml"));
    }
}

// Reads another file for every element.
class ReadingAdder final : public IXMLAdderA {
public:
    explicit ReadingAdder(std::wstring path)
        : m_path(std::move(path))
    {
    }
    void addElement(const XMLElementA&) const override
    {
        XMLElementA other;
        XMLFILEReaderA(m_path).read(other);
    }

private:
    std::wstring m_path;
};

TEST_F(XmlFile, AnErrorNamesTheFileThatItIsIn)
{
    store("outer.xml", "<A><B/></A>");
    store("inner.xml", "<C>");
    const ReadingAdder adder(path("inner.xml"));
    XMLElementA root("A");
    root.setAdder(&adder);
    try {
        XMLFILEReaderA(path("outer.xml")).read(root);
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.file(), path("inner.xml"));
        EXPECT_EQ(error.message().find(path("outer.xml")), std::wstring::npos);
    }
}

TEST_F(XmlFile, ADocumentThatCannotBeWrittenNamesItsFile)
{
    XMLElementA root("Root");
    root.addChild("not a name");
    try {
        XMLFILEWriterA(path("a.xml")).write(root);
        FAIL();
    } catch (const XMLException& error) {
        EXPECT_EQ(error.file(), path("a.xml"));
        EXPECT_NE(error.message().find(L"could not be written"), std::wstring::npos);
    }
}

TEST_F(XmlFile, AWriterForNoEncodingIsRefused)
{
    EXPECT_THROW(XMLFILEWriterA(path("a.xml"), XMLEncoding::Unknown), XMLException);
    EXPECT_FALSE(fs::exists(folder / "a.xml"));
}

TEST_F(XmlFile, EveryEncodingIsWrittenAndDetected)
{
    XMLElementA root("Root");
    root.setString(L"\u0416 \U0001F600", XMLEncoding::Utf8);
    for (const XMLEncoding encoding :
         {XMLEncoding::Utf8, XMLEncoding::Koi8R, XMLEncoding::Windows1251, XMLEncoding::Utf16LE,
          XMLEncoding::Utf16BE}) {
        XMLFILEWriterA(path("a.xml"), encoding).write(root);
        const XMLFILEReaderA reader(path("a.xml"));
        EXPECT_EQ(reader.encoding(), encoding);
        XMLElementA back;
        reader.read(back);
        EXPECT_EQ(back, root);
    }
}

} // namespace
