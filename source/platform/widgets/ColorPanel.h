#pragma once

#include "platform/widgets/SharedPanel.h"

#include <QColor>

class QColorDialog;

namespace inkory
{

/// The panel in which a person chooses the colour of a text, with its opacity. What is chosen and what is shown become
/// the font manager's selected colour.
class ColorPanel : public SharedPanel
{
    Q_OBJECT

public:
    /// The program's one, made by the first call.
    static ColorPanel &sharedColorPanel();
    /// Closes the shared one where there is one.
    static void closeShared();

    QColor color() const { return m_color; }
    /// Shows what the text has that is worked on; emits nothing. Invalid colours are ignored.
    void setColor(const QColor &color);

Q_SIGNALS:
    /// The person chose another colour.
    void colorChanged(const QColor &color);

private:
    explicit ColorPanel(std::unique_ptr<QColorDialog> dialog);
    void choose(const QColor &color);

    QColorDialog &m_colorDialog;
    QColor m_color = Qt::black;
};

} // namespace inkory
