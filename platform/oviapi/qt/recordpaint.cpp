#include "recordpaint.h"

#include <algorithm>

#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionHeader>

#include <oviapi/celldisplay.h>
#include <oviapi/celledit.h>
#include <oviapi/painter.h>
#include <oviapi/recordeditor.h>

#include "cellcolors.h"
#include "colormix.h"
#include "convert.h"
#include "native.h"
#include "paintdevice.h"

namespace OviAPI {

namespace {

constexpr int inset = 4;       // pixels between the edge of a cell and its text
constexpr int arrowWidth = 15; // of a drop-down arrow
constexpr int markSize = 6;
constexpr int headerMarker = 14;

QFont italicOf(QFont font)
{
    font.setItalic(true);
    return font;
}

Qt::Alignment qtAlignment(uint32_t flags)
{
    Qt::Alignment alignment = (flags & TextRight) != 0    ? Qt::AlignRight
                              : (flags & TextCenter) != 0 ? Qt::AlignHCenter
                                                          : Qt::AlignLeft;
    alignment |= (flags & TextBottom) != 0    ? Qt::AlignBottom
                 : (flags & TextVCenter) != 0 ? Qt::AlignVCenter
                                              : Qt::AlignTop;
    return alignment;
}

} // namespace

RecordFace::RecordFace(const QFont& f)
    : font(f)
    , metrics(f)
    , letters(f)
{
}

RecordFaces::RecordFaces(const QFont& font)
    : plain(font)
    , italic(italicOf(font))
{
}

RecordFaces& RecordPainter::facesOf(aCRecordView& shown, const QFont& font)
{
    if (!shown.m_faces || shown.m_faces->plain.font != font)
        shown.m_faces = std::make_shared<RecordFaces>(font);
    return *shown.m_faces;
}

RecordPainter::RecordPainter(aCRecordView& shown, Painter& on, const Rect& part)
    : view(shown)
    , painter(on)
    , qt(qtPainter(on))
    , widget(widgetOf(&shown))
    , palette(widget->palette())
    , area(toQRect(part))
    , cells(toQRect(shown.cellsArea()))
    , faces(facesOf(shown, widget->font()))
{
    if (!widget->isEnabled())
        group = QPalette::Disabled;
    else if (!widget->hasFocus())
        group = QPalette::Inactive;
    palette.setCurrentColorGroup(group);
    const int64_t left = view.GetScrollPos(HorizontalBar);
    const int64_t from = left + std::max(area.left(), cells.left()) - cells.left();
    const int64_t to = left + std::min(area.right(), cells.right()) - cells.left();
    firstCol = view.m_columns.firstFrom(from) + 1;
    lastCol = std::min(view.m_columns.firstFrom(to) + 1, view.m_columns.count());
}

void RecordPainter::draw()
{
    if (!qt)
        return;
    drawRows();
    if (area.top() < cells.top())
        drawHeader();
}

QColor RecordPainter::faint(const QColor& color, int percent) const
{
    return mix(palette.color(QPalette::Base), color, percent, 100);
}

RecordFace& RecordPainter::faceOf(const aCColumn& column)
{
    if (column.cellFont.isEmpty())
        return faces.plain;
    if (!faces.own || faces.ownFont != column.cellFont) {
        faces.ownFont = column.cellFont;
        faces.own = std::make_unique<RecordFace>(toQFont(faces.ownFont, widget->font()));
    }
    return *faces.own;
}

bool RecordPainter::isSelected(int col, long row) const
{
    const RecordSelection& selection = view.m_selection;
    if (view.m_listBox)
        return row == selection.row();
    return selection.contains(col, row);
}

void RecordPainter::drawRows()
{
    const int height = std::max(view.m_broker->rowHeight, 1);
    const long rows = view.m_rows;
    const int top = std::max(area.top(), cells.top()) - cells.top();
    const int bottom = area.bottom() - cells.top();
    if (bottom < 0)
        return;
    qt->save();
    const QRect below = QRect(0, cells.top(), cells.right() + 1, cells.height()) & area;
    const long first = view.m_firstRow + top / height;
    const long last = std::min(view.m_firstRow + bottom / height, rows);
    const int used =
        cells.top() + static_cast<int>(std::max(0L, last - view.m_firstRow + 1)) * height;
    for (long row = first; row <= last; ++row) {
        const int y = cells.top() + static_cast<int>(row - view.m_firstRow) * height;
        const QRect line(cells.left(), y, cells.width(), height);
        if (area.right() >= cells.left())
            drawRow(row, line);
        flush(); // before the clip changes
        if (area.left() < cells.left())
            drawRowHeader(row, QRect(0, y, cells.left(), height));
        flush();
    }
    qt->setClipRect(below); // each row has set its own
    if (used <= area.bottom())
        qt->fillRect(QRect(area.left(), used, area.width(), area.bottom() - used + 1),
                     palette.base());
    drawLines();
    if (rows < 1 || view.m_columns.count() == 0)
        drawEmpty();
    qt->restore();
}

void RecordPainter::drawRow(long row, const QRect& line)
{
    qt->setClipRect(cells.intersected(line));
    qt->fillRect(line, palette.base());
    if (!view.fetchRow(row)) {
        drawFault(row, line);
        return;
    }
    for (int col = firstCol; col <= lastCol; ++col) {
        const aCColumn* column = view.m_dataSet->GetColInfo(col);
        const int width = view.m_columns.width(col - 1);
        if (!column || width == 0)
            continue;
        const QRect rect(static_cast<int>(view.columnX(col)), line.top(), width, line.height());
        drawCell({col, row, rect, *column, isSelected(col, row)});
    }
}

void RecordPainter::drawCell(const Cell& cell)
{
    QColor color = palette.color(QPalette::Text);
    const RecordSelection& selection = view.m_selection;
    const bool focused = cell.col == selection.col() && cell.row == selection.row();
    const bool hollow = focused && selection.isRange() && !view.m_listBox;
    if (cell.selected && !hollow) {
        qt->fillRect(cell.rect, palette.highlight());
        color = palette.color(QPalette::HighlightedText);
    }
    drawValue(cell, color);
    if (hollow) {
        qt->setPen(QPen(palette.color(QPalette::Highlight), 2));
        qt->setBrush(Qt::NoBrush);
        qt->drawRect(cell.rect.adjusted(1, 1, -2, -2));
    }
}

void RecordPainter::drawValue(const Cell& cell, const QColor& color)
{
    if (!view.fetchRow(cell.row)) // what was asked about a cell before may have moved the dataset
        return;
    QRect rect = cell.rect.adjusted(inset, 0, -inset, 0);
    aCDataSet& data = *view.m_dataSet;
    const unsigned state = data.CellState(cell.col);
    const bool large = cell.column.dataType == static_cast<unsigned char>(DataType::LargeObject);
    qt->setPen(color);
    if ((state & (StampNull | defaultStamps)) != 0 || large) {
        if (!cell.selected)
            qt->setPen(faint(color, 55));
        drawText(rect, faces.italic, view.GetCellWord(cell.col, cell.row), false);
    } else if (cell.column.displayKind == aCColumn::CheckMark) {
        drawCheck(cell);
    } else if (!drawPicture(cell)) {
        if (cell.column.displayKind == aCColumn::DropDown)
            rect.setRight(rect.right() - arrowWidth);
        drawText(rect, faceOf(cell.column), data.CellText(cell.col, maxShownChars),
                 standsRight(cell.column));
    }
    if (cell.column.displayKind == aCColumn::DropDown) {
        QStyleOption arrow;
        arrow.initFrom(widget);
        arrow.rect =
            QRect(cell.rect.right() - arrowWidth, cell.rect.top(), arrowWidth, cell.rect.height());
        widget->style()->drawPrimitive(QStyle::PE_IndicatorArrowDown, &arrow, qt, widget);
    }
    if ((state & (StampCut | StampInvalid)) != 0)
        drawMark(cell.rect, state);
}

void RecordPainter::drawText(const QRect& rect, RecordFace& with, std::wstring_view text,
                             bool right)
{
    if (text.empty() || rect.width() <= 0)
        return;
    const int height = with.metrics.ascent() + with.metrics.descent();
    const int base = rect.top() + (rect.height() - height) / 2 + with.metrics.ascent();
    const auto start = [&rect, right](int width) {
        return right ? std::max(rect.left(), rect.right() + 1 - width) : rect.left();
    };
    QString line = toQString(shownLine(text));
    if (with.letters.layOut(line, with.line)) {
        if (with.line.width > rect.width())
            with.letters.elide(with.line, rect.width());
        const int x = start(qRound(with.line.width));
        const QColor color = qt->pen().color();
        if (waitingFace != &with || waitingColor != color)
            flush();
        waitingFace = &with;
        waitingColor = color;
        PlainFont::add(waiting, with.line, QPointF(x, base));
        return;
    }
    int width = with.metrics.horizontalAdvance(line);
    if (width > rect.width()) {
        line = with.metrics.elidedText(line, Qt::ElideRight, rect.width());
        width = with.metrics.horizontalAdvance(line);
    }
    qt->setFont(with.font);
    qt->drawText(QPointF(start(width), base), line);
}

void RecordPainter::flush()
{
    if (waiting.glyphs.empty())
        return;
    qt->setPen(waitingColor);
    waitingFace->letters.draw(*qt, QPointF(), waiting);
    waiting.clear();
}

void RecordPainter::drawMark(const QRect& rect, unsigned state)
{
    flush(); // the mark lies over the text
    const QPoint corner = rect.topRight();
    const QPoint points[] = {corner - QPoint(markSize, 0), corner + QPoint(1, 0),
                             corner + QPoint(1, markSize + 1)};
    qt->setPen(Qt::NoPen);
    qt->setBrush((state & StampInvalid) != 0 ? faultColor : cutColor);
    qt->drawPolygon(points, 3);
}

bool RecordPainter::drawPicture(const Cell& cell)
{
    Picture picture;
    if (cell.column.displayKind == aCColumn::ImageCell) {
        const Picture* image = view.GetCellImage(cell.col, cell.row);
        if (!image)
            return false;
        picture = *image;
    } else {
        try {
            const aCCell* info = view.m_dataSet->GetCellInfo(cell.col, cell.row);
            if (info)
                picture = info->picture;
        } catch (const aCDataFailure&) {
            // Nothing is known of the cell then: its text is drawn.
        }
    }
    if (picture.isNull())
        return false;
    const Rect place = view.GetImageRect(fromQRect(cell.rect), picture);
    qt->drawPixmap(toQRect(place), toQPixmap(picture, painter.pixelRatio()));
    return true;
}

void RecordPainter::drawCheck(const Cell& cell)
{
    const bool on = isMarked(*view.m_dataSet, cell.col);
    QStyleOptionButton option;
    option.initFrom(widget);
    option.palette = palette;
    option.state = QStyle::State_Enabled | (on ? QStyle::State_On : QStyle::State_Off);
    const int size = widget->style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, widget);
    const int side = std::min({size, cell.rect.height() - 2, cell.rect.width()});
    option.rect = QRect(0, 0, side, side);
    option.rect.moveCenter(cell.rect.center());
    widget->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, qt, widget);
}

