#include <oviapi/resourcefile.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <oviapi/picture.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/text.h>

#include "tools/rrsc/compiler.h"

namespace fs = std::filesystem;
using OviAPI::Color;
using OviAPI::Picture;
using OviAPI::ResourceFile;
using OviAPI::ResourceManager;
using namespace OviAPI::ResourceFormat;
using Entries = std::vector<std::pair<Key, std::string>>;

namespace {

constexpr size_t countAt = 16;

Key text(uint32_t id, uint32_t language)
{
    return {Kind::String, id, language, 0};
}

Key image(uint32_t id, uint32_t scale, uint32_t language = anyLanguage)
{
    return {Kind::Picture, id, language, scale};
}

std::string sample()
{
    return Rrsc::write({{text(7, 1), "seven"},
                        {text(7, 2), "\xD1\x81\xD0\xB5\xD0\xBC\xD1\x8C"},
                        {text(9, 1), ""},
                        {image(3, 1), "not a picture"}});
}

// The number at the place replaced, and the checksum made good again.
std::string changed(std::string bytes, size_t at, uint32_t value)
{
    std::string number;
    putNumber(number, value);
    bytes.replace(at, number.size(), number);
    std::string sum;
    putNumber(sum, crc32(std::string_view(bytes).substr(0, bytes.size() - checksumSize)));
    return bytes.replace(bytes.size() - checksumSize, checksumSize, sum);
}

size_t fieldAt(size_t entry, size_t field)
{
    return headerSize + entry * entrySize + 4 * field;
}

std::wstring faultOf(std::string bytes)
{
    std::wstring error;
    EXPECT_FALSE(ResourceFile::parse(std::move(bytes), error).has_value());
    return error;
}

TEST(ResourceFile, GivesWhatWasWritten)
{
    std::wstring error;
    const auto file = ResourceFile::parse(sample(), error);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->count(), 4U);
    EXPECT_EQ(file->find(text(7, 1)), "seven");
    EXPECT_EQ(file->find(text(9, 1)), "");
    EXPECT_EQ(file->find(image(3, 1)), "not a picture");
    EXPECT_EQ(file->find(text(9, 2)), std::nullopt);
    EXPECT_EQ(file->find(text(8, 1)), std::nullopt);
    EXPECT_TRUE(error.empty());
}

TEST(ResourceFile, StaysReadableWhenItIsMoved)
{
    std::wstring error;
    auto first = ResourceFile::parse(Rrsc::write({{text(7, 1), "a"}}), error);
    ASSERT_TRUE(first.has_value());
    const ResourceFile second = std::move(*first);
    EXPECT_EQ(second.find(text(7, 1)), "a");
}

TEST(ResourceFile, AFileWithoutEntriesIsValid)
{
    std::wstring error;
    EXPECT_TRUE(ResourceFile::parse(Rrsc::write({}), error).has_value());
}

TEST(ResourceFile, TheChecksumIsTheOneOfIso3309)
{
    EXPECT_EQ(crc32("123456789"), 0xCBF43926U);
    EXPECT_EQ(crc32(""), 0U);
}

