#include "kvoimage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>

KvoStatistics kvoStatistics(const unsigned char* pixels, size_t count)
{
    if (count == 0)
        return {};
    const auto [minimum, maximum] = std::minmax_element(pixels, pixels + count);
    const double sum = std::accumulate(pixels, pixels + count, 0.0);
    return {*minimum, *maximum, sum / static_cast<double>(count)};
}

int kvoWritePgm(const char* path, const unsigned char* pixels, int width, int height)
{
    // char8_t makes the path UTF-8 on every platform.
    std::ofstream file(std::filesystem::path(reinterpret_cast<const char8_t*>(path)),
                       std::ios::binary);
    file << "P5\n" << width << ' ' << height << "\n255\n";
    file.write(reinterpret_cast<const char*>(pixels), std::streamsize{width} * height);
    file.close();
    return file ? 1 : 0;
}
