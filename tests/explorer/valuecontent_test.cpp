// What values are taken for, and texts in their encodings.
#include <gtest/gtest.h>

#include <oviapi/text.h>

#include "explorer/hexview.h"
#include "explorer/imageview.h"
#include "explorer/valuecontent.h"

namespace {

using namespace std::string_literals;

TextEncoding encodingOf(std::string_view bytes, bool whole = true)
{
    return guessEncoding({bytes, whole});
}

ValueForm formOf(std::string_view bytes, bool isText = false)
{
    return guessForm({bytes, true}, isText);
}

std::string in(TextEncoding encoding, const wchar_t* text)
{
    return encodedText(text, {encoding}).value();
}

constexpr const wchar_t* russian =
    L"\u0421\u044A\u0435\u0448\u044C \u0436\u0435 \u0435\u0449\u0451 \u044D\u0442\u0438\u0445 "
    L"\u043C\u044F\u0433\u043A\u0438\u0445 "
    L"\u0444\u0440\u0430\u043D\u0446\u0443\u0437\u0441\u043A\u0438\u0445 "
    L"\u0431\u0443\u043B\u043E\u043A, \u0434\u0430 \u0432\u044B\u043F\u0435\u0439 "
    L"\u0447\u0430\u044E";

TEST(Encoding, IsGuessedByTheMarkFirst)
{
    EXPECT_EQ(encodingOf("\xEF\xBB\xBFtext"), TextEncoding::Utf8);
    EXPECT_EQ(encodingOf("\xFF\xFEt\0"s), TextEncoding::Utf16Little);
    EXPECT_EQ(encodingOf("\xFE\xFF\0t"s), TextEncoding::Utf16Big);
}

TEST(Encoding, IsUtf8WhereTheBytesAreThat)
{
    EXPECT_EQ(encodingOf(""), TextEncoding::Utf8);
    EXPECT_EQ(encodingOf("plain"), TextEncoding::Utf8);
    EXPECT_EQ(encodingOf(in(TextEncoding::Utf8, russian)), TextEncoding::Utf8);
    const std::string cut = in(TextEncoding::Utf8, russian).substr(0, 3); // half a letter
    EXPECT_EQ(encodingOf(cut, false), TextEncoding::Utf8);
}

TEST(Encoding, OneByteACharacterIsToldByItsLetters)
{
    for (const TextEncoding encoding : {TextEncoding::Koi8, TextEncoding::Windows1251})
        EXPECT_EQ(encodingOf(in(encoding, russian)), encoding) << nameOf(encoding);
    EXPECT_EQ(encodingOf("caf\xE9 cr\xE8me, fa\xE7\x61\x64\x65"), TextEncoding::Latin1);
    EXPECT_EQ(encodingOf("Stra\xDF\x65 und \xC4hre"), TextEncoding::Latin1);
}

TEST(Form, IsWhatTheBytesLookLike)
{
    EXPECT_EQ(formOf("some text\n\ttabs"), ValueForm::Text);
    EXPECT_EQ(formOf(""), ValueForm::Text);
    EXPECT_EQ(formOf("a\0b"s), ValueForm::Hex);
    EXPECT_EQ(formOf("\xDE\xAD\xBE\xEF"), ValueForm::Hex);
    EXPECT_EQ(formOf(in(TextEncoding::Koi8, russian)), ValueForm::Text);
    EXPECT_EQ(formOf("\xFF\xFEt\0"s), ValueForm::Text);
    EXPECT_EQ(formOf("\x89PNG\r\n\x1A\n rest"), ValueForm::Image);
    EXPECT_EQ(formOf("\xFF\xD8\xFF\xE0 rest"), ValueForm::Image);
    EXPECT_EQ(formOf("BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0"s), ValueForm::Image);
}

TEST(Form, ATextThatBeginsLikeAPictureIsAText)
{
    EXPECT_EQ(formOf("BMW is a car, and this is longer than a header"), ValueForm::Text);
    EXPECT_EQ(formOf("BM"), ValueForm::Text);
}

TEST(Form, WhatTheDatabaseCallsTextIsShownAsSuch)
{
    EXPECT_EQ(formOf("a\x01\x02", true), ValueForm::Text);
    EXPECT_EQ(formOf("\xDE\xAD", true), ValueForm::Text);
}

TEST(TextValue, EveryEncodingReadsWhatItWrote)
{
    for (const TextEncoding encoding : allEncodings) {
        const bool latin = encoding == TextEncoding::Latin1;
        const std::wstring text = latin ? L"na\u00EFve \u00DF\nline" : L"\u0416\u0443\u043A\nline";
        for (const bool mark : {false, true}) {
            for (const bool returns : {false, true}) {
                const bool marked = mark && encoding <= TextEncoding::Utf16Big;
                const TextStyle style{encoding, marked, returns};
                const auto bytes = encodedText(text, style);
                ASSERT_TRUE(bytes) << nameOf(encoding);
                EXPECT_EQ(styleOf(*bytes, encoding), style) << nameOf(encoding);
                EXPECT_EQ(decodedText(*bytes, style), text) << nameOf(encoding);
            }
        }
    }
}

TEST(TextValue, CharactersBeyondTheBasicPlaneSurvive)
{
    const std::wstring text = L"\U0001F600 \U0010FFFF";
    for (const TextEncoding encoding :
         {TextEncoding::Utf8, TextEncoding::Utf16Little, TextEncoding::Utf16Big})
        EXPECT_EQ(decodedText(encodedText(text, {encoding}).value(), {encoding}), text);
}

TEST(TextValue, WhatAnEncodingLacksIsRefused)
{
    EXPECT_FALSE(encodedText(L"\u0416", {TextEncoding::Latin1}));
    EXPECT_FALSE(encodedText(L"\u4E00", {TextEncoding::Koi8}));
    EXPECT_FALSE(encodedText(L"\u4E00", {TextEncoding::Windows1251}));
    EXPECT_TRUE(encodedText(L"?", {TextEncoding::Koi8})) << "a question mark is a character";
}

TEST(TextValue, BytesThatAreNotValidDoNotComeBackTheSame)
{
    const auto returns = [](std::string_view bytes, TextEncoding encoding) {
        const TextStyle style = styleOf(bytes, encoding);
        return encodedText(decodedText(bytes, style), style) == bytes;
    };
    EXPECT_TRUE(returns("one\r\ntwo\r\n", TextEncoding::Utf8));
    EXPECT_FALSE(returns("a\xFFz", TextEncoding::Utf8));
    EXPECT_FALSE(returns("\x00\xD8"s, TextEncoding::Utf16Little)) << "half of a pair";
    EXPECT_FALSE(returns("abc", TextEncoding::Utf16Big)) << "an odd number of bytes";
    EXPECT_TRUE(returns("one\r\ntwo\n", TextEncoding::Utf8)) << "line ends of two kinds";
}

TEST(TextValue, ACutStandsBetweenTwoCharacters)
{
    EXPECT_EQ(wholeCharacters("ab\xD0", TextEncoding::Utf8), 2U);
    EXPECT_EQ(wholeCharacters("ab\xD0\xB0", TextEncoding::Utf8), 4U);
    EXPECT_EQ(wholeCharacters("\xF0\x9F\x98", TextEncoding::Utf8), 0U);
    EXPECT_EQ(wholeCharacters("\x80\x80\x80\x80", TextEncoding::Utf8), 4U) << "no text at all";
    EXPECT_EQ(wholeCharacters("a\0b"s, TextEncoding::Utf16Little), 2U);
    EXPECT_EQ(wholeCharacters("a\0\x3D\xD8"s, TextEncoding::Utf16Little), 2U);
    EXPECT_EQ(wholeCharacters("\xD0", TextEncoding::Koi8), 1U);
}

TEST(Utf8Check, TakesATextInAnyPieces)
{
    const std::string text = in(TextEncoding::Utf8, russian);
    for (const size_t size : {1U, 2U, 3U, 7U, 1000U}) {
        Utf8Check check;
        for (size_t at = 0; at < text.size(); at += size)
            EXPECT_TRUE(check.add(std::string_view(text).substr(at, size)));
        EXPECT_TRUE(check.isComplete());
    }
    Utf8Check half;
    EXPECT_TRUE(half.add("a\xD0"));
    EXPECT_FALSE(half.isComplete());
    EXPECT_FALSE(half.add("a"));
    EXPECT_FALSE(Utf8Check().add("a\0b"s));
    EXPECT_FALSE(Utf8Check().add("\xC0\x80"));
}

TEST(Offset, IsDecimalOrHexadecimal)
{
    EXPECT_EQ(offsetIn(L"0"), 0);
    EXPECT_EQ(offsetIn(L" 1\u00A0024 "), 1024);
    EXPECT_EQ(offsetIn(L"0x1F"), 31);
    EXPECT_EQ(offsetIn(L"0Xff"), 255);
    EXPECT_EQ(offsetIn(L"9223372036854775807"), INT64_MAX);
    for (const wchar_t* text :
         {L"", L"0x", L"1F", L"-1", L"1.5", L"9223372036854775808", L"0xFFFFFFFFFFFFFFFF", L"ten"})
        EXPECT_FALSE(offsetIn(text)) << OviAPI::wideToUtf8(text);
}

TEST(Sought, IsTextOrBytes)
{
    EXPECT_EQ(soughtBytes(L"abc"), "abc");
    EXPECT_EQ(soughtBytes(L"\u0416"), "\xD0\x96");
    EXPECT_EQ(soughtBytes(L"0x00 ff 1A"), "\x00\xFF\x1A"s);
    EXPECT_EQ(soughtBytes(L" "), " ");
    for (const wchar_t* text : {L"", L"0x", L"0x1", L"0xZZ"})
        EXPECT_FALSE(soughtBytes(text)) << OviAPI::wideToUtf8(text);
}

TEST(FittedPicture, IsNeverEnlargedAndKeepsItsProportions)
{
    EXPECT_EQ(fittedRect({10, 20}, {100, 100}), (OviAPI::Rect{45, 40, 55, 60}));
    EXPECT_EQ(fittedRect({400, 200}, {100, 100}), (OviAPI::Rect{0, 25, 100, 75}));
    EXPECT_EQ(fittedRect({1000, 1}, {10, 10}).height(), 1);
    EXPECT_TRUE(fittedRect({0, 0}, {10, 10}).isEmpty());
    EXPECT_TRUE(fittedRect({10, 10}, {0, 10}).isEmpty());
}

} // namespace
