#include "adapt/project.h"

#include "kvo/path.h"
#include "kvo/text.h"
#include "kvo/xmlfile.h"

#include <string_view>
#include <vector>

using CNode = kvo::CXMLFile::CNode;

namespace {

// One project on its way from the SDK (src) into the copy (dst).
struct ProjectCopy
{
    std::string srcProjectDir;
    std::string dstProjectDir;
    std::string solutionDir;
    std::string destination;
    bool localProjectFiles;
    bool copyWrapper;
    // Removed only after the walk, which would otherwise step onto a removed node.
    std::vector<CNode*> removals;
};

// Marks `node` and its later siblings called `name` for removal.
void removeLater(CNode* node, const char* name, ProjectCopy& project)
{
    for (; node; node = node->FindNext(name))
        project.removals.push_back(node);
}

void rewriteOutputPath(CNode& group, ProjectCopy& project)
{
    std::string suffix;
    if (group.attributes.Exists("Condition")) {
        const std::string& condition = group.attributes["Condition"];
        if (kvo::Contains(condition, "Release"))
            suffix = "\\Release";
        else if (kvo::Contains(condition, "Debug"))
            suffix = "\\Debug";
    }
    const char* const intermediate = "BaseIntermediateOutputPath";
    removeLater(group.FindChild(intermediate), intermediate, project);
    if (CNode* output = group.FindChild("OutputPath")) {
        output->value = "..\\bin" + suffix;
        output->attributes.Remove("Condition");
        removeLater(output->FindNext("OutputPath"), "OutputPath", project);
    }
}

// Whether `value` holds a property, an item list or metadata, which only a build can resolve.
bool isExpression(std::string_view value)
{
    return kvo::Contains(value, "$(") || kvo::Contains(value, "@(") || kvo::Contains(value, "%(");
}

// A source file as the copied project refers to it.
struct Reference
{
    std::string abs;
    std::string rel;
    std::string link; // the name the project shows
};

Reference resolve(const std::string& include, const ProjectCopy& project)
{
    Reference file;
    file.abs = kvo::path::ExpandRelativePath(project.srcProjectDir, include, '/');
    const auto moveToCopy = [&] {
        file.abs = kvo::path::ExpandRelativePath(project.dstProjectDir, file.rel, '/');
    };
    if (kvo::path::IsChildOfDirectory(project.srcProjectDir, file.abs)) {
        file.rel = kvo::path::RelativePath(project.srcProjectDir, file.abs, '/');
        file.link = file.rel;
        if (project.localProjectFiles)
            moveToCopy();
    } else if (project.copyWrapper) {
        // Relative to the solution, but read from the project's folder: the copied wrapper is one
        // level closer to the projects than the SDK's own.
        file.rel = kvo::path::RelativePath(project.solutionDir, file.abs, '/');
        moveToCopy();
        file.link = kvo::path::GetFilename(file.abs);
    } else {
        file.rel = kvo::path::GetFilename(file.abs);
        file.link = file.rel;
    }
    return file;
}

void rewriteItem(CNode& item, ProjectCopy& project)
{
    std::string& include = item.attributes["Include"];
    if (isExpression(include))
        return;
    const Reference file = resolve(include, project);
    CNode* link = item.FindChild("Link");
    const bool inDestination = kvo::path::IsChildOfDirectory(project.destination, file.abs);
    const bool inProject = kvo::path::IsChildOfDirectory(project.dstProjectDir, file.abs);
    include = inProject || inDestination ? file.rel : file.abs;
    if (inProject) {
        if (link)
            project.removals.push_back(link);
        return;
    }
    if (!link) {
        link = new CNode("Link");
        item.InsertChild(link, false);
    }
    link->value = file.link;
}

void rewriteItems(CNode& group, ProjectCopy& project)
{
    for (CNode* item = group.Child(); item; item = item->Next()) {
        if ((item->name == "Compile" || item->name == "None") && item->attributes.Exists("Include"))
            rewriteItem(*item, project);
    }
}

void rewriteCopySteps(CNode& target, const ProjectCopy& project)
{
    for (CNode* step = target.Child(); step; step = step->Next()) {
        if (step->name != "Copy" || !step->attributes.Exists("SourceFiles"))
            continue;
        std::string& files = step->attributes["SourceFiles"];
        if (isExpression(files))
            continue;
        files = kvo::path::ExpandRelativePath(project.srcProjectDir, files, '/');
        if (project.copyWrapper)
            files = kvo::path::RelativePath(project.solutionDir, files, '/');
    }
}

void rewriteElements(const CNode& root, ProjectCopy& project)
{
    for (CNode* group = root.FindChild("PropertyGroup"); group;
         group = group->FindNext("PropertyGroup"))
        rewriteOutputPath(*group, project);
    for (CNode* group = root.FindChild("ItemGroup"); group; group = group->FindNext("ItemGroup"))
        rewriteItems(*group, project);
    if (CNode* target = root.FindChild("Target"))
        rewriteCopySteps(*target, project);
}

} // namespace

void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper)
{
    const auto srcProjectFile = kvo::path::MakePath(location.solutionDir, location.path, '/');
    const auto dstProjectFile = kvo::path::MakePath(location.destination, location.path, '/');
    kvo::CXMLFile document;
    if (!document.Load(srcProjectFile))
        return;

    ProjectCopy project{.srcProjectDir = kvo::path::GetDirectory(srcProjectFile),
                        .dstProjectDir = kvo::path::GetDirectory(dstProjectFile),
                        .solutionDir = location.solutionDir,
                        .destination = location.destination,
                        .localProjectFiles = localProjectFiles,
                        .copyWrapper = copyWrapper,
                        .removals = {}};
    rewriteElements(*document.GetCurr(), project);
    for (CNode* node : project.removals) {
        document.SetCurr(node);
        document.Remove();
        document.Root();
    }
    static_cast<void>(document.Save(dstProjectFile));
}
