#include <oviapi/button.h>
#include <oviapi/capture.h>
#include <oviapi/dialog.h>
#include <oviapi/inputdriver.h>
#include <oviapi/lineedit.h>
#include <oviapi/srcedit.h>
#include <oviapi/static.h>
#include <oviapi/text.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>

#include <oviapi/qt/native.h>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

constexpr int letter(char c)
{
    return KeyA + c - 'A';
}

struct SrcEdit : FormTest {
    CSrcEdit edit;

    SrcEdit() { made(edit, 0, 0, 480, 380).setFocus(); }
    void press(int key, int modifiers = 0) { UiDriver::key(form, key, modifiers); }
    void control(char c) { press(letter(c), ModifierControl); }
    // Text over several lines is typed key by key.
    void type(std::wstring_view text) { UiDriver::type(form, text); }
};

TEST_F(SrcEdit, PositionsCountFromOne)
{
    edit.setText(L"ab\ncd");
    EXPECT_EQ(edit.caret(), (SrcPosition{1, 1}));
    edit.setCaret({2, 3});
    EXPECT_EQ(edit.caret(), (SrcPosition{2, 3}));
    edit.setCaret({-5, 99});
    EXPECT_EQ(edit.caret(), (SrcPosition{1, 3}));
    EXPECT_EQ(edit.lineText(2), L"cd");
    EXPECT_EQ(edit.lineText(0), L"");
    EXPECT_EQ(edit.lineText(3), L"");
}

// Whether a window looks the same before and after.
template<class F>
bool looksTheSame(const WForm& form, F&& change)
{
    const Picture before = captureWindow(form);
    change();
    const Picture after = captureWindow(form);
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixel(x, y) != after.pixel(x, y))
                return false;
        }
    }
    return before.size() == after.size() && before.width() > 0;
}

TEST_F(SrcEdit, APlainTextHasTheColourOfWordsEverywhere)
{
    const auto toPlain = [this] { edit.setPlainText(true); };
    const auto toSql = [this] { edit.setPlainText(false); };
    WButton other; // keeps the caret from blinking meanwhile
    made(other, 0, 385, 80, 24).setFocus();
    edit.setText(L"plain\n\nso");
    EXPECT_TRUE(looksTheSame(form, toPlain));
    EXPECT_TRUE(edit.isPlainText());
    for (const wchar_t* text : {L"SELECT", L"'a text'", L"12", L"-- a comment", L"/* more"}) {
        edit.setText(text);
        EXPECT_FALSE(looksTheSame(form, toSql)) << OviAPI::wideToUtf8(text);
        EXPECT_FALSE(looksTheSame(form, toPlain)) << OviAPI::wideToUtf8(text);
    }
}

TEST_F(SrcEdit, KeepsEverythingWithoutAWindow)
{
    CSrcEdit loose;
    loose.setText(L"a;b");
    loose.select({{1, 1}, {1, 2}});
    loose.markError({1, 2});
    loose.showFindBar();
    loose.paste();
    EXPECT_EQ(loose.selectedText(), L"a");
    loose.setParent(&form);
    ASSERT_TRUE(loose.create());
    EXPECT_EQ(loose.selectedText(), L"a");
    loose.destroy();
    EXPECT_EQ(loose.text(), L"a;b");
    EXPECT_TRUE(loose.hasError());
}

TEST_F(SrcEdit, TypingTellsTextCaretAndModified)
{
    Counter text;
    Counter caret;
    Counter modified;
    text.listen<&CSrcEdit::onTextChanged>(edit);
    caret.listen<&CSrcEdit::onCursorMoved>(edit);
    modified.listen<&CSrcEdit::onModified>(edit);
    type(L"ab");
    EXPECT_EQ(edit.text(), L"ab");
    EXPECT_EQ(text.calls, 2);
    EXPECT_EQ(caret.calls, 2);
    EXPECT_EQ(modified.calls, 1);
    control('Z');
    EXPECT_EQ(edit.text(), L"");
    EXPECT_EQ(modified.calls, 2);
    EXPECT_FALSE(edit.isModified());
    press(letter('Z'), ModifierControl | ModifierShift);
    EXPECT_EQ(edit.text(), L"ab");
    edit.setModified(false);
    EXPECT_EQ(modified.calls, 4);
    press(KeyLeft);
    EXPECT_EQ(text.calls, 4) << "the caret alone";
}

