#include "platform/engine/PageStamping.h"

#include "platform/engine/ContentBalance.h"
#include "platform/engine/ImageStream.h"
#include "platform/engine/PageTree.h"
#include "platform/engine/TextPieces.h"

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

// Readers for the blind skip what is marked so, which tagged documents ask for.
bool isTagged(QPDF &document)
{
    QPDFObjectHandle marks = document.getRoot().getKey("/MarkInfo");
    QPDFObjectHandle marked = marks.isDictionary() ? marks.getKey("/Marked") : QPDFObjectHandle::newNull();
    return marked.isBool() && marked.getBoolValue();
}

std::string drawing(QPDF &document, const std::string &name, PagePoint origin)
{
    const std::string draw =
        "q 1 0 0 1 " + contentNumber(origin.x) + ' ' + contentNumber(origin.y) + " cm " + name + " Do Q\n";
    return isTagged(document) ? "/Artifact BMC\n" + draw + "EMC\n" : draw;
}

// Copies, because other pages may use the same dictionaries.
QPDFObjectHandle giveOwnResources(const QpdfPage &page)
{
    QPDFObjectHandle resources =
        page.resources->isDictionary() ? page.resources->shallowCopy() : QPDFObjectHandle::newDictionary();
    QPDFObjectHandle objects = resources.getKey("/XObject");
    resources.replaceKey("/XObject",
                         objects.isDictionary() ? objects.shallowCopy() : QPDFObjectHandle::newDictionary());
    page.object->replaceKey("/Resources", resources);
    return resources;
}

// Answers the name under which the page's content draws the form.
std::string addForm(QPDFObjectHandle resources, const std::string &prefix, const QPDFObjectHandle &form)
{
    int suffix = 1;
    const std::string name = resources.getUniqueResourceName(prefix, suffix);
    resources.getKey("/XObject").replaceKey(name, form);
    return name;
}

QPDFObjectHandle deflatedStream(QPDF &document, const std::string &bytes)
{
    QPDFObjectHandle stream = document.newStream();
    stream.replaceStreamData(deflated(bytes), QPDFObjectHandle::newName("/FlateDecode"), QPDFObjectHandle::newNull());
    return stream;
}

// The page's content as a form: whatever it leaves open ends with the form. Without a transparency group it draws the
// same as on the page itself.
QPDFObjectHandle contentForm(QPDF &document, const QpdfPage &page, const std::string &content)
{
    std::vector<QPDFObjectHandle> streams = contentStreams(*page.object);
    // A single one as it is stored: some viewers may decode more of a damaged one than we do.
    QPDFObjectHandle form = streams.size() == 1 ? streams.front().copyStream() : deflatedStream(document, content);
    QPDFObjectHandle dictionary = form.getDict();
    const PageRect box = page.geometry.mediaBox;
    dictionary.replaceKey("/Type", QPDFObjectHandle::newName("/XObject"));
    dictionary.replaceKey("/Subtype", QPDFObjectHandle::newName("/Form"));
    dictionary.replaceKey("/BBox", QPDFObjectHandle::newFromRectangle({box.x, box.y, box.maxX(), box.maxY()}));
    dictionary.replaceKey("/Resources",
                          page.resources->isDictionary() ? *page.resources : QPDFObjectHandle::newDictionary());
    return form;
}

// The page's content between a save and as many restores as bring back the state in which the page begins.
std::vector<QPDFObjectHandle> balancedContent(QPDF &document, const QpdfPage &page, const DecodedContent &content,
                                              const ContentBalance &balance)
{
    std::vector<QPDFObjectHandle> streams = contentStreams(*page.object);
    int addedSaves = 1;
    if (balance.unmatchedRestores > 0 && content.isComplete) {
        // Viewers ignore these restores. Behind a save of ours they would undo what the page has set up.
        streams = {deflatedStream(document, withoutUnmatchedRestores(content.bytes))};
    } else {
        addedSaves += std::min(balance.unmatchedRestores, maxAddedSaves);
    }
    streams.insert(streams.begin(), document.newStream(repeated("q\n", addedSaves)));
    streams.push_back(document.newStream('\n' + std::string(balance.isTextOpen ? "ET\n" : "") +
                                         repeated("Q ", 1 + balance.openSaves) + '\n'));
    return streams;
}

} // namespace

void stampPage(QPDF &document, const QpdfPage &page, const QPDFObjectHandle &form, PagePoint origin)
{
    const DecodedContent content = decodedContent(*page.object);
    const ContentBalance balance = contentBalance(content.bytes);
    const QPDFObjectHandle resources = giveOwnResources(page);
    const std::string draw = drawing(document, addForm(resources, "/Stamp", form), origin);

    std::vector<QPDFObjectHandle> streams;
    const bool isSound = content.isComplete && balance.isSound;
    if (!isSound && (content.isComplete || contentStreams(*page.object).size() == 1)) {
        // What follows such content could be swallowed by it, as part of a string for instance.
        const std::string name = addForm(resources, "/Content", contentForm(document, page, content.bytes));
        streams.push_back(document.newStream("q " + name + " Do Q\n"));
    } else {
        streams = balancedContent(document, page, content, balance);
    }
    streams.push_back(document.newStream(draw));
    page.object->replaceKey("/Contents", QPDFObjectHandle::newArray(streams));
}

} // namespace inkory
