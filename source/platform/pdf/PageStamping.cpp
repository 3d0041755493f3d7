#include "platform/pdf/PageStamping.h"

#include "platform/pdf/ContentBalance.h"
#include "platform/pdf/ImageStream.h"
#include "platform/pdf/PageTree.h"

#include <QByteArray>

#include <algorithm>
#include <string>
#include <vector>

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

namespace inkory
{

namespace
{

// Each saved state costs a viewer memory.
constexpr int maxAddedSaves = 1000;

std::string repeated(const char *text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string number(double value)
{
    return QByteArray::number(value, 'f', 4).toStdString();
}

// Readers for the blind skip what is marked so, which tagged documents ask for.
bool isTagged(QPDF &document)
{
    QPDFObjectHandle marks = document.getRoot().getKey("/MarkInfo");
    QPDFObjectHandle marked = marks.isDictionary() ? marks.getKey("/Marked") : QPDFObjectHandle::newNull();
    return marked.isBool() && marked.getBoolValue();
}

std::string drawing(QPDF &document, const std::string &name, PagePoint origin)
{
    const std::string draw = "q 1 0 0 1 " + number(origin.x) + ' ' + number(origin.y) + " cm " + name + " Do Q\n";
    return isTagged(document) ? "/Artifact BMC\n" + draw + "EMC\n" : draw;
}

// Answers the name under which the page's content draws the form.
std::string addToResources(const QpdfPage &page, const QPDFObjectHandle &form)
{
    // Copies, because other pages may use the same dictionaries.
    QPDFObjectHandle resources =
        page.resources->isDictionary() ? page.resources->shallowCopy() : QPDFObjectHandle::newDictionary();
    QPDFObjectHandle objects = resources.getKey("/XObject");
    objects = objects.isDictionary() ? objects.shallowCopy() : QPDFObjectHandle::newDictionary();
    resources.replaceKey("/XObject", objects);
    int suffix = 1;
    const std::string name = resources.getUniqueResourceName("/Stamp", suffix);
    objects.replaceKey(name, form);
    page.object->replaceKey("/Resources", resources);
    return name;
}

} // namespace

void stampPage(QPDF &document, const QpdfPage &page, const QPDFObjectHandle &form, PagePoint origin)
{
    const DecodedContent content = decodedContent(*page.object);
    const ContentBalance balance = contentBalance(content.bytes);
    const std::string draw = drawing(document, addToResources(page, form), origin);

    std::vector<QPDFObjectHandle> streams = contentStreams(*page.object);
    int addedSaves = 1;
    if (balance.unmatchedRestores > 0 && content.isComplete) {
        // Viewers ignore these restores. Behind a save of ours they would undo what the page has set up.
        QPDFObjectHandle stream = document.newStream();
        stream.replaceStreamData(deflated(withoutUnmatchedRestores(content.bytes)),
                                 QPDFObjectHandle::newName("/FlateDecode"), QPDFObjectHandle::newNull());
        streams = {stream};
    } else {
        addedSaves += std::min(balance.unmatchedRestores, maxAddedSaves);
    }
    const std::string end =
        '\n' + std::string(balance.isTextOpen ? "ET\n" : "") + repeated("Q ", 1 + balance.openSaves) + '\n';
    streams.insert(streams.begin(), document.newStream(repeated("q\n", addedSaves)));
    streams.push_back(document.newStream(end + draw));
    page.object->replaceKey("/Contents", QPDFObjectHandle::newArray(streams));
}

} // namespace inkory
