#include <oviapi/colordialog.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cwchar>

#include <oviapi/application.h>
#include <oviapi/button.h>
#include <oviapi/lineedit.h>
#include <oviapi/painter.h>
#include <oviapi/palette.h>
#include <oviapi/panel.h>
#include <oviapi/phrases.h>
#include <oviapi/spinbox.h>
#include <oviapi/static.h>

namespace OviAPI {

namespace {

constexpr int columns = 8;
constexpr int rows = 6;
constexpr int cell = 28;   // px, with the gap to the next one
constexpr int margin = 12; // px around everything
constexpr int fieldHeight = 26;
constexpr int labelWidth = 76;
constexpr int fieldWidth = 92;
constexpr int buttonWidth = 88;

// One of the colours that are offered: greys in the first row, hues from light to dark below.
Color offered(int number)
{
    const int column = number % columns;
    const int row = number / columns;
    if (row == 0) {
        const int grey = 255 * column / (columns - 1);
        return {grey, grey, grey};
    }
    constexpr std::array<double, columns> hues = {0, 30, 55, 120, 175, 210, 250, 300};
    constexpr std::array<double, rows> lightness = {0, 0.85, 0.68, 0.5, 0.36, 0.22};
    const double l = lightness[static_cast<size_t>(row)];
    const double chroma = 1 - std::fabs(2 * l - 1);
    const auto component = [&](double offset) {
        const double h = std::fmod(hues[static_cast<size_t>(column)] / 30 + offset, 12);
        const double part = std::max(-1.0, std::min({h - 3, 9 - h, 1.0}));
        return static_cast<int>(std::lround(255 * (l - chroma / 2 * part)));
    };
    return {component(0), component(8), component(4)};
}

std::wstring codeOf(Color color)
{
    wchar_t text[8];
    std::swprintf(text, std::size(text), L"#%06x", color.rgb());
    return text;
}

// Six hexadecimal digits with or without the sign in front.
bool readCode(std::wstring text, Color& color)
{
    if (text.starts_with(L'#'))
        text.erase(0, 1);
    constexpr std::wstring_view digits = L"0123456789abcdefABCDEF";
    if (text.size() != 6 || text.find_first_not_of(digits) != text.npos)
        return false;
    const auto rgb = static_cast<int>(std::wcstol(text.c_str(), nullptr, 16));
    color = Color(rgb >> 16, rgb >> 8, rgb);
    return true;
}

// The colours that are offered, as fields in rows: the arrows go through them.
class Swatches : public WPanel {
public:
    Swatches() { setStyle(TabStop); }

    virtual bool onPick() { return false; }

    Color picked() const { return offered(m_current); }
    void setCurrent(Color color)
    {
        m_current = 0;
        m_marked = false;
        for (int i = 0; i < columns * rows && !m_marked; ++i) {
            m_marked = offered(i) == color;
            m_current = m_marked ? i : 0;
        }
        setAccessibleDescription(codeOf(color).c_str());
        repaint();
    }

    bool onKeyDown(VirtualKey key) override
    {
        const int column = m_current % columns;
        const int row = m_current / columns;
        switch (key.getKeyboardKey()) {
        case KeyLeft:
            return pick(std::max(column - 1, 0), row);
        case KeyRight:
            return pick(std::min(column + 1, columns - 1), row);
        case KeyUp:
            return pick(column, std::max(row - 1, 0));
        case KeyDown:
            return pick(column, std::min(row + 1, rows - 1));
        case KeyHome:
            return pick(0, row);
        case KeyEnd:
            return pick(columns - 1, row);
        case KeySpace:
            return pick(column, row);
        default:
            return false;
        }
    }

    bool onLButtonDown(int x, int y, long) override
    {
        if (x < 0 || y < 0 || x >= columns * cell || y >= rows * cell)
            return true;
        setFocus();
        return pick(x / cell, y / cell);
    }

    bool onGetFocus() override
    {
        repaint();
        return false;
    }
    bool onLostFocus() override
    {
        repaint();
        return false;
    }

