// Saves one frame to the file given as the first argument, snapshot.pgm unless given.
#include <qorsdk.h>

#include <cstdio>
#include <vector>

static QorError SaveFrame(QorCamera* camera, const char* path)
{
    std::vector<unsigned char> pixels(static_cast<size_t>(qorWidth(camera)) * qorHeight(camera));
    const QorError error = qorGrab(camera, pixels.data(), pixels.size());
    return error == QOR_OK ? qorSave(camera, path) : error;
}

int main(int argc, char* argv[])
{
    const char* path = argc > 1 ? argv[1] : "snapshot.pgm";

    QorCamera* camera = nullptr;
    QorError error = qorOpen(0, &camera);
    if (error == QOR_OK)
        error = SaveFrame(camera, path);
    qorClose(camera);

    if (error != QOR_OK) {
        std::fprintf(stderr, "%s: %s\n", path, qorErrorText(error));
        return 1;
    }
    std::printf("%s written\n", path);
}
