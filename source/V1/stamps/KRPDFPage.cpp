#include "V1/stamps/KRPDFPage.h"

#include "V1/stamps/KRStamp.h"
#include "platform/core/Log.h"
#include "platform/core/PlatformVersion.h"

#include <QPainter>

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

using namespace inkory;

namespace
{

// The first platform version whose context-based drawing does not come back through drawWithBox(box) by itself.
constexpr int firstVersionDrawingIntoContexts = 1504;

} // namespace

KRPDFPage::~KRPDFPage() = default;

void KRPDFPage::addStamp(const std::shared_ptr<KRStamp> &stamp)
{
    if (std::find(m_stamps.begin(), m_stamps.end(), stamp) == m_stamps.end())
        m_stamps.push_back(stamp);
}

void KRPDFPage::removeStamp(const KRStamp *stamp)
{
    std::erase_if(m_stamps, [stamp](const auto &held) { return held.get() == stamp; });
}

void KRPDFPage::drawWithBox(DisplayBox box)
{
    PDFPage::drawWithBox(box);
    try {
        internalDrawPageWithBox(box);
    } catch (const std::exception &exception) {
        logLine(QStringLiteral("internalDrawPageWithBox exception: %1 . Reason: %2")
                    .arg(QString::fromLatin1(typeid(exception).name()), QString::fromLocal8Bit(exception.what())));
    }
}

void KRPDFPage::drawWithBox(DisplayBox box, DrawingContext &context)
{
    PDFPage::drawWithBox(box, context);
    if (static_cast<int>(platformVersion()) < firstVersionDrawingIntoContexts)
        return;
    const DrawingContext::Scope scope(context);
    internalDrawPageWithBox(box);
}

void KRPDFPage::internalDrawPageWithBox(DisplayBox box)
{
    DrawingContext *context = DrawingContext::current();
    if (!context || m_stamps.empty())
        return;
    QPainter &painter = context->painter();
    struct StateGuard // restores the state also when a stamp's drawing throws
    {
        explicit StateGuard(QPainter &p) : painter(p) { painter.save(); }
        ~StateGuard() { painter.restore(); }
        QPainter &painter;
    };
    const StateGuard guard(painter);
    painter.setTransform(context->transformForBox(*this, box), true);
    painter.setClipRect(toQRectF(boundsForBox(box)), Qt::IntersectClip);
    for (const auto &stamp : m_stamps)
        stamp->draw();
}
