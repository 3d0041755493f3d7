#pragma once

#include <QString>

namespace inkory
{

/// A tool tip that shows the text as it is, wrapped: tool tips take for markup whatever looks like it, and load local
/// images.
inline QString plainToolTip(const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped());
}

} // namespace inkory
