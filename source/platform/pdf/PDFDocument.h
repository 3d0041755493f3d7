#pragma once

#include "platform/core/Result.h"
#include "platform/core/SecretBytes.h"
#include "platform/pdf/PDFPage.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/PrintInfo.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace inkory
{

class DocumentFile;
class PrintOperation;
struct Survey;
struct SurveyOutcome;

/// A PDF file that is open: its pages, its state, and its serialisation. Exists from the moment its file is handed over
/// and has no pages until it is open. The drawing library shows the first page at once; the writing library reads the
/// geometry of all pages in the background, and only where the two agree may the document be changed and saved. Main
/// thread only; the work is done on workers.
class PDFDocument : public QObject
{
    Q_OBJECT

public:
    enum class State { Opening, Locked, Open, Failed };

    explicit PDFDocument(QObject *parent = nullptr);
    ~PDFDocument() override;

    /// Starts opening the file. The state is Opening or (a file that cannot even be read) Failed on return.
    void initWithURL(const QString &path);

    /// Tries a password, in state Locked only; ends in Open or in Locked again, with a message. At most 127 bytes are
    /// used.
    void unlock(const QString &password);

    State state() const { return m_state; }
    /// What the person is told in the states Locked and Failed.
    QString message() const { return m_message; }

    /// Whether the geometry of every page is confirmed by the writing library, or found not to be: until then no page
    /// takes stamps and nothing can be saved.
    bool isGeometrySettled() const { return m_geometrySettled; }
    /// Whether the document may be changed and saved. False until the geometry is settled.
    bool canSave() const;
    /// Why not, for the person; empty if it can be saved or is not settled yet.
    QString readOnlyReason() const { return m_readOnlyReason; }
    /// Whether the file was damaged and could be opened only by repairing it. Known once the geometry is settled.
    bool wasRepaired() const { return m_wasRepaired; }

    int pageCount() const { return static_cast<int>(m_pages.size()); }
    /// None for an index outside 0 to pageCount() - 1.
    PDFPage *pageAtIndex(int index) const;
    /// -1 for a page that is not in the document.
    int indexForPage(const PDFPage *page) const;

    /// Puts a page at the index. The document takes the page over, so a subclass may give it a new class on the way in.
    virtual void insertPage(std::unique_ptr<PDFPage> page, int index);
    /// Views are to be laid out anew by whoever has finished reordering.
    void exchangePages(int firstIndex, int secondIndex);

    /// Whether the page draws something over its content, so that it needs an overlay in a saved file.
    virtual bool pageHasOverlay(const PDFPage &page) const;

    /// Prints this document so, with this scaling and rotation instead of the information's own, once it is started.
    virtual std::unique_ptr<PrintOperation> printOperationForPrintInfo(const PrintInfo &info, PageScaling scalingMode,
                                                                       AutoRotate autoRotate);

    /// Draws pages of this document; none until the file is being opened.
    PageSource *pageSource() const { return m_pageSource.get(); }

    /// Takes all that a save needs, now; the function that it answers makes the file's bytes from that and may be
    /// called once, on any thread, as long as the document lives or not.
    std::function<Result<QByteArray>()> snapshotForWriting();

    /// The file's bytes with all that is drawn over its pages; blocks until they are made. Empty (with a log line)
    /// where the document has no pages or cannot be saved.
    QByteArray dataRepresentation();

Q_SIGNALS:
    /// state(), message() or the pages changed as a whole.
    void stateChanged();
    /// Boxes or order of pages changed; views lay out anew.
    void layoutChanged();
    /// isGeometrySettled() became true.
    void geometrySettled();

protected:
    /// Makes a page object of the class that this document's pages have.
    virtual std::unique_ptr<PDFPage> makePage(const PageGeometry &geometry, int sourceIndex) const;

private:
    void numberPages();
    void openSource();
    void sourceOpened(const OpenOutcome &outcome);
    void makePages(int count, QSizeF firstPageSize);
    void startSurvey();
    void finishSurvey(const SurveyOutcome &outcome);
    void compareStructures(const Survey &survey);
    void layOutAsDrawn(const std::vector<QSizeF> &drawnSizes);
    void settleGeometry(const QString &readOnlyReason);
    void fail(const QString &message);

    std::shared_ptr<DocumentFile> m_file;
    std::unique_ptr<PageSource> m_pageSource;
    std::vector<std::unique_ptr<PDFPage>> m_pages;
    State m_state = State::Opening;
    QString m_message;
    SecretBytes m_password;
    QString m_readOnlyReason;
    bool m_copyIsDecided = false; // made, or not to be had
    QString m_noCopyReason;
    bool m_isSurveying = false;
    std::shared_ptr<std::atomic<bool>> m_surveyGivenUp = std::make_shared<std::atomic<bool>>(false);
    bool m_wasRepaired = false;
    bool m_geometrySettled = false;
};

} // namespace inkory
