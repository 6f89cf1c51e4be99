#include <oviapi/filedialog.h>
#include <oviapi/msgbox.h>

#include <QApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTemporaryDir>

#include "tests/platform/oviapi/fields_support.h"

namespace {

using namespace OviAPI;

struct FileChoice : FormTest {
    QTemporaryDir folder;

    FileChoice()
    {
        for (const char* name : {"a.trend", "b.txt"}) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        }
    }
    std::wstring path(const char* name) const { return folder.filePath(name).toStdWString(); }
    static QFileDialog* open()
    {
        return qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    }
    static void pressKey(QWidget* widget, Qt::Key key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
    // Types a name into the dialog when it is there, and presses Enter.
    static void answer(const QString& name)
    {
        UiDriver::later([name] {
            ASSERT_TRUE(UiDriver::waitUntil([] { return open() != nullptr; }));
            auto* edit = open()->findChild<QLineEdit*>("fileNameEdit");
            ASSERT_TRUE(edit);
            edit->setText(name);
            pressKey(edit, Qt::Key_Return);
        });
    }
    static void cancel()
    {
        UiDriver::later([] {
            ASSERT_TRUE(UiDriver::waitUntil([] { return open() != nullptr; }));
            pressKey(open(), Qt::Key_Escape);
        });
    }
};

TEST_F(FileChoice, OpensAFileThatExists)
{
    ExtFileDialog dialog;
    dialog.setFolder(folder.path().toStdWString().c_str());
    answer("a.trend");
    EXPECT_TRUE(dialog.execModal(&form));
    EXPECT_EQ(dialog.path(), path("a.trend"));
    EXPECT_EQ(dialog.paths().size(), 1U);
}

TEST_F(FileChoice, SaysWhenThereIsNoSuchFile)
{
    ExtFileDialog dialog;
    dialog.setFolder(folder.path().toStdWString().c_str());
    answer("nothing");
    UiDriver::answerMessageBox(MsgBox::Ok);
    UiDriver::later([] {
        UiDriver::waitUntil([] { return UiDriver::unansweredBoxes() == 0; });
        UiDriver::waitUntil([] { return open() != nullptr; });
        pressKey(open(), Qt::Key_Escape);
    });
    EXPECT_FALSE(dialog.execModal());
    EXPECT_NE(UiDriver::lastBoxText().find(L"nothing"), std::wstring::npos);
}

TEST_F(FileChoice, CancelKeepsThePathFromBefore)
{
    ExtFileDialog dialog;
    dialog.setPath(path("b.txt").c_str());
    cancel();
    EXPECT_FALSE(dialog.execModal());
    EXPECT_EQ(dialog.path(), path("b.txt"));
}

TEST_F(FileChoice, SavesUnderANewNameWithTheDefaultExtension)
{
    ExtFileDialog dialog(ExtFileDialog::Save);
    dialog.setFolder(folder.path().toStdWString().c_str());
    dialog.setDefaultExtension(L".trend");
    answer("new");
    EXPECT_TRUE(dialog.execModal());
    EXPECT_EQ(dialog.path(), path("new.trend"));
}

TEST_F(FileChoice, AsksBeforeAFileIsOverwritten)
{
    ExtFileDialog dialog(ExtFileDialog::Save);
    dialog.setPath(path("a.trend").c_str());
    answer("a.trend");
    UiDriver::answerMessageBox(MsgBox::Yes);
    EXPECT_TRUE(dialog.execModal());
    EXPECT_EQ(dialog.path(), path("a.trend"));
    EXPECT_NE(UiDriver::lastBoxText().find(L"a.trend"), std::wstring::npos);
    dialog.setOverwriteQuestion(false);
    answer("b.txt");
    EXPECT_TRUE(dialog.execModal());
    EXPECT_EQ(UiDriver::unansweredBoxes(), 0);
}

TEST_F(FileChoice, NoToTheQuestionStaysInTheDialog)
{
    ExtFileDialog dialog(ExtFileDialog::Save);
    dialog.setFolder(folder.path().toStdWString().c_str());
    answer("a.trend");
    UiDriver::answerMessageBox(MsgBox::No);
    UiDriver::later([] {
        UiDriver::waitUntil([] { return UiDriver::unansweredBoxes() == 0; });
        UiDriver::waitUntil([] { return open() != nullptr; });
        pressKey(open(), Qt::Key_Escape);
    });
    EXPECT_FALSE(dialog.execModal());
}

TEST_F(FileChoice, OpensSeveralFiles)
{
    ExtFileDialog dialog(ExtFileDialog::OpenMany);
    dialog.setFolder(folder.path().toStdWString().c_str());
    answer("\"a.trend\" \"b.txt\"");
    EXPECT_TRUE(dialog.execModal());
    EXPECT_EQ(dialog.paths().size(), 2U);
}

TEST_F(FileChoice, OffersItsFiltersAndTellsTheChosenOne)
{
    ExtFileDialog dialog;
    dialog.setFilters(L"Charts (*.trend);;All files (*)");
    dialog.setCurrentFilter(1);
    dialog.setFolder(folder.path().toStdWString().c_str());
    UiDriver::later([] {
        ASSERT_TRUE(UiDriver::waitUntil([] { return open() != nullptr; }));
        EXPECT_EQ(open()->nameFilters(), QStringList({"Charts (*.trend)", "All files (*)"}));
        EXPECT_EQ(open()->selectedNameFilter(), "All files (*)");
        open()->selectNameFilter("Charts (*.trend)");
    });
    answer("a.trend");
    EXPECT_TRUE(dialog.execModal());
    EXPECT_EQ(dialog.currentFilter(), 0);
}

TEST_F(FileChoice, HostileArgumentsAreTakenAsText)
{
    ExtFileDialog dialog(ExtFileDialog::Save);
    dialog.setTitle(L"%s [*] <b>");
    dialog.setFilters(L";;;;(((;;)");
    dialog.setCurrentFilter(99);
    dialog.setFolder(L"/no/such/folder");
    dialog.setPath(L"relative/\x1F600");
    dialog.setDefaultExtension(L"...");
    cancel();
    EXPECT_FALSE(dialog.execModal());
    dialog.setTitle(nullptr);
    dialog.setFilters(nullptr);
    dialog.setFolder(nullptr);
    dialog.setPath(nullptr);
    dialog.setDefaultExtension(nullptr);
    cancel();
    EXPECT_FALSE(dialog.execModal());
}

} // namespace
