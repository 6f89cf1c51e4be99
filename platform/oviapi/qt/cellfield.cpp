#include <oviapi/cellfield.h>

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <oviapi/celledit.h>
#include <oviapi/recordeditor.h>
#include <oviapi/recordview.h>

#include "apswnd_native.h"
#include "cellcolors.h"
#include "convert.h"
#include "keys.h"

namespace OviAPI {

namespace {

constexpr int frame = 2;     // px
constexpr int listFrame = 2; // px, of a drop-down list

ScrollNative& nativeOf(const aCRecordView& view)
{
    return static_cast<ScrollNative&>(*view.native()); // what aCApsWnd makes
}

// Fills what the control leaves of the cell, its frame.
class FieldBox : public QWidget {
public:
    explicit FieldBox(QWidget* parent)
        : QWidget(parent)
        , m_inside(new QWidget(this))
    {
    }

    // A style keeps the frame of a drop-down list free even where none is drawn: so much of the
    // control lies outside and is not seen.
    void hold(QWidget& control, int outside)
    {
        control.setParent(m_inside);
        m_control = &control;
        m_outside = outside;
    }

    bool faulty = false;

protected:
    // The frame is no part of the view's cells. The wheel goes on.
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
    void mouseReleaseEvent(QMouseEvent* event) override { event->accept(); }
    void mouseMoveEvent(QMouseEvent* event) override { event->accept(); }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), faulty ? faultColor : palette().color(QPalette::Highlight));
    }
    void resizeEvent(QResizeEvent*) override
    {
        m_inside->setGeometry(rect().adjusted(frame, frame, -frame, -frame));
        if (m_control)
            m_control->setGeometry(
                m_inside->rect().adjusted(-m_outside, -m_outside, m_outside, m_outside));
    }

private:
    QWidget* m_inside; // owned by this widget, as the control is by it
    QWidget* m_control = nullptr;
    int m_outside = 0;
};

bool staysInWindow(Qt::FocusReason reason)
{
    return reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason ||
           reason == Qt::ActiveWindowFocusReason;
}

} // namespace

struct CellField::Native : public QObject {
    Native(aCRecordView& shown, User& told, const Look& look);
    ~Native() override;

    bool eventFilter(QObject* object, QEvent* event) override;

    bool isComposing() const { return composing; }
    // What an input method sends before the field has the focus.
    void compose(QInputMethodEvent& event);
    void takeFocus();

    QPointer<QWidget> area;
    FieldBox* box;
    QWidget* control = nullptr; // takes the focus
    QLineEdit* line = nullptr;
    QComboBox* list = nullptr;
    User& user;
    ScrollNative& scroll;
    bool silent = false;

private:
    bool key(QKeyEvent* event);
    bool left(const QFocusEvent& event);

    bool composing = false;
};

CellField::Native::Native(aCRecordView& shown, User& told, const Look& look)
    : area(nativeOf(shown).area())
    , box(new FieldBox(nativeOf(shown).surface)) // until the destructor
    , user(told)
    , scroll(nativeOf(shown))
{
    if (look.choices.empty()) {
        line = new QLineEdit;
        line->setFrame(false);
        control = line;
    } else {
        list = new QComboBox;
        list->setFrame(false);
        list->setEditable(true);
        list->setInsertPolicy(QComboBox::NoInsert);
        list->setCompleter(nullptr); // it would put other texts in the place of what is typed
        for (const aCString& choice : look.choices)
            list->addItem(toQString(choice));
        line = list->lineEdit();
        control = list;
    }
    line->setTextMargins(1, 0, 1, 0);
    line->setMaxLength(look.mostChars);
    line->setAlignment(Qt::AlignVCenter | Qt::AlignAbsolute |
                       (look.right ? Qt::AlignRight : Qt::AlignLeft));
    box->hold(*control, list ? listFrame : 0);
    control->setAccessibleName(toQString(look.name));
    line->setAccessibleName(toQString(look.name));
    control->installEventFilter(this);
    if (control != line)
        line->installEventFilter(this);
    QObject::connect(line, &QLineEdit::textChanged, this, [this] {
        if (!silent)
            barrier([this] { user.onFieldText(); });
    });
}

