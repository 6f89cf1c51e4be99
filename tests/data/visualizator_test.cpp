#include "data/visualizator.h"

#include <climits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace {

struct Close {
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, Close>;

File fileWith(const std::string& text)
{
    File file(tmpfile());
    EXPECT_EQ(fputs(text.c_str(), file.get()) >= 0, true);
    rewind(file.get());
    return file;
}

std::string textOf(FILE* file)
{
    rewind(file);
    std::string text;
    for (int c = getc(file); c != EOF; c = getc(file))
        text += static_cast<char>(c);
    return text;
}

xCVisualizator loaded(const std::string& text)
{
    xCVisualizator v(OviAPI::Color(1, 2, 3), 7, 4, false);
    v.load(fileWith(text).get());
    return v;
}

void expectRecord(const xCVisualizator& v, int width, int style, bool shown, OviAPI::Color color)
{
    EXPECT_EQ(v.penWidth, width);
    EXPECT_EQ(v.penStyle, style);
    EXPECT_EQ(v.shown, shown);
    EXPECT_EQ(v.color, color);
}

} // namespace

TEST(Visualizator, WritesSevenLines)
{
    File file(tmpfile());
    EXPECT_TRUE(xCVisualizator(OviAPI::Color(10, 200, 255), 2, 3, true).save(file.get()));
    EXPECT_EQ(textOf(file.get()), "2\n3\n1\ncolor\n10\n200\n255\n");
}

TEST(Visualizator, ReadsBackWhatItWrote)
{
    File file(tmpfile());
    const xCVisualizator first(OviAPI::Color(10, 200, 255), 2, 3, true);
    const xCVisualizator second(OviAPI::Color(0, 0, 0), 9, 1, false);
    first.save(file.get());
    second.save(file.get());
    rewind(file.get());
    xCVisualizator a;
    xCVisualizator b;
    a.load(file.get());
    b.load(file.get());
    expectRecord(a, 2, 3, true, OviAPI::Color(10, 200, 255));
    expectRecord(b, 9, 1, false, OviAPI::Color(0, 0, 0));
}

TEST(Visualizator, SaysWhenAFileDoesNotTakeTheBlock)
{
    File file(fopen("/dev/null", "r"));
    EXPECT_FALSE(xCVisualizator().save(file.get()));
}

TEST(Visualizator, ReadsAnyNumberButZeroAsShown)
{
    EXPECT_TRUE(loaded("1\n0\n5\ncolor\n0\n0\n0\n").shown);
    EXPECT_TRUE(loaded("1\n0\n-1\ncolor\n0\n0\n0\n").shown);
    EXPECT_FALSE(loaded("1\n0\n0\ncolor\n0\n0\n0\n").shown);
}

TEST(Visualizator, DoesNotCheckLineBreaksBetweenNumbers)
{
    expectRecord(loaded(" 2 3\n\n\n1 color\n10 20\t30"), 2, 3, true, OviAPI::Color(10, 20, 30));
}

TEST(Visualizator, DoesNotCompareTheFourthLine)
{
    expectRecord(loaded("2\n3\n1\n anything at all\n10\n20\n30\n"), 2, 3, true,
                 OviAPI::Color(10, 20, 30));
}

TEST(Visualizator, ReadsAtMost255CharactersOfTheFourthLine)
{
    const std::string line(255, 'x');
    expectRecord(loaded("2\n3\n1\n" + line + "10\n20\n30\n"), 2, 3, true,
                 OviAPI::Color(10, 20, 30));
}

TEST(Visualizator, LeavesAFieldWhoseNumberCannotBeReadAsItWas)
{
    // A scan that finds no number stays where it is, and so does every later one of its line.
    expectRecord(loaded("2\nwide\n1\ncolor\n"), 2, 4, false, OviAPI::Color(1, 2, 3));
    expectRecord(loaded("2\n3\n1\ncolor\n10\nx\n30\n"), 2, 3, true, OviAPI::Color(10, 2, 3));
}

TEST(Visualizator, KeepsWhatACutFileDoesNotHold)
{
    expectRecord(loaded(""), 7, 4, false, OviAPI::Color(1, 2, 3));
    expectRecord(loaded("5"), 5, 4, false, OviAPI::Color(1, 2, 3));
    expectRecord(loaded("5\n6\n1\n"), 5, 6, true, OviAPI::Color(1, 2, 3));
    expectRecord(loaded("5\n6\n1\ncolor\n9\n"), 5, 6, true, OviAPI::Color(9, 2, 3));
}

TEST(Visualizator, KeepsAColorByNumberWhenTheFileHasNone)
{
    xCVisualizator v(OviAPI::Color(6), 1, 0, true);
    v.load(fileWith("1\n0\n1\ncolor\n").get());
    EXPECT_EQ(v.color, OviAPI::Color(6));
}

TEST(Visualizator, TakesTheLowEightBitsOfAComponent)
{
    EXPECT_EQ(loaded("1\n0\n1\ncolor\n300\n-1\n256\n").color, OviAPI::Color(44, 255, 0));
}

TEST(Visualizator, StopsAtTheEndsOfIntForNumbersOfAnyLength)
{
    const std::string digits(500, '9');
    expectRecord(loaded(digits + "\n-" + digits + "\n1\ncolor\n1\n2\n3\n"), INT_MAX, INT_MIN, true,
                 OviAPI::Color(1, 2, 3));
}

TEST(Visualizator, CopiesTheRecordAndNotTheObject)
{
    const xCVisualizator source(OviAPI::Color(10, 20, 30), 2, 3, false);
    const xCVisualizator copy(source);
    xCVisualizator assigned;
    assigned = source;
    expectRecord(copy, 2, 3, false, OviAPI::Color(10, 20, 30));
    expectRecord(assigned, 2, 3, false, OviAPI::Color(10, 20, 30));
}

TEST(Visualizator, GivesAPenOfItsFields)
{
    const OviAPI::Pen pen = xCVisualizator(OviAPI::Color(10, 20, 30), 2, 1, true).pen();
    EXPECT_EQ(pen, OviAPI::Pen(OviAPI::Color(10, 20, 30), 2, OviAPI::Pen::Dash));
}
