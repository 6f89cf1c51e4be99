#include <oviapi/listbox.h>

#include <algorithm>

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
    const bool wasCurrent = m_current == line;
    if (wasCurrent)
        m_current = -1;
    else if (m_current > line)
        --m_current;
    removeNative(line);
    setNativeCurrent(m_current);
    if (wasCurrent)
        currentChanged();
}

void WLineList::clear()
{
    const std::weak_ptr<const void> alive = life();
    while (!alive.expired() && lineCount() > 0)
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
    const int before = m_current;
    m_current = inRange(line) ? line : -1;
    setNativeCurrent(m_current);
    if (m_current != before)
        currentChanged();
}

void WLineList::userSelected(int line)
{
    if (line == m_current)
        return;
    m_current = inRange(line) ? line : -1;
    const std::weak_ptr<const void> alive = life();
    currentChanged();
    if (!alive.expired())
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

} // namespace OviAPI
