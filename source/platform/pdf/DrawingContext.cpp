#include "platform/pdf/DrawingContext.h"

#include <QPainter>
#include <QTextBlock>
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

void DrawingContext::drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position)
{
    block.layout()->lineAt(lineIndex).draw(&painter(), position);
}

} // namespace inkory
