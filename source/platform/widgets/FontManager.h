#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QTimer>

#include <optional>

namespace inkory
{

/// The font and the colour in which a person wrote last, in any window, kept in the settings from one session to the
/// next. Main thread only.
class FontManager : public QObject
{
    Q_OBJECT

public:
    FontManager();
    ~FontManager() override;

    /// The font last chosen or shown: family, size, weight, italic, underline, strike-out. None where nothing was
    /// chosen yet, where what the settings hold makes no sense, or where the family is not there any more.
    std::optional<QFont> selectedFont() const;
    /// Sizes out of 1…999 points are ignored.
    void setSelectedFont(const QFont &font);

    /// The colour last chosen or shown; none likewise.
    std::optional<QColor> selectedColor() const;
    /// Invalid colours are ignored.
    void setSelectedColor(const QColor &color);

private:
    void write();

    QTimer m_writing; // following the cursor through a text must not write a file at each step
};

/// The program's one; ends with the application object.
FontManager &sharedFontManager();

} // namespace inkory
