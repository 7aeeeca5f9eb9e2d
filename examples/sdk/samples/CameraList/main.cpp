// Lists the cameras and their properties.
#include <qorsdk.h>

#include <cstdio>

int main()
{
    std::printf("qorSDK %s, cameras: %d\n", qorVersion(), qorCameraCount());
    for (int index = 0; index < qorCameraCount(); ++index) {
        QorCamera* camera = nullptr;
        const QorError error = qorOpen(index, &camera);
        if (error != QOR_OK) {
            std::fprintf(stderr, "Camera %d: %s\n", index, qorErrorText(error));
            return 1;
        }
        std::printf("Camera %d: %s, serial %s, %d x %d\n", index, qorName(camera),
                    qorSerial(camera), qorWidth(camera), qorHeight(camera));
        qorClose(camera);
    }
}
