#pragma once

#include "platform/widgets/SharedPanel.h"

#include <QFont>

class QFontDialog;

namespace inkory
{

/// The panel in which a person chooses the font of a text: scalable fonts only. What is chosen and what is shown become
/// the font manager's selected font.
class FontPanel : public SharedPanel
{
    Q_OBJECT

public:
    /// The program's one, made by the first call.
    static FontPanel &sharedFontPanel();
    /// Closes the shared one where there is one.
    static void closeShared();

    QFont font() const { return m_font; }
    /// Shows what the text has that is worked on; emits nothing.
    void setFont(const QFont &font);

Q_SIGNALS:
    /// The person chose another font, size or effect.
    void fontChanged(const QFont &font);

private:
    explicit FontPanel(std::unique_ptr<QFontDialog> dialog);
    void choose(const QFont &font);

    QFontDialog &m_fontDialog;
    QFont m_font;
};

} // namespace inkory
