#include <oviapi/msgbox.h>

#include <cstdio>

#include <QAbstractButton>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>

#include <oviapi/application.h>
#include <oviapi/phrases.h>
#include <oviapi/text.h>

#include "convert.h"
#include "native.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

struct ButtonKind {
    int bit;
    Phrase caption;
    QMessageBox::ButtonRole role;
};

// In the order in which one becomes the default button.
constexpr ButtonKind kinds[] = {
    {MsgBox::Yes, Phrase::Yes, QMessageBox::YesRole},
    {MsgBox::Ok, Phrase::Ok, QMessageBox::AcceptRole},
    {MsgBox::No, Phrase::No, QMessageBox::NoRole},
    {MsgBox::Cancel, Phrase::Cancel, QMessageBox::RejectRole},
};
constexpr int allButtons = MsgBox::Ok | MsgBox::Cancel | MsgBox::Yes | MsgBox::No;

void takeControlFont(QMessageBox& box)
{
    Application* application = Application::instance();
    const Font* font = application ? application->fontForRole(Application::ControlFont) : nullptr;
    if (font && !font->isEmpty())
        box.setFont(toQFont(*font));
}

// What closing the box stands for; 0 when it stands for nothing.
int escapeButton(int buttons)
{
    for (const int button : {MsgBox::Cancel, MsgBox::No}) {
        if (buttons & button)
            return button;
    }
    return (buttons & (buttons - 1)) == 0 ? buttons : 0;
}

} // namespace

int MsgBox::show(const wchar_t* title, const wchar_t* text, int buttons)
{
    return showEx(title, text, buttons, 0);
}

int MsgBox::showEx(const wchar_t* title, const wchar_t* text, int buttons, int defaultButton)
{
    buttons &= allButtons;
    if (buttons == 0)
        buttons = Ok;
    const int escape = escapeButton(buttons);
    const std::wstring titleText = title ? title : L"";
    const std::wstring boxText = text ? text : L"";
    if (!Toolkit::current()) {
        std::fprintf(stderr, "%s: %s\n", wideToLocale(titleText).c_str(),
                     wideToLocale(boxText).c_str());
        return escape;
    }
    QMessageBox box;
    box.setWindowTitle(toQString(titleText));
    box.setTextFormat(Qt::PlainText);
    box.setText(toQString(boxText));
    int result = escape;
    for (const ButtonKind& kind : kinds) {
        if (!(buttons & kind.bit))
            continue;
        QPushButton* button = box.addButton(toQString(phrase(kind.caption)), kind.role);
        QObject::connect(button, &QPushButton::clicked, &box,
                         [&result, &kind] { result = kind.bit; });
        if (!box.defaultButton() || kind.bit == defaultButton)
            box.setDefaultButton(button);
        if (kind.bit == escape)
            box.setEscapeButton(button);
    }
    takeControlFont(box);
    QEventLoop loop;
    LocalLoop local([&] { loop.quit(); });
    QObject::connect(&box, &QDialog::finished, &loop, &QEventLoop::quit);
    box.setWindowModality(Qt::ApplicationModal);
    box.show();
    if (!local.failed())
        loop.exec();
    box.hide();
    local.rethrow();
    return result;
}

} // namespace OviAPI