void RecordPainter::drawFault(long row, const QRect& line)
{
    qt->setPen(faint(palette.color(QPalette::Text), 70));
    if (view.m_listBox && row == view.m_selection.row()) {
        qt->fillRect(line, palette.highlight());
        qt->setPen(palette.color(QPalette::HighlightedText));
    }
    drawText(line.adjusted(inset, 0, -inset, 0), faces.italic, view.GetRowFault(row), false);
}

void RecordPainter::drawLines()
{
    const int height = std::max(view.m_broker->rowHeight, 1);
    const long last = std::min(view.m_rows, view.m_firstRow + view.GetRowOnPage());
    const auto yOf = [&](long row) {
        return cells.top() + static_cast<int>(row - view.m_firstRow) * height;
    };
    const QRect drawn = cells.intersected(area);
    const int top = drawn.top();
    const int bottom = std::min(drawn.bottom() + 1, yOf(std::max(last + 1, view.m_firstRow)));
    qt->setClipRect(drawn);
    const QColor color = faint(palette.color(QPalette::Text), 18);
    const qreal thin = 1 / painter.pixelRatio(); // one pixel of the screen
    const auto upright = [&](int x, int from, int to) {
        qt->fillRect(QRectF(x + 1 - thin, from, thin, to - from), color);
    };
    int right = cells.left();
    for (int col = firstCol; col <= lastCol; ++col) {
        right = static_cast<int>(view.columnX(col)) + view.m_columns.width(col - 1) - 1;
        if (view.m_faults.empty() || view.m_rows < 1) {
            if (bottom > top)
                upright(right, top, bottom);
            continue;
        }
        for (long row = view.m_firstRow; row <= last; ++row) // no lines through an error text
            if (!view.m_faults.contains(row))
                upright(right, yOf(row), yOf(row + 1));
    }
    const int rowsAbove = (top - cells.top()) / height;
    for (int y = cells.top() + (rowsAbove + 1) * height - 1; y < bottom; y += height)
        qt->fillRect(QRectF(cells.left(), y + 1 - thin, right + 1 - cells.left(), thin), color);
}

