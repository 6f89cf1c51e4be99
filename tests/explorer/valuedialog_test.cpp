// The dialog that shows a value, used as its users do.
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include <oviapi/inputdriver.h>
#include <oviapi/painter.h>
#include <oviapi/text.h>

#include "application.h"
#include "database.h"
#include "dialogs.h"
#include "explorer/mainform.h"
#include "explorer/textlookup.h"
#include "explorer/valuedialog.h"
#include "memoryvalue.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using OviAPI::InputDriver;
using OviAPI::VirtualKey;

namespace {

VirtualKey alt(char letter)
{
    return {OviAPI::KeyA + letter - 'a', OviAPI::ModifierAlt, static_cast<wchar_t>(letter)};
}

class ValueWindow : public DialogTest {
protected:
    ~ValueWindow() override { m_dialog.reset(); }

    fs::path file(const char* name) const { return m_folder.path() / name; }
    ValueDialog& open(std::string_view bytes)
    {
        m_value.bytes = bytes;
        return open();
    }
    ValueDialog& open()
    {
        m_dialog = std::make_unique<ValueDialog>(m_above, m_value, L"cell", m_options);
        m_dialog->setScreen({0, 0, 1400, 1000});
        EXPECT_TRUE(m_dialog->create());
        m_dialog->show(true);
        m_dialog->bringToFront();
        settle();
        return *m_dialog;
    }
    void press(VirtualKey key)
    {
        InputDriver::key(key);
        settle();
    }
    void click(OviAPI::WVisualObject& object)
    {
        InputDriver::click(object, {object.width() / 2, object.height() / 2});
        settle();
    }
    // Presses keys in the box that the act leads to.
    void answer(const std::vector<int>& keys, const std::function<void()>& act)
    {
        Script script;
        script.step(boxIsOpen, [&keys] {
            for (const int key : keys)
                InputDriver::key(key);
        });
        script.step([] { return !boxIsOpen(); });
        act();
        EXPECT_TRUE(waitFor([&] { return script.isDone(); }));
        toFront();
    }
    // Not every desktop gives the focus back when a box goes.
    void toFront()
    {
        m_dialog->bringToFront();
        settle();
    }
    bool finished()
    {
        return waitFor([this] { return !m_dialog->isWorking(); });
    }
    std::string png() const
    {
        const fs::path path = file("a.png");
        EXPECT_TRUE(OviAPI::Picture({30, 20}, OviAPI::Color(200, 10, 10)).savePng(path.wstring()));
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    MemoryValue m_value;
    std::unique_ptr<ValueDialog> m_dialog;
};

TEST_F(ValueWindow, ShowsATextAsText)
{
    ValueDialog& dialog = open("one\r\ntwo");
    EXPECT_EQ(dialog.form(), ValueForm::Text);
    EXPECT_EQ(dialog.editor().text(), L"one\ntwo");
    EXPECT_FALSE(dialog.editor().isReadOnly());
    EXPECT_EQ(dialog.info(), L"BLOB. Size in bytes: 8");
    EXPECT_EQ(dialog.notice(), L"");
    EXPECT_EQ(dialog.title(), L"Value: cell");
    EXPECT_FALSE(dialog.storeButton().isEnabled());
    EXPECT_FALSE(dialog.hex().isVisible());
    EXPECT_FALSE(dialog.offsetField().isVisible());
}

TEST_F(ValueWindow, ShowsBytesAsNumbersAndOffsets)
{
    ValueDialog& dialog = open(noise(100));
    EXPECT_EQ(dialog.form(), ValueForm::Hex);
    EXPECT_EQ(dialog.hex().GetRowCount(), 7);
    EXPECT_EQ(dialog.hex().GetRowCaption(2), L"00000010");
    EXPECT_GT(dialog.hex().GetRowHeaderRect(1).width(),
              OviAPI::GetTextSize(dialog.hex().font(), L"00000010").width);
    EXPECT_TRUE(dialog.hex().isVisible());
    EXPECT_FALSE(dialog.encodingBox().isVisible());
    EXPECT_EQ(dialog.hex().offset(), 0);
}

TEST_F(ValueWindow, ShowsAPicture)
{
    ValueDialog& dialog = open(png());
    EXPECT_EQ(dialog.form(), ValueForm::Image);
    EXPECT_EQ(dialog.image().picture().size(), (OviAPI::Size{30, 20}));
    EXPECT_EQ(dialog.notice(), L"Width and height in pixels: 30 \u00D7 20");
}

TEST_F(ValueWindow, ShowsAPictureThatIsReadInPieces)
{
    ValueDialog& dialog = open(png() + noise(2 * ValueDialog::FirstText));
    ASSERT_TRUE(finished());
    EXPECT_EQ(dialog.image().picture().size(), (OviAPI::Size{30, 20}));
}

TEST_F(ValueWindow, TheFormIsChosenByKey)
{
    ValueDialog& dialog = open("some text");
    press(alt('a'));
    EXPECT_TRUE(dialog.formBox().hasFocus());
    press(VirtualKey(OviAPI::KeyDown));
    EXPECT_EQ(dialog.form(), ValueForm::Image);
    EXPECT_EQ(dialog.notice(), textOf(TextValueNoImage));
    press(VirtualKey(OviAPI::KeyDown));
    EXPECT_EQ(dialog.form(), ValueForm::Hex);
    EXPECT_EQ(dialog.hex().GetCellText(1, 1), L"73");
    EXPECT_EQ(dialog.notice(), L"");
    press(VirtualKey(OviAPI::KeyUp));
    press(VirtualKey(OviAPI::KeyUp));
    EXPECT_EQ(dialog.editor().text(), L"some text");
}

TEST_F(ValueWindow, TheEncodingIsGuessedAndChosenByKey)
{
    const std::wstring word = L"\u0441\u043B\u043E\u0432\u043E";
    ValueDialog& dialog = open(encodedText(word, {TextEncoding::Koi8}).value());
    EXPECT_EQ(dialog.encodingBox().text(), L"KOI8-R");
    EXPECT_EQ(dialog.editor().text(), word);
    press(alt('e'));
    press(VirtualKey(OviAPI::KeyDown));
    EXPECT_EQ(dialog.encodingBox().text(), L"windows-1251");
    EXPECT_NE(dialog.editor().text(), word);
    EXPECT_FALSE(dialog.editor().isReadOnly());
    dialog.encodingBox().setFocus();
    for (int i = 0; i < 4; ++i)
        press(VirtualKey(OviAPI::KeyUp));
    EXPECT_EQ(dialog.encodingBox().text(), L"UTF-8");
    EXPECT_TRUE(dialog.editor().isReadOnly());
    EXPECT_EQ(dialog.notice(), textOf(TextValueNotExact));
}

TEST_F(ValueWindow, ATextIsEditedAndStoredWithItsLineEnds)
{
    ValueDialog& dialog = open("\xEF\xBB\xBFone\r\ntwo");
    click(dialog.editor());
    InputDriver::key({OviAPI::KeyEnd, OviAPI::ModifierControl});
    InputDriver::key(OviAPI::KeyEnter);
    InputDriver::type(L"three");
    settle();
    EXPECT_TRUE(dialog.storeButton().isEnabled());
    press(alt('t'));
    ASSERT_TRUE(waitFor([&] { return m_value.writes == 1; }));
    settle();
    EXPECT_EQ(m_value.bytes, "\xEF\xBB\xBFone\r\ntwo\r\nthree");
    EXPECT_TRUE(dialog.hasChanged());
    EXPECT_FALSE(dialog.storeButton().isEnabled());
    EXPECT_EQ(dialog.info(), L"BLOB. Size in bytes: 18");
    EXPECT_EQ(dialog.editor().text(), L"one\ntwo\nthree");
}

TEST_F(ValueWindow, ACharacterThatTheEncodingLacksIsNotStored)
{
    ValueDialog& dialog = open("caf\xE9 fran\xE7"
                               "ais");
    ASSERT_EQ(dialog.encodingBox().text(), L"ISO 8859-1");
    dialog.editor().insert(L"\u0416");
    settle();
    BoxReader boxes;
    click(dialog.storeButton());
    ASSERT_TRUE(waitFor([&] { return !boxes.texts().empty() && !boxIsOpen(); }));
    EXPECT_EQ(boxes.last(), textOf(TextValueNoCharacter, L"ISO 8859-1"));
    EXPECT_EQ(m_value.writes, 0);
    EXPECT_NE(dialog.editor().text().find(L'\u0416'), std::wstring::npos);
    toFront();
    dialog.encodingBox().setFocus(); // another encoding for what was typed
    for (int i = 0; i < 5; ++i)
        press(VirtualKey(OviAPI::KeyUp));
    click(dialog.storeButton());
    ASSERT_TRUE(waitFor([&] { return m_value.writes == 1; }));
    EXPECT_EQ(m_value.bytes, "\xD0\x96"
                             "caf\xC3\xA9 fran\xC3\xA7"
                             "ais");
}

TEST_F(ValueWindow, ATextThatIsStillChangedIsAskedFor)
{
    ValueDialog& dialog = open("old");
    dialog.editor().setFocus();
    InputDriver::type(L"new ");
    settle();
    answer({OviAPI::KeyEscape}, [] { InputDriver::key(OviAPI::KeyEscape); });
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(m_value.writes, 0);
    answer({OviAPI::KeyEnter}, [] { InputDriver::key(OviAPI::KeyEscape); });
    ASSERT_TRUE(waitFor([&] { return !dialog.isVisible(); }));
    EXPECT_EQ(m_value.bytes, "new old");
}

TEST_F(ValueWindow, NullIsToldFromAnEmptyText)
{
    m_value.null = true;
    ValueDialog& dialog = open();
    EXPECT_EQ(dialog.info(), L"BLOB. NULL: no value");
    EXPECT_FALSE(dialog.saveButton().isEnabled());
    EXPECT_FALSE(dialog.nullButton().isEnabled());
    ASSERT_TRUE(dialog.storeButton().isEnabled()) << "an empty text can be stored in its place";
    click(dialog.storeButton());
    EXPECT_FALSE(m_value.null);
    EXPECT_EQ(dialog.info(), L"BLOB. Size in bytes: 0");
    EXPECT_FALSE(dialog.storeButton().isEnabled());
}

TEST_F(ValueWindow, AValueIsTakenAwayAfterAQuestion)
{
    ValueDialog& dialog = open("old");
    const auto push = [&] { InputDriver::click(dialog.nullButton(), {5, 5}); };
    answer({OviAPI::KeyEnter}, push); // No
    EXPECT_FALSE(m_value.null);
    answer({OviAPI::KeyTab, OviAPI::KeySpace}, push); // to Yes
    ASSERT_TRUE(waitFor([&] { return dialog.hasChanged(); }));
    EXPECT_TRUE(m_value.null);
    EXPECT_EQ(dialog.info(), L"BLOB. NULL: no value");
}

TEST_F(ValueWindow, OnlyTheStartOfALongTextIsReadAtOnce)
{
    const std::string text(static_cast<size_t>(ValueDialog::FirstText) + 10, 'a');
    ValueDialog& dialog = open(text);
    EXPECT_EQ(dialog.editor().text().size(), static_cast<size_t>(ValueDialog::FirstText));
    EXPECT_TRUE(dialog.editor().isReadOnly());
    EXPECT_EQ(dialog.notice(), L"Only the first 1\u00A0048\u00A0576 bytes are shown.");
    ASSERT_TRUE(dialog.showAllButton().isVisible());
    click(dialog.showAllButton());
    ASSERT_TRUE(finished());
    EXPECT_EQ(dialog.editor().text().size(), text.size());
    EXPECT_FALSE(dialog.editor().isReadOnly());
    EXPECT_FALSE(dialog.showAllButton().isVisible());
    EXPECT_LE(m_value.longestRead, ValueStore::PieceSize);
}

TEST_F(ValueWindow, ATextOfAnyLengthIsShownButNotEdited)
{
    ValueDialog& dialog = open(std::string(static_cast<size_t>(ValueDialog::LongestText) + 1, 'a'));
    EXPECT_FALSE(dialog.showAllButton().isVisible());
    EXPECT_TRUE(dialog.editor().isReadOnly());
    EXPECT_NE(dialog.notice().find(textOf(TextValueLongText)), std::wstring::npos);
}

TEST_F(ValueWindow, ATextWithAZeroIsShownToItsEndAndNotEdited)
{
    m_value.text = true;
    ValueDialog& dialog = open("a\0b"s);
    EXPECT_EQ(dialog.editor().text(), L"a\u2400b");
    EXPECT_TRUE(dialog.editor().isReadOnly());
    EXPECT_EQ(dialog.notice(), textOf(TextValueNotExact));
}

TEST_F(ValueWindow, WhatCannotBeStoredSaysWhy)
{
    m_value.reason = L"for a reason";
    ValueDialog& dialog = open("text");
    EXPECT_EQ(dialog.notice(), L"for a reason");
    EXPECT_TRUE(dialog.editor().isReadOnly());
    EXPECT_TRUE(dialog.saveButton().isEnabled());
    for (OviAPI::WButton* button :
         {&dialog.loadButton(), &dialog.nullButton(), &dialog.storeButton()})
        EXPECT_FALSE(button->isEnabled());
}

TEST_F(ValueWindow, GoesToAnOffsetByKey)
{
    ValueDialog& dialog = open(noise(1000));
    press(alt('o'));
    InputDriver::type(L"0x123");
    press(VirtualKey(OviAPI::KeyEnter));
    EXPECT_EQ(dialog.hex().offset(), 0x123);
    EXPECT_TRUE(dialog.hex().hasFocus());
    press(alt('o'));
    InputDriver::key({OviAPI::KeyA, OviAPI::ModifierControl});
    InputDriver::type(L"1000");
    press(alt('g'));
    ASSERT_TRUE(waitFor([&] { return !dialog.notice().empty(); }));
    EXPECT_EQ(dialog.hex().offset(), 0x123);
    EXPECT_EQ(dialog.notice(), L"This is not an offset between 0 and 999.");
    EXPECT_TRUE(dialog.offsetField().hasFocus());
}

TEST_F(ValueWindow, FindsOneAfterTheOther)
{
    std::string bytes(700000, '\0');
    bytes.replace(10, 3, "abc");
    bytes.replace(600000, 3, "abc");
    ValueDialog& dialog = open(bytes);
    press(alt('f'));
    InputDriver::type(L"abc");
    press(VirtualKey(OviAPI::KeyEnter));
    ASSERT_TRUE(finished());
    EXPECT_EQ(dialog.hex().offset(), 10);
    press(alt('n'));
    EXPECT_TRUE(waitFor([&] { return dialog.hex().offset() == 600000; }));
    ASSERT_TRUE(finished());
    press(alt('n'));
    ASSERT_TRUE(waitFor([&] { return !dialog.notice().empty(); }));
    EXPECT_EQ(dialog.hex().offset(), 600000);
    EXPECT_EQ(dialog.notice(), textOf(TextValueNotFound));
    dialog.findField().setText(L"0x1");
    press(alt('n'));
    EXPECT_TRUE(waitFor([&] { return dialog.notice() == textOf(TextValueNotSought); }));
}

TEST_F(ValueWindow, SavesToAFileAndLoadsFromOne)
{
    const std::string bytes = noise(3 * ValueStore::PieceSize + 9);
    ValueDialog& dialog = open(bytes);
    m_options.setLastSaveDirectory(m_folder.path().wstring().c_str());
    Script script;
    script.step(FileDialogDriver::isOpen, [&] {
        EXPECT_EQ(FileDialogDriver::title(), L"Save the value to a file");
        FileDialogDriver::choose(file("saved").wstring());
    });
    press(alt('s'));
    ASSERT_TRUE(waitFor([&] { return script.isDone() && !dialog.notice().empty(); }));
    EXPECT_EQ(dialog.notice(), L"Saved to " + file("saved").wstring());
    EXPECT_EQ(fs::file_size(file("saved")), bytes.size());

    toFront();
    std::ofstream(file("other")) << "something else";
    Script second;
    second.step(FileDialogDriver::isOpen,
                [&] { FileDialogDriver::choose(file("other").wstring()); });
    press(alt('l'));
    ASSERT_TRUE(waitFor([&] { return second.isDone() && dialog.hasChanged(); }));
    ASSERT_TRUE(finished());
    EXPECT_EQ(m_value.bytes, "something else");
    EXPECT_EQ(dialog.info(), L"BLOB. Size in bytes: 14");
    EXPECT_EQ(dialog.form(), ValueForm::Hex) << "the form that was looked at";
    EXPECT_EQ(dialog.hex().GetCellText(1, 1), L"73");
    EXPECT_TRUE(dialog.hasChanged());
}

TEST_F(ValueWindow, WorkIsStoppedByEscapeAndNothingHasChanged)
{
    ValueDialog& dialog = open("old");
    std::ofstream(file("big")).close();
    fs::resize_file(file("big"), uintmax_t{1} << 34);
    Script script;
    script.step(FileDialogDriver::isOpen, [&] { FileDialogDriver::choose(file("big").wstring()); });
    press(alt('l'));
    ASSERT_TRUE(waitFor([&] { return script.isDone() && dialog.isWorking(); }));
    EXPECT_TRUE(dialog.stopButton().isVisible());
    toFront();
    EXPECT_TRUE(dialog.stopButton().hasFocus());
    EXPECT_FALSE(dialog.closeButton().isEnabled());
    press(VirtualKey(OviAPI::KeyEscape));
    EXPECT_FALSE(dialog.isWorking());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(dialog.stopButton().isVisible());
    EXPECT_EQ(m_value.bytes, "old");
    EXPECT_EQ(m_value.writes, 0);
    press(VirtualKey(OviAPI::KeyEscape));
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(ValueWindow, AFailureInTheMiddleIsToldAndTheDialogStays)
{
    ValueDialog& dialog = open(noise(8 * ValueStore::PieceSize));
    m_options.setLastSaveDirectory(m_folder.path().wstring().c_str());
    m_value.failingRead = m_value.reads + 3;
    BoxReader boxes;
    Script script;
    script.step(FileDialogDriver::isOpen, [&] { FileDialogDriver::choose(file("x").wstring()); });
    click(dialog.saveButton());
    ASSERT_TRUE(waitFor([&] { return !boxes.texts().empty(); }));
    ASSERT_TRUE(finished());
    EXPECT_EQ(boxes.last(), textOf(TextValueFailed, L"gone"));
    EXPECT_FALSE(fs::exists(file("x")));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.closeButton().isEnabled());
}

TEST_F(ValueWindow, AValueThatCannotBeReadOpensNoDialog)
{
    m_value.bytes = "text";
    m_value.failingRead = 1;
    BoxReader boxes;
    ValueDialog dialog(m_above, m_value, L"cell", m_options);
    EXPECT_FALSE(dialog.create());
    EXPECT_EQ(boxes.texts().size(), 1U);
}

TEST_F(ValueWindow, TheSizeIsTheUsersAndIsKept)
{
    ValueDialog& dialog = open("text");
    const int before = dialog.editor().height();
    dialog.move(dialog.x(), dialog.y(), dialog.width() + 100, dialog.height() + 80);
    settle();
    EXPECT_EQ(dialog.editor().height(), before + 80);
    const OviAPI::Size size = dialog.clientSize();
    dialog.close();
    m_dialog.reset();
    EXPECT_EQ(open("other").clientSize(), size);
    m_dialog->move(0, 0, 200, 100); // smaller than what is in it: it scrolls
    settle();
    EXPECT_GT(m_dialog->content().contentSize().height, 100);
}

TEST_F(ValueWindow, TextsFitInBothLanguagesAndEveryForm)
{
    for (const auto language : {TypicalOptions::DefaultLanguage, TypicalOptions::Koi8Language}) {
        setLanguage(language);
        for (const std::string& bytes : {"some text"s, png(), noise(100)}) {
            ValueDialog& dialog = open(bytes);
            checkTexts(dialog);
            EXPECT_FALSE(dialog.editor().accessibleName().empty());
            EXPECT_FALSE(dialog.hex().accessibleName().empty());
            EXPECT_FALSE(dialog.image().accessibleName().empty());
        }
        EXPECT_EQ(m_dialog->hex().GetDataSet()->GetColInfo(HexData::Characters)->caption,
                  textOf(TextValueCharacters));
    }
}

TEST_F(ValueWindow, AChangeOfLanguageReachesWhatIsShown)
{
    m_value.text = true;
    ValueDialog& dialog = open("a\0b"s);
    setLanguage(TypicalOptions::Koi8Language);
    settle();
    EXPECT_EQ(dialog.notice(), textOf(TextValueNotExact));
    EXPECT_EQ(dialog.formBox().text(), textOf(TextValueFormText));
    checkTexts(dialog);
}

TEST_F(ValueWindow, TabReachesEverythingThatCanBeUsed)
{
    ValueDialog& dialog = open(png());
    EXPECT_EQ(tabStops(dialog), 5) << "form, save, load, NULL, close";
}

// --- in the main window

class ValueCommand : public testing::Test {
protected:
    ValueCommand()
        : m_options(TestApplication::get().record)
    {
        m_options.initDefaults();
        TestApplication::get().setLanguage(TypicalOptions::DefaultLanguage);
        TestDatabase made(path());
        made.execute("CREATE TABLE t (id INTEGER PRIMARY KEY, b BLOB)");
        made.execute("INSERT INTO t VALUES (1, 'first'), (2, x'00ff')");
        m_form = std::make_unique<MainForm>(m_options, TestApplication::get().resources());
        m_form->create();
        m_form->show(true);
        EXPECT_TRUE(m_form->openDatabase(path().string()));
        EXPECT_TRUE(waitFor([this] { return !m_form->isBusy(); }));
    }
    fs::path path() const { return m_folder.path() / "a.db"; }
    static ValueDialog* dialog() { return dynamic_cast<ValueDialog*>(OviAPI::WForm::topModal()); }

