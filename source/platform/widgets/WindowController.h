#pragma once

#include <QObject>
#include <QString>
#include <QWidget>

#include <memory>

class QKeyEvent;

namespace inkory
{

class Document;

/// Runs one window, which is made from an interface description when it is first asked for. Qt ties such code to the
/// window's own class; here the window is plain and its controller outlives or precedes it. Owns its window.
class WindowController : public QObject
{
    Q_OBJECT

public:
    /// The name of the interface description; the window is not made yet.
    explicit WindowController(QString interfaceName, QObject *parent = nullptr);
    ~WindowController() override;

    /// The window; the first call makes it and then calls awakeFromNib() and windowDidLoad(). None if there is no such
    /// description.
    QWidget *window();
    bool isWindowLoaded() const { return m_window != nullptr; }

    /// Makes the window visible, raises and activates it.
    void showWindow();

    /// Closes the window without asking windowShouldClose(): windowWillClose() is called and the window is hidden. Does
    /// nothing when it is not loaded.
    void close();

    /// The document whose window this is; none for others. Not owned: the document owns its window controllers.
    Document *document() const { return m_document; }
    void setDocument(Document *document) { m_document = document; }

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    /// The outlets can be found now.
    virtual void awakeFromNib() {}
    virtual void windowDidLoad() {}
    /// The person closes the window (not: it was hidden by code). False keeps it open. After true, a document's window
    /// asks its document to close, which hides the window when the person agrees.
    virtual bool windowShouldClose() { return true; }
    /// The window is being closed, by the person or with its document.
    virtual void windowWillClose() {}
    /// A key that neither the focus widget nor the window took. False passes it on.
    virtual bool keyDown(QKeyEvent &) { return false; }

private:
    bool handleClose(QEvent &event);
    bool handleKeyPress(QKeyEvent &event);

    QString m_interfaceName;
    std::unique_ptr<QWidget> m_window;
    Document *m_document = nullptr;
};

} // namespace inkory
