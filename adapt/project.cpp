#include "adapt/project.h"

#include "kvo/path.h"
#include "kvo/text.h"
#include "kvo/xmlfile.h"

#include <vector>

using CNode = kvo::CXMLFile::CNode;

namespace {

struct Rewrite
{
    std::string srcProjectDir;
    std::string dstProjectDir;
    std::string solutionDir;
    std::string destination;
    bool localProjectFiles;
    bool copyWrapper;
    // Removed only after the walk, so that the walk never stands on a removed node.
    std::vector<CNode*> removals;
};

void removeFrom(CNode* node, const char* name, Rewrite& rewrite)
{
    for (; node; node = node->FindNext(name))
        rewrite.removals.push_back(node);
}

void rewriteOutputPath(CNode& group, Rewrite& rewrite)
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
    removeFrom(group.FindChild(intermediate), intermediate, rewrite);
    if (CNode* output = group.FindChild("OutputPath")) {
        output->value = "..\\bin" + suffix;
        output->attributes.Remove("Condition");
        removeFrom(output->FindNext("OutputPath"), "OutputPath", rewrite);
    }
}

// Where a source file lies for the copied project, and the name it is shown under.
struct Reference
{
    std::string absolute;
    std::string relative;
    std::string link;
};

Reference place(const std::string& include, const Rewrite& rewrite)
{
    Reference file;
    file.absolute = kvo::path::ExpandRelativePath(rewrite.srcProjectDir, include, '/');
    const auto moveToCopy = [&] {
        file.absolute = kvo::path::ExpandRelativePath(rewrite.dstProjectDir, file.relative, '/');
    };
    if (kvo::path::IsChildOfDirectory(rewrite.srcProjectDir, file.absolute)) {
        file.relative = kvo::path::RelativePath(rewrite.srcProjectDir, file.absolute, '/');
        file.link = file.relative;
        if (rewrite.localProjectFiles)
            moveToCopy();
    } else if (rewrite.copyWrapper) {
        // Against the solution, yet read from the project's folder: the copied wrapper lies one
        // level nearer to the projects than the SDK's own.
        file.relative = kvo::path::RelativePath(rewrite.solutionDir, file.absolute, '/');
        moveToCopy();
        file.link = kvo::path::GetFilename(file.absolute);
    } else {
        file.relative = kvo::path::GetFilename(file.absolute);
        file.link = file.relative;
    }
    return file;
}

void rewriteItem(CNode& item, Rewrite& rewrite)
{
    const Reference file = place(item.attributes["Include"], rewrite);
    CNode* link = item.FindChild("Link");
    const bool inDestination = kvo::path::IsChildOfDirectory(rewrite.destination, file.absolute);
    const bool inProject = kvo::path::IsChildOfDirectory(rewrite.dstProjectDir, file.absolute);
    item.attributes["Include"] = inProject || inDestination ? file.relative : file.absolute;
    if (inProject) {
        if (link)
            rewrite.removals.push_back(link);
        return;
    }
    if (!link) {
        link = new CNode("Link");
        item.InsertChild(link, false);
    }
    link->value = file.link;
}

void rewriteItems(CNode& group, Rewrite& rewrite)
{
    for (CNode* item = group.Child(); item; item = item->Next()) {
        if ((item->name == "Compile" || item->name == "None") && item->attributes.Exists("Include"))
            rewriteItem(*item, rewrite);
    }
}

void rewriteCopySteps(CNode& target, const Rewrite& rewrite)
{
    for (CNode* step = target.Child(); step; step = step->Next()) {
        if (step->name != "Copy" || !step->attributes.Exists("SourceFiles"))
            continue;
        std::string& files = step->attributes["SourceFiles"];
        files = kvo::path::ExpandRelativePath(rewrite.srcProjectDir, files, '/');
        if (rewrite.copyWrapper)
            files = kvo::path::RelativePath(rewrite.solutionDir, files, '/');
    }
}

} // namespace

void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper)
{
    const std::string source = kvo::path::MakePath(location.solutionDir, location.path, '/');
    const std::string target = kvo::path::MakePath(location.destination, location.path, '/');
    kvo::CXMLFile project;
    if (!project.Load(source))
        return;

    Rewrite rewrite{.srcProjectDir = kvo::path::GetDirectory(source),
                    .dstProjectDir = kvo::path::GetDirectory(target),
                    .solutionDir = location.solutionDir,
                    .destination = location.destination,
                    .localProjectFiles = localProjectFiles,
                    .copyWrapper = copyWrapper,
                    .removals = {}};
    CNode* const root = project.GetCurr();
    for (CNode* group = root->FindChild("PropertyGroup"); group;
         group = group->FindNext("PropertyGroup"))
        rewriteOutputPath(*group, rewrite);
    for (CNode* group = root->FindChild("ItemGroup"); group; group = group->FindNext("ItemGroup"))
        rewriteItems(*group, rewrite);
    if (CNode* copySteps = root->FindChild("Target"))
        rewriteCopySteps(*copySteps, rewrite);

    for (CNode* node : rewrite.removals) {
        project.SetCurr(node);
        project.Remove();
        project.Root();
    }
    static_cast<void>(project.Save(target));
}
