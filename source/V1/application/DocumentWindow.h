#pragma once

#include <QMainWindow>

#include <memory>
#include <vector>

class StampViewToolbar;

namespace Ui
{
class PDFDocumentWindow;
}

namespace inkory
{

class OutlineView;
class SegmentedControl;

/// The window of a document as a layout: its menus, tool bar, page view, side panel and status bar, without behaviour.
/// The interface description "PDFDocumentWindow"; its controller finds the parts by their names.
class DocumentWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit DocumentWindow(QWidget *parent = nullptr);
    ~DocumentWindow() override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void makeToolBar();
    void makeStampToolbar();
    void addSignatureButton();
    void addToolBarSpace();
    SegmentedControl *makeSegments(const QString &name);
    void applyIcons();

    std::unique_ptr<Ui::PDFDocumentWindow> m_ui;
    StampViewToolbar *m_stampToolbar = nullptr;
    OutlineView *m_outlineView = nullptr; // in no tab until its document has an outline
};

/// Makes "PDFDocumentWindow" loadable by its name.
void registerDocumentWindowDescription();

} // namespace inkory
