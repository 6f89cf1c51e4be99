// A record view whose cells can be edited, over a table that can refuse.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

#include "recordview_support.h"

// Rows as a source holds them; an empty optional is NULL. What tests change in them is what another
// session has changed.
class Table : public OviAPI::aCDataSet {
public:
    enum Column : int { Number = 1, Name, When, Flag, Kind, Key };

    explicit Table(int count = 5)
    {
        using OviAPI::aCColumn;
        AddColDef(new aCColumn(L"number", 8, 8, L"Number", 0, 0, 0));
        AddColDef(new aCColumn(L"name", 1, 2000, L"Name", 0, 0, 0));
        AddColDef(new aCColumn(L"when", 7, 8, L"When", 0, 0, 0));
        AddColDef(new aCColumn(L"flag", 14, 1, L"Flag", 0, 0, aCColumn::CheckMark));
        AddColDef(new aCColumn(L"kind", 1, 21, L"Kind", 0, 0, aCColumn::DropDown));
        AddColDef(new aCColumn(L"key", 1, 21, L"Key", 0, 0, 0));
        GetColInfo(Kind)->choices = {L"red", L"green", L"blue"};
        GetColInfo(Key)->readOnly = true;
        for (int i = 1; i <= count; ++i) {
            const std::wstring number = std::to_wstring(i);
            rows.push_back({number, L"name " + number, L"2024-03-17 10:30:00.000123", L"false",
                            L"red", L"k" + number});
        }
    }

    long GetRowCount() override
    {
        m_rowCount = static_cast<long>(rows.size());
        return aCDataSet::GetRowCount();
    }
    short ToRow(short, long row, bool) override
    {
        m_buffer.assign(GetRowLength(), std::byte{0});
        m_nulls.assign(static_cast<size_t>(GetColCount()), false);
        if (gone == row) {
            m_errorKind = NoSuchRow;
            setRowError(row, 2, 0, L"The row has been deleted.");
            return 1;
        }
        for (int i = 1; i <= GetColCount(); ++i) {
            const auto& text = cell(i, row);
            m_nulls[static_cast<size_t>(i) - 1] = !text;
            std::vector<std::byte> value;
            const OviAPI::aCColumn& info = *GetColInfo(i);
            if (text)
                OviAPI::textToValue(info.dataType, *text, info.rowBytes(), info.format, value);
            if (!value.empty())
                std::memcpy(m_buffer.data() + GetColOffset(i), value.data(), value.size());
        }
        return 0;
    }
    const void* GetRowData() override { return m_buffer.data(); }
    short IntoCol(int column, void* data) override
    {
        ++statements;
        if (refused(GetRow()))
            return 1;
        cell(column, GetRow()) = IsDataNull(column, data)
                                     ? std::nullopt
                                     : std::optional<std::wstring>(DataToText(column, data));
        const short result = aCDataSet::IntoCol(column, data);
        RefreshViews();
        return result;
    }
    short AddRow(void* data, long position) override
    {
        if (!data)
            return aCDataSet::AddRow(data, position);
        ++statements;
        if (refused(0))
            return 1;
        std::vector<std::optional<std::wstring>> row;
        defaults = 0;
        for (int i = 1; i <= GetColCount(); ++i) {
            const auto one = ColDataOfRow(i, data);
            defaults += IsDataEmpty(i, one.get()) ? 1 : 0;
            if (IsDataNull(i, one.get()) || IsDataEmpty(i, one.get()))
                row.emplace_back();
            else
                row.emplace_back(DataToText(i, one.get()));
        }
        rows.push_back(row);
        return 0;
    }
    short DeleteRow(long row) override
    {
        if (IsVirtualRow(row))
            return aCDataSet::DeleteRow(row);
        ++statements;
        if (refused(row))
            return 1;
        SetCurrentRow(0);
        rows.erase(rows.begin() + (row - 1));
        RefreshViews();
        return 0;
    }

    std::optional<std::wstring>& cell(int column, long row)
    {
        return rows[static_cast<size_t>(row) - 1][static_cast<size_t>(column) - 1];
    }

