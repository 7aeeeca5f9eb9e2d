// A solution file, and its text as something to take apart.
#include "adapt/solution.h"
#include "adapt/strtok_quo.h"

#include "fuzz/require.h"
#include "tests/tree.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    for (const char* delimiters : {"", "= ", ", ", "\"\n"}) {
        // Of its exact size, so that access past either end is seen.
        std::vector<char> text(data, data + size);
        text.push_back('\0');
        const char* const end = text.data() + std::strlen(text.data());
        char* position = nullptr;
        for (const char* token = strtok_quo(text.data(), delimiters, &position); token; token = strtok_quo(nullptr, delimiters, &position))
            require(text.data() <= token && token + std::strlen(token) <= position && position <= end);
    }

    static const QTemporaryDir folder;
    const QByteArray input(data, qsizetype(size));
    writeFile(folder.filePath(u"dotnet.sln"_s), input);
    QList<QString> names;
    GetDotnetDirs(names, folder.path());
    require(names.size() <= input.count("Project("));
    return 0;
}
