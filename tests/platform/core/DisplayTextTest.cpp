#include "platform/core/DisplayText.h"

#include <gtest/gtest.h>

using inkory::displayable;

TEST(DisplayText, ShowsWhatWouldReorderHideOrBreakTheTextAroundIt)
{
    EXPECT_EQ(displayable(QStringLiteral("one\ntwo\tthree\r.pdf")), QStringLiteral("one two three .pdf"));
    for (const char32_t character :
         {0x00U,   0x07U,   0x1bU,   0x7fU,   0x85U,   0x9fU,   0xadU,    0x34fU,   0x61cU,   0x115fU,  0x200bU,
          0x200cU, 0x200dU, 0x200eU, 0x200fU, 0x2028U, 0x2029U, 0x202aU,  0x202eU,  0x2060U,  0x2066U,  0x2069U,
          0x3164U, 0xfdd0U, 0xfeffU, 0xfff9U, 0xfffeU, 0xffffU, 0x1fffeU, 0xe0001U, 0xe0041U, 0x10ffffU}) {
        const QString name = QString::fromStdU32String({U'a', character, U'f', U'd', U'p', U'.', U'e', U'x', U'e'});
        EXPECT_EQ(displayable(name), QStringLiteral("a\ufffdfdp.exe")) << std::hex << std::uint32_t{character};
    }
    EXPECT_EQ(displayable(QString(QChar(0xd83d)) + u'x' + QChar(0xde00)), QStringLiteral("\ufffdx\ufffd"));
}

TEST(DisplayText, LeavesOrdinaryTextAsItIs)
{
    for (const QString &text : {QStringLiteral("Vertrag & Anlage <b>%1</b>.pdf"), QStringLiteral("חוזה 2 (סופי).pdf"),
                                QStringLiteral("日本\U0001f600"), QStringLiteral("می\u200cخواهم.pdf"),
                                QStringLiteral("क्\u200dष"), QStringLiteral("e\u0301\u00a0x"), QString()}) {
        EXPECT_EQ(displayable(text), text);
    }
    EXPECT_EQ(inkory::displayableInMenu(QStringLiteral("A&B\n&&")), QStringLiteral("A&&B &&&&"));
}

TEST(DisplayText, CutsInTheMiddleBetweenWholeCharacters)
{
    EXPECT_EQ(displayable(QStringLiteral("0123456789"), 10), QStringLiteral("0123456789"));
    EXPECT_EQ(displayable(QStringLiteral("0123456789"), 6), QStringLiteral("012…89"));
    EXPECT_EQ(displayable(QStringLiteral("\U0001f600\U0001f600\U0001f600\U0001f600"), 3),
              QStringLiteral("\U0001f600…\U0001f600"));
    EXPECT_EQ(displayable(QString(5000, u'x')).size(), 200);
}
