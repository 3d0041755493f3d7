#include "V1/stamps/KRTextStamp.h"

#include "V1/stamps/KRPDFPage.h"
#include "platform/pdf/DrawingContext.h"

#include <QPainter>
#include <QTextBlock>

#include <utility>

using namespace inkory;

namespace
{

const QString setTextOperation = QStringLiteral("setTextWithFrameAndPage");
const QString textKey = QStringLiteral("text");
const QString frameKey = QStringLiteral("frame");
const QString pageKey = QStringLiteral("page");

} // namespace

std::shared_ptr<KRTextStamp> KRTextStamp::create(std::shared_ptr<TextStorage> text, const PageRect &frame,
                                                 StampHost *pdfView, KRPDFPage *pdfPage)
{
    std::shared_ptr<KRTextStamp> stamp(new KRTextStamp(std::move(text), frame, pdfView, pdfPage));
    stamp->setup();
    stamp->createStamp();
    return stamp;
}

KRTextStamp::KRTextStamp(std::shared_ptr<TextStorage> text, const PageRect &frame, StampHost *pdfView,
                         KRPDFPage *pdfPage)
    : KRStamp(frame, pdfView, pdfPage), m_textStorage(std::move(text))
{
}

void KRTextStamp::beginEditing()
{
    m_previousTextStorage = m_textStorage->attributedText();
}

void KRTextStamp::endEditing()
{
    if (m_previousTextStorage.isEmpty() || m_previousTextStorage == m_textStorage->attributedText())
        return;
    Placement tracked = placement();
    tracked.lastFrame = frame();
    restorePlacement(tracked);
    registerUndo(std::exchange(m_previousTextStorage, {}));
}

void KRTextStamp::registerUndo(const AttributedText &text)
{
    KRStamp::registerUndo(setTextOperation,
                          QVariantMap{{textKey, QVariant::fromValue(text)},
                                      {frameKey, QVariant::fromValue(frame())},
                                      {pageKey, QVariant::fromValue<PDFPage *>(pdfPage())}},
                          "Text changed");
}

void KRTextStamp::setTextWithFrameAndPage(const QVariantMap &former)
{
    registerUndo(m_textStorage->attributedText());
    setScriptingContents(former.value(textKey).value<AttributedText>());
    Placement placed = placement();
    placed.page = dynamic_cast<KRPDFPage *>(former.value(pageKey).value<PDFPage *>());
    placed.frame = former.value(frameKey).value<PageRect>();
    restorePlacement(placed);
    postNeedsRefresh({{frameKey, QVariant::fromValue(placed.lastFrame)}});
    placed.lastFrame = placed.frame;
    restorePlacement(placed);
}

void KRTextStamp::draw()
{
    if (stampMode() != StampModeEditing)
        KRStamp::draw();
}

void KRTextStamp::drawStampInRect(const QRectF &rect, float frac)
{
    DrawingContext &context = *DrawingContext::current();
    QPainter &painter = context.painter();
    const bool isClippedAway = painter.hasClipping() && !painter.clipBoundingRect().intersects(rect);
    if (m_textStorage->isEmpty() || isClippedAway)
        return;
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    if (frac < 1.0F)
        painter.setOpacity(static_cast<double>(frac));
    painter.setPen(Qt::black);
    // From the rectangle's top downward, in the layout's units.
    painter.translate(rect.x(), rect.y() + rect.height());
    painter.scale(1 / TextStorage::layoutScale, -1 / TextStorage::layoutScale);
    m_textStorage->layOut(rect.width());
    m_textStorage->visitLines(rect.height(),
                              [&context](const QTextBlock &block, int lineIndex, const QPointF &position) {
                                  context.drawTextLine(block, lineIndex, position);
                              });
    painter.restore();
}

void KRTextStamp::performUndoOperation(const QString &operation, const QVariant &argument)
{
    if (operation == setTextOperation)
        setTextWithFrameAndPage(argument.toMap());
    else
        KRStamp::performUndoOperation(operation, argument);
}