void RecordPainter::drawRowHeader(long row, const QRect& rect)
{
    qt->setClipRect(rect);
    section(rect, false);
    const QColor color = palette.color(QPalette::ButtonText);
    const int middle = rect.center().y();
    const RecordEditor::Mark mark = view.m_editor->mark(row);
    qt->setPen(Qt::NoPen);
    if (mark == RecordEditor::Mark::Fault) {
        const QRect disc(rect.left() + 2, middle - 5, 11, 11);
        qt->setBrush(faultColor);
        qt->setRenderHint(QPainter::Antialiasing);
        qt->drawEllipse(disc);
        qt->setRenderHint(QPainter::Antialiasing, false);
        qt->fillRect(QRect(disc.center().x(), disc.top() + 2, 1, 5), Qt::white);
        qt->fillRect(QRect(disc.center().x(), disc.top() + 8, 1, 1), Qt::white);
    } else if (mark == RecordEditor::Mark::Editing) {
        drawPencil(QPointF(rect.left() + 2, middle + 5), color);
    } else if (row == view.m_selection.row()) {
        const QPoint points[] = {{rect.left() + 4, middle - 4},
                                 {rect.left() + 4, middle + 4},
                                 {rect.left() + 9, middle}};
        qt->setBrush(color);
        qt->drawPolygon(points, 3);
    }
    qt->setPen(color);
    drawText(rect.adjusted(headerMarker, 0, -inset, 0), faces.plain, view.GetRowCaption(row), true);
}