TEST_F(SrcEdit, AHandledSlotKeepsTheDefaultHandlingOff)
{
    struct Own : CSrcEdit {
        int calls = 0;
        bool onTextChanged() override { return ++calls > 0; }
    };
    Own own;
    made(own);
    own.insert(L"x");
    EXPECT_EQ(own.calls, 1);
    Counter counter;
    counter.answer = 1;
    counter.listen<&CSrcEdit::onTextChanged>(own);
    own.insert(L"y");
    EXPECT_EQ(own.calls, 1);
    EXPECT_EQ(counter.calls, 1);
}

TEST_F(SrcEdit, AKeyGoesToTheApplicationBeforeTheText)
{
    connect<&VisualObject::onKeyDown>(edit, form, [](Object*, VirtualKey key) -> SlotResult {
        return key.getKeyboardKey() == letter('B');
    });
    type(L"a");
    press(letter('B'));
    press(letter('C'));
    EXPECT_EQ(edit.text(), L"ac");
}

TEST_F(SrcEdit, MayDieInEveryHandlerOfItsOwn)
{
    const auto survives = [&](auto connectTo, auto act) {
        auto doomed = std::make_unique<CSrcEdit>();
        made(*doomed, 0, 0, 100, 100).setFocus();
        connectTo(*doomed, [&] { doomed.reset(); });
        act();
        EXPECT_FALSE(doomed);
    };
    const auto slot = [](auto& kill) {
        return [kill](Object*, auto...) -> SlotResult {
            kill();
            return 0;
        };
    };
    const auto text = [&](CSrcEdit& e, auto kill) {
        connect<&CSrcEdit::onTextChanged>(e, form, slot(kill));
    };
    const auto modified = [&](CSrcEdit& e, auto kill) {
        connect<&CSrcEdit::onModified>(e, form, slot(kill));
    };
    const auto moved = [&](CSrcEdit& e, auto kill) {
        connect<&CSrcEdit::onCursorMoved>(e, form, slot(kill));
    };
    const auto key = [&](CSrcEdit& e, auto kill) {
        connect<&VisualObject::onKeyDown>(e, form, slot(kill));
    };
    for (const int pressed : {int{KeyEnter}, int{KeyTab}, int{KeySpace}}) {
        survives(text, [&] { press(pressed); });
        survives(modified, [&] { press(pressed); });
        survives(moved, [&] { press(pressed); });
        survives(key, [&] { press(pressed); });
    }
    survives(text, [&] {
        QApplication::clipboard()->setText("p");
        control('V');
    });
}

TEST_F(SrcEdit, MayDieFromItsFindBar)
{
    auto doomed = std::make_unique<CSrcEdit>();
    made(*doomed, 0, 0, 300, 100).setText(L"a b");
    doomed->showFindBar();
    connect<&CSrcEdit::onCursorMoved>(*doomed, form, [&](Object*) -> SlotResult {
        doomed.reset();
        return 0;
    });
    type(L"b");
    EXPECT_FALSE(doomed);
}

TEST_F(SrcEdit, ReadOnlyTextIsGoneThroughAndCopiedOnly)
{
    edit.setText(L"ab");
    edit.setReadOnly(true);
    type(L"x");
    for (const int key : {int{KeyEnter}, int{KeyBackspace}, int{KeyDelete}})
        press(key);
    control('A');
    control('X');
    control('V');
    control('Z');
    InputDriver::key({KeySlash, ModifierControl});
    UiDriver::processEvents();
    EXPECT_EQ(edit.text(), L"ab");
    control('C');
    EXPECT_EQ(QApplication::clipboard()->text(), "ab");
    edit.insert(L"by the program");
    EXPECT_EQ(edit.text(), L"by the program");
}

TEST_F(SrcEdit, CutAndPasteGoOverTheClipboard)
{
    edit.setText(L"one\ntwo");
    edit.select({{1, 2}, {2, 2}});
    control('X');
    EXPECT_EQ(edit.text(), L"owo");
    EXPECT_EQ(QApplication::clipboard()->text(), "ne\nt");
    press(KeyEnd);
    QApplication::clipboard()->setText("\r\n+");
    control('V');
    EXPECT_EQ(edit.text(), L"owo\n+");
    press(KeyBackspace);
    edit.selectAll();
    press(KeyDelete, ModifierShift);
    EXPECT_EQ(edit.text(), L"");
}

