// Grabs some frames, three unless the first argument gives another number, and prints their
// statistics.
#include <kvoimage.h>
#include <qorsdk.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

static QorError PrintFrames(QorCamera* camera, int count)
{
    std::vector<unsigned char> pixels(static_cast<size_t>(qorWidth(camera)) * qorHeight(camera));
    for (int frame = 0; frame < count; ++frame) {
        const QorError error = qorGrab(camera, pixels.data(), pixels.size());
        if (error != QOR_OK)
            return error;
        const KvoStatistics statistics = kvoStatistics(pixels.data(), pixels.size());
        std::printf("Frame %d: minimum %d, maximum %d, mean %.2f\n", frame, statistics.minimum,
                    statistics.maximum, statistics.mean);
    }
    return QOR_OK;
}

int main(int argc, char* argv[])
{
    QorCamera* camera = nullptr;
    QorError error = qorOpen(0, &camera);
    if (error == QOR_OK)
        error = PrintFrames(camera, argc > 1 ? std::atoi(argv[1]) : 3);
    qorClose(camera);

    if (error != QOR_OK) {
        std::fprintf(stderr, "FrameStatistics: %s\n", qorErrorText(error));
        return 1;
    }
}
