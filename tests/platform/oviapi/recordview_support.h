// A window with a record view in it, and datasets to show.
#pragma once

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include <oviapi/form.h>
#include <oviapi/memorydataset.h>
#include <oviapi/recordview.h>

#include "tests/support/uidriver.h"

// Rows made up from their numbers; remembers which ones were asked for.
class VirtualRows : public OviAPI::aCDataSet {
public:
    explicit VirtualRows(long rows, int columns = 4)
    {
        m_rowCount = rows;
        for (int i = 1; i <= columns; ++i) {
            const std::wstring title = L"Column " + std::to_wstring(i);
            if (i == 1)
                AddColDef(new OviAPI::aCColumn(L"id", 8, 8, L"Number", 0, 0, 0));
            else
                AddColDef(new OviAPI::aCColumn(L"text", 1, 21, title.c_str(), 0, 0, 0));
        }
        m_buffer.resize(GetRowLength());
    }
    short ToRow(short, long row, bool) override
    {
        ++fetches;
        asked.insert(row);
        if (failing.contains(row)) {
            m_errorKind = Locked;
            setRowError(row, 135, 0, L"The row is locked.");
            return 1;
        }
        if (m_buffer.empty())
            return 0;
        std::fill(m_buffer.begin(), m_buffer.end(), std::byte{0});
        std::memcpy(m_buffer.data(), &row, sizeof row);
        for (int i = 2; i <= GetColCount(); ++i) {
            const std::wstring text = L"r" + std::to_wstring(row) + L" c" + std::to_wstring(i);
            std::memcpy(m_buffer.data() + GetColOffset(i), text.data(),
                        text.size() * sizeof(wchar_t));
        }
        return 0;
    }
    const void* GetRowData() override { return m_buffer.data(); }
    void setRows(long rows) { m_rowCount = rows; }

    int fetches = 0;
    std::set<long> asked;
    std::set<long> failing;

private:
    std::vector<std::byte> m_buffer;
};

// Column widths, row height and header height are fixed, so that tests can say where things are:
// 4 columns of 100 pixels, rows of 20, a header of 24, row headers of 60, 600 x 424 pixels.
class RecordViewTest : public testing::Test {
protected:
    static constexpr int header = 24;
    static constexpr int row = 20;
    static constexpr int rowHeader = 60;

    class View : public OviAPI::aCRecordView {
    public:
        using OviAPI::aCRecordView::hintAt;
    };

    RecordViewTest()
    {
        form.create();
        form.move(0, 0, 600, 424);
        view.setParent(&form);
        view.setStyle(OviAPI::WPanel::TabStop);
        view.create();
        view.move(0, 0, 600, 424);
    }
    void show(OviAPI::aCDataSet& data)
    {
        for (int i = 1; i <= data.GetColCount(); ++i)
            data.GetColInfo(i)->width = 100;
        view.SetDataSet(&data, true);
        fixSizes();
        UiDriver::showAndActivate(form);
        view.setFocus();
        UiDriver::processEvents();
    }
    void fixSizes()
    {
        view.GetBroker()->headerHeight = header;
        view.GetBroker()->rowHeight = row;
        view.GetBroker()->rowHeaderWidth = rowHeader;
        view.ReShow(0, false, false, true, nullptr);
    }
    // What the view looks like now.
    OviAPI::Picture shot()
    {
        const std::string path =
            testing::TempDir() + "recordview_shot_" + std::to_string(getpid()) + ".png";
        EXPECT_TRUE(UiDriver::grab(view, path));
        std::ifstream file(path, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        std::remove(path.c_str());
        return OviAPI::Picture::fromFileBytes(bytes);
    }
    // One pixel of such a picture, at a place of the view: it may have been taken at any scale.
    uint32_t at(const OviAPI::Picture& picture, int x, int y)
    {
        const double scale = static_cast<double>(picture.width()) / view.width();
        return picture.pixel(static_cast<int>(x * scale), static_cast<int>(y * scale));
    }
    // The middle of a cell that is on the screen.
    OviAPI::Point middle(int col, long line)
    {
        OviAPI::Rect rect;
        EXPECT_TRUE(view.GetClientCellRect(col, line, rect));
        return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    }
    void click(int col, long line, int modifiers = 0)
    {
        const OviAPI::Point at = middle(col, line);
        UiDriver::click(view, at.x, at.y, UiDriver::Button::Left, modifiers);
    }
    void key(int keyboardKey, int modifiers = 0)
    {
        UiDriver::key(view, keyboardKey, modifiers);
        UiDriver::processEvents();
    }

    OviAPI::WForm form;
    View view;
};
