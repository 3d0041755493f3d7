#include "platform/pdf/DrawingContext.h"

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

} // namespace inkory
