#pragma once

#include <QTimer>
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

    /// Shows the document's present state. Called again when it changes; not owned. The name is for showing.
    void showState(const PDFDocument &document, const QString &documentName);

Q_SIGNALS:
    void passwordEntered(const QString &password);
    /// The person does not want to wait until the document is open.
    void openingCancelled();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void arrange();
    void makePasswordRow();
    void enterPassword();
    void sayThatItTakesLong();
    void showMessage(const QString &message);
    void showTitle();

    QLabel *m_title;
    QLabel *m_message;
    QWidget *m_passwordRow;
    QLineEdit *m_passwordField;
    QPushButton *m_unlockButton;
    QPushButton *m_cancelButton;
    QTimer m_patience; // runs while the document is being opened
    QString m_titleText;
    QString m_documentName;
};

} // namespace inkory
