#include "platform/widgets/ColorPanel.h"

#include "platform/widgets/FontManager.h"

#include <QColorDialog>
#include <QCoreApplication>
#include <QSignalBlocker>

namespace inkory
{

namespace
{

/// Qt's dialog as a panel: Return in one of its fields is no reason to close it.
class ColorDialog : public QColorDialog
{
public:
    void accept() override {}
};

std::unique_ptr<ColorPanel> &shared()
{
    static std::unique_ptr<ColorPanel> panel;
    return panel;
}

} // namespace

ColorPanel &ColorPanel::sharedColorPanel()
{
    if (!shared()) {
        shared().reset(new ColorPanel(std::make_unique<ColorDialog>()));
        qAddPostRoutine([] { shared().reset(); }); // a window must not outlive the application object
    }
    return *shared();
}

void ColorPanel::closeShared()
{
    if (shared())
        shared()->close();
}

ColorPanel::ColorPanel(std::unique_ptr<QColorDialog> dialog)
    : SharedPanel(std::move(dialog)), m_colorDialog(static_cast<QColorDialog &>(this->dialog()))
{
    m_colorDialog.setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog |
                             QColorDialog::ShowAlphaChannel);
    m_colorDialog.setWindowTitle(tr("Colors"));
    m_colorDialog.setCurrentColor(m_color);
    if (const auto color = sharedFontManager().selectedColor())
        setColor(*color);
    connect(&m_colorDialog, &QColorDialog::currentColorChanged, this, &ColorPanel::choose);
}

void ColorPanel::setColor(const QColor &color)
{
    if (!color.isValid())
        return;
    const bool isShown = color.rgba() == m_color.rgba();
    m_color = color;
    sharedFontManager().setSelectedColor(color);
    if (isShown)
        return; // not below the hands of whoever just chose it
    const QSignalBlocker blocker(m_colorDialog);
    m_colorDialog.setCurrentColor(color);
}

void ColorPanel::choose(const QColor &color)
{
    if (color.rgba() == m_color.rgba())
        return; // the dialog tells each of its steps
    m_color = color;
    sharedFontManager().setSelectedColor(color);
    Q_EMIT colorChanged(color);
}

} // namespace inkory
