#include "explorer/rowsarea.h"

#include <algorithm>
#include <numeric>

#include "explorer/textlookup.h"

namespace {

constexpr int smallestPane = 60; // px
constexpr double shareOfDetails = 0.4;

} // namespace

RowsArea::RowsArea(TypicalConfirm& deleteRow)
    : m_deleteRow(deleteRow)
    , m_table(deleteRow)
{
    watch(m_table, 0);
    OviAPI::connect<&ForeignKeys::onForeignKeys>(m_keys, *this,
                                                 [this](OviAPI::Object*) -> OviAPI::SlotResult {
                                                     keysChanged();
                                                     return 0;
                                                 });
}

RowsArea::~RowsArea()
{
    while (!m_levels.empty()) // each points to the one above it
        m_levels.pop_back();
}

bool RowsArea::onPlaceChanged()
{
    return false;
}

bool RowsArea::onRowsChanged(size_t)
{
    return false;
}

bool RowsArea::onShowValue()
{
    return false;
}

bool RowsArea::create()
{
    if (!WExtPanel::create())
        return false;
    m_table.setParent(this);
    return m_table.create();
}

void RowsArea::watch(RowsPane& pane, size_t number)
{
    using OviAPI::SlotResult;
    OviAPI::connect<&RowsPane::onPlaceChanged>(pane, *this,
                                               [this, number](OviAPI::Object*) -> SlotResult {
                                                   placeChanged(number);
                                                   return 0;
                                               });
    OviAPI::connect<&RowsPane::onRowsChanged>(
        pane, *this, [this, number](OviAPI::Object*) -> SlotResult {
            OviAPI::dispatch<&RowsArea::onRowsChanged>(*this, number);
            return 0;
        });
    OviAPI::connect<&RowsPane::onShowValue>(pane, *this, [this](OviAPI::Object*) -> SlotResult {
        OviAPI::dispatch<&RowsArea::onShowValue>(*this);
        return 0;
    });
}

RowsPane& RowsArea::rowsOf(size_t number)
{
    return number == 0 ? static_cast<RowsPane&>(m_table) : detail(number).rows();
}

DatabaseTable RowsArea::tableOf(size_t number)
{
    return number == 0 ? m_table.source() : detail(number).table();
}

size_t RowsArea::current()
{
    for (size_t i = 0; i <= levels(); ++i)
        if (rowsOf(i).view().hasFocus())
            m_current = i;
    m_current = std::min(m_current, levels());
    return m_current;
}

// --- what is shown

void RowsArea::showTable(const DorCPP::DorConnect& connection, const DatabaseTable& table)
{
    m_connection = &connection;
    m_table.showTable(connection, table);
}

void RowsArea::keysChanged()
{
    for (size_t i = 1; i <= levels(); ++i)
        connectLevel(i);
}

void RowsArea::clear(TextId heading, TextId hint)
{
    for (size_t i = levels(); i > 0; --i)
        detail(i).clear();
    m_keys.stop();
    m_keys.setKeys({});
    m_table.clear(heading, hint);
    m_connection = nullptr;
}

bool RowsArea::leave()
{
    for (size_t i = levels() + 1; i > 0; --i)
        if (!rowsOf(i - 1).leave())
            return false;
    return true;
}

bool RowsArea::isBusy() const
{
    return m_table.isLoading() || m_keys.isRunning() ||
           std::any_of(m_levels.begin(), m_levels.end(),
                       [](const auto& level) { return level->pane.isBehind(); });
}

void RowsArea::cancel()
{
    m_table.cancel();
    for (const auto& level : m_levels)
        level->pane.cancel();
}

// The pane shows other rows, or its focus has moved: the level below follows.
void RowsArea::placeChanged(size_t number)
{
    if (number < levels())
        connectLevel(number + 1);
    OviAPI::dispatch<&RowsArea::onPlaceChanged>(*this);
}

void RowsArea::connectLevel(size_t number)
{
    if (number == 1 && m_table.isLoading()) // what is shown is not what has been asked for
        return;
    const DatabaseTable master = tableOf(number - 1);
    if (!m_connection || master.name.empty())
        detail(number).clear();
    else if (!m_keys.isRunning())
        detail(number).setMaster(*m_connection, master, m_keys);
}

// --- levels

bool RowsArea::addLevel()
{
    if (levels() == MostLevels)
        return false;
    m_levels.push_back(std::make_unique<Level>(rowsOf(levels()), m_deleteRow));
    for (double& share : m_shares)
        share *= 1.0 - shareOfDetails;
    m_shares.push_back(shareOfDetails);
    const size_t number = levels();
    Level& level = *m_levels.back();
    watch(level.pane.rows(), number);
    OviAPI::connect<&SplitterBar::onSplit>(
        level.bar, *this, [this, number](OviAPI::Object*, int place) -> OviAPI::SlotResult {
            split(number, place);
            return 1;
        });
    level.bar.setParent(this);
    level.pane.setParent(this);
    if (!level.bar.create() || !level.pane.create())
        return removeLevel() && false;
    loadTexts();
    layOut();
    connectLevel(number);
    return true;
}

bool RowsArea::removeLevel()
{
    if (m_levels.empty() || !detail(levels()).rows().leave())
        return false;
    m_levels.pop_back();
    m_shares.pop_back();
    const double sum = std::accumulate(m_shares.begin(), m_shares.end(), 0.0);
    for (double& share : m_shares)
        share /= sum;
    layOut();
    OviAPI::dispatch<&RowsArea::onPlaceChanged>(*this);
    return true;
}

void RowsArea::loadTexts()
{
    m_table.loadTexts();
    for (const auto& level : m_levels) {
        level->bar.setAccessibleName(textOf(TextDetailsSplitterName).c_str());
        level->pane.loadTexts();
    }
}

// --- places

OviAPI::WVisualObject& RowsArea::paneAt(size_t number)
{
    if (number == 0)
        return m_table;
    return detail(number);
}

int RowsArea::paneHeight(size_t number) const
{
    const auto bars = static_cast<int>(levels()) * SplitterBar::Thickness;
    const int room = std::max(0, clientSize().height - bars);
    return static_cast<int>(m_shares[number] * room);
}

// place: where the upper edge of the bar above the pane is to stand.
void RowsArea::split(size_t number, int place)
{
    const int both = std::max(1, paneHeight(number - 1) + paneHeight(number));
    const int upper = std::clamp(place - paneAt(number - 1).geometry().top, smallestPane,
                                 std::max(smallestPane, both - smallestPane));
    const double sum = m_shares[number - 1] + m_shares[number];
    m_shares[number - 1] = sum * std::min(upper, both) / both;
    m_shares[number] = sum - m_shares[number - 1];
    layOut();
}

bool RowsArea::onSize()
{
    layOut();
    return false;
}

void RowsArea::layOut()
{
    if (!isCreated())
        return;
    const OviAPI::Size size = clientSize();
    int top = 0;
    for (size_t i = 0; i <= levels(); ++i) {
        if (i > 0) {
            splitter(i).move(0, top, size.width, SplitterBar::Thickness);
            top += SplitterBar::Thickness;
        }
        const int height = i == levels() ? std::max(0, size.height - top) : paneHeight(i);
        paneAt(i).move(0, top, size.width, height);
        top += height;
    }
}
