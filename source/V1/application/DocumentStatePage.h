#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace inkory
{

class PDFDocument;

/// What the page area of a document window shows while there are no pages: that the document is being opened, the
/// question for its password, or why it cannot be shown.
class DocumentStatePage : public QWidget
{
    Q_OBJECT

public:
    explicit DocumentStatePage(QWidget *parent = nullptr);

    /// Shows the document's present state. Called again when it changes; not owned.
    void showState(const PDFDocument &document, const QString &fileName);

Q_SIGNALS:
    void passwordEntered(const QString &password);

private:
    void enterPassword();

    QLabel *m_title;
    QLabel *m_message;
    QWidget *m_passwordRow;
    QLineEdit *m_passwordField;
    QPushButton *m_unlockButton;
};

} // namespace inkory