    bool doPaint(PaintDevice* device) override
    {
        Painter painter(device);
        if (!painter)
            return false;
        const Color text(ColorNumber::WindowText);
        const Color window(ColorNumber::Window);
        painter.fillRect({0, 0, width(), height()}, window);
        for (int i = 0; i < columns * rows; ++i) {
            const int x = i % columns * cell + 3;
            const int y = i / columns * cell + 3;
            const Rect box{x, y, x + cell - 6, y + cell - 6};
            if (i == m_current && (m_marked || hasFocus())) {
                Rect frame = box;
                frame.inflate(3, 3);
                painter.fillRect(frame, hasFocus() ? Color(ColorNumber::Highlight) : text);
                frame.inflate(-2, -2);
                painter.fillRect(frame, window);
            }
            painter.setPen(Pen(Color(ColorNumber::Shadow)));
            painter.setBrush(Brush(offered(i)));
            painter.drawRect(box);
        }
        return true;
    }

private:
    bool pick(int column, int row)
    {
        m_current = row * columns + column;
        onPick();
        return true;
    }

    int m_current = 0;
    bool m_marked = false; // the colour of the dialog is the current one
};

// Two colours side by side: as it was, and as it is going to be.
class Preview : public WPanel {
public:
    void setColors(Color before, Color now)
    {
        m_before = before;
        m_now = now;
        repaint();
    }

    bool doPaint(PaintDevice* device) override
    {
        Painter painter(device);
        if (!painter)
            return false;
        const int middle = width() / 2;
        half(painter, {0, 0, middle, height()}, m_before, Phrase::OldColor);
        half(painter, {middle, 0, width(), height()}, m_now, Phrase::NewColor);
        return true;
    }

private:
    void half(Painter& painter, const Rect& rect, Color color, Phrase caption) const
    {
        painter.setPen(Pen(Color(ColorNumber::Shadow)));
        painter.setBrush(Brush(color));
        painter.drawRect(rect);
        const bool dark = contrast(color, Color::White) > contrast(color, Color::Black);
        painter.setTextColor(dark ? Color::White : Color::Black);
        painter.drawText(rect, phrase(caption), TextCenter | TextVCenter | TextSingleLine);
    }

    Color m_before;
    Color m_now;
};

} // namespace

struct ColorDialog::Parts {
    struct Grid : Swatches {
        explicit Grid(ColorDialog& to)
            : dialog(to)
        {
        }
        bool onPick() override
        {
            dialog.setColor(picked());
            return true;
        }
        ColorDialog& dialog;
    };

    explicit Parts(ColorDialog& owner)
        : dialog(owner)
        , grid(owner)
    {
        ok.setText(phrase(Phrase::Ok).c_str());
        cancel.setText(phrase(Phrase::Cancel).c_str());
        constexpr Phrase captions[] = {Phrase::Red, Phrase::Green, Phrase::Blue};
        for (size_t i = 0; i < 3; ++i) {
            labels[i].setText(phrase(captions[i]).c_str());
            labels[i].setBuddy(&components[i]);
            components[i].setRange(0, 255);
            connect<&WSpinBox::onValueChanged>(components[i], dialog,
                                               [this](Object*) -> SlotResult {
                                                   componentChanged();
                                                   return 0;
                                               });
        }
        gridLabel.setText(phrase(Phrase::BasicColors).c_str());
        gridLabel.setBuddy(&grid);
        codeLabel.setText(phrase(Phrase::ColorCode).c_str());
        codeLabel.setBuddy(&code);
        code.setMaxLength(7);
        connect<&WLineEdit::onTextChanged>(code, dialog, [this](Object*) -> SlotResult {
            codeChanged();
            return 0;
        });
        connect<&WButton::onPush>(ok, dialog, [this](Object*) -> SlotResult {
            dialog.exitModal(1);
            return 1;
        });
        connect<&WButton::onPush>(cancel, dialog, [this](Object*) -> SlotResult {
            dialog.exitModal(0);
            return 1;
        });
    }

