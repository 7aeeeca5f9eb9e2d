#include "qorsdk.h"

#include "kvoimage.h"

#include <array>
#include <cstring>

namespace {

constexpr int width = 64;
constexpr int height = 48;
constexpr int pixelCount = width * height;

} // namespace

struct QorCamera
{
    int frameCount = 0;
    std::array<unsigned char, pixelCount> frame = {};
};

const char* qorErrorText(QorError error)
{
    switch (error) {
    case QOR_OK:
        return "no error";
    case QOR_NO_CAMERA:
        return "no such camera";
    case QOR_BUFFER_TOO_SMALL:
        return "buffer too small";
    case QOR_NO_FRAME:
        return "no frame grabbed yet";
    case QOR_WRITE_FAILED:
        return "file not written";
    }
    return "unknown error";
}

const char* qorVersion()
{
    return "1.0";
}

int qorCameraCount()
{
    return 1;
}

QorError qorOpen(int index, QorCamera** camera)
{
    const bool exists = index >= 0 && index < qorCameraCount();
    *camera = exists ? new QorCamera : nullptr;
    return exists ? QOR_OK : QOR_NO_CAMERA;
}

void qorClose(QorCamera* camera)
{
    delete camera;
}

const char* qorName(const QorCamera*)
{
    return "QorSim 64";
}

const char* qorSerial(const QorCamera*)
{
    return "QS-0042";
}

int qorWidth(const QorCamera*)
{
    return width;
}

int qorHeight(const QorCamera*)
{
    return height;
}

QorError qorGrab(QorCamera* camera, unsigned char* pixels, size_t size)
{
    auto& frame = camera->frame;
    if (size < frame.size())
        return QOR_BUFFER_TOO_SMALL;
    // A diagonal gradient that moves with the frame number and wraps at white.
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            frame[y * width + x] = static_cast<unsigned char>(2 * (x + y) + 8 * camera->frameCount);
    ++camera->frameCount;
    std::memcpy(pixels, frame.data(), frame.size());
    return QOR_OK;
}

QorError qorSave(const QorCamera* camera, const char* path)
{
    if (camera->frameCount == 0)
        return QOR_NO_FRAME;
    return kvoWritePgm(path, camera->frame.data(), width, height) ? QOR_OK : QOR_WRITE_FAILED;
}
