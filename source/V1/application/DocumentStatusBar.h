#pragma once

#include <QStatusBar>
#include <QTimer>

class QLabel;
class QSpinBox;

namespace inkory
{

/// The lower edge of a document window: one inline message at the left, "page 3 of 12" with a field to jump at the
/// right.
class DocumentStatusBar : public QStatusBar
{
    Q_OBJECT

public:
    enum class Stay { AWhile, UntilReplaced };

    explicit DocumentStatusBar(QWidget *parent = nullptr);

    /// Plain text; empty takes the message away. What was shown for a while gives way to what stays until replaced.
    void showInlineMessage(const QString &text, Stay stay);
    QString inlineMessage() const;

    /// Pages count from 1; without pages (a count of 0) the field is hidden.
    void showPage(int page, int pageCount);
    void focusPageField();

Q_SIGNALS:
    /// From 1.
    void pageEntered(int page);
    /// The person is done with the field; the pages get the keyboard back.
    void pageFieldLeft();

private:
    QLabel *m_message;
    QWidget *m_pageRow;
    QSpinBox *m_pageField;
    QLabel *m_pageCount;
    QTimer m_messageTimer;
    QString m_lastingMessage;
};

} // namespace inkory
