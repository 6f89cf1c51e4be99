// What one page and one row of scrolling cost: the record view over 1,000,000,000,000 virtual rows
// and over a dataset in memory, beside the toolkit's own table view over a database table. Same
// window, font, row height and columns; and the floor: the same pixels moved, and what comes into
// view filled with one colour. Usage: scroll_bench [rows of the tables]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include <oviapi/application.h>
#include <oviapi/form.h>
#include <oviapi/memorydataset.h>
#include <oviapi/painter.h>
#include <oviapi/recordview.h>

#include "scroll_peer.h"

using namespace OviAPI;

namespace {

constexpr int columns = 8;

struct Text {
    wchar_t cell[columns][32];
};

Text textOfRow(long n)
{
    Text text{};
    const auto put = [&text](int column, const wchar_t* format, auto value) {
        std::swprintf(text.cell[column], 32, format, value);
    };
    put(0, L"%ld", n);
    put(1, L"Article %ld", n * 7919 % 100'003);
    put(2, L"%.2f", static_cast<double>(n * 37 % 10'000) / 100);
    put(3, L"%ld", n * 13 % 1'000);
    put(4, L"2024-%02ld-17 10:30:00", n % 12 + 1);
    put(5, L"C-%05lx", static_cast<unsigned long>(n * 31 % 65'536));
    put(6, L"kept in hall %ld", n % 40);
    put(7, L"%g", static_cast<double>(n * 17 % 5'000) / 8);
    return text;
}

void addColumns(aCDataSet& data)
{
    const unsigned char types[columns] = {8, 1, 5, 2, 7, 1, 1, 5};
    const long sizes[columns] = {8, 32, 8, 4, 8, 32, 32, 8};
    for (int i = 0; i < columns; ++i) {
        const std::wstring title = L"Column " + std::to_wstring(i + 1);
        data.AddColDef(new aCColumn(title.c_str(), types[i], sizes[i], title.c_str(), 0, 0, 0));
    }
}

// Makes every row when it is asked for.
class VirtualRows : public aCDataSet {
public:
    VirtualRows()
    {
        m_rowCount = 1'000'000'000'000;
        addColumns(*this);
        m_row.resize(GetRowLength());
    }
    short ToRow(short, long row, bool) override
    {
        const Text text = textOfRow(row);
        for (int i = 1; i <= columns; ++i) {
            const aCColumn& column = *GetColInfo(i);
            std::vector<std::byte> value;
            textToValue(column.dataType, text.cell[i - 1], column.rowBytes(), {}, value);
            std::byte* place = m_row.data() + GetColOffset(i);
            std::memset(place, 0, column.rowBytes());
            std::memcpy(place, value.data(), value.size());
        }
        return 0;
    }
    const void* GetRowData() override { return m_row.data(); }

private:
    std::vector<std::byte> m_row;
};

void fill(aCMemoryDataSet& data, long rows)
{
    addColumns(data);
    data.Reserve(rows);
    for (long n = 1; n <= rows; ++n) {
        const Text text = textOfRow(n);
        std::vector<const wchar_t*> cells;
        for (const auto& cell : text.cell)
            cells.push_back(cell);
        if (data.AppendTexts(cells) != TextFault::None)
            std::exit(1);
    }
}

ScrollTimes measureView(aCDataSet& data, ScrollTable& table, long start)
{
    WForm form;
    form.create();
    form.move(0, 0, table.width, table.height);
    aCRecordView view;
    view.setParent(&form);
    view.setFont(Font(table.font, table.fontSize));
    view.create();
    view.move(0, 0, table.width, table.height);
    for (int i = 1; i <= columns; ++i)
        data.GetColInfo(i)->width = static_cast<int16_t>(table.columnWidth);
    view.SetDataSet(&data, true);
    form.show(true);
    Application::procTaskEvents();
    table.rowHeight = view.GetBroker()->rowHeight;
    const long page = view.GetRowOnPage();
    view.ScrollToRow(start);
    Application::procTaskEvents();
    ScrollTimes times;
    times.page = medianCpuMs(table.steps, [&] {
        view.doScroll(0, view.GetFirstShownRow() - 1 + page);
        Application::procTaskEvents();
    });
    times.row = medianCpuMs(table.steps, [&] {
        view.doScroll(0, view.GetFirstShownRow());
        Application::procTaskEvents();
    });
    return times;
}

class PlainArea : public aCApsWnd {
public:
    PlainArea() { setOpaque(); }
    bool onDraw(Painter* painter, const Rect& rect) override
    {
        painter->fillRect(rect, Color(255, 255, 255));
        return true;
    }
};

ScrollTimes measureFloor(const ScrollTable& table)
{
    WForm form;
    form.create();
    form.move(0, 0, table.width, table.height);
    PlainArea area;
    area.setParent(&form);
    area.create();
    area.move(0, 0, table.width, table.height);
    form.show(true);
    Application::procTaskEvents();
    const auto scroll = [&](int pixels) {
        return medianCpuMs(table.steps, [&] {
            area.ScrollPixels({0, table.rowHeight, table.width, table.height}, 0, -pixels);
            Application::procTaskEvents();
        });
    };
    return {scroll(table.height), scroll(table.rowHeight)};
}

void print(const char* what, const ScrollTimes& times, const ScrollTimes& peer)
{
    std::printf("%-44s page %7.3f ms  x %5.2f    row %7.3f ms  x %5.2f\n", what, times.page,
                times.page / peer.page, times.row, times.row / peer.row);
}

} // namespace

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    Application application;
    application.start(argc, argv);
    ScrollTable table;
    table.rows = argc > 1 ? std::atol(argv[1]) : 100'000;
    table.width = 1000;
    table.height = 600;
    table.columnWidth = 120;
    table.steps = 300;
    table.font = L"Helvetica";
    table.fontSize = 10;
    VirtualRows endless;
    const ScrollTimes far = measureView(endless, table, 500'000'000'000);
    aCMemoryDataSet memory;
    fill(memory, table.rows);
    const ScrollTimes held = measureView(memory, table, 1);
    const ScrollTimes peer = measurePeer(table);
    print("table view over a table model", peer, peer);
    print("pixels moved and filled", measureFloor(table), peer);
    print("record view, 1,000,000,000,000 virtual rows", far, peer);
    print("record view, rows in memory", held, peer);
    return 0;
}
