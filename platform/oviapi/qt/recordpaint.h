// Paints a record view.
#pragma once

#include <array>
#include <memory>

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>

#include <oviapi/recordview.h>

namespace OviAPI {

// A font with what drawing needs to know of it.
struct RecordFace {
    explicit RecordFace(const QFont& f);
    // Width of a text; exact without laying it out when only digits and signs stand in it.
    int width(const QString& text) const;

    QFont font;
    QFontMetrics metrics;
    int widest; // upper limit of the width of a Latin character
    std::array<int, 128> advance{};
};

// Kept by a view from one paint event to the next: measuring fonts takes longer than drawing a row.
struct RecordFaces {
    explicit RecordFaces(const QFont& font);

    RecordFace plain;
    RecordFace italic;
    std::unique_ptr<RecordFace> own; // of the column drawn last that has a font of its own
    Font ownFont;
};

// Lives during one paint event. Draws the rows and columns that meet the area and asks the dataset
// for nothing else.
struct RecordPainter {
    RecordPainter(aCRecordView& shown, Painter& on, const Rect& part);

    void draw();

private:
    static RecordFaces& facesOf(aCRecordView& shown, const QFont& font);

    struct Cell {
        int col;
        long row;
        QRect rect;
        const aCColumn& column;
        bool selected;
    };

    void drawRows();
    void drawRow(long row, const QRect& line);
    void drawCell(const Cell& cell);
    void drawValue(const Cell& cell, const QColor& color);
    void drawText(const QRect& rect, const RecordFace& face, std::wstring_view text, bool right);
    void drawMark(const QRect& rect, unsigned state);
    bool drawPicture(const Cell& cell);
    void drawCheck(const Cell& cell);
    void drawFault(long row, const QRect& line);
    void drawLines();
    void drawRowHeader(long row, const QRect& rect);
    void drawHeader();
    void drawHeaderCell(int col, const QRect& rect);
    void drawEmpty();
    void section(const QRect& rect, bool horizontal);
    bool isSelected(int col, long row) const;
    const RecordFace& faceOf(const aCColumn& column);
    QColor mixed(const QColor& over, double share) const;

    aCRecordView& view;
    Painter& painter;
    QPainter* qt;
    QWidget* widget;
    QPalette palette;
    QPalette::ColorGroup group;
    QRect area;
    QRect cells;
    int firstCol;
    int lastCol;
    RecordFaces& faces;
};

} // namespace OviAPI