    void componentChanged()
    {
        if (showing)
            return;
        take(Color(static_cast<int>(components[0].value()), static_cast<int>(components[1].value()),
                   static_cast<int>(components[2].value())),
             &code);
    }

    void codeChanged()
    {
        Color typed;
        if (!showing && readCode(code.text(), typed))
            take(typed, nullptr);
    }

    // codeField: null while the code is being typed.
    void take(Color now, WLineEdit* codeField)
    {
        const bool changed = color != now;
        color = now;
        showing = true;
        components[0].setValue(now.red());
        components[1].setValue(now.green());
        components[2].setValue(now.blue());
        if (codeField && codeField->text() != codeOf(now))
            codeField->setText(codeOf(now).c_str());
        showing = false;
        grid.setCurrent(now);
        preview.setColors(before, now);
        if (changed)
            dispatch<&ColorDialog::onColorChanged>(dialog);
    }

    ColorDialog& dialog;
    Color before;
    Color color;
    bool showing = false;
    WStatic gridLabel;
    Grid grid;
    WStatic labels[3];
    WSpinBox components[3];
    WStatic codeLabel;
    WLineEdit code;
    Preview preview;
    WButton ok;
    WButton cancel;
};

ColorDialog::ColorDialog()
    : ColorDialog(Color::Black)
{
}

ColorDialog::ColorDialog(Color color)
    : m_parts(std::make_unique<Parts>(*this))
{
    setStyle(DialogFrame);
    setFontRole(Application::ControlFont);
    setTitle(phrase(Phrase::ChooseColor).c_str());
    const int width = 3 * margin + columns * cell + labelWidth + fieldWidth;
    const int height = 3 * margin + 24 + rows * cell + fieldHeight;
    move(0, 0, width, height);
    setColor(color);
}

ColorDialog::~ColorDialog()
{
    destroy(); // while the parts are there
}

bool ColorDialog::onColorChanged()
{
    return false;
}

void ColorDialog::setColor(Color color)
{
    const uint32_t rgb = color.rgb();
    const auto part = [&](int shift) { return static_cast<int>(rgb >> shift & 255U); };
    const Color fixed(part(16), part(8), part(0));
    if (!isCreated())
        m_parts->before = fixed;
    m_parts->take(fixed, &m_parts->code);
}

Color ColorDialog::color() const
{
    return m_parts->color;
}

bool ColorDialog::create()
{
    if (isCreated())
        return true;
    if (!WDialog::create())
        return false;
    const auto place = [this](WVisualObject& control, int x, int y, int w, int h) {
        control.setParent(this);
        control.move(x, y, w, h);
        return control.create();
    };
    Parts& parts = *m_parts;
    const int left = 2 * margin + columns * cell;
    const int field = left + labelWidth;
    int y = margin;
    bool made = place(parts.gridLabel, margin, y, columns * cell, 20);
    made = place(parts.grid, margin, y + 24, columns * cell, rows * cell) && made;
    for (size_t i = 0; i < 3; ++i, y += fieldHeight + 6) {
        made = place(parts.labels[i], left, y + 4, labelWidth, 20) && made;
        made = place(parts.components[i], field, y, fieldWidth, fieldHeight) && made;
    }
    made = place(parts.codeLabel, left, y + 4, labelWidth, 20) && made;
    made = place(parts.code, field, y, fieldWidth, fieldHeight) && made;
    y += fieldHeight + margin;
    const int bottom = height() - margin - fieldHeight;
    made = place(parts.preview, left, y, labelWidth + fieldWidth, bottom - margin - y) && made;
    const int right = width() - margin - buttonWidth;
    made = place(parts.ok, right - buttonWidth - 8, bottom, buttonWidth, fieldHeight) && made;
    made = place(parts.cancel, right, bottom, buttonWidth, fieldHeight) && made;
    setDefaultButton(&parts.ok);
    parts.grid.setFocus();
    return made;
}

} // namespace OviAPI
