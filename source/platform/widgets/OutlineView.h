#pragma once

#include "platform/pdf/PageSource.h"

#include <QPointer>
#include <QTreeView>

namespace inkory
{

class OutlineModel;
class PDFDocument;
class PDFView;

/// The outline of a PDFView's document; a click or Return goes to where an item leads. Read once, when the document
/// shows its first page and its geometry is settled.
class OutlineView : public QTreeView
{
    Q_OBJECT

public:
    explicit OutlineView(QWidget *parent = nullptr);
    ~OutlineView() override;

    /// Binds the tree to the view, which has its document; not owned.
    void setPDFView(PDFView *view);

    /// Letters are not for this tree: they choose tools.
    void keyboardSearch(const QString &search) override;

Q_SIGNALS:
    /// The document has an outline, and it is shown here now.
    void filled();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    PDFDocument *document() const;
    void readWhenQuiet();
    void read();
    void showItems(std::vector<OutlineItem> items);
    void follow(const QModelIndex &index);

    QPointer<PDFView> m_view;
    DrawToken m_token = 0;
    OutlineModel *m_model = nullptr; // none until it has been read
};

} // namespace inkory
