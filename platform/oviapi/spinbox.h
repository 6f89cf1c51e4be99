// Fields for numbers with arrows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// A number with a fixed count of decimals, exact: value() counts units of the last decimal, so with
// 2 digits 12.5 is 1250. Without digits, which is how it starts, units are whole numbers.
//
// The user steps with the arrows, Up, Down, Page Up and Page Down (ten steps), and with the wheel
// while the field has the focus, and may type. What is typed becomes the value as soon as it lies
// in the range. On leaving the field and on Enter a number outside is moved to the nearest end of
// the range, and text that is no number gives way to the value. The decimal sign is the point in
// every locale; a comma is read as one. Every key goes to onKeyDown before the field uses it.
class OVIAPI_API WSpinBox : public virtual WTypicalControl {
public:
    enum SpinStyle : long {
        NoFrame = 64, // for a field inside another control
        NoButtons = 128,
    };

    WSpinBox();
    ~WSpinBox() override;

    // Another value, by the user or by a call.
    virtual bool onValueChanged();

    // Decimals, 0 to 18. The number stays what it was as far as the decimals can show it; so do
    // range and step.
    void setDigits(int digits);
    int digits() const { return m_digits; }

    // In units of the last decimal; 0 to 100, step 1 at first. A maximum below the minimum counts
    // as the minimum. A value outside is moved into the range.
    void setRange(int64_t minimum, int64_t maximum);
    int64_t minimum() const { return m_minimum; }
    int64_t maximum() const { return m_maximum; }
    // At least 1.
    void setStep(int64_t step);
    int64_t step() const { return m_step; }
    void setValue(int64_t value);
    int64_t value() const { return m_value; }

    // The same as a floating-point number, rounded to the decimals. Not a number changes nothing.
    void setNumber(double number);
    double number() const;

    // Stands behind the number: " px".
    void setSuffix(const wchar_t* suffix);
    const std::wstring& suffix() const { return m_suffix; }
    void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }

    // What stands in the field now, with the suffix.
    std::wstring text() const;
    void selectAll();
    // Acts as leaving the field does.
    void commit();

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    struct SpinNative;
    class SpinField;
    friend class SpinField;

    SpinNative* spin() const;
    // Takes the value over and tells of it. The object may be gone afterwards.
    void accept(int64_t value, bool keepText);
    void apply();

    int64_t m_minimum = 0;
    int64_t m_maximum = 100;
    int64_t m_step = 1;
    int64_t m_value = 0;
    std::wstring m_suffix;
    int m_digits = 0;
    bool m_readOnly = false;
};

// The number in units of the last decimal; nothing when the text is none. Blanks around it and the
// suffix are left out; more decimals than there are digits are rounded, half away from zero; what
// is too large becomes the largest number of its sign.
OVIAPI_API std::optional<int64_t> readUnits(std::wstring_view text, int digits,
                                            std::wstring_view suffix = {});
OVIAPI_API std::wstring writeUnits(int64_t units, int digits);

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WSpinBox, onValueChanged);