TEST_F(SrcEdit, TabIndentsAndControlTabLeaves)
{
    WLineEdit other;
    made(other, 0, 385, 100, 15);
    edit.setText(L"a\nb");
    edit.selectAll();
    press(KeyTab);
    EXPECT_EQ(edit.text(), L"    a\n    b");
    press(KeyTab, ModifierShift);
    EXPECT_EQ(edit.text(), L"a\nb");
    press(KeyTab, ModifierControl);
    EXPECT_TRUE(other.hasFocus());
    edit.setFocus();
    control('M');
    press(KeyTab);
    EXPECT_TRUE(other.hasFocus());
    edit.setFocus();
    control('M');
    press(KeyTab);
    EXPECT_TRUE(edit.hasFocus());
}

TEST_F(SrcEdit, KeysGoThroughTheTextAndSelect)
{
    edit.setText(L"select name\nfrom t\nlonger than both");
    press(KeyEnd);
    press(KeyDown);
    EXPECT_EQ(edit.caret(), (SrcPosition{2, 7}));
    press(KeyDown);
    EXPECT_EQ(edit.caret(), (SrcPosition{3, 12})) << "back under where it started";
    press(KeyUp, ModifierShift);
    EXPECT_EQ(edit.selection(), (SrcRange{{2, 7}, {3, 12}}));
    press(KeyHome, ModifierControl);
    press(KeyRight, ModifierControl | ModifierShift);
    EXPECT_EQ(edit.selectedText(), L"select ");
    press(KeyDown, ModifierControl);
    press(KeyPageDown);
    EXPECT_EQ(edit.caret().line, 3);
}

TEST_F(SrcEdit, InsertSwitchesToOverwriting)
{
    edit.setText(L"abc");
    press(KeyInsert);
    type(L"xy");
    EXPECT_EQ(edit.text(), L"xyc");
    press(KeyInsert);
    type(L"z");
    EXPECT_EQ(edit.text(), L"xyzc");
}

TEST_F(SrcEdit, ControlSlashTogglesComments)
{
    edit.setText(L"a\nb");
    edit.selectAll();
    InputDriver::key({KeySlash, ModifierControl});
    EXPECT_TRUE(UiDriver::waitUntil([&] { return edit.text() == L"-- a\n-- b"; }));
}

TEST_F(SrcEdit, TheFindBarFindsWhileOneTypes)
{
    edit.setText(L"alpha beta\nBETA");
    control('F');
    EXPECT_TRUE(edit.isFindBarShown());
    type(L"beta");
    EXPECT_EQ(edit.selection(), (SrcRange{{1, 7}, {1, 11}}));
    press(KeyEnter);
    EXPECT_EQ(edit.selection().from, (SrcPosition{2, 1}));
    press(KeyF1 + 2, ModifierShift);
    EXPECT_EQ(edit.selection().from, (SrcPosition{1, 7}));
    press(KeyEscape);
    EXPECT_FALSE(edit.isFindBarShown());
    EXPECT_TRUE(edit.hasFocus());
    press(KeyF1 + 2);
    EXPECT_EQ(edit.selection().from, (SrcPosition{2, 1}));
    EXPECT_EQ(edit.text(), L"alpha beta\nBETA") << "no key reached the text";
}

TEST_F(SrcEdit, EscapeClosesTheBarBeforeTheDialog)
{
    WDialog dialog;
    CSrcEdit inside;
    dialog.move(0, 0, 300, 200);
    ASSERT_TRUE(dialog.create());
    inside.setParent(&dialog);
    inside.move(0, 0, 300, 200);
    ASSERT_TRUE(inside.create());
    int escapes = 0;
    connect<&VisualObject::onKeyDown>(dialog, dialog, [&](Object*, VirtualKey key) -> SlotResult {
        escapes += key.getKeyboardKey() == KeyEscape;
        return 0;
    });
    UiDriver::showAndActivate(dialog);
    inside.setFocus();
    inside.showFindBar();
    UiDriver::key(dialog, KeyEscape);
    EXPECT_FALSE(inside.isFindBarShown());
    EXPECT_EQ(escapes, 0);
    UiDriver::key(dialog, KeyEscape);
    EXPECT_EQ(escapes, 1);
}

