// The numbers of docs/platform-contract.md.
#include <gtest/gtest.h>

#include <dorcpp/cursor.h>
#include <dorcpp/dorx.h>
#include <dorcpp/types.h>
#include <oviapi/application.h>
#include <oviapi/button.h>
#include <oviapi/clientareabroker.h>
#include <oviapi/color.h>
#include <oviapi/dataset.h>
#include <oviapi/form.h>
#include <oviapi/msgbox.h>
#include <oviapi/painter.h>
#include <oviapi/panel.h>
#include <oviapi/pen.h>
#include <oviapi/phrases.h>
#include <oviapi/recordview.h>
#include <oviapi/resourcemanager.h>
#include <oviapi/virtualkey.h>
#include <xmlutils/encoding.h>

namespace {

using namespace OviAPI;

using Numbers = std::vector<long>;

template<class... Values>
Numbers numbers(Values... values)
{
    return {static_cast<long>(values)...};
}

TEST(ContractNumbers, OfMessageBoxesAndFontRoles)
{
    EXPECT_EQ(numbers(MsgBox::Ok, MsgBox::Cancel, MsgBox::Yes, MsgBox::No), (Numbers{1, 2, 4, 8}));
    EXPECT_EQ(numbers(Application::ControlFont, Application::EditFont, Application::TreeFont),
              (Numbers{1, 2, 3}));
}

TEST(ContractNumbers, OfStyles)
{
    EXPECT_EQ(numbers(WForm::SizingBorder, WForm::MinimizeButton, WForm::MaximizeButton,
                      WForm::DialogFrame),
              (Numbers{2, 8, 16, 32}));
    EXPECT_EQ(numbers(WButton::TabStop, WButton::Visible, WButton::Flat, WButton::PictureOnly),
              (Numbers{2, 4, 16, 32}));
    EXPECT_EQ(numbers(WPanel::TabStop, WPanel::Border), (Numbers{2, 8}));
    EXPECT_EQ(numbers(aCRecordView::OneWholeRow), (Numbers{2}));
    EXPECT_EQ(numbers(aCClientAreaBroker::AlignHeaders, aCClientAreaBroker::AlignCells,
                      aCClientAreaBroker::AlignRowHeader, aCClientAreaBroker::AlignAll),
              (Numbers{1, 2, 3, 4}));
}

TEST(ContractNumbers, OfMouseAndModifiers)
{
    EXPECT_EQ(numbers(MouseLeft, MouseRight, MouseShift, MouseControl, MouseMiddle, MouseAlt),
              (Numbers{1, 2, 4, 8, 16, 32}));
    EXPECT_EQ(numbers(ModifierShift, ModifierControl, ModifierAlt, ModifierSuper, ModifierKeypad),
              (Numbers{1, 2, 4, 8, 16}));
}

TEST(ContractNumbers, OfKeys)
{
    EXPECT_EQ(numbers(KeyNone, KeyEscape, KeyBackspace, KeyDelete, KeyEnter, KeyInsert, KeyHome,
                      KeyEnd, KeyClear, KeyLeft, KeyUp, KeyRight, KeyDown, KeyPageUp, KeyPageDown),
              (Numbers{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(numbers(KeyPause, KeyShift, KeyControl, KeyAlt, KeySuper, KeyCapsLock, KeyNumLock,
                      KeyScrollLock, KeyMenu, KeyPrint, KeyHelp),
              (Numbers{15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25}));
    EXPECT_EQ(
        numbers(KeySpace, Key0, Key9, KeyMinus, KeyEqual, KeyPlus, KeyAsterisk, KeyA, KeyZ, KeyTab),
        (Numbers{30, 31, 40, 41, 42, 43, 44, 45, 70, 71}));
    EXPECT_EQ(numbers(KeyComma, KeyPeriod, KeySlash, KeyBackslash, KeySemicolon, KeyApostrophe,
                      KeyLeftBracket, KeyRightBracket, KeyGrave, KeyF1, KeyF24),
              (Numbers{72, 73, 74, 75, 76, 77, 78, 79, 80, 81, 104}));
}

TEST(ContractNumbers, OfColours)
{
    EXPECT_EQ(numbers(ColorNumber::Window, ColorNumber::WindowText, ColorNumber::ButtonFace,
                      ColorNumber::ButtonText, ColorNumber::Highlight, ColorNumber::Field,
                      ColorNumber::FieldText, ColorNumber::HighlightText, ColorNumber::Caption,
                      ColorNumber::CaptionText, ColorNumber::Shadow, ColorNumber::Light,
                      ColorNumber::InactiveCaption, ColorNumber::DisabledText,
                      ColorNumber::GridLine, ColorNumber::ToolTip, ColorNumber::ToolTipText),
              (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}));
}

TEST(ContractNumbers, OfPensBrushesAndText)
{
    EXPECT_EQ(numbers(Pen::Solid, Pen::Dash, Pen::Dot, Pen::DashDot, Pen::DashDotDot, Pen::None,
                      Pen::Fine),
              (Numbers{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(numbers(Brush::NoHatch, Brush::Horizontal, Brush::Vertical, Brush::ForwardDiagonal,
                      Brush::BackwardDiagonal, Brush::Cross, Brush::DiagonalCross),
              (Numbers{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(numbers(TextLeft, TextTop, TextCenter, TextRight, TextVCenter, TextBottom,
                      TextWordWrap, TextSingleLine, TextElide),
              (Numbers{0, 0, 1, 2, 4, 8, 16, 32, 64}));
}

TEST(ContractNumbers, OfDatasets)
{
    EXPECT_EQ(numbers(aCColumn::DropDown, aCColumn::CheckMark, aCColumn::ImageCell),
              (Numbers{2, 3, 4}));
    EXPECT_EQ(numbers(DataType::Text, DataType::Int32, DataType::Int16, DataType::Float,
                      DataType::Double, DataType::ExternalFile, DataType::DateTime, DataType::Int64,
                      DataType::LargeObject, DataType::Decimal, DataType::NationalText,
                      DataType::Bytes, DataType::UInt64, DataType::Boolean),
              (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(numbers(FetchFirst, FetchLast, FetchNext, FetchPrevious, FetchAbsolute),
              (Numbers{1, 2, 3, 4, 5}));
    EXPECT_EQ(numbers(aCDataFailure::IndexOutOfRange, aCDataFailure::NoCursor), (Numbers{2, 9}));
    EXPECT_EQ(numbers(aCErrorHolder::NoError, aCErrorHolder::Refused, aCErrorHolder::NoSuchRow,
                      aCErrorHolder::Locked, aCErrorHolder::Critical, aCErrorHolder::OtherError),
              (Numbers{0, 2, 3, 4, 5, 6}));
    EXPECT_EQ(numbers(StampNull, StampCut, StampInvalid, StampDefault, StampUntouched, StampServer),
              (Numbers{1, 2, 4, 8, 16, 32}));
}

TEST(ContractNumbers, OfTheDatabaseClient)
{
    using namespace DorCPP;
    EXPECT_EQ(numbers(TypeChar, TypeSmallint, TypeInteger, TypeBigint, TypeReal, TypeByte, TypeBlob,
                      TypeDouble, TypeDate, TypeDecimal, TypeVarchar, TypeVarbyte, TypeBoolean,
                      TypeText, TypeNchar, TypeNvarchar, TypeExtfile),
              (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 15, 16, 17, 18}));
    EXPECT_EQ(numbers(DorCPP::FetchFirst, DorCPP::FetchLast, DorCPP::FetchNext,
                      DorCPP::FetchPrevious, DorCPP::FetchAbsolute),
              (Numbers{1, 2, 3, 4, 5}));
    EXPECT_EQ(numbers(ModeReadOnly, CursorOptionNull, CursorOptionBlobType),
              (Numbers{1, 214, 223}));
    EXPECT_EQ(numbers(CodeNoRow, CodeRowGone, CodeDeadlock, CodeLocked, CodeSessionLost,
                      CodeServerStopped, CodeCorruptFile, CodeDiskFull, CodeNoMemory,
                      CodeInputOutput, CodeCannotOpen, CodeRefused),
              (Numbers{1, 2, 129, 135, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1022}));
    EXPECT_EQ(numbers(CodeSqlText, CodeSeveralStatements, CodeBadCall, CodeStructureChanged,
                      CodeTooBig, CodeBadBind, CodeCancelled, CodeUndone, CodeBusy,
                      CodeNotUpdatable, CodeRowChanged, CodeOther),
              (Numbers{2001, 2002, 2003, 2004, 2005, 2006, 2050, 2051, 2060, 2070, 2162, 2199}));
}

TEST(ContractNumbers, OfTypesFromTheClientInDatasets)
{
    Numbers types;
    for (unsigned char client = 0; client <= 20; ++client)
        types.push_back(DorToApsType(client));
    EXPECT_EQ(types,
              (Numbers{0, 1, 3, 2, 8, 4, 12, 9, 5, 7, 10, 1, 12, 14, 0, 0, 11, 11, 6, 0, 0}));
}

TEST(ContractNumbers, OfEncodingsAndLanguages)
{
    using XMLUtils::XMLEncoding;
    EXPECT_EQ(numbers(XMLEncoding::Utf8, XMLEncoding::Koi8R, XMLEncoding::Windows1251,
                      XMLEncoding::Utf16LE, XMLEncoding::Utf16BE),
              (Numbers{1, 2, 3, 4, 5}));
    EXPECT_EQ(numbers(ResourceManager::English, ResourceManager::Russian,
                      ResourceManager::CurrentLanguage),
              (Numbers{1, 2, -1}));
    EXPECT_EQ(numbers(Phrase::Ok, Phrase::Cancel, Phrase::Yes, Phrase::No),
              (Numbers{60011, 60012, 60013, 60014}));
}

} // namespace
