#pragma once

#include <QObject>
#include <QTimer>

class QSplitter;
class QTabWidget;

namespace inkory
{

/// The width of the side panel, in device-independent pixels: one for the thumbnails, which need little, and one for
/// the contents. The person's choice is remembered in the settings. Owned by the window that has these widgets.
class SidePanelWidth : public QObject
{
    Q_OBJECT

public:
    /// Takes care of the panel, which is the splitter's first widget and has the thumbnails in its first tab.
    SidePanelWidth(QSplitter *splitter, QTabWidget *panel, QObject *parent);
    ~SidePanelWidth() override;

private:
    QString setting() const;
    void apply();
    void keep();
    void write();

    QSplitter *m_splitter;
    QTabWidget *m_panel;
    QTimer m_writing; // until the person has stopped dragging
};

} // namespace inkory
