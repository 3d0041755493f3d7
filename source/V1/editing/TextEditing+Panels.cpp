// Font and colour of the text that is edited, and the panels that show and change them.

#include "V1/editing/KRPDFView.h"
#include "V1/editing/TextEditing.h"
#include "V1/editing/TextStampEditor.h"
#include "platform/core/EmbeddableFont.h"
#include "platform/widgets/ColorPanel.h"
#include "platform/widgets/FontManager.h"
#include "platform/widgets/FontPanel.h"

using namespace inkory;

namespace
{

QRect onScreen(const QWidget &widget)
{
    return {widget.mapToGlobal(QPoint()), widget.size()};
}

// What a panel should not cover.
QRect workedOn(const KRPDFView &view)
{
    const QRect text = onScreen(*view.textEditor());
    return view.stampViewToolbar() ? text.united(onScreen(*view.stampViewToolbar())) : text;
}

// Only what the person changed: a larger size does not make all of a selection bold.
QTextCharFormat difference(const QTextCharFormat &before, const QTextCharFormat &after)
{
    QTextCharFormat change;
    const QMap<int, QVariant> properties = after.properties();
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        if (before.property(property.key()) != property.value())
            change.setProperty(property.key(), property.value());
    }
    return change;
}

QColor colorOf(const QTextCharFormat &format)
{
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color() : QColor(Qt::black);
}

} // namespace

QFont TextEditing::newTextFont() const
{
    return embeddableFont(sharedFontManager().selectedFont().value_or(m_textEditor->typingAttributes().font()));
}

QTextCharFormat TextEditing::newTextAttributes() const
{
    QTextCharFormat attributes = m_textEditor->typingAttributes();
    attributes.merge(TextStorage::characterFormat(newTextFont()));
    if (const auto color = sharedFontManager().selectedColor())
        attributes.setForeground(*color);
    return attributes;
}

// The shared panels work for the view that asked for them last.
void TextEditing::openFontPanel()
{
    FontPanel &panel = FontPanel::sharedFontPanel();
    disconnect(&panel, &FontPanel::fontChanged, nullptr, nullptr);
    panel.setFont(m_textEditor->typingAttributes().font());
    m_fontPanel = connect(&panel, &FontPanel::fontChanged, this, &TextEditing::changeFont);
    panel.orderFront(&m_view, workedOn(m_view));
}

void TextEditing::openColorPanel()
{
    ColorPanel &panel = ColorPanel::sharedColorPanel();
    disconnect(&panel, &ColorPanel::colorChanged, nullptr, nullptr);
    panel.setColor(colorOf(m_textEditor->typingAttributes()));
    m_colorPanel = connect(&panel, &ColorPanel::colorChanged, this, &TextEditing::changeColor);
    panel.orderFront(&m_view, workedOn(m_view));
}

void TextEditing::closePanels()
{
    if (disconnect(m_fontPanel))
        FontPanel::closeShared();
    if (disconnect(m_colorPanel))
        ColorPanel::closeShared();
}

void TextEditing::changeFont(const QFont &font)
{
    if (!isEditing())
        return;
    const QFont used = embeddableFont(font);
    if (used.family() != font.family())
        Q_EMIT m_view.fontReplaced(font.family(), used.family());
    const QTextCharFormat shown = TextStorage::characterFormat(m_textEditor->typingAttributes().font());
    m_textEditor->changeFormat(difference(shown, TextStorage::characterFormat(used)));
}

void TextEditing::changeColor(const QColor &color)
{
    if (!isEditing())
        return;
    QTextCharFormat change;
    change.setForeground(color);
    m_textEditor->changeFormat(change);
}

// The next text is written like this one; and panels that are open show what the cursor is in.
void TextEditing::showTypingAttributes()
{
    if (!isEditing())
        return;
    const QTextCharFormat attributes = m_textEditor->typingAttributes();
    sharedFontManager().setSelectedFont(attributes.font());
    sharedFontManager().setSelectedColor(colorOf(attributes));
    if (m_fontPanel)
        FontPanel::sharedFontPanel().setFont(attributes.font());
    if (m_colorPanel)
        ColorPanel::sharedColorPanel().setColor(colorOf(attributes));
}
