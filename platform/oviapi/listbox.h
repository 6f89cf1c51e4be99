// Lists of lines.
#pragma once

#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// What an open list and a drop-down list have in common. Lines are numbered from 0; each carries a
// pointer of the application's, which the list does not own. At most one line is the current one.
class OVIAPI_API WLineList : public virtual WTypicalControl {
public:
    WLineList();
    ~WLineList() override;

    // Another line has become the current one, by the user. setCurrentLine does not call it.
    virtual bool onSelect();

    // Inserts before the line with this number; -1 appends. Returns the number of the new line.
    // The current line stays the current one under its new number.
    int insertLine(const wchar_t* text, void* cargo = nullptr, int before = -1);
    // Numbers out of range do nothing. Removing the current line leaves none current.
    void removeLine(int line);
    void clear();
    int lineCount() const { return static_cast<int>(m_lines.size()); }

    // Empty text and null for numbers out of range.
    std::wstring lineText(int line) const;
    void setLineText(int line, const wchar_t* text);
    void* lineCargo(int line) const;
    void setLineCargo(int line, void* cargo);
    // -1 when there is none.
    int findCargo(const void* cargo) const;

    // -1 for none. Out of range: none.
    void setCurrentLine(int line);
    int currentLine() const { return m_current; }
    void* currentCargo() const { return lineCargo(m_current); }

protected:
    // Called by the native part when the user has chosen a line.
    void userSelected(int line);

    virtual void insertNative(int line);
    virtual void removeNative(int line);
    virtual void setNativeText(int line);
    virtual void setNativeCurrent(int line);
    // Another line has become the current one, or none is, by the user or by a call; before
    // onSelect. May destroy the object.
    virtual void currentChanged() {}

private:
    struct Line {
        std::wstring text;
        void* cargo;
    };
    bool inRange(int line) const { return line >= 0 && line < lineCount(); }

    std::vector<Line> m_lines;
    int m_current = -1;
};

// An open list with a scroll bar. Without a current line, the first one becomes it when the list
// gets the focus.
class OVIAPI_API WListBox : public virtual WLineList {
public:
    WListBox();
    ~WListBox() override;

    // The number of the line at a point of the client area; -1 when there is none.
    int lineAt(int x, int y) const;

protected:
    std::unique_ptr<Native> makeNative() override;
    void insertNative(int line) override;
    void removeNative(int line) override;
    void setNativeText(int line) override;
    void setNativeCurrent(int line) override;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WLineList, onSelect);
