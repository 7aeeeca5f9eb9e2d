#include "adapt/solution.h"

#include "adapt/project.h"
#include "adapt/strtok_quo.h"
#include "copy/list/sdklayout.h"
#include "kvo/file.h"
#include "kvo/path.h"
#include "kvo/regularfile.h"

#include <QDir>
#include <QFile>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int lineSize = 2048;

// The two fields used from a line
//     Project("{type}") = "name", "path", "{id}"
struct ProjectLine
{
    const char* name = nullptr;
    const char* path = nullptr;
};

// Splits `line` in place. The fields point into it, and are null for any other line.
ProjectLine parseProjectLine(char* line)
{
    char* position = nullptr;
    const char* keyword = strtok_quo(line, "= ", &position);
    if (!keyword || std::strncmp(keyword, "Project(", 8) != 0)
        return {};
    const char* name = strtok_quo(nullptr, ", ", &position);
    const char* path = strtok_quo(nullptr, ", ", &position);
    const char* id = strtok_quo(nullptr, ", ", &position);
    return id ? ProjectLine{name, path} : ProjectLine{};
}

// Copies `solution` to `copy` with CR LF line ends and returns its projects' paths.
std::vector<std::string> readSolution(kvo::IFile& solution, kvo::IFile& copy)
{
    std::vector<std::string> projects;
    char line[lineSize];
    while (solution.GetLine(line, lineSize)) {
        // Before the line is split.
        copy.WriteString(line);
        copy.WriteString("\r\n");
        if (const char* path = parseProjectLine(line).path)
            projects.push_back(kvo::path::ConvertSlashes(path, '/'));
    }
    return projects;
}

} // namespace

void GetDotnetDirs(QList<QString>& names, QString source)
{
    QFile solution(SdkLayout{source}.solution);
    if (!kvo::OpenRegular(solution, QIODevice::ReadOnly | QIODevice::ExistingOnly))
        return;
    char line[lineSize];
    while (solution.readLine(line, lineSize) > 0) {
        if (const char* name = parseProjectLine(line).name)
            names.append(QString::fromUtf8(name));
    }
}

bool FilterSln(QString solutionPath, QString destination, bool localProjectFiles, bool copyWrapper)
{
    // On Unix, a name may hold "\", which would be taken for a separator below.
    if (QDir::fromNativeSeparators(solutionPath + destination).contains(u'\\'))
        return false;
    const std::string source = solutionPath.toStdString();
    const std::string target = destination.toStdString();

    auto solution = kvo::fileSystem()->Open(source, kvo::openForReading);
    if (!solution)
        return false;
    const std::shared_ptr<kvo::CMemFile> copy = kvo::CMemFile::Create();
    const std::vector<std::string> projects = readSolution(*solution, *copy);
    solution.reset();

    const std::string copyPath = kvo::path::MakePath(target, kvo::path::GetFilename(source), '/');
    auto output = kvo::fileSystem()->Open(copyPath, kvo::openForWriting);
    if (!output)
        return false;
    output->WriteBytes(copy->data(), copy->size());
    output.reset();

    const std::string solutionDir = kvo::path::GetDirectory(source);
    for (const std::string& project : projects) {
        const std::string copied = kvo::path::MakePath(target, project, '/');
        if (kvo::path::IsChildOfDirectory(target, copied))
            RewriteProject({solutionDir, target, project}, localProjectFiles, copyWrapper);
    }
    return true;
}
