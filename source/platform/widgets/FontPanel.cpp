#include "platform/widgets/FontPanel.h"

#include "platform/widgets/FontManager.h"

#include <QCoreApplication>
#include <QFontDialog>
#include <QFontInfo>
#include <QSignalBlocker>

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
    : SharedPanel(std::move(dialog)), m_fontDialog(static_cast<QFontDialog &>(this->dialog()))
{
    m_fontDialog.setOptions(QFontDialog::NoButtons | QFontDialog::DontUseNativeDialog | QFontDialog::ScalableFonts);
    m_fontDialog.setWindowTitle(tr("Fonts"));
    if (const auto font = sharedFontManager().selectedFont())
        setFont(*font);
    connect(&m_fontDialog, &QFontDialog::currentFontChanged, this, &FontPanel::choose);
}

void FontPanel::setFont(const QFont &font)
{
    m_font = font;
    const QSignalBlocker blocker(m_fontDialog);
    m_fontDialog.setCurrentFont(font);
    sharedFontManager().setSelectedFont(font);
}

void FontPanel::choose(const QFont &font)
{
    QFont chosen = withoutNeedlessStyleName(font);
    if (chosen.pointSize() == m_font.pointSize()) // the dialog knows whole points only
        chosen.setPointSizeF(m_font.pointSizeF());
    if (chosen == m_font)
        return; // the dialog tells each of its steps
    m_font = chosen;
    sharedFontManager().setSelectedFont(chosen);
    Q_EMIT fontChanged(chosen);
}

} // namespace inkory