    TemporaryFolder m_folder;
    ExplorerOptions& m_options;
    std::unique_ptr<MainForm> m_form;
};

constexpr VirtualKey f4(OviAPI::KeyF1 + 3);

TEST_F(ValueCommand, ShowsTheCellWithTheFocusByKey)
{
    m_form->pane().view().SetFocusCell(2, 2);
    m_form->pane().view().setFocus();
    Script script;
    script.step([] { return dialog() != nullptr; },
                [] {
                    EXPECT_EQ(dialog()->form(), ValueForm::Hex);
                    EXPECT_EQ(dialog()->hex().GetCellText(2, 1), L"FF");
                    EXPECT_EQ(dialog()->title(), L"Value: Row 2, column b");
                    InputDriver::key(OviAPI::KeyEscape);
                });
    script.step([] { return !dialog(); });
    InputDriver::key(f4);
    EXPECT_TRUE(waitFor([&] { return script.isDone(); }));
}

TEST_F(ValueCommand, WhatIsStoredIsSeenInTheTable)
{
    m_form->pane().view().SetFocusCell(2, 1);
    Script script;
    script.step([] { return dialog() != nullptr; },
                [] {
                    dialog()->editor().setFocus();
                    InputDriver::type(L"very ");
                });
    script.step([] { return dialog()->storeButton().isEnabled(); },
                [] { InputDriver::key(alt('t')); });
    script.step([] { return dialog()->hasChanged(); }, [] { InputDriver::key(OviAPI::KeyEscape); });
    script.step([] { return !dialog(); });
    m_form->execute(Command::ShowValue);
    EXPECT_TRUE(waitFor([&] { return script.isDone(); }));
    EXPECT_EQ(TestDatabase(path()).value("SELECT CAST(b AS TEXT) FROM t WHERE id = 1"),
              "very first");
}

TEST_F(ValueCommand, IsThereOnlyWhereThereIsACell)
{
    EXPECT_TRUE(m_form->pane().value(m_form->session()->connection()));
    m_form->execute(Command::SqlWindow);
    m_form->execute(Command::ShowValue); // does nothing: no cell is on the screen
    EXPECT_EQ(OviAPI::WForm::topModal(), nullptr);
    m_form->closeDatabase();
    EXPECT_FALSE(m_form->pane().hasRows());
    m_form->execute(Command::ShowValue);
    EXPECT_EQ(OviAPI::WForm::topModal(), nullptr);
}

} // namespace