TEST_F(SrcEdit, EnterPushesNoDefaultButtonWhileItEdits)
{
    WButton button;
    made(button, 400, 385, 60, 15);
    Counter counter;
    counter.listen<&WButton::onPush>(button);
    form.setDefaultButton(&button);
    edit.setFocus();
    press(KeyEnter);
    EXPECT_EQ(counter.calls, 0);
    EXPECT_EQ(edit.lineCount(), 2);
    edit.setReadOnly(true);
    press(KeyEnter);
    EXPECT_EQ(counter.calls, 1) << "it has no use for the key";
}

TEST_F(SrcEdit, ControlGGoesToALine)
{
    edit.setText(std::wstring(299, L'\n').c_str());
    control('G');
    control('A');
    type(L"250");
    press(KeyEnter);
    EXPECT_EQ(edit.caret(), (SrcPosition{250, 1}));
    EXPECT_FALSE(edit.isFindBarShown());
    edit.goToLine(1000);
    EXPECT_EQ(edit.caret().line, 300);
}

TEST_F(SrcEdit, ReplacesFromTheProgram)
{
    edit.setText(L"a b a");
    EXPECT_EQ(edit.replaceAll(L"a", L"cc", FindMatchCase), 2);
    EXPECT_EQ(edit.text(), L"cc b cc");
    edit.undo();
    EXPECT_EQ(edit.text(), L"a b a");
    EXPECT_FALSE(edit.find(nullptr, 0));
}

TEST_F(SrcEdit, ZoomsByKeysAndWheel)
{
    press(KeyPlus, ModifierControl);
    EXPECT_EQ(edit.zoom(), 1);
    UiDriver::wheel(edit, 100, 100, -1, ModifierControl);
    UiDriver::wheel(edit, 100, 100, -1, ModifierControl);
    EXPECT_EQ(edit.zoom(), -1);
    press(Key0, ModifierControl);
    EXPECT_EQ(edit.zoom(), 0);
    edit.setZoom(1000);
    EXPECT_EQ(edit.zoom(), 40);
}

TEST_F(SrcEdit, AnErrorIsMarkedUntilTheTextChanges)
{
    edit.setText(L"selec 1");
    edit.markError({1, 1}, L"no such word");
    EXPECT_TRUE(edit.hasError());
    EXPECT_EQ(edit.errorPosition(), (SrcPosition{1, 1}));
    press(KeyEnd);
    EXPECT_TRUE(edit.hasError());
    type(L"2");
    EXPECT_FALSE(edit.hasError());
    edit.markError({90, 90});
    EXPECT_EQ(edit.errorPosition(), (SrcPosition{1, 9}));
}

TEST_F(SrcEdit, TheMouseSelects)
{
    edit.setText(L"one two\nthree");
    UiDriver::click(edit, 470, 8);
    EXPECT_EQ(edit.caret(), (SrcPosition{1, 8}));
    UiDriver::click(edit, 5, 8);
    EXPECT_EQ(edit.selectedText(), L"one two\n") << "the margin selects lines";
    UiDriver::drag(edit, {470, 8}, {470, 30});
    EXPECT_EQ(edit.selectedText(), L"\nthree");
    UiDriver::click(edit, 470, 300);
    UiDriver::doubleClick(edit, 55, 8);
    EXPECT_EQ(edit.selectedText(), L"one");
}

TEST_F(SrcEdit, ADisabledOneTakesNothing)
{
    edit.enable(false);
    type(L"x");
    EXPECT_EQ(edit.text(), L"");
    EXPECT_FALSE(edit.hasFocus());
}

