#include "dialogs.h"

#include <cwctype>
#include <functional>
#include <set>

#include <oviapi/checkbox.h>
#include <oviapi/inputdriver.h>
#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "app/yesnoconfirmdlg.h"
#include "application.h"

#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>

namespace {

QFileDialog* openFileDialog()
{
    return qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
}

void press(QWidget* widget, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

using OviAPI::WVisualObject;

// Calls the function for everything in the container that can be seen.
void visit(OviAPI::Container& container, const std::function<void(WVisualObject&)>& function)
{
    for (OviAPI::VisualObject* child = container.firstChild(); child;
         child = child->nextSibling()) {
        auto* object = dynamic_cast<WVisualObject*>(child);
        if (!object || !object->isVisible())
            continue;
        function(*object);
        if (auto* inside = dynamic_cast<OviAPI::Container*>(child))
            visit(*inside, function);
    }
}

// The caption of a control; null for one without.
const std::wstring* captionOf(WVisualObject& object)
{
    if (auto* label = dynamic_cast<OviAPI::WStatic*>(&object))
        return &label->text();
    if (auto* button = dynamic_cast<OviAPI::WButton*>(&object))
        return button->picture().isNull() ? &button->text() : nullptr;
    if (auto* box = dynamic_cast<OviAPI::WCheckBox*>(&object))
        return &box->text();
    return nullptr;
}

std::wstring bare(const std::wstring& caption)
{
    std::wstring text = caption;
    std::erase(text, L'&');
    return text;
}

// px that a control needs beside its text
int besideText(WVisualObject& object)
{
    if (dynamic_cast<OviAPI::WButton*>(&object))
        return 12;
    return dynamic_cast<OviAPI::WCheckBox*>(&object) ? 20 : 0;
}

void checkMnemonic(const std::wstring& caption, std::set<wchar_t>& marks)
{
    const size_t mark = caption.find(L'&');
    if (mark == std::wstring::npos || mark + 1 == caption.size())
        return;
    const auto letter = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(caption[mark + 1])));
    EXPECT_TRUE(marks.insert(letter).second) << OviAPI::wideToUtf8(caption);
}

void checkRoom(WVisualObject& object, const std::wstring& caption)
{
    if (object.style() & OviAPI::WStatic::WordWrap)
        return;
    const OviAPI::Size text = OviAPI::GetTextSize(object.font(), bare(caption));
    EXPECT_LE(text.width + besideText(object), object.width()) << OviAPI::wideToUtf8(caption);
    EXPECT_LE(text.height, object.height() + 1) << OviAPI::wideToUtf8(caption);
}

} // namespace

DialogTest::DialogTest()
    : m_options(TestApplication::get().record)
{
    m_options.initDefaults();
    setLanguage(TypicalOptions::DefaultLanguage);
    m_above.init(1, TestApplication::get().resources());
    m_above.move(0, 0, 600, 400);
    m_above.setFont(m_options.FontControls);
    EXPECT_TRUE(m_above.create());
    m_above.show(true);
    settle();
}

DialogTest::~DialogTest()
{
    m_options.initDefaults();
    setLanguage(TypicalOptions::DefaultLanguage);
}

void DialogTest::setLanguage(enum TypicalOptions::Language language)
{
    m_options.Language = language;
    TestApplication::get().setLanguage(language);
    TestApplication::get().notifyCharsetChanged();
}

bool modalIsOpen()
{
    return OviAPI::WForm::topModal() != nullptr;
}

bool boxIsOpen()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr;
}

YesNoConfirmDlg* openConfirmation()
{
    return dynamic_cast<YesNoConfirmDlg*>(OviAPI::WForm::topModal());
}

bool confirmIsOpen()
{
    return openConfirmation() != nullptr;
}

std::wstring labelIn(OviAPI::WForm& form)
{
    std::wstring text;
    visit(form, [&](WVisualObject& object) {
        auto* label = dynamic_cast<OviAPI::WStatic*>(&object);
        if (label && text.empty())
            text = label->text();
    });
    return text;
}

bool FileDialogDriver::isOpen()
{
    return openFileDialog() != nullptr;
}

std::wstring FileDialogDriver::title()
{
    return openFileDialog()->windowTitle().toStdWString();
}

std::wstring FileDialogDriver::folder()
{
    return openFileDialog()->directory().absolutePath().toStdWString();
}

std::vector<std::wstring> FileDialogDriver::filters()
{
    std::vector<std::wstring> filters;
    for (const QString& filter : openFileDialog()->nameFilters())
        filters.push_back(filter.toStdWString());
    return filters;
}

void FileDialogDriver::choose(const std::wstring& name)
{
    auto* line = openFileDialog()->findChild<QLineEdit*>("fileNameEdit");
    ASSERT_TRUE(line);
    line->setText(QString::fromStdWString(name));
    press(line, Qt::Key_Return);
}

void FileDialogDriver::cancel()
{
    press(openFileDialog(), Qt::Key_Escape);
}

int tabStops(OviAPI::WForm& form)
{
    constexpr int most = 100;
    form.bringToFront();
    settle();
    const WVisualObject* first = WVisualObject::focusedObject();
    std::set<const WVisualObject*> seen;
    for (int i = 0; i < most; ++i) {
        const WVisualObject* before = WVisualObject::focusedObject();
        seen.insert(before);
        OviAPI::InputDriver::key(OviAPI::VirtualKey(OviAPI::KeyTab));
        if (!waitFor([&] { return WVisualObject::focusedObject() != before; }))
            return -1;
        if (WVisualObject::focusedObject() == first)
            break;
    }
    return static_cast<int>(seen.size());
}

void checkTexts(OviAPI::WForm& form)
{
    settle(); // captions take the height of their texts when they are painted
    std::set<wchar_t> marks;
    visit(form, [&](WVisualObject& object) {
        const OviAPI::Point end = object.mapTo(form, {object.width(), object.height()});
        EXPECT_LE(end.x, form.clientWidth() + 2);
        EXPECT_LE(end.y, form.clientHeight() + 2);
        const std::wstring* caption = captionOf(object);
        if (!caption || object.height() == 0)
            return;
        EXPECT_FALSE(caption->empty());
        checkMnemonic(*caption, marks);
        checkRoom(object, *caption);
    });
}