// Its point at the lower left.
void RecordPainter::drawPencil(QPointF point, const QColor& color)
{
    const QPointF up(6, -6); // along the shaft
    const QPointF side(1.5, 1.5);
    const QPointF neck = point + QPointF(2.5, -2.5);
    const QPointF shaft[] = {neck - side, neck + side, neck + side + up, neck - side + up};
    const QPointF tip[] = {neck - side, neck + side, point};
    qt->setRenderHint(QPainter::Antialiasing);
    qt->setPen(QPen(color, 1));
    qt->setBrush(Qt::NoBrush);
    qt->drawPolygon(shaft, 4);
    qt->setBrush(color);
    qt->drawPolygon(tip, 3);
    qt->setRenderHint(QPainter::Antialiasing, false);
}

void RecordPainter::section(const QRect& rect, bool horizontal)
{
    QStyleOptionHeader option;
    option.initFrom(widget);
    option.palette = palette;
    option.rect = rect;
    option.orientation = horizontal ? Qt::Horizontal : Qt::Vertical;
    option.state = QStyle::State_Enabled | QStyle::State_Raised;
    if (horizontal)
        option.state |= QStyle::State_Horizontal;
    option.position = QStyleOptionHeader::Middle;
    widget->style()->drawControl(QStyle::CE_HeaderSection, &option, qt, widget);
}

void RecordPainter::drawHeader()
{
    const QRect strip(0, 0, cells.right() + 1, cells.top());
    qt->save();
    qt->setClipRect(strip, Qt::IntersectClip);
    qt->fillRect(strip, palette.button());
    section(strip, true);
    qt->restore();
    const Rect clip{cells.left(), 0, cells.right() + 1, cells.top()};
    for (int col = firstCol; col <= lastCol; ++col) {
        aCColumn* column = view.m_dataSet->GetColInfo(col);
        const QRect rect(static_cast<int>(view.columnX(col)), 0, view.m_columns.width(col - 1),
                         cells.top());
        if (rect.width() == 0)
            continue;
        if (column->customHeader) {
            painter.save();
            painter.setClipRect(clip);
            column->DrawHeader(&painter, col, &view);
            painter.restore();
            qt = qtPainter(painter);
            continue;
        }
        qt->save();
        qt->setClipRect(toQRect(clip).intersected(rect), Qt::IntersectClip);
        drawHeaderCell(col, rect);
        qt->restore();
    }
    if (cells.left() > 0 && area.left() < cells.left())
        section(QRect(0, 0, cells.left(), cells.top()), true);
}

void RecordPainter::drawHeaderCell(int col, const QRect& rect)
{
    const aCColumn& column = *view.m_dataSet->GetColInfo(col);
    section(rect, true);
    const Picture* image = view.GetHeaderImage(col);
    const Picture picture = !column.headerPicture.isNull() ? column.headerPicture
                            : image                        ? *image
                                                           : Picture();
    if (!picture.isNull()) {
        const Rect place = view.GetImageRect(fromQRect(rect), picture);
        qt->drawPixmap(toQRect(place), toQPixmap(picture, painter.pixelRatio()));
        return;
    }
    const QFont font = column.headerFont.isEmpty() ? faces.plain.font
                                                   : toQFont(column.headerFont, faces.plain.font);
    qt->setFont(font);
    qt->setPen(toQColor(column.headerColor));
    const QRect inside = rect.adjusted(inset, 0, -inset, 0);
    const QString caption = toQString(shownLine(column.caption));
    qt->drawText(inside, static_cast<int>(qtAlignment(column.headerAlign)) | Qt::TextSingleLine,
                 QFontMetrics(font).elidedText(caption, Qt::ElideRight, inside.width()));
}

void RecordPainter::drawEmpty()
{
    qt->setClipRect(cells.intersected(area));
    qt->setFont(faces.plain.font);
    qt->setPen(faint(palette.color(QPalette::Text), 55));
    qt->drawText(cells, Qt::AlignCenter | Qt::TextWordWrap, toQString(view.GetEmptyText()));
}

} // namespace OviAPI