TEST(ResourceFile, IsRefusedCutAtEveryByte)
{
    const std::string bytes = sample();
    for (size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(faultOf(bytes.substr(0, length)).empty()) << length;
    EXPECT_FALSE(faultOf(bytes + '\0').empty());
}

TEST(ResourceFile, IsRefusedWithAnyBitTurned)
{
    const std::string bytes = sample();
    for (size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        std::string wrong = bytes;
        wrong[bit / 8] = static_cast<char>(wrong[bit / 8] ^ 1 << bit % 8);
        EXPECT_FALSE(faultOf(wrong).empty()) << bit;
    }
}

TEST(ResourceFile, EveryOffsetAndLengthIsChecked)
{
    const std::string bytes = sample();
    for (size_t entry = 0; entry < 4; ++entry) {
        for (const size_t field : {size_t{4}, size_t{5}}) {
            const size_t at = fieldAt(entry, field);
            const uint32_t old = getNumber(bytes, at);
            for (const uint32_t value : {old - 1, old + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
                EXPECT_FALSE(faultOf(changed(bytes, at, value)).empty()) << entry << " " << value;
        }
    }
}

TEST(ResourceFile, EveryKindAndNumberIsChecked)
{
    const std::string bytes = sample();
    for (size_t entry = 0; entry < 4; ++entry) {
        for (const size_t field : {size_t{0}, size_t{1}}) {
            for (const uint32_t value : {0U, 0x80000000U, 0xFFFFFFFFU})
                EXPECT_FALSE(faultOf(changed(bytes, fieldAt(entry, field), value)).empty())
                    << entry << " " << field << " " << value;
        }
    }
}

TEST(ResourceFile, ACountBeyondTheFileIsRefusedWithoutReserving)
{
    for (const uint32_t count : {5U, 6U, 0x0AAAAAAAU, 0x7FFFFFFFU, 0xFFFFFFFFU})
        EXPECT_FALSE(faultOf(changed(sample(), countAt, count)).empty()) << count;
}

TEST(ResourceFile, FewerEntriesThanDataAreRefused)
{
    EXPECT_EQ(faultOf(changed(Rrsc::write({{text(1, 1), "x"}}), countAt, 0)),
              L"It holds data that belongs to no entry.");
}

TEST(ResourceFile, OverlappingEntriesAreRefused)
{
    const std::string bytes = Rrsc::write({{text(1, 1), "abcd"}, {text(1, 2), "efgh"}});
    const uint32_t first = getNumber(bytes, fieldAt(0, 4));
    EXPECT_FALSE(faultOf(changed(bytes, fieldAt(1, 4), first)).empty());
    EXPECT_FALSE(faultOf(changed(bytes, fieldAt(1, 4), first + 2)).empty());
    EXPECT_FALSE(faultOf(changed(bytes, fieldAt(0, 5), 8)).empty());
}

TEST(ResourceFile, NumbersThatOccurTwiceOrOutOfOrderAreRefused)
{
    const std::wstring fault = L"An entry occurs twice or out of order.";
    EXPECT_EQ(faultOf(Rrsc::write({{text(1, 1), "a"}, {text(1, 1), "b"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{text(2, 1), "a"}, {text(1, 1), "b"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{image(1, 1), "a"}, {text(1, 1), "b"}})), fault);
}

TEST(ResourceFile, KindsLanguagesAndScalesOutsideTheirRangeAreRefused)
{
    const std::wstring fault = L"An entry is of an unknown kind.";
    EXPECT_EQ(faultOf(Rrsc::write({{{Kind{3}, 1, 1, 0}, "a"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{text(1, 0), "a"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{text(1, 3), "a"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{{Kind::String, 1, 1, 1}, "a"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{image(1, 0), "a"}})), fault);
    EXPECT_EQ(faultOf(Rrsc::write({{image(1, 4), "a"}})), fault);
}

TEST(ResourceFile, TextsThatAreNotUtf8OrHoldAZeroAreRefused)
{
    for (const std::string_view wrong : {"\xFF", "\xED\xA0\x80", "\xC0\x80", "a\xE2\x82"})
        EXPECT_EQ(faultOf(Rrsc::write({{text(1, 1), std::string(wrong)}})),
                  L"A text is not valid.");
    EXPECT_EQ(faultOf(Rrsc::write({{text(1, 1), std::string("a\0b", 3)}})),
              L"A text is not valid.");
}

TEST(ResourceFile, AnotherVersionIsNamed)
{
    EXPECT_EQ(faultOf(changed(sample(), 8, 2)), L"It was made for another version of the program.");
}

TEST(ResourceFile, AMillionWrongEntriesAreRefusedInLinearTime)
{
    Entries entries;
    for (uint32_t id = 1; id <= 1'000'000; ++id)
        entries.emplace_back(text(id, 1), "");
    const std::string bytes = Rrsc::write(entries);
    const std::string wrong = changed(bytes, fieldAt(999'999, 1), 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(faultOf(wrong).empty());
    // 0.1 s; comparing every entry with every other would take hours.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

class ResourceManagerOf : public testing::Test {
protected:
    ResourceManagerOf()
    {
        std::string name = (fs::temp_directory_path() / "ovi-rrs-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }
    ~ResourceManagerOf() override { fs::remove_all(m_folder); }

    std::wstring save(const std::string& bytes) const
    {
        const fs::path path = m_folder / "typical.rrs";
        std::ofstream(path, std::ios::binary) << bytes;
        return path.wstring();
    }

    fs::path m_folder;
};

std::wstring loaded(const ResourceManager& manager, int id, int language = -1)
{
    wchar_t buffer[64];
    return manager.loadString(id, buffer, 64, language) ? buffer : L"(none)";
}

TEST_F(ResourceManagerOf, AMissingFileFailsWithASentence)
{
    const ResourceManager manager(L"none/typical.rrs");
    EXPECT_TRUE(manager.failed());
    EXPECT_EQ(manager.failure(), L"The resource file \"none/typical.rrs\" could not be read.");
    EXPECT_EQ(loaded(manager, 7), L"(none)");
    Picture picture;
    EXPECT_FALSE(manager.loadPicture(3, &picture));
    EXPECT_TRUE(ResourceManager(nullptr).failed());
}

TEST_F(ResourceManagerOf, AFolderAPipeOrAnEndlessFileFails)
{
    EXPECT_TRUE(ResourceManager(m_folder.wstring().c_str()).failed());
    ASSERT_EQ(::mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(ResourceManager((m_folder / "pipe").wstring().c_str()).failed());
    EXPECT_TRUE(ResourceManager(L"/dev/zero").failed());
}

TEST_F(ResourceManagerOf, AFileOver64MebibytesIsRefusedUnread)
{
    const std::wstring path = save(sample());
    fs::resize_file(path, maxFileSize + 1);
    const ResourceManager manager(path.c_str());
    EXPECT_EQ(manager.failure(), L"The resource file \"" + path + L"\" could not be read.");
}

TEST_F(ResourceManagerOf, ADamagedFileFailsWithItsReason)
{
    const std::wstring path = save("RRS");
    const ResourceManager manager(path.c_str());
    EXPECT_TRUE(manager.failed());
    EXPECT_EQ(manager.failure(),
              L"The resource file \"" + path + L"\" is damaged. It is not a resource file.");
}

TEST_F(ResourceManagerOf, AnswersInTheCurrentLanguageOrTheOneAskedFor)
{
    ResourceManager manager(save(sample()).c_str());
    ASSERT_FALSE(manager.failed()) << OviAPI::wideToUtf8(manager.failure());
    EXPECT_EQ(loaded(manager, 7), L"seven");
    EXPECT_EQ(loaded(manager, 7, 2), L"\u0441\u0435\u043C\u044C");
    manager.setLanguage(ResourceManager::Russian);
    EXPECT_EQ(manager.language(), 2);
    EXPECT_EQ(loaded(manager, 7), L"\u0441\u0435\u043C\u044C");
    EXPECT_EQ(loaded(manager, 7, 1), L"seven");
}

TEST_F(ResourceManagerOf, ATextThatIsMissingInALanguageIsTakenInEnglish)
{
    ResourceManager manager(save(sample()).c_str());
    manager.setLanguage(2);
    EXPECT_EQ(loaded(manager, 9), L"");
    EXPECT_EQ(loaded(manager, 7, 5), L"seven");
    EXPECT_EQ(loaded(manager, 7, -2), L"seven");
    EXPECT_EQ(loaded(manager, 8), L"(none)");
    EXPECT_EQ(loaded(manager, 0), L"(none)");
    EXPECT_EQ(loaded(manager, -7), L"(none)");
}

TEST_F(ResourceManagerOf, CutsATextToTheBufferAndTerminatesIt)
{
    const ResourceManager manager(save(sample()).c_str());
    wchar_t buffer[8] = L"#######";
    EXPECT_TRUE(manager.loadString(7, buffer, 4));
    EXPECT_STREQ(buffer, L"sev");
    EXPECT_EQ(buffer[4], L'#');
    EXPECT_TRUE(manager.loadString(7, buffer, 6));
    EXPECT_STREQ(buffer, L"seven");
    EXPECT_TRUE(manager.loadString(7, buffer, 1));
    EXPECT_STREQ(buffer, L"");
    EXPECT_FALSE(manager.loadString(7, buffer, 0));
    EXPECT_FALSE(manager.loadString(7, buffer, -1));
    EXPECT_FALSE(manager.loadString(7, nullptr, 5));
}

TEST_F(ResourceManagerOf, ATextThatIsMissingLeavesTheBufferAsItWas)
{
    const ResourceManager manager(save(sample()).c_str());
    wchar_t buffer[4] = L"abc";
    EXPECT_FALSE(manager.loadString(8, buffer, 4));
    EXPECT_STREQ(buffer, L"abc");
}

TEST_F(ResourceManagerOf, APictureThatCannotBeDecodedLeavesThePictureAsItWas)
{
    const ResourceManager manager(save(sample()).c_str());
    Picture picture({2, 2}, Color::Red);
    EXPECT_FALSE(manager.loadPicture(3, &picture));
    EXPECT_FALSE(manager.loadTransparentPicture(3, &picture));
    EXPECT_FALSE(manager.loadPicture(4, &picture));
    EXPECT_FALSE(manager.loadPicture(4, nullptr));
    EXPECT_EQ(picture.pixel(0, 0), 0xFFFF0000U);
}

} // namespace
