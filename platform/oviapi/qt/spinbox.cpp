#include <oviapi/spinbox.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>

#include "convert.h"
#include "native.h"

namespace OviAPI {

namespace {

constexpr int maxDigits = 18;
constexpr int64_t most = std::numeric_limits<int64_t>::max();
constexpr int64_t least = std::numeric_limits<int64_t>::min();

// value + steps * step, kept within 64 bits.
int64_t stepped(int64_t value, int steps, int64_t step)
{
    int64_t way = 0;
    if (__builtin_mul_overflow(step, static_cast<int64_t>(steps), &way))
        return steps < 0 ? least : most;
    int64_t sum = 0;
    if (__builtin_add_overflow(value, way, &sum))
        return way < 0 ? least : most;
    return sum;
}

// The same number with so many decimals more, or less.
int64_t rescaled(int64_t value, int more)
{
    for (; more > 0; --more) {
        if (__builtin_mul_overflow(value, int64_t{10}, &value))
            return value < 0 ? most : least; // the product has the other sign
    }
    for (; more < 0; ++more)
        value = value / 10 + (value % 10 >= 5 ? 1 : 0) - (value % 10 <= -5 ? 1 : 0);
    return value;
}

} // namespace

// The field itself; what it shows and steps through belongs to its owner.
class WSpinBox::SpinField : public QAbstractSpinBox {
public:
    explicit SpinField(WSpinBox& owner)
        : m_owner(owner)
        , m_life(owner.life())
    {
        setFocusPolicy(Qt::StrongFocus);
        setAccelerated(true);
    }
    using QAbstractSpinBox::lineEdit;

    void stepBy(int steps) override
    {
        if (m_life.expired())
            return;
        barrier([&] {
            const std::weak_ptr<const void> life = m_life; // outlives the field
            m_owner.commit();
            if (life.expired())
                return;
            const int64_t to = stepped(m_owner.m_value, steps, m_owner.m_step);
            m_owner.accept(std::clamp(to, m_owner.m_minimum, m_owner.m_maximum), false);
            if (!life.expired())
                m_owner.selectAll();
        });
    }

    QValidator::State validate(QString& text, int&) const override
    {
        if (m_life.expired())
            return QValidator::Acceptable;
        const std::wstring suffix = m_owner.m_suffix;
        for (const wchar_t c : fromQString(text)) {
            const bool point = (c == L'.' || c == L',') && m_owner.m_digits > 0;
            const bool sign = c == L'+' || (c == L'-' && m_owner.m_minimum < 0);
            const bool digit = c >= L'0' && c <= L'9';
            if (!digit && !point && !sign && c != L' ' && suffix.find(c) == suffix.npos)
                return QValidator::Invalid;
        }
        return QValidator::Acceptable;
    }

protected:
    StepEnabled stepEnabled() const override
    {
        StepEnabled enabled = StepNone;
        if (m_life.expired() || m_owner.m_readOnly)
            return enabled;
        if (m_owner.m_value < m_owner.m_maximum)
            enabled |= StepUpEnabled;
        if (m_owner.m_value > m_owner.m_minimum)
            enabled |= StepDownEnabled;
        return enabled;
    }

private:
    WSpinBox& m_owner;
    std::weak_ptr<const void> m_life; // the toolkit may still be at work when the owner has gone
};

struct WSpinBox::SpinNative : public Native {
    SpinNative(WSpinBox& owning, std::unique_ptr<SpinField> made)
        : Native(owning, std::move(made))
        , box(owning)
        , field(static_cast<SpinField*>(widget.data()))
    {
        QObject::connect(field->lineEdit(), &QLineEdit::textEdited, this, [this] {
            barrier([&] {
                const auto value = readUnits(box.text(), box.m_digits, box.m_suffix);
                if (value && *value >= box.m_minimum && *value <= box.m_maximum)
                    box.accept(*value, true);
            });
        });
    }

    bool filterWidget(QEvent* event) override
    {
        if (event->type() == QEvent::FocusOut &&
            static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
            const QPointer<Native> alive(this);
            box.commit();
            if (!alive)
                return true;
        }
        return Native::filterWidget(event);
    }