TEST_F(SrcEdit, HostileTextIsKeptAndDrawn)
{
    std::wstring hostile = L"a\x202E\x200B\xFEFF\x0001\x007F\t\x1F600 \x0645\x0631\x062D"
                           L"e\x301\x301\x301 \xFFFD<b>&amp;%s%n";
    hostile.push_back(static_cast<wchar_t>(0xD800));
    hostile.push_back(static_cast<wchar_t>(0x7FFFFFFF));
    edit.setText(hostile.c_str());
    EXPECT_EQ(edit.text(), hostile);
    edit.selectAll();
    edit.markError({1, 9}, L"<i>plain</i>");
    UiDriver::processEvents();
    for (int x = 0; x < 470; x += 7)
        UiDriver::click(edit, x, 8);
    for (int i = 0; i < 40; ++i)
        press(KeyLeft);
    EXPECT_EQ(edit.caret(), (SrcPosition{1, 1}));
    EXPECT_EQ(edit.text(), hostile);
}

TEST_F(SrcEdit, TakesItsNameFromItsLabelAndIsEditableText)
{
    WStatic label;
    label.setText(L"&Statement");
    made(label, 0, 381, 100, 18);
    label.setBuddy(&edit);
    form.show(true);
    edit.setText(L"ab\ncd");
    edit.setCaret({2, 2});
    QAccessibleInterface* face =
        QAccessible::queryAccessibleInterface(edit.native()->widget.data());
    ASSERT_TRUE(face);
    EXPECT_EQ(face->role(), QAccessible::EditableText);
    EXPECT_EQ(UiDriver::accessibleName(edit), L"Statement");
    QAccessibleTextInterface* text = face->textInterface();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->characterCount(), 5);
    EXPECT_EQ(text->cursorPosition(), 4);
    EXPECT_EQ(text->text(1, 4), "b\nc");
    int from = 0;
    int to = 0;
    EXPECT_EQ(text->textAtOffset(4, QAccessible::LineBoundary, &from, &to), "cd");
    EXPECT_EQ(from, 3);
    EXPECT_EQ(text->textBeforeOffset(4, QAccessible::LineBoundary, &from, &to), "ab\n");
    EXPECT_EQ(text->textAfterOffset(4, QAccessible::LineBoundary, &from, &to), "");
    text->setSelection(0, 0, 2);
    EXPECT_EQ(edit.selectedText(), L"ab");
    ASSERT_TRUE(face->editableTextInterface());
    face->editableTextInterface()->replaceText(0, 2, "x");
    EXPECT_EQ(edit.text(), L"x\ncd");
    edit.setReadOnly(true);
    face->editableTextInterface()->deleteText(0, 1);
    EXPECT_EQ(edit.text(), L"x\ncd");
    EXPECT_TRUE(face->state().readOnly);
}

TEST_F(SrcEdit, OpensAndEditsALongTextAndALongLine)
{
    std::wstring lines;
    for (int i = 0; i < 200000; ++i)
        lines += L"SELECT name, price FROM goods WHERE id = 1234567;\n";
    const auto timed = [](auto&& act) {
        QElapsedTimer timer;
        timer.start();
        act();
        return static_cast<int>(timer.elapsed());
    };
    const auto show = [&] { UiDriver::pixel(edit, 100, 100); };
    const int open = timed([&] {
        edit.setText(lines.c_str());
        show();
    });
    const int typing = timed([&] {
        type(L"x");
        show();
    });
    const int end = timed([&] {
        press(KeyEnd, ModifierControl);
        show();
    });
    EXPECT_EQ(edit.caret().line, 200001);
    std::wstring line;
    while (line.size() < (1U << 20))
        line += L"INSERT INTO t VALUES (1, 'abc'), ";
    const int openLine = timed([&] {
        edit.setText(line.c_str());
        show();
    });
    const int endLine = timed([&] {
        press(KeyEnd);
        show();
    });
    const int typeLine = timed([&] {
        type(L"x");
        show();
    });
    RecordProperty("open_ms", open);
    RecordProperty("type_ms", typing);
    RecordProperty("end_ms", end);
    RecordProperty("open_line_ms", openLine);
    RecordProperty("end_line_ms", endLine);
    RecordProperty("type_line_ms", typeLine);
    // Generous: sanitizers, and other programs on the machine. A pass over the toolkit's own text
    // layout would take minutes here.
    EXPECT_LT(open, 5000);
    EXPECT_LT(typing, 2000);
    EXPECT_LT(end, 5000);
    EXPECT_LT(openLine, 5000);
    EXPECT_LT(endLine, 5000);
    EXPECT_LT(typeLine, 5000);
}

} // namespace
