#include "support/PdfSamples.h"

#include "support/Tools.h"

#include <algorithm>

namespace inkory::test
{

namespace
{

/// Collects objects and writes them with a cross-reference table that is right.
class FileMaker
{
public:
    /// The number of the new object, from 1.
    int add(const QByteArray &body)
    {
        m_bodies.push_back(body);
        return static_cast<int>(m_bodies.size());
    }

    int addStream(const QByteArray &data)
    {
        return add("<< /Length " + QByteArray::number(data.size()) + " >>\nstream\n" + data + "\nendstream");
    }

    void replace(int number, const QByteArray &body) { m_bodies.at(static_cast<std::size_t>(number) - 1) = body; }

    /// Object 1 has to be the catalogue.
    QByteArray file() const
    {
        QByteArray bytes = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
        QByteArray table = "0000000000 65535 f \n";
        int number = 0;
        for (const QByteArray &body : m_bodies) {
            table += QByteArray::number(bytes.size()).rightJustified(10, '0') + " 00000 n \n";
            bytes += QByteArray::number(++number) + " 0 obj\n" + body + "\nendobj\n";
        }
        const QByteArray start = QByteArray::number(bytes.size());
        const QByteArray size = QByteArray::number(number + 1);
        return bytes + "xref\n0 " + size + "\n" + table + "trailer\n<< /Size " + size + " /Root 1 0 R >>\nstartxref\n" +
               start + "\n%%EOF\n";
    }

private:
    std::vector<QByteArray> m_bodies;
};

QByteArray reference(int number)
{
    return QByteArray::number(number) + " 0 R";
}

QByteArray entry(const QByteArray &name, const QByteArray &value)
{
    return value.isEmpty() ? QByteArray() : " " + name + " " + value;
}

QByteArray boxEntry(const QByteArray &name, const QByteArray &corners)
{
    return corners.isEmpty() ? QByteArray() : " " + name + " [" + corners + "]";
}

/// A maker with the catalogue, a root without children and the font, as objects 1 to 3.
FileMaker beginFile()
{
    FileMaker maker;
    maker.add("<< /Type /Catalog /Pages 2 0 R >>");
    maker.add("<< /Type /Pages /Kids [] /Count 0 >>");
    maker.add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
    return maker;
}

QByteArray endFile(FileMaker &maker, const QList<QByteArray> &kids, const QByteArray &treeEntries = {})
{
    maker.replace(2, "<< /Type /Pages /Kids [" + kids.join(' ') + "] /Count " + QByteArray::number(kids.size()) +
                         treeEntries + " >>");
    return maker.file();
}

/// Text and a red square of 100 points at (100, 500): seen on the page, found in the saved file.
QByteArray usualContent(const QByteArray &text)
{
    return textContent(text) + rectangleContent(100, 500, 100, 100, "1 0 0");
}

PageSpec usualPage(const QByteArray &text = "Sample")
{
    return {.contents = {usualContent(text)}};
}

PageSpec withBoxes(const QByteArray &mediaBox, const QByteArray &cropBox = {})
{
    return {.mediaBox = mediaBox, .cropBox = cropBox, .contents = {usualContent("Sample")}};
}

Sample sample(const char *name, const PageSpec &page, const QSizeF &shownBox = {612, 792}, int rotation = 0)
{
    return {QString::fromLatin1(name), makePdf({page}), Opens::Yes, 1, shownBox, rotation};
}

Sample brokenSample(const char *name, const QByteArray &bytes)
{
    return {QString::fromLatin1(name), bytes, Opens::No, 0, {0, 0}};
}

void addRotations(std::vector<Sample> &samples)
{
    const struct
    {
        const char *name;
        const char *written;
        int meant;
    } variants[] = {
        {"rotate-180", "180", 180}, {"rotate-minus-90", "-90", 270}, {"rotate-450", "450", 90}, {"rotate-45", "45", 0}};
    for (const auto &variant : variants) {
        PageSpec page = usualPage();
        page.rotate = variant.written;
        samples.push_back(sample(variant.name, page, {612, 792}, variant.meant));
    }
    samples.back().popplerAgrees = false; // pdfinfo reports 45
}

void addBoxes(std::vector<Sample> &samples)
{
    samples.push_back(sample("crop-offset", withBoxes("0 0 612 792", "50 150 500 700"), {450, 550}));
    samples.push_back(sample("crop-outside-media", withBoxes("0 0 300 650", "500 700 700 900"), {300, 650}));
    samples.back().popplerAgrees = false; // an empty page to it
    samples.push_back(sample("crop-larger-than-media", withBoxes("0 0 400 650", "-50 -50 700 900"), {400, 650}));
    samples.push_back(sample("media-with-negative-origin", withBoxes("-100 -200 400 720"), {500, 920}));
    samples.push_back(sample("swapped-boxes", withBoxes("612 792 0 0", "500 700 50 150"), {450, 550}));
    samples.push_back(sample("zero-box", withBoxes("0 0 0 0")));
    samples.push_back(sample("fractional-box", withBoxes("0 0 595.276 841.89"), {595.276, 841.89}));
    samples.push_back(sample("huge-page", withBoxes("0 0 14400 14400"), {14400, 14400}));
    samples.push_back(sample("user-unit", PageSpec{.contents = {usualContent("Sample")}, .more = " /UserUnit 2"}));

    PageSpec bare = usualPage();
    bare.mediaBox = {};
    bare.resources = {};
    const QByteArray inherited =
        " /MediaBox [0 0 500 700] /CropBox [20 30 480 680] /Rotate 270 /Resources << /Font << /F1 3 0 R >> >>";
    samples.push_back(
        {QStringLiteral("inherited-entries"), makePdf({bare, bare}, inherited), Opens::Yes, 2, {460, 650}, 270});
}

void addContents(std::vector<Sample> &samples)
{
    const QByteArray square = rectangleContent(100, 500, 100, 100, "1 0 0");
    samples.push_back(sample("no-resources", {.contents = {square}, .resources = {}}));

    QByteArray brokenStream = makePdf({usualPage()});
    brokenStream.replace("<< /Length ", "<< /Filter /FlateDecode /Length ");
    samples.push_back({QStringLiteral("undecodable-content"), rewriteWithQpdf(brokenStream, {})});
}

void addSharing(std::vector<Sample> &samples)
{
    FileMaker shared = beginFile();
    const int contents = shared.addStream(usualContent("Shared"));
    const int resources = shared.add("<< /Font << /F1 3 0 R >> >>");
    const QByteArray body = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents " + reference(contents) +
                            " /Resources " + reference(resources) + " >>";
    const QByteArray first = reference(shared.add(body));
    const QByteArray second = reference(shared.add(body));
    samples.push_back(
        {QStringLiteral("shared-resources-and-contents"), endFile(shared, {first, second}), Opens::Yes, 2});
    samples.push_back({QStringLiteral("same-page-twice"), endFile(shared, {first, first}), Opens::Yes, 2});
}

void addEncodings(std::vector<Sample> &samples)
{
    const QByteArray plain = threePages();
    const auto rewritten = [&](const char *name, const QStringList &options) {
        samples.push_back({QString::fromLatin1(name), rewriteWithQpdf(plain, options), Opens::Yes, 3});
    };
    rewritten("object-streams", {QStringLiteral("--object-streams=generate")});
    rewritten("linearized", {QStringLiteral("--linearize")});
    const QString aes = QStringLiteral("256");
    rewritten("encrypted-without-password",
              {QStringLiteral("--encrypt"), QString(), QStringLiteral("owner"), aes, QStringLiteral("--")});
    rewritten("protected-against-changes", {QStringLiteral("--encrypt"), QString(), QStringLiteral("owner"), aes,
                                            QStringLiteral("--modify=none"), QStringLiteral("--")});
    rewritten("encrypted-with-password", {QStringLiteral("--encrypt"), QStringLiteral("secret"),
                                          QStringLiteral("owner"), aes, QStringLiteral("--")});
    samples.back().opens = Opens::WithPassword;
    samples.back().password = QStringLiteral("secret");
}

void addDamage(std::vector<Sample> &samples)
{
    const QByteArray plain = threePages();
    const QByteArray noTable = plain.left(plain.lastIndexOf("xref\n0 ")) + plain.mid(plain.lastIndexOf("trailer"));
    samples.push_back({QStringLiteral("no-cross-references"), noTable, Opens::Yes, 3});
    samples.push_back({QStringLiteral("garbage-in-front"), QByteArray(300, 'x') + '\n' + plain, Opens::Yes, 3});
    samples.push_back({QStringLiteral("garbage-at-end"), plain + QByteArray(300, '\0'), Opens::Yes, 3});

    samples.push_back(brokenSample("truncated", plain.left(200)));
    samples.push_back(brokenSample("empty", {}));

    FileMaker loop = beginFile();
    samples.push_back(brokenSample("page-tree-loop", endFile(loop, {"2 0 R"})));
    samples.back().popplerAgrees = false; // it believes the number that is written there
}

std::vector<Sample> makeTroubleSamples()
{
    std::vector<Sample> samples;
    samples.push_back(sample("plain", usualPage()));
    addRotations(samples);
    addBoxes(samples);
    addContents(samples);
    addSharing(samples);
    addEncodings(samples);
    addDamage(samples);
    return samples;
}

} // namespace

QByteArray makePdf(const std::vector<PageSpec> &pages, const QByteArray &treeEntries)
{
    return makePdf(pages, treeEntries, {}, {});
}

QByteArray makePdf(const std::vector<PageSpec> &pages, const QByteArray &treeEntries,
                   const QByteArray &catalogueEntries, const std::vector<QByteArray> &furtherObjects)
{
    FileMaker maker = beginFile();
    maker.replace(1, "<< /Type /Catalog /Pages 2 0 R " + catalogueEntries + " >>");
    QList<QByteArray> kids;
    for (const PageSpec &page : pages) {
        QList<QByteArray> contents;
        for (const QByteArray &content : page.contents)
            contents.append(reference(maker.addStream(content)));
        QByteArray body = "<< /Type /Page /Parent 2 0 R" + boxEntry("/MediaBox", page.mediaBox) +
                          boxEntry("/CropBox", page.cropBox) + entry("/Rotate", page.rotate) +
                          entry("/Resources", page.resources) + page.more;
        if (contents.size() == 1)
            body += " /Contents " + contents.first();
        else if (!contents.isEmpty())
            body += " /Contents [" + contents.join(' ') + "]";
        kids.append(reference(maker.add(body + " >>")));
    }
    for (const QByteArray &object : furtherObjects)
        maker.add(object);
    return endFile(maker, kids, treeEntries);
}

QByteArray linkAnnotation(const QByteArray &rectangle, const QByteArray &entries)
{
    return "<< /Type /Annot /Subtype /Link /Rect [" + rectangle + "] " + entries + " >>";
}

QByteArray fontOf(const QByteArray &glyphNames)
{
    return "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /FirstChar 97 /LastChar 122 /Widths [" +
           QByteArray("500 ").repeated(26) + "] /Encoding << /Differences [97 " + glyphNames + "] >> >>";
}

QByteArray textContent(const QByteArray &text, double x, double y, double size)
{
    return "BT /F1 " + QByteArray::number(size) + " Tf " + QByteArray::number(x) + ' ' + QByteArray::number(y) +
           " Td (" + text + ") Tj ET\n";
}

QByteArray rectangleContent(double x, double y, double width, double height, const QByteArray &color)
{
    return "q " + color + " rg " + QByteArray::number(x) + ' ' + QByteArray::number(y) + ' ' +
           QByteArray::number(width) + ' ' + QByteArray::number(height) + " re f Q\n";
}

QByteArray textPages(const std::vector<QByteArray> &texts)
{
    std::vector<PageSpec> pages;
    pages.reserve(texts.size());
    for (const QByteArray &text : texts)
        pages.push_back({.contents = {textContent(text)}});
    return makePdf(pages);
}

QByteArray manyPages(int count)
{
    std::vector<QByteArray> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int number = 1; number <= count; ++number)
        texts.push_back("Page " + QByteArray::number(number));
    return textPages(texts);
}

QByteArray threePages()
{
    return makePdf({usualPage("First page"), usualPage("Second page"), usualPage("Third page")});
}

QByteArray rewriteWithQpdf(const QByteArray &file, const QStringList &options)
{
    const QTemporaryDir folder;
    const QString input = writeFile(folder.path(), QStringLiteral("in.pdf"), file);
    const QString output = folder.filePath(QStringLiteral("out.pdf"));
    const ToolOutcome outcome = runTool(QStringLiteral("qpdf"), options + QStringList{input, output});
    // 3: it worked, with warnings about the input
    EXPECT_TRUE(outcome.exitCode == 0 || outcome.exitCode == 3) << outcome.errors.toStdString();
    return readFile(output);
}

void PrintTo(const Sample &sample, std::ostream *stream)
{
    *stream << sample.name.toStdString();
}

const std::vector<Sample> &troubleSamples()
{
    static const std::vector<Sample> samples = makeTroubleSamples();
    return samples;
}

Sample troubleSample(const QString &name)
{
    const std::vector<Sample> &all = troubleSamples();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Sample &each) { return each.name == name; });
    if (found != all.end())
        return *found;
    ADD_FAILURE() << "no sample is called " << name.toStdString();
    return {};
}

} // namespace inkory::test
