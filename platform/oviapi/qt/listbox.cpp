#include <oviapi/listbox.h>

#include <algorithm>

#include <QComboBox>
#include <QListWidget>
#include <QSignalBlocker>

#include "convert.h"
#include "native.h"

namespace OviAPI {

namespace {

QListWidget* listOf(const WVisualObject& object)
{
    return object.native() ? object.native()->as<QListWidget>() : nullptr;
}

QComboBox* comboOf(const WVisualObject& object)
{
    return object.native() ? object.native()->as<QComboBox>() : nullptr;
}

} // namespace

WLineList::WLineList() = default;
WLineList::~WLineList() = default;

bool WLineList::onSelect()
{
    return false;
}

void WLineList::insertNative(int) {}
void WLineList::removeNative(int) {}
void WLineList::setNativeText(int) {}
void WLineList::setNativeCurrent(int) {}

int WLineList::insertLine(const wchar_t* text, void* cargo, int before)
{
    const int line = before < 0 || before > lineCount() ? lineCount() : before;
    m_lines.insert(m_lines.begin() + line, Line{text ? text : L"", cargo});
    if (m_current >= line)
        ++m_current;
    insertNative(line);
    setNativeCurrent(m_current);
    return line;
}

void WLineList::removeLine(int line)
{
    if (!inRange(line))
        return;
    m_lines.erase(m_lines.begin() + line);
    if (m_current == line)
        m_current = -1;
    else if (m_current > line)
        --m_current;
    removeNative(line);
    setNativeCurrent(m_current);
}

void WLineList::clear()
{
    while (lineCount() > 0)
        removeLine(lineCount() - 1);
}

std::wstring WLineList::lineText(int line) const
{
    return inRange(line) ? m_lines[static_cast<size_t>(line)].text : std::wstring();
}

void WLineList::setLineText(int line, const wchar_t* text)
{
    if (!inRange(line))
        return;
    m_lines[static_cast<size_t>(line)].text = text ? text : L"";
    setNativeText(line);
}

void* WLineList::lineCargo(int line) const
{
    return inRange(line) ? m_lines[static_cast<size_t>(line)].cargo : nullptr;
}

void WLineList::setLineCargo(int line, void* cargo)
{
    if (inRange(line))
        m_lines[static_cast<size_t>(line)].cargo = cargo;
}

int WLineList::findCargo(const void* cargo) const
{
    const auto found = std::find_if(m_lines.begin(), m_lines.end(),
                                    [&](const Line& line) { return line.cargo == cargo; });
    return found == m_lines.end() ? -1 : static_cast<int>(found - m_lines.begin());
}

void WLineList::setCurrentLine(int line)
{
    m_current = inRange(line) ? line : -1;
    setNativeCurrent(m_current);
}

void WLineList::userSelected(int line)
{
    if (line == m_current)
        return;
    m_current = inRange(line) ? line : -1;
    dispatch<&WLineList::onSelect>(*this);
}

WListBox::WListBox() = default;
WListBox::~WListBox() = default;

std::unique_ptr<Native> WListBox::makeNative()
{
    auto list = std::make_unique<QListWidget>();
    list->setUniformItemSizes(true);
    for (int i = 0; i < lineCount(); ++i)
        list->addItem(toQString(lineText(i)));
    list->setCurrentRow(currentLine());
    auto native = std::make_unique<Native>(*this, std::move(list));
    QObject::connect(native->as<QListWidget>(), &QListWidget::currentRowChanged, native.get(),
                     [this](int line) { barrier([&] { userSelected(line); }); });
    return native;
}

int WListBox::lineAt(int x, int y) const
{
    const QListWidget* list = listOf(*this);
    return list ? list->indexAt(QPoint(x, y)).row() : -1;
}

void WListBox::insertNative(int line)
{
    if (QListWidget* list = listOf(*this)) {
        const QSignalBlocker quiet(list);
        list->insertItem(line, toQString(lineText(line)));
    }
}

void WListBox::removeNative(int line)
{
    if (QListWidget* list = listOf(*this)) {
        const QSignalBlocker quiet(list);
        delete list->takeItem(line);
    }
}

void WListBox::setNativeText(int line)
{
    if (QListWidget* list = listOf(*this))
        list->item(line)->setText(toQString(lineText(line)));
}

void WListBox::setNativeCurrent(int line)
{
    if (QListWidget* list = listOf(*this)) {
        const QSignalBlocker quiet(list);
        list->setCurrentRow(line);
    }
}

WComboBox::WComboBox() = default;
WComboBox::~WComboBox() = default;

std::unique_ptr<Native> WComboBox::makeNative()
{
    auto combo = std::make_unique<QComboBox>();
    for (int i = 0; i < lineCount(); ++i)
        combo->addItem(toQString(lineText(i)));
    combo->setCurrentIndex(currentLine());
    auto native = std::make_unique<Native>(*this, std::move(combo));
    QObject::connect(native->as<QComboBox>(), &QComboBox::currentIndexChanged, native.get(),
                     [this](int line) { barrier([&] { userSelected(line); }); });
    return native;
}

void WComboBox::insertNative(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->insertItem(line, toQString(lineText(line)));
    }
}

void WComboBox::removeNative(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->removeItem(line);
    }
}

void WComboBox::setNativeText(int line)
{
    if (QComboBox* combo = comboOf(*this))
        combo->setItemText(line, toQString(lineText(line)));
}

void WComboBox::setNativeCurrent(int line)
{
    if (QComboBox* combo = comboOf(*this)) {
        const QSignalBlocker quiet(combo);
        combo->setCurrentIndex(line);
    }
}

} // namespace OviAPI