    bool filterSurface(QEvent* event) override
    {
        if (event->type() == QEvent::Wheel && !field->hasFocus()) {
            event->ignore(); // for the area around it
            return true;
        }
        return Native::filterSurface(event);
    }

    bool unhandledKey(QKeyEvent* event) override
    {
        if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
            return false;
        const QPointer<Native> alive(this);
        box.commit();
        return !alive;
    }

    WSpinBox& box;
    SpinField* field;
};

WSpinBox::WSpinBox() = default;
WSpinBox::~WSpinBox()
{
    destroy();
}

bool WSpinBox::onValueChanged()
{
    return false;
}

WSpinBox::SpinNative* WSpinBox::spin() const
{
    return static_cast<SpinNative*>(native());
}

std::unique_ptr<Native> WSpinBox::makeNative()
{
    auto field = std::make_unique<SpinField>(*this);
    field->setFrame(!(style() & NoFrame));
    if (style() & NoButtons)
        field->setButtonSymbols(QAbstractSpinBox::NoButtons);
    field->setReadOnly(m_readOnly);
    field->lineEdit()->setText(toQString(writeUnits(m_value, m_digits) + m_suffix));
    return std::make_unique<SpinNative>(*this, std::move(field));
}

void WSpinBox::apply()
{
    if (!spin())
        return;
    const QString text = toQString(writeUnits(m_value, m_digits) + m_suffix);
    QLineEdit* edit = spin()->field->lineEdit();
    if (edit->text() != text)
        edit->setText(text);
    spin()->field->update(); // the arrows
}

void WSpinBox::accept(int64_t value, bool keepText)
{
    const bool changed = value != m_value;
    m_value = value;
    if (!keepText)
        apply();
    if (changed)
        dispatch<&WSpinBox::onValueChanged>(*this);
}

void WSpinBox::commit()
{
    if (!spin())
        return;
    const auto typed = readUnits(text(), m_digits, m_suffix);
    accept(std::clamp(typed.value_or(m_value), m_minimum, m_maximum), false);
}

void WSpinBox::setDigits(int digits)
{
    digits = std::clamp(digits, 0, maxDigits);
    const int more = digits - m_digits;
    m_digits = digits;
    m_minimum = rescaled(m_minimum, more);
    m_maximum = rescaled(m_maximum, more);
    m_step = std::max<int64_t>(1, rescaled(m_step, more));
    m_value = std::clamp(rescaled(m_value, more), m_minimum, m_maximum);
    apply();
}

void WSpinBox::setRange(int64_t minimum, int64_t maximum)
{
    m_minimum = minimum;
    m_maximum = std::max(minimum, maximum);
    accept(std::clamp(m_value, m_minimum, m_maximum), false);
}

void WSpinBox::setStep(int64_t step)
{
    m_step = std::max<int64_t>(1, step);
}

void WSpinBox::setValue(int64_t value)
{
    accept(std::clamp(value, m_minimum, m_maximum), false);
}

void WSpinBox::setNumber(double number)
{
    if (std::isnan(number))
        return;
    const double units = std::round(number * std::pow(10.0, m_digits));
    constexpr double edge = 9223372036854775808.0; // 2^63
    if (units >= edge)
        return setValue(most);
    setValue(units < -edge ? least : static_cast<int64_t>(units));
}

double WSpinBox::number() const
{
    return static_cast<double>(m_value) / std::pow(10.0, m_digits);
}

void WSpinBox::setSuffix(const wchar_t* suffix)
{
    commit();
    m_suffix = suffix ? suffix : L"";
    apply();
}

void WSpinBox::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    if (spin())
        spin()->field->setReadOnly(readOnly);
}

std::wstring WSpinBox::text() const
{
    if (!spin())
        return writeUnits(m_value, m_digits) + m_suffix;
    return fromQString(spin()->field->lineEdit()->text());
}

void WSpinBox::selectAll()
{
    if (spin())
        spin()->field->lineEdit()->selectAll();
}

} // namespace OviAPI