CellField::Native::~Native()
{
    control->removeEventFilter(this);
    line->removeEventFilter(this);
    scroll.focusStays = true;
    if (area) {
        const bool focused = control->hasFocus();
        area->setFocusProxy(nullptr);
        if (focused)
            area->setFocus(Qt::OtherFocusReason);
    }
    scroll.focusStays = false;
    discardWidget(box);
}

void CellField::Native::takeFocus()
{
    scroll.focusStays = true;
    area->setFocusProxy(control);
    control->setFocus(Qt::OtherFocusReason);
    scroll.focusStays = false;
}

bool CellField::Native::eventFilter(QObject* object, QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (object == control &&
            fieldKey(toVirtualKey(*static_cast<QKeyEvent*>(event))) != FieldKey::Typing) {
            event->accept(); // comes again as a key
            return true;
        }
        return false;
    case QEvent::KeyPress:
        return object == control && key(static_cast<QKeyEvent*>(event));
    case QEvent::FocusOut:
        return object == control && left(*static_cast<QFocusEvent*>(event));
    case QEvent::InputMethod:
        composing = !static_cast<QInputMethodEvent*>(event)->preeditString().isEmpty();
        return false;
    case QEvent::Wheel: // for the view, which scrolls
        event->ignore();
        return true;
    default:
        return false;
    }
}

bool CellField::Native::key(QKeyEvent* event)
{
    const QPointer<Native> alive(this);
    const QPointer<QWidget> view = area;
    Answer answer = Answer::Used;
    barrier([&] { answer = user.onFieldKey(toVirtualKey(*event)); });
    if (answer == Answer::Pass && view) {
        QKeyEvent copy(event->type(), event->key(), event->modifiers(), event->nativeScanCode(),
                       event->nativeVirtualKey(), event->nativeModifiers(), event->text(),
                       event->isAutoRepeat());
        QCoreApplication::sendEvent(view, &copy);
    }
    return !alive || answer != Answer::Typing;
}

bool CellField::Native::left(const QFocusEvent& event)
{
    const QWidget* now = QApplication::focusWidget();
    if (staysInWindow(event.reason()) || !area)
        return false;
    const bool otherWindow = now && now->window() != area->window(); // the list is one, too
    if (otherWindow || (now && (now == area || area->isAncestorOf(now))))
        return false;
    const QPointer<Native> alive(this);
    barrier([this] { user.onFieldLeft(); });
    return !alive;
}

void CellField::Native::compose(QInputMethodEvent& event)
{
    const bool ends = event.preeditString().isEmpty();
    QCoreApplication::sendEvent(line, &event);
    if (!ends)
        return;
    takeFocus();
    if (line->text().isEmpty())
        user.onFieldUnused();
}

CellField::CellField(aCRecordView& view, User& user, const Look& look)
    : m_native(std::make_unique<Native>(view, user, look))
{
    setFont(look.font);
}

CellField::~CellField() = default;

std::wstring CellField::text() const
{
    if (m_native->isComposing()) // what stands there belongs to the text
        QGuiApplication::inputMethod()->commit();
    return fromQString(m_native->line->text());
}

void CellField::setText(std::wstring_view text)
{
    m_native->silent = true;
    m_native->line->setText(toQString(text));
    m_native->silent = false;
}

void CellField::insert(std::wstring_view text)
{
    m_native->line->insert(toQString(text));
}

void CellField::selectAll()
{
    m_native->line->selectAll();
}

void CellField::takeFocus()
{
    m_native->takeFocus();
}

void CellField::dropList()
{
    if (m_native->list)
        m_native->list->showPopup();
}

void CellField::setFont(const Font& font)
{
    const QFont wanted = toQFont(font, m_native->area->font());
    if (m_native->control->font() != wanted)
        m_native->control->setFont(wanted);
}

void CellField::place(const Rect& field)
{
    const QRect rect = toQRect(field);
    if (rect.isValid())
        m_native->box->setGeometry(rect);
    m_native->box->setVisible(rect.isValid());
    m_native->box->raise();
}

void CellField::describe(const std::wstring& sentence, CellTip::Kind kind)
{
    m_native->box->faulty = kind == CellTip::Kind::Fault;
    m_native->box->update();
    m_native->control->setAccessibleDescription(toQString(sentence));
    m_native->line->setAccessibleDescription(toQString(sentence));
}

