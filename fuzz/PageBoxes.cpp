#include "Fuzzing.h"
#include "UnconnectedBus.h"
#include "platform/engine/QpdfStructure.h"

#include <QList>

#include <cmath>

#include <qpdf/QPDFObjectHandle.hh>

using namespace inkory;

namespace
{

constexpr double maxSide = 14'400;
constexpr double rounding = 1e-6;

std::optional<PageRect> boxFromText(const QByteArray &text)
{
    try {
        return boxFromObject(QPDFObjectHandle::parse(text.toStdString()));
    } catch (const std::exception &) {
        return std::nullopt; // no object at all
    }
}

void checkBox(const PageRect &box)
{
    fuzz::require(std::isfinite(box.x) && std::isfinite(box.y) && std::isfinite(box.width) && std::isfinite(box.height),
                  "boxes are finite");
    fuzz::require(!box.isEmpty(), "boxes have an area");
    fuzz::require(box.width <= maxSide && box.height <= maxSide, "boxes are at most 14,400 units a side");
}

/// What the engine says about a page has to be what the window takes.
void checkSending(const PageGeometry &geometry)
{
    const BusMessage message = fuzz::newMessage();
    fuzz::require(append(message.get(), Survey{{.pages = {geometry}}, {}}), "geometry can be sent");
    fuzz::seal(message.get());
    sd_bus_message_rewind(message.get(), 1);
    const auto survey = readSurvey(message.get());
    fuzz::require(survey && survey->structure.pages.size() == 1 && survey->structure.pages.front() == geometry,
                  "geometry survives being sent");
}

} // namespace

// The bytes are three lines: media box, crop box, rotation.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QList<QByteArray> lines = fuzz::bytesFromFuzzer(data, size).split('\n');
    const PageGeometry geometry =
        cleanGeometry(boxFromText(lines.value(0)), boxFromText(lines.value(1)), lines.value(2).toLongLong());
    const PageRect &media = geometry.mediaBox;
    const PageRect &crop = geometry.cropBox;
    checkBox(media);
    checkBox(crop);
    fuzz::require(crop.x >= media.x && crop.y >= media.y && crop.maxX() <= media.maxX() + rounding &&
                      crop.maxY() <= media.maxY() + rounding,
                  "the shown part lies on the sheet");
    fuzz::require(geometry.rotation >= 0 && geometry.rotation < 360 && geometry.rotation % 90 == 0,
                  "a rotation is one of four");
    fuzz::require(cleanGeometry(media, crop, geometry.rotation) == geometry, "what is clean stays as it is");
    checkSending(geometry);
    return 0;
}