    std::vector<std::vector<std::optional<std::wstring>>> rows;
    std::wstring refusal; // what it refuses changes with; empty: it carries them out
    long gone = 0;        // a row that cannot be read
    int statements = 0;   // changes asked for
    int defaults = 0;     // cells of the row added last that were left to the server

protected:
    bool IsColumnNull(int column) override { return m_nulls[static_cast<size_t>(column) - 1]; }

private:
    bool refused(long row)
    {
        if (refusal.empty())
            return false;
        m_errorKind = Refused;
        setRowError(row, 1022, 0, refusal.c_str());
        if (RaisesErrors())
            throw std::runtime_error("refused");
        return true;
    }

    std::vector<std::byte> m_buffer;
    std::vector<bool> m_nulls;
};

class RecordEditTest : public RecordViewTest {
protected:
    ~RecordEditTest() override { view.SetDataSet(nullptr, false); }

    // Six columns of 85 pixels.
    void edit(OviAPI::aCDataSet& data)
    {
        show(data);
        for (int i = 1; i <= data.GetColCount(); ++i)
            view.SetColWidth(i, 85);
        view.SetReadOnly(false);
        UiDriver::processEvents();
    }
    static QLineEdit* field()
    {
        QWidget* focused = QApplication::focusWidget();
        if (auto* line = qobject_cast<QLineEdit*>(focused))
            return line;
        return focused ? focused->findChild<QLineEdit*>() : nullptr;
    }
    static std::wstring typed() { return field() ? field()->text().toStdWString() : L"no editor"; }
    static QWidget* window()
    {
        for (QWidget* each : QApplication::topLevelWidgets())
            if (each->isVisible() && each->windowType() == Qt::Window)
                return each;
        return nullptr;
    }
    static QWidget* surface()
    {
        return window()->findChild<QWidget*>(QStringLiteral("qt_scrollarea_viewport"));
    }
    static QWidget* area() { return surface()->parentWidget(); }
    // The sentence that stands in the view now, empty for none.
    static std::wstring sentence()
    {
        for (const QLabel* label : surface()->findChildren<QLabel*>())
            if (label->isVisible())
                return label->text().toStdWString();
        return {};
    }
    // Where the editor stands, in the client area of the view.
    static QRect place()
    {
        const QWidget* box = field();
        while (box && box->parentWidget() != surface())
            box = box->parentWidget();
        return box && box->isVisible() ? box->geometry() : QRect();
    }
    QRect cellPlace(int col, long line)
    {
        OviAPI::Rect rect;
        if (!view.GetClientCellRect(col, line, rect))
            return {};
        return {rect.left, rect.top, static_cast<int>(rect.width()),
                static_cast<int>(rect.height())};
    }
    void type(std::wstring_view text)
    {
        UiDriver::type(view, text);
        UiDriver::processEvents();
    }
    // Opens the editor of a cell and puts this in the place of its value.
    void enter(int col, long line, std::wstring_view text)
    {
        ASSERT_TRUE(view.EditCell(col, line));
        type(text);
    }
    std::pair<int, long> focus() { return {view.GetCol(), view.GetRow()}; }

    Table table;
};

// What the signals of a view have told.
struct EditEvents : OviAPI::Object {
    explicit EditEvents(OviAPI::aCRecordView& view)
    {
        OviAPI::connect<&OviAPI::aCRecordView::onEditStored>(
            view, *this, [this](OviAPI::Object*, int col, long row) {
                stored.emplace_back(col, row);
                return OviAPI::SlotResult(0);
            });
        OviAPI::connect<&OviAPI::aCRecordView::onEditRefused>(
            view, *this, [this](OviAPI::Object*, int col, long row) {
                refused.emplace_back(col, row);
                return OviAPI::SlotResult(0);
            });
        OviAPI::connect<&OviAPI::aCRecordView::onOpenValue>(
            view, *this, [this](OviAPI::Object*, int col, long row) {
                opened.emplace_back(col, row);
                return OviAPI::SlotResult(opens);
            });
        OviAPI::connect<&OviAPI::aCRecordView::onDeleteRowKey>(view, *this,
                                                               [this](OviAPI::Object*, long row) {
                                                                   deletions.push_back(row);
                                                                   return OviAPI::SlotResult(0);
                                                               });
    }

    using Cells = std::vector<std::pair<int, long>>;
    Cells stored;
    Cells refused;
    Cells opened;
    std::vector<long> deletions;
    bool opens = true;
};
