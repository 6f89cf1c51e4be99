// The native part of a source editor.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QElapsedTimer>

#include <oviapi/srcedit.h>

#include "native.h"
#include "srcfindbar.h"
#include "srclayout.h"

namespace OviAPI {

// What an editor holds, with or without a window.
struct CSrcEdit::State {
    SrcText text;
    SrcCursor cursor{text};
    bool readOnly = false;
    bool plain = false;
    bool ownFont = false;
    bool hasError = false;
    int tabWidth = 4;
    int zoom = 0;
    SrcPoint error;
    std::wstring errorMessage;
};

// What changes can be seen from.
struct CSrcEdit::Before {
    unsigned long revision;
    SrcPoint caret;
    SrcPoint anchor;
    bool modified;
};

// px between the margin with the numbers and the text.
inline constexpr int srcGap = 6;

class SrcArea : public QAbstractScrollArea {
public:
    SrcArea();

    void setView(CSrcEdit::SrcNative* view) { m_view = view; }
    CSrcEdit::SrcNative* view() const { return m_view; }
    using QAbstractScrollArea::focusNextPrevChild;
    using QAbstractScrollArea::setViewportMargins;

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void changeEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    CSrcEdit::SrcNative* m_view = nullptr; // null before and after its life
};

// Draws the lines that are seen, and turns keys and mouse into the editor's commands.
struct CSrcEdit::SrcNative : public Native {
    SrcNative(CSrcEdit& edit, std::unique_ptr<SrcArea> made);
    ~SrcNative() override;

    CSrcEdit& edit;
    SrcArea* area;
    State& state;
    SrcLayout layout;
    SrcFindBar* bar; // owned by the area

    // The text, caret or selection is another one.
    void refresh(bool textChanged, bool caretToBeSeen);
    void fontChanged();
    // All of the text is another one.
    void textReplaced();
    void openBar(SrcFindBar::Mode mode);
    void placeBar();
    void updateBars();
    void showCaret(bool centered);

    void paint(QPaintEvent* event);
    QRect caretRect();
    QRect rectOf(SrcPoint point);
    SrcPoint pointAt(QPoint place);
    void press(QMouseEvent* event);
    void dragTo(QPoint place);
    void release();
    void doubleClick(QMouseEvent* event);
    void tick(int timer);
    void blinkAnew();
    void openMenu(QPoint place);
    void compose(QInputMethodEvent* event);
    QString hint(QPoint place);
    bool isCommand(const QKeyEvent& event) const;
    void focusMoved(bool in);
    // A function that changes the text or the selection, as the user's act.
    template<class F>
    void act(F&& function)
    {
        barrier([&] { edit.change(std::forward<F>(function)); });
    }

    bool overwrite = false;
    bool tabMoves = false;
    QString preedit;
    int marginWidth = 40;

protected:
    bool unhandledKey(QKeyEvent* event) override;

private:
    bool moveKey(const QKeyEvent& event);
    bool controlKey(const QKeyEvent& event);
    bool editKey(const QKeyEvent& event);
    bool tabKey(const QKeyEvent& event);
    void moveLines(int lines, bool keepAnchor);
    int pageLines() const;
    int textLeft() const;
    void paintLine(QPainter& painter, const SrcColors& colors, int line, int y);
    void paintSelection(QPainter& painter, const SrcColors& colors, int line, int y,
                        const std::vector<SrcToken>& tokens);
    void paintError(QPainter& painter, const SrcColors& colors, int line, int y);
    void paintMargin(QPainter& painter, const SrcColors& colors, int line, int y);
    void paintBrackets(QPainter& painter, const SrcColors& colors, int line, int y);
    void paintCaret(QPainter& painter, const SrcColors& colors);
    void tellChange(bool textChanged);

    std::optional<SrcCursor::Brackets> m_brackets;
    QBasicTimer m_blink;
    QBasicTimer m_autoScroll;
    QElapsedTimer m_sinceDouble; // for the third press
    QPoint m_dragPlace;
    double m_wantedX = -1; // of the caret while it goes up and down; below 0: where it is
    double m_widest = 0;
    bool m_caretShown = true;
    bool m_dragging = false;
    bool m_draggingLines = false;
};

template<class F>
void CSrcEdit::change(F&& function)
{
    const Before then = before();
    function();
    settle(then);
}

} // namespace OviAPI
