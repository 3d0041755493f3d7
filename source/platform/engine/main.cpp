// inkory-engine: the helper process in which files of strangers are read. Started by the window, with the socket to it
// as descriptor 3; the argument says what for: documents or images.

#include "platform/core/Log.h"
#include "platform/engine/Containment.h"
#include "platform/engine/EngineService.h"
#include "platform/engine/ImageDecoder.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace inkory;

namespace
{

constexpr int socketToWindow = 3;

// A page may keep this process busy for ever, and it must not outlive the window. The thread that started it waits for
// its end, so that this means the window's end.
bool endWithTheWindow()
{
    pollfd socket{socketToWindow, 0, 0};
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && poll(&socket, 1, 0) >= 0 && (socket.revents & POLLHUP) == 0;
}

bool lockUp(const QStringList &readablePaths)
{
    const Containment::Outcome outcome = Containment{readablePaths}.apply();
    if (!outcome.missing.isEmpty())
        logLine(outcome.missing.join(QStringLiteral("; ")));
    if (!outcome.isLocked)
        logLine(QStringLiteral("the helper process could not lock itself up and ends"));
    return outcome.isLocked;
}

} // namespace

int main(int argc, char **argv)
{
    struct stat status = {};
    const bool isForImages = argc == 2 && std::strcmp(argv[1], "images") == 0;
    const bool isForDocuments = argc == 2 && std::strcmp(argv[1], "documents") == 0;
    if ((!isForImages && !isForDocuments) || fstat(socketToWindow, &status) != 0 || !S_ISSOCK(status.st_mode)) {
        std::fputs("inkory-engine is a part of Inkory and of no use by itself.\n", stderr);
        return EXIT_FAILURE;
    }
    if (!endWithTheWindow())
        return EXIT_FAILURE;
    const auto lockForImages = [] {
        ImageDecoder::prepare();
        return lockUp({});
    };
    const auto lockForDocuments = [] { return lockUp(readablePathsForDrawing()); };
    const bool wasInOrder = isForImages ? EngineService::serve(socketToWindow, lockForImages)
                                        : EngineService::serve(socketToWindow, lockForDocuments);
    // Nothing is worth tidying up: what was opened here is nobody's business any more.
    _exit(wasInOrder ? EXIT_SUCCESS : EXIT_FAILURE);
}