// Carries on in an editor what an input method begins while the view itself has the focus. The
// focus stays there until the composition ends: moving it would end it at once.
struct Composer : public QObject {
    Composer(aCRecordView& composed, QWidget* area)
        : QObject(area)
        , view(composed)
        , life(composed.life())
    {
        area->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (life.expired())
            return false;
        if (event->type() == QEvent::InputMethod)
            return compose(*static_cast<QInputMethodEvent*>(event));
        if (event->type() == QEvent::InputMethodQuery)
            return answer(*static_cast<QInputMethodQueryEvent*>(event));
        return false;
    }

private:
    CellField* field() const { return view.m_editor->field(); }

    bool compose(QInputMethodEvent& event)
    {
        const bool nothing = event.preeditString().isEmpty() && event.commitString().isEmpty();
        barrier([&] {
            const auto alive = view.life();
            if (!field() && !nothing)
                view.m_editor->composeInCell();
            if (!alive.expired() && field())
                field()->m_native->compose(event);
        });
        return true;
    }

    // The candidates stand at the cell.
    bool answer(QInputMethodQueryEvent& event)
    {
        Rect cell;
        if (view.IsReadOnly() || !view.GetClientCellRect(view.GetCol(), view.GetRow(), cell))
            return false;
        event.setValue(Qt::ImEnabled, true);
        event.setValue(Qt::ImCursorRectangle, toQRect(cell));
        event.accept();
        return true;
    }

    aCRecordView& view;
    std::weak_ptr<const void> life; // the area may be there a little longer
};

void CellField::watchCompositions(aCRecordView& view)
{
    new Composer(view, widgetOf(&view)); // owned by the widget
}

void CellField::acceptCompositions(aCRecordView& view, bool accept)
{
    if (QWidget* widget = widgetOf(&view))
        widget->setAttribute(Qt::WA_InputMethodEnabled, accept);
}

namespace {

class TipLabel : public QLabel {
public:
    TipLabel(QWidget* parent, const QColor& border)
        : QLabel(parent)
        , m_border(border)
    {
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QLabel::paintEvent(event);
        QPainter painter(this);
        painter.setPen(m_border);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }

private:
    QColor m_border;
};

} // namespace

struct CellTip::Native {
    QPointer<QLabel> label;
};

CellTip::CellTip(aCRecordView& view, const std::wstring& sentence, Kind kind)
    : m_native(std::make_unique<Native>())
{
    const QColor border =
        kind == Kind::Fault ? faultColor : QToolTip::palette().color(QPalette::ToolTipText);
    auto* label = new TipLabel(nativeOf(view).surface, border); // until the destructor
    m_native->label = label;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->setAutoFillBackground(true);
    QPalette palette = QToolTip::palette();
    palette.setColor(QPalette::Window, palette.color(QPalette::ToolTipBase));
    palette.setColor(QPalette::WindowText, palette.color(QPalette::ToolTipText));
    label->setPalette(palette);
    label->setContentsMargins(5, 3, 5, 3);
    label->setText(toQString(sentence));
    label->setAccessibleName(label->text());
}

CellTip::~CellTip()
{
    if (m_native->label)
        discardWidget(m_native->label);
}

void CellTip::place(const Rect& place, const Rect& bounds)
{
    QLabel& label = *m_native->label;
    if (place.width() == 0) { // what it is said of is out of sight
        label.hide();
        return;
    }
    constexpr int widest = 480; // px
    const int most = std::min(widest, static_cast<int>(bounds.width()));
    label.setMaximumWidth(most);
    const QMargins margins = label.contentsMargins();
    const int room = most - margins.left() - margins.right();
    const QRect wrapped = label.fontMetrics().boundingRect(QRect(0, 0, room, 1 << 16),
                                                           Qt::TextWordWrap, label.text());
    const Size size{std::min(most, wrapped.width() + margins.left() + margins.right() + 1),
                    wrapped.height() + margins.top() + margins.bottom()};
    label.setGeometry(toQRect(tipRect(place, size, bounds)));
    label.raise();
    if (label.isVisible())
        return;
    label.show();
    QAccessibleEvent event(&label, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

std::wstring clipboardText()
{
    return fromQString(QGuiApplication::clipboard()->text());
}

} // namespace OviAPI
