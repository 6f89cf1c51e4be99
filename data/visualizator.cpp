#include "data/visualizator.h"

#include <algorithm>
#include <cctype>
#include <climits>

namespace {

// Longest line that is read: the "color" line of a block.
constexpr int lineSize = 256;

void skipSpace(FILE* file)
{
    int c = getc(file);
    while (c != EOF && isspace(c))
        c = getc(file);
    if (c != EOF)
        ungetc(c, file);
}

// As fscanf with "%d ", but defined for numbers of any length: they stop at the ends of int.
// Returns false, and leaves the number alone, when there is none.
bool readInt(FILE* file, int& number)
{
    skipSpace(file);
    int c = getc(file);
    const bool negative = c == '-';
    if (c == '-' || c == '+')
        c = getc(file);
    long long value = 0;
    bool found = false;
    for (; c >= '0' && c <= '9'; c = getc(file)) {
        found = true;
        value = std::min(value * 10 + (c - '0'), -static_cast<long long>(INT_MIN));
    }
    if (c != EOF)
        ungetc(c, file);
    if (!found)
        return false;
    number = static_cast<int>(negative ? -value : std::min<long long>(value, INT_MAX));
    skipSpace(file);
    return true;
}

// Each component as its low 8 bits.
int component(int value)
{
    return static_cast<int>(static_cast<unsigned>(value) & 255U);
}

} // namespace

xCVisualizator::xCVisualizator(const xCVisualizator& other)
    : Object()
    , penWidth(other.penWidth)
    , penStyle(other.penStyle)
    , shown(other.shown)
    , color(other.color)
{
}

xCVisualizator& xCVisualizator::operator=(const xCVisualizator& other)
{
    penWidth = other.penWidth;
    penStyle = other.penStyle;
    shown = other.shown;
    color = other.color;
    return *this;
}

bool xCVisualizator::save(FILE* file) const
{
    return fprintf(file, "%d\n%d\n%d\ncolor\n%d\n%d\n%d\n", penWidth, penStyle, shown ? 1 : 0,
                   component(color.red()), component(color.green()), component(color.blue())) > 0;
}

void xCVisualizator::load(FILE* file)
{
    int shownNumber = shown ? 1 : 0;
    readInt(file, penWidth);
    readInt(file, penStyle);
    readInt(file, shownNumber);
    shown = shownNumber != 0;

    char line[lineSize];
    if (!fgets(line, sizeof line, file))
        return;
    int red = color.red();
    int green = color.green();
    int blue = color.blue();
    bool any = readInt(file, red);
    any = readInt(file, green) || any;
    any = readInt(file, blue) || any;
    if (any)
        color = OviAPI::Color(red, green, blue);
}
