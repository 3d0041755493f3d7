#include "platform/widgets/FontManager.h"

#include "platform/core/UserDefaults.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QRegularExpression>
#include <QStringList>

#include <chrono>
#include <memory>

namespace inkory
{

namespace
{

const QString fontSetting = QStringLiteral("TEXT_FONT");
const QString colorSetting = QStringLiteral("TEXT_COLOR");
const QString italic = QStringLiteral("italic");
const QString underline = QStringLiteral("underline");
const QString strikeOut = QStringLiteral("strike-out");
constexpr std::chrono::milliseconds writingPause(500);

bool isPossibleSize(double points)
{
    return points >= 1 && points <= 999; // false for what is no number
}

// The family, the size in points, the weight from 1 to 1000, then a word for each effect.
QStringList listFromFont(const QFont &font)
{
    // Not a name that stands for another family, such as "Sans Serif": families are what is looked for later.
    QStringList list{QFontInfo(font).family(), QString::number(font.pointSizeF()), QString::number(font.weight())};
    if (font.italic())
        list.append(italic);
    if (font.underline())
        list.append(underline);
    if (font.strikeOut())
        list.append(strikeOut);
    return list;
}

std::optional<QFont> fontFromList(const QStringList &list)
{
    if (list.size() < 3 || !QFontDatabase::hasFamily(list.at(0)))
        return {};
    const double size = list.at(1).toDouble();
    const int weight = list.at(2).toInt();
    if (!isPossibleSize(size) || weight < 1 || weight > 1000)
        return {};
    QFont font(QStringList(list.at(0)));
    font.setPointSizeF(size);
    font.setWeight(static_cast<QFont::Weight>(weight));
    font.setItalic(list.contains(italic));
    font.setUnderline(list.contains(underline));
    font.setStrikeOut(list.contains(strikeOut));
    return font;
}

// #rrggbb, and two more digits for the opacity where it is not full: Qt's own form has them first.
QString stringFromColor(const QColor &color)
{
    const QString argb = color.name(QColor::HexArgb);
    return color.alpha() == 255 ? color.name() : u'#' + argb.mid(3) + argb.mid(1, 2);
}

std::optional<QColor> colorFromString(const QString &string)
{
    static const QRegularExpression form(QStringLiteral("\\A#([0-9a-fA-F]{6})([0-9a-fA-F]{2})?\\z"));
    const QRegularExpressionMatch match = form.match(string);
    if (!match.hasMatch())
        return {};
    return QColor(u'#' + match.captured(2) + match.captured(1));
}

std::unique_ptr<FontManager> &shared()
{
    static std::unique_ptr<FontManager> manager;
    return manager;
}

} // namespace

FontManager::FontManager()
{
    m_writing.setSingleShot(true);
    m_writing.setInterval(writingPause);
    connect(&m_writing, &QTimer::timeout, this, &FontManager::write);
}

FontManager::~FontManager()
{
    if (m_writing.isActive())
        write();
}

std::optional<QFont> FontManager::selectedFont() const
{
    return fontFromList(UserDefaults::standard().stringList(fontSetting));
}

void FontManager::setSelectedFont(const QFont &font)
{
    const QStringList list = listFromFont(font);
    if (!isPossibleSize(font.pointSizeF()) || UserDefaults::standard().stringList(fontSetting) == list)
        return;
    UserDefaults::standard().setStringList(fontSetting, list);
    m_writing.start();
}

std::optional<QColor> FontManager::selectedColor() const
{
    return colorFromString(UserDefaults::standard().string(colorSetting));
}

void FontManager::setSelectedColor(const QColor &color)
{
    if (!color.isValid() || UserDefaults::standard().string(colorSetting) == stringFromColor(color))
        return;
    UserDefaults::standard().setString(colorSetting, stringFromColor(color));
    m_writing.start();
}

void FontManager::write()
{
    (void)UserDefaults::standard().synchronize(); // logs by itself; without it the next session begins as the last one
}

FontManager &sharedFontManager()
{
    if (!shared()) {
        shared() = std::make_unique<FontManager>();
        qAddPostRoutine([] { shared().reset(); }); // what waits is written while there is an application
    }
    return *shared();
}

} // namespace inkory
