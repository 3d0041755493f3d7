#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

namespace inkory
{

/// A strip above the pages that tells something about the document and stands in nobody's way: it goes when the person
/// has read it and closes it. Hidden until there is something to tell.
class NoticeStrip : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeStrip(QWidget *parent = nullptr);

    /// Plain text. Shows the strip, and tells screen readers.
    void showNotice(const QString &text);

Q_SIGNALS:
    /// The person closed the strip; the pages get the keyboard back.
    void dismissed();

protected:
    void changeEvent(QEvent *event) override;

private:
    void applyIcons();

    QLabel *m_icon;
    QLabel *m_text;
    QToolButton *m_closeButton;
};

} // namespace inkory
