// Editing in place in a record view.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include <oviapi/celledit.h>
#include <oviapi/cellfield.h>

namespace OviAPI {

class aCDataSet;
class aCRecordView;

// One view's open editor, if there is one, the new row, and what the view says of both. The field
// is there as long as its text has not been stored, whatever was refused meanwhile.
//
// Belongs to its view and dies with it: whatever dispatches a signal of the view may be the last
// thing that is done here, and says so by its result.
class RecordEditor : private CellField::User {
public:
    explicit RecordEditor(aCRecordView& view);
    ~RecordEditor() override;

    bool isReadOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly);

    // --- the editor

    enum class Start { Selected, Dropped };
    // False, with the reason beside the cell, when there is no editor afterwards.
    bool open(int col, long row, Start start = Start::Selected);
    // The same in the focused cell, with a text that replaces the value.
    bool openTyped(std::wstring_view text);
    // The same, empty and without the focus.
    void composeInCell();
    bool isOpen() const { return m_field != nullptr; }
    CellField* field() const { return m_field.get(); }
    bool isPending();
    // Stores the text and posts the new row. False when something has been refused or the view has
    // gone.
    bool finish();
    // The editor and the new row are taken away.
    void giveUp();
    // The editor is taken away; nothing is called or asked.
    void drop();

    // --- rows and cells with the focus

    bool append();
    bool deleteFocused();
    bool setNull();
    bool setDefault();
    bool keepMine();
    bool showTheirs();

    // --- what the view tells

    // Nothing: the view goes on. Else its answer.
    std::optional<bool> keyDown(VirtualKey key);
    bool typed(wchar_t character);
    bool doubleClicked(int col, long row);
    // True when the press must not go on: what would be left has been refused.
    bool pressed(int x, int y);
    // The focus is about to go to a cell. False when it must stay.
    bool leave(int col, long row);
    // The view is about to show these first positions. False when it must not.
    bool scroll(long left, long firstRow);
    // Columns, rows or fonts have changed their places.
    void place();
    // Rows or values have changed. True: in the middle of a change nothing is shown anew, it is
    // when that is done.
    bool waitsWithChange();
    bool waitsWithRow(long row);
    // The number of rows or columns is known anew, and the selection is not yet.
    void followRows();
    // The native part of the view.
    void nativeComes();
    void nativeGoes();

    // --- what the view shows

    enum class Mark { None, Editing, Fault };
    Mark mark(long row) const;
    // What is wrong with the new row; empty for other rows.
    std::wstring newRowFault(long row) const;
    // Whether something stands over the cells: their pixels cannot be moved then.
    bool coversCells() const { return m_field || m_tip; }

private:
    enum class Outcome { Done, Refused, Gone };

    // A change that was refused while no editor was open.
    struct Change {
        int col;
        long row;
        std::unique_ptr<std::byte[]> data;
    };

    // What became of a call of the dataset.
    struct Work {
        short result = 1;
        bool gone = false; // the view
        std::exception_ptr thrown;
    };

    using Answer = CellField::Answer;
    Answer onFieldKey(VirtualKey key) override;
    void onFieldText() override;
    void onFieldLeft() override;
    void onFieldUnused() override;

    aCDataSet* data() const;
    // Whether the cell may get a field; says why not. opens: a value that is edited elsewhere is
    // opened.
    bool fieldFor(int col, long row, bool opens);
    bool goTo(int col, long row);
    void makeField();
    void close();
    void takeBack();
    void keepOriginal();
    StoreNeed need();
    Outcome store();
    Outcome put(int col, long row, std::unique_ptr<std::byte[]> cell);
    Outcome putText(int col, long row, std::wstring_view text);
    Outcome refused(int col, long row, const std::wstring& sentence);
    Outcome stored(int col, long row);
    Outcome post();
    // Of the focused cell; says why not.
    bool mayChange();
    bool setStamp(unsigned stamp);
    bool toggle();
    bool dispatchOpenValue(int col, long row);
    bool isNewRowTouched() const;
    long newRow() const;
    void takeNewRow();
    std::wstring readOnlyReason(int col) const;
    bool refresh(long row);
    std::wstring errorOf(long row) const;
    Work run(const std::function<short()>& work);

    enum class TipFor { Field, Cell, NewRow };
    void say(const std::wstring& sentence, TipFor what, CellTip::Kind kind);
    // Of the focused cell, until something else is done.
    void sayNote(const std::wstring& sentence);
    void hideNote();
    void placeTip();
    std::optional<Rect> fieldPlace() const;
    std::optional<Rect> tipPlace() const;

    aCRecordView& m_view;
    std::unique_ptr<CellField> m_field;
    std::unique_ptr<CellTip> m_tip;
    TipFor m_tipFor = TipFor::Cell;
    int m_tipCol = 0;
    long m_tipRow = 0;
    EditedText m_edited; // its text is that of the field when need() was asked last
    int m_col = 0;       // of the field
    long m_row = 0;
    std::set<int> m_given; // columns of the new row that the application has filled
    std::wstring m_newRowFault;
    long m_newRow = 0; // where it was when rows changed last
    std::optional<Change> m_again;
    bool m_readOnly = true;
    bool m_refused = false; // the dataset has refused the text of the field
    bool m_keyTypes = true; // the key pressed last types its character
    bool m_busy = false;    // the dataset is at work
    bool m_changedMeanwhile = false;
    long m_changedRow = 0; // the only one that has changed meanwhile, 0 for none
};

} // namespace OviAPI
