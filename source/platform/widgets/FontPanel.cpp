#include "platform/widgets/FontPanel.h"

#include "platform/widgets/FontManager.h"

#include <QCoreApplication>
#include <QFontDialog>
#include <QFontInfo>
#include <QSignalBlocker>

#include <tuple>

namespace inkory
{

namespace
{

/// Qt's dialog as a panel: Return in one of its lists is no reason to close it.
class FontDialog : public QFontDialog
{
public:
    void accept() override {}
};

std::unique_ptr<FontPanel> &shared()
{
    static std::unique_ptr<FontPanel> panel;
    return panel;
}

// The dialog names the style, too, and a named style wins over a weight or slant that is set later. The name is needed
// only for what the other properties do not say.
QFont withoutNeedlessStyleName(const QFont &font)
{
    QFont plain = font;
    plain.setStyleName({});
    return QFontInfo(plain).styleName() == font.styleName() ? plain : font;
}

// In all that the panel is about: fonts of texts also say how they are to be laid out.
bool lookAlike(const QFont &a, const QFont &b)
{
    const auto effects = [](const QFont &font) {
        return std::tuple(font.weight(), font.style(), font.underline(), font.strikeOut(), font.styleName());
    };
    return a.family() == b.family() && a.pointSizeF() == b.pointSizeF() && effects(a) == effects(b);
}

} // namespace

FontPanel &FontPanel::sharedFontPanel()
{
    if (!shared()) {
        shared().reset(new FontPanel(std::make_unique<FontDialog>()));
        qAddPostRoutine([] { shared().reset(); }); // a window must not outlive the application object
    }
    return *shared();
}

void FontPanel::closeShared()
{
    if (shared())
        shared()->close();
}

FontPanel::FontPanel(std::unique_ptr<QFontDialog> dialog)
    : SharedPanel(std::move(dialog)), m_fontDialog(static_cast<QFontDialog &>(this->dialog())),
      m_font(m_fontDialog.currentFont())
{
    m_fontDialog.setOptions(QFontDialog::NoButtons | QFontDialog::DontUseNativeDialog | QFontDialog::ScalableFonts);
    m_fontDialog.setWindowTitle(tr("Fonts"));
    if (const auto font = sharedFontManager().selectedFont())
        setFont(*font);
    connect(&m_fontDialog, &QFontDialog::currentFontChanged, this, &FontPanel::choose);
}

void FontPanel::setFont(const QFont &font)
{
    const bool isShown = lookAlike(font, m_font);
    m_font = font;
    sharedFontManager().setSelectedFont(font);
    if (isShown)
        return; // not below the hands of whoever just chose it
    const QSignalBlocker blocker(m_fontDialog);
    // The dialog finds a style by its name only, and knows but a few of a family that stands for another one.
    QFont named = font;
    named.setFamilies({QFontInfo(font).family()});
    named.setStyleName(QFontInfo(font).styleName());
    m_fontDialog.setCurrentFont(named);
}

void FontPanel::choose(const QFont &font)
{
    QFont chosen = withoutNeedlessStyleName(font);
    if (chosen.pointSize() == m_font.pointSize()) // the dialog knows whole points only
        chosen.setPointSizeF(m_font.pointSizeF());
    if (lookAlike(chosen, m_font))
        return; // the dialog tells each of its steps
    m_font = chosen;
    sharedFontManager().setSelectedFont(chosen);
    Q_EMIT fontChanged(chosen);
}

} // namespace inkory
