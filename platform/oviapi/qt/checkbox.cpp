#include <oviapi/checkbox.h>

#include <QCheckBox>

#include "convert.h"
#include "native.h"

namespace OviAPI {

WCheckBox::WCheckBox() = default;
WCheckBox::~WCheckBox() = default;

bool WCheckBox::onCheck()
{
    return false;
}

std::unique_ptr<Native> WCheckBox::makeNative()
{
    auto box = std::make_unique<QCheckBox>(toQString(m_text));
    box->setChecked(m_checked);
    auto native = std::make_unique<Native>(*this, std::move(box));
    QObject::connect(native->as<QCheckBox>(), &QCheckBox::clicked, native.get(),
                     [this](bool checked) {
                         m_checked = checked;
                         barrier([&] { dispatch<&WCheckBox::onCheck>(*this); });
                     });
    return native;
}

void WCheckBox::setText(const wchar_t* text)
{
    m_text = text ? text : L"";
    if (native())
        native()->as<QCheckBox>()->setText(toQString(m_text));
}

void WCheckBox::setChecked(bool checked)
{
    m_checked = checked;
    if (native())
        native()->as<QCheckBox>()->setChecked(checked);
}

} // namespace OviAPI
