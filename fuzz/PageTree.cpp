#include "platform/engine/PageTree.h"
#include "Fuzzing.h"

#include <QList>

#include <algorithm>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

using namespace inkory;

namespace
{

constexpr qsizetype maxObjects = 40;

/// Lines become the objects 3, 4, ... in this order.
std::shared_ptr<QPDF> documentFromLines(const QList<QByteArray> &lines)
{
    auto document = QPDF::create();
    document->setSuppressWarnings(true);
    document->emptyPDF();
    QList<QPDFObjGen> ids; // all are there before the first is read, so that lines can refer to later ones
    for (qsizetype i = 0; i < lines.size(); ++i)
        ids.append(document->makeIndirectObject(QPDFObjectHandle::newNull()).getObjGen());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const auto object = QPDFObjectHandle::parse(document.get(), lines[i].toStdString());
        if (!QPDFObjectHandle(object).isIndirect())
            document->replaceObject(ids[i], object);
    }
    document->getRoot().replaceKey("/Pages", document->getObjectByID(ids.first().getObj(), 0));
    return document;
}

struct Page
{
    QPDFObjGen id;
    PageGeometry geometry;

    bool operator==(const Page &) const = default;
};

std::vector<Page> valuesOf(const std::vector<QpdfPage> &pages)
{
    std::vector<Page> values;
    for (const QpdfPage &page : pages) {
        fuzz::require(page.object && page.object->isDictionary(), "pages are dictionaries");
        fuzz::require(!page.geometry.mediaBox.isEmpty() && !page.geometry.cropBox.isEmpty(), "pages have an area");
        values.push_back({page.object->getObjGen(), page.geometry});
    }
    return values;
}

void checkReversing(QPDF &document)
{
    const std::vector<QpdfPage> pages = readPages(document);
    if (pages.empty())
        return;
    std::vector<Page> expected = valuesOf(pages);
    std::reverse(expected.begin(), expected.end());
    setPages(document, {pages.rbegin(), pages.rend()});
    fuzz::require(valuesOf(readPages(document)) == expected, "pages that are put in another order stay the same");
}

} // namespace

// Each line is one object of a document, the first one its page tree's root.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QList<QByteArray> lines = fuzz::bytesFromFuzzer(data, size).split('\n');
    try {
        checkReversing(*documentFromLines(lines.first(std::min(lines.size(), maxObjects))));
    } catch (const std::exception &) {
        return 0; // a document that is refused
    }
    return 0;
}
