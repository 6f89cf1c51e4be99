#include <oviapi/combobox.h>

#include <algorithm>

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include "convert.h"
#include "native.h"

namespace OviAPI {

namespace {

class DropDown : public QComboBox {
public:
    explicit DropDown(WComboBox& owner)
        : m_owner(owner)
        , m_life(owner.life())
    {
        setFocusPolicy(Qt::StrongFocus);
        setInsertPolicy(NoInsert);
        setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    }

    void showPopup() override
    {
        if (m_life.expired())
            return;
        const QPointer<DropDown> alive(this);
        bool kept = true;
        barrier([&] {
            const auto result = dispatch<&WComboBox::onDropDown>(m_owner);
            kept = result.bySlot || result.value;
        });
        if (alive && !m_life.expired() && !kept)
            QComboBox::showPopup();
    }

private:
    WComboBox& m_owner;
    std::weak_ptr<const void> m_life; // the toolkit may still be at work when the owner has gone
};

QComboBox* comboOf(const WVisualObject& object)
{
    return object.native() ? object.native()->as<QComboBox>() : nullptr;
}

} // namespace

struct WComboBox::ComboNative : public Native {
    using Native::Native;

    bool filterSurface(QEvent* event) override
    {
        if (event->type() == QEvent::Wheel && !widget->hasFocus()) {
            event->ignore(); // for the area around it
            return true;
        }
        return Native::filterSurface(event);
    }
};

WComboBox::WComboBox() = default;

WComboBox::~WComboBox()
{
    destroy();
}

void WComboBox::nativeGoes()
{
    // Losing the focus would tell of a choice.
    if (QComboBox* combo = comboOf(*this))
        combo->blockSignals(true);
}

bool WComboBox::onSelChanged()
{
    return false;
}

bool WComboBox::onTextChanged()
{
    return false;
}

bool WComboBox::onDropDown()
{
    return false;
}

std::unique_ptr<Native> WComboBox::makeNative()
{
    auto made = std::make_unique<DropDown>(*this);
    made->setFrame(!(style() & NoFrame));
    for (int i = 0; i < lineCount(); ++i)
        made->addItem(toQString(lineText(i)));
    made->setCurrentIndex(currentLine());
    if (isEditable()) {
        made->setEditable(true);
        made->setCompleter(nullptr); // it would choose other lines than were typed
        made->lineEdit()->setMaxLength(m_maxLength);
        made->setEditText(toQString(m_text));
    }
    auto native = std::make_unique<ComboNative>(*this, std::move(made));
    auto* combo = native->as<QComboBox>();
    QObject::connect(combo, &QComboBox::activated, native.get(),
                     [this](int line) { barrier([&] { userSelected(line); }); });
    QObject::connect(combo, &QComboBox::editTextChanged, native.get(), [this](const QString& text) {
        barrier([&] { fieldChanged(fromQString(text)); });
    });
    return native;
}

void WComboBox::fieldChanged(const std::wstring& text)
{
    if (text == m_text)
        return;
    m_text = text;
    const std::weak_ptr<const void> alive = life();
    userSelected(findText(m_text.c_str()));
    if (!alive.expired())
        dispatch<&WComboBox::onTextChanged>(*this);
}

void WComboBox::currentChanged()
{
    const std::weak_ptr<const void> alive = life();
    dispatch<&WComboBox::onSelChanged>(*this);
    if (alive.expired() || !m_textChanged)
        return;
    m_textChanged = false;
    dispatch<&WComboBox::onTextChanged>(*this);
}

std::wstring WComboBox::text() const
{
    return isEditable() ? m_text : lineText(currentLine());
}

void WComboBox::setText(const wchar_t* text)
{
    const std::wstring whole = text ? text : L"";
    const int line = findText(whole.c_str());
    if (!isEditable())
        return setCurrentLine(line);
    const std::wstring cut = whole.substr(0, static_cast<size_t>(m_maxLength));
    if (cut == m_text)
        return;
    m_text = cut;
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->setEditText(toQString(m_text));
    }
    const int now = findText(m_text.c_str());
    m_textChanged = true;
    if (now != currentLine())
        return setCurrentLine(now);
    m_textChanged = false;
    dispatch<&WComboBox::onTextChanged>(*this);
}

int WComboBox::findText(const wchar_t* text) const
{
    const std::wstring wanted = text ? text : L"";
    for (int i = 0; i < lineCount(); ++i) {
        if (lineText(i) == wanted)
            return i;
    }
    return -1;
}

void WComboBox::setMaxLength(int characters)
{
    m_maxLength = std::max(characters, 0);
    if (QComboBox* combo = comboOf(*this); combo && combo->lineEdit())
        combo->lineEdit()->setMaxLength(m_maxLength);
}

void WComboBox::selectAll()
{
    if (QComboBox* combo = comboOf(*this); combo && combo->lineEdit())
        combo->lineEdit()->selectAll();
}

void WComboBox::setDropped(bool dropped)
{
    QComboBox* combo = comboOf(*this);
    if (!combo || dropped == isDropped())
        return;
    if (!dropped)
        combo->hidePopup();
    else if (combo->isVisible() && combo->isEnabled())
        combo->showPopup();
}

bool WComboBox::isDropped() const
{
    const QComboBox* combo = comboOf(*this);
    return combo && combo->view()->isVisible();
}

// The toolkit chooses lines by itself when lines come and go, and writes them into the field.
void WComboBox::insertNative(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->insertItem(line, toQString(lineText(line)));
        if (isEditable())
            combo->setEditText(toQString(m_text));
    }
}

void WComboBox::removeNative(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->removeItem(line);
        if (isEditable())
            combo->setEditText(toQString(m_text));
    }
}

void WComboBox::setNativeText(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->setItemText(line, toQString(lineText(line)));
        if (isEditable())
            combo->setEditText(toQString(m_text));
    }
}

void WComboBox::setNativeCurrent(int line)
{
    if (isEditable() && line < 0)
        return;
    if (isEditable() && m_text != lineText(line)) {
        m_text = lineText(line);
        m_textChanged = true;
    }
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->setCurrentIndex(line);
        if (isEditable())
            combo->setEditText(toQString(m_text));
    }
}

} // namespace OviAPI
