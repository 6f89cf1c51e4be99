// Asks for a row number.
#pragma once

#include <optional>
#include <string_view>

#include <oviapi/lineedit.h>

#include "explorer/explorerdialog.h"

// execModal gives 1 when a row was chosen.
class GoToRowDialog : public ExplorerDialog {
public:
    // current: the number offered at first. rows: the highest number, at least 1.
    GoToRowDialog(WExtForm& above, long current, long rows);

    long row() const { return m_row; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;
    int contentWidth() const override { return scaled(340); }

private:
    OviAPI::SlotResult onGoPush(OviAPI::Object*);
    OviAPI::SlotResult onCancelPush(OviAPI::Object*);

    long m_row;
    long m_rows;
    OviAPI::WStatic m_prompt;
    OviAPI::WLineEdit m_number;
    OviAPI::WStatic m_fault;
    OviAPI::WButton m_go;
    OviAPI::WButton m_cancel;
};

// A whole number between 1 and rows; blanks and no-break blanks in it do not count.
std::optional<long> rowNumberIn(std::wstring_view text, long rows);
