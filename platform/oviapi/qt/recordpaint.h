// Paints a record view.
#pragma once

#include <memory>

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>

#include <oviapi/recordview.h>

#include "plainline.h"

namespace OviAPI {

// A font with what drawing needs to know of it.
struct RecordFace {
    explicit RecordFace(const QFont& f);

    QFont font;
    QFontMetrics metrics;
    PlainFont letters;
    PlainFont::Line line; // of the text laid out last
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
    // In the colour of the pen. Plain texts appear with the next flush.
    void drawText(const QRect& rect, RecordFace& face, std::wstring_view text, bool right);
    void flush();
    void drawMark(const QRect& rect, unsigned state);
    bool drawPicture(const Cell& cell);
    void drawCheck(const Cell& cell);
    void drawFault(long row, const QRect& line);
    void drawLines();
    void drawRowHeader(long row, const QRect& rect);
    void drawPencil(QPointF point, const QColor& color);
    void drawHeader();
    void drawHeaderCell(int col, const QRect& rect);
    void drawEmpty();
    void section(const QRect& rect, bool horizontal);
    bool isSelected(int col, long row) const;
    RecordFace& faceOf(const aCColumn& column);
    // So many per cent of the colour on that of the cells.
    QColor faint(const QColor& color, int percent) const;

    aCRecordView& view;
    Painter& painter;
    QPainter* qt;
    QWidget* widget;
    QPalette palette;
    QPalette::ColorGroup group = QPalette::Active;
    QRect area;
    QRect cells;
    int firstCol = 0; // columns in sight
    int lastCol = -1;
    RecordFaces& faces;
    PlainFont::Line waiting; // texts to be drawn together, of one font and colour
    RecordFace* waitingFace = nullptr;
    QColor waitingColor;
};

} // namespace OviAPI
