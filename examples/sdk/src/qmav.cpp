// Shows in the terminal what the first camera sees.
#include "kvoimage.h"
#include "qorsdk.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::string Row(const unsigned char* pixels, int width)
{
    constexpr std::string_view shades = " .:-=+*#%@";
    std::string row;
    for (int x = 0; x < width; ++x)
        row += shades[pixels[x] * shades.size() / 256];
    return row;
}

QorError Show(QorCamera* camera)
{
    const int width = qorWidth(camera);
    std::vector<unsigned char> frame(static_cast<size_t>(width) * qorHeight(camera));
    const QorError error = qorGrab(camera, frame.data(), frame.size());
    if (error != QOR_OK)
        return error;
    for (int y = 0; y < qorHeight(camera); y += 4)
        std::printf("%s\n", Row(&frame[static_cast<size_t>(y) * width], width).c_str());
    std::printf("%s, mean %.2f\n", qorName(camera), kvoStatistics(frame.data(), frame.size()).mean);
    return QOR_OK;
}

} // namespace

int main()
{
    QorCamera* camera = nullptr;
    QorError error = qorOpen(0, &camera);
    if (error == QOR_OK)
        error = Show(camera);
    qorClose(camera);

    if (error != QOR_OK) {
        std::fprintf(stderr, "qmav: %s\n", qorErrorText(error));
        return 1;
    }
}
