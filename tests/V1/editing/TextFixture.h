#pragma once

#include "V1/editing/GestureFixture.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRTextStamp.h"
#include "platform/widgets/FontManager.h"

#include <QTextCursor>
#include <QTextFragment>

/// Texts placed with the text tool and typed with real keys. The font is DejaVu Sans, 12 points.
class TextFixture : public GestureFixture
{
protected:
    TextFixture()
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPointSizeF(12);
        inkory::sharedFontManager().setSelectedFont(font);
        inkory::sharedFontManager().setSelectedColor(Qt::black);
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void openPage(const char *rotation = "0") { open(inkory::test::makePdf({{.rotate = rotation}})); }

    /// A click with the text tool at the point of the page.
    void place(inkory::PagePoint point, int pageIndex = 0)
    {
        view->setCurrentToolType(ToolTypeTextStamp);
        click(windowPoint(pageIndex, point));
    }

    void type(const QString &text)
    {
        for (const QChar character : text)
            QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(),
                                character == QLatin1Char('\n') ? Qt::Key_Return : Qt::Key_unknown, QString(character),
                                {});
    }

    std::shared_ptr<KRTextStamp> stamp() const
    {
        return view->stampViews().empty() ? nullptr
                                          : std::dynamic_pointer_cast<KRTextStamp>(view->stampViews().front());
    }

    QString text() const
    {
        return stamp() ? stamp()->textStorage()->document().toPlainText() : QStringLiteral("no stamp");
    }
};
