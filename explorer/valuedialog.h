// Shows the value of one cell, whatever its length, and replaces it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <oviapi/combobox.h>
#include <oviapi/lineedit.h>
#include <oviapi/srcedit.h>
#include <oviapi/timer.h>

#include "explorer/explorerdialog.h"
#include "explorer/exploreroptions.h"
#include "explorer/hexview.h"
#include "explorer/imageview.h"
#include "explorer/progressbar.h"
#include "explorer/valuecontent.h"
#include "explorer/valuereader.h"
#include "explorer/valuestore.h"
#include "explorer/valuework.h"

// As text, as a picture or as hexadecimal numbers: at first as what the value looks like. Only its
// start is read at once, and the rest when somebody wants to see it. The user sizes the dialog; the
// size is kept in the options. Points to the value and the options.
class ValueDialog : public ExplorerDialog {
public:
    static constexpr int64_t FirstText = 1 << 20; // bytes that are shown at once
    static constexpr int64_t LongestText = 16 << 20;
    static constexpr int64_t LongestImage = 32 << 20;

    // name: what the value is, for the title.
    ValueDialog(WExtForm& above, ValueStore& value, std::wstring name, ExplorerOptions& options);

    // False as well when the value cannot be read, which a box tells.
    bool create() override;
    bool onClose() override;
    bool onSize() override;

    // Whether another value has been stored.
    bool hasChanged() const { return m_changed; }
    // Whether a piece of work goes on.
    bool isWorking() const { return m_work != nullptr; }
    ValueForm form() const { return m_form; }
    const std::wstring& info() const { return m_info.text(); }
    // What there is to say of what is shown.
    const std::wstring& notice() const { return m_notice.text(); }

    OviAPI::WComboBox& formBox() { return m_forms; }
    OviAPI::WComboBox& encodingBox() { return m_encodings; }
    OviAPI::CSrcEdit& editor() { return m_editor; }
    HexView& hex() { return m_hex; }
    ImageView& image() { return m_image; }
    OviAPI::WLineEdit& offsetField() { return m_offset; }
    OviAPI::WLineEdit& findField() { return m_find; }
    OviAPI::WButton& showAllButton() { return m_showAll; }
    OviAPI::WButton& saveButton() { return m_save; }
    OviAPI::WButton& loadButton() { return m_load; }
    OviAPI::WButton& nullButton() { return m_null; }
    OviAPI::WButton& storeButton() { return m_store; }
    OviAPI::WButton& closeButton() { return m_close; }
    OviAPI::WButton& stopButton() { return m_stop; }

protected:
    void createControls() override;
    void loadTexts() override;
    int layout(int width) override;
    int contentWidth() const override;

private:
    // A text in the present language.
    using Words = std::function<std::wstring()>;

    OviAPI::SlotResult onFormChosen(OviAPI::Object*);
    OviAPI::SlotResult onEncodingChosen(OviAPI::Object*);
    OviAPI::SlotResult onModified(OviAPI::Object*, bool);
    OviAPI::SlotResult onOffsetKey(OviAPI::Object*, OviAPI::VirtualKey key);
    OviAPI::SlotResult onFindKey(OviAPI::Object*, OviAPI::VirtualKey key);
    void onPush(OviAPI::WButton& button, void (ValueDialog::*act)());

    // --- what is shown
    bool readStart();
    void showValue();
    void showText();
    void showImage();
    void showForm();
    void takeText(const std::string& bytes);
    void notify(Words words);
    void updateInfo();
    void updateControls();
    bool isEdited() const { return m_editor.isModified(); }
    // Whether the rest of a text can be read.
    bool offersAll() const;
    Words editFault(const std::wstring& text, std::string_view bytes) const;

    // --- placing
    int smallestWidth() const;
    int fieldWidth() const; // of the offset
    int layoutChoices(int width, int top);
    int layoutBelow(int width, int top);
    void fit();

    // --- what the buttons do
    void save();
    void load();
    void setNull();
    bool storeText();
    void store() { storeText(); }
    void readAll();
    void goToOffset();
    void findNext();
    void stopWork();
    using Done = std::function<void(ValueWork&)>;
    void begin(std::function<std::unique_ptr<ValueWork>()> make, Done done);
    OviAPI::SlotResult work(OviAPI::Object*);
    // Whether the function came to its end; a box tells why it did not.
    bool tried(const std::function<void()>& act);
    void valueStored();
    void textStored(std::string bytes);

    ValueStore& m_value;
    std::wstring m_name;
    ExplorerOptions& m_options;
    std::unique_ptr<ValueReader> m_reader;
    std::string m_start; // the first bytes of the value, or all of them
    bool m_isNull = false;
    bool m_changed = false;
    bool m_editable = false;  // the text
    int64_t m_lastFound = -1; // offset; -1 for none
    ValueForm m_form = ValueForm::Text;
    TextStyle m_style;
    Words m_words; // of the notice

    std::unique_ptr<ValueWork> m_work;
    Done m_done; // when the work has ended well
    OviAPI::WTimer m_timer;

    bool m_made = false;  // the window has its first size
    int m_width = 0;      // px between the margins; 0: the usual
    int m_viewHeight = 0; // px
    OviAPI::WStatic m_info;
    OviAPI::WStatic m_formLabel;
    OviAPI::WComboBox m_forms;
    OviAPI::WStatic m_encodingLabel;
    OviAPI::WComboBox m_encodings;
    OviAPI::WStatic m_offsetLabel;
    OviAPI::WLineEdit m_offset;
    OviAPI::WButton m_go;
    OviAPI::WStatic m_findLabel;
    OviAPI::WLineEdit m_find;
    OviAPI::WButton m_findNext;
    OviAPI::CSrcEdit m_editor;
    ImageView m_image;
    HexView m_hex;
    OviAPI::WStatic m_notice;
    OviAPI::WButton m_showAll;
    OviAPI::WStatic m_task;
    ProgressBar m_bar;
    OviAPI::WButton m_stop;
    OviAPI::WButton m_save;
    OviAPI::WButton m_load;
    OviAPI::WButton m_null;
    OviAPI::WButton m_store;
    OviAPI::WButton m_close;
};
