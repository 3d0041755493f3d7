#include "V1/application/SidePanelWidth.h"

#include "platform/core/UserDefaults.h"

#include <QSplitter>
#include <QTabWidget>

#include <algorithm>
#include <chrono>

namespace inkory
{

namespace
{

constexpr int least = 150;
constexpr int most = 800;
constexpr int usualForThumbnails = 170;
constexpr int usualForContents = 260;
constexpr std::chrono::milliseconds writingPause(500);

} // namespace

SidePanelWidth::SidePanelWidth(QSplitter *splitter, QTabWidget *panel, QObject *parent)
    : QObject(parent), m_splitter(splitter), m_panel(panel)
{
    panel->setMinimumWidth(least);
    splitter->setStretchFactor(1, 1);
    m_writing.setSingleShot(true);
    m_writing.setInterval(writingPause);
    connect(splitter, &QSplitter::splitterMoved, this, &SidePanelWidth::keep);
    connect(panel, &QTabWidget::currentChanged, this, &SidePanelWidth::apply);
    connect(&m_writing, &QTimer::timeout, this, &SidePanelWidth::write);
    apply();
}

SidePanelWidth::~SidePanelWidth()
{
    if (m_writing.isActive())
        write();
}

QString SidePanelWidth::setting() const
{
    return m_panel->currentIndex() <= 0 ? QStringLiteral("ThumbnailsWidth") : QStringLiteral("ContentsWidth");
}

void SidePanelWidth::apply()
{
    const int usual = m_panel->currentIndex() <= 0 ? usualForThumbnails : usualForContents;
    const double kept = UserDefaults::standard().number(setting());
    const int width = kept > 0 ? static_cast<int>(std::clamp<double>(kept, least, most)) : usual;
    const int all = std::max(m_splitter->width(), m_splitter->window()->width());
    m_splitter->setSizes({width, all - width});
}

void SidePanelWidth::keep()
{
    UserDefaults::standard().setNumber(setting(), m_splitter->sizes().constFirst());
    m_writing.start();
}

void SidePanelWidth::write()
{
    (void)UserDefaults::standard().synchronize(); // logs by itself; without it the width is the usual one next time
}

} // namespace inkory
