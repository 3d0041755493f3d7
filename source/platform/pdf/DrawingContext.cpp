#include "platform/pdf/DrawingContext.h"

#include <QPainter>
#include <QTextLayout>

namespace inkory
{

namespace
{

DrawingContext *currentContext = nullptr;

} // namespace

DrawingContext::Scope::Scope(DrawingContext &context) : m_former(currentContext)
{
    currentContext = &context;
}

DrawingContext::Scope::~Scope()
{
    currentContext = m_former;
}

DrawingContext *DrawingContext::current()
{
    return currentContext;
}

void DrawingContext::drawTextLine(const QTextLayout &layout, int lineIndex, const QPointF &position)
{
    layout.lineAt(lineIndex).draw(&painter(), position);
}

} // namespace inkory
