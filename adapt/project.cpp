#include "adapt/project.h"

#include "kvo/path.h"
#include "kvo/text.h"
#include "kvo/xmlfile.h"

#include <string_view>
#include <vector>

using CNode = kvo::CXMLFile::CNode;

namespace {

// One project on its way from the SDK (src) into the copy (dst).
struct ProjectCopy : ProjectLocation
{
    bool localProjectFiles;
    bool copyWrapper;
    std::string srcProjectFile = kvo::path::MakePath(solutionDir, path, '/');
    std::string dstProjectFile = kvo::path::MakePath(destination, path, '/');
    std::string srcProjectDir = kvo::path::GetDirectory(srcProjectFile);
    std::string dstProjectDir = kvo::path::GetDirectory(dstProjectFile);
    // Removed only after the walk, which could not go on from a removed node.
    std::vector<CNode*> removals = {};
};

// Marks `node` and its later siblings of the same name for removal.
void removeLater(CNode* node, ProjectCopy& project)
{
    for (; node; node = node->FindNext(node->name.c_str()))
        project.removals.push_back(node);
}

void rewriteOutputPath(CNode& group, ProjectCopy& project)
{
    removeLater(group.FindChild("BaseIntermediateOutputPath"), project);
    CNode* output = group.FindChild("OutputPath");
    if (!output)
        return;
    removeLater(output->FindNext("OutputPath"), project);
    output->attributes.Remove("Condition");
    output->value = "..\\bin";
    if (!group.attributes.Exists("Condition"))
        return;
    const std::string& condition = group.attributes["Condition"];
    if (kvo::Contains(condition, "Release"))
        output->value += "\\Release";
    else if (kvo::Contains(condition, "Debug"))
        output->value += "\\Debug";
}

// Whether `value` holds a property, an item list or metadata, which only a build can resolve.
bool isExpression(std::string_view value)
{
    return kvo::Contains(value, "$(") || kvo::Contains(value, "@(") || kvo::Contains(value, "%(");
}

void rewriteItem(CNode& item, ProjectCopy& project)
{
    std::string& include = item.attributes["Include"];
    if (isExpression(include))
        return;
    std::string abs = kvo::path::ExpandRelativePath(project.srcProjectDir, include, '/');
    const bool isLocal = kvo::path::IsChildOfDirectory(project.srcProjectDir, abs);
    const bool isCopied = isLocal ? project.localProjectFiles : project.copyWrapper;
    std::string rel;
    if (isLocal)
        rel = kvo::path::RelativePath(project.srcProjectDir, abs, '/');
    else if (isCopied)
        // Relative to the solution, but read from the project's folder: the copied wrapper is one
        // level closer to the projects than the SDK's own.
        rel = kvo::path::RelativePath(project.solutionDir, abs, '/');
    else
        rel = kvo::path::GetFilename(abs);
    if (isCopied)
        abs = kvo::path::ExpandRelativePath(project.dstProjectDir, rel, '/');

    CNode* link = item.FindChild("Link");
    const bool inProject = kvo::path::IsChildOfDirectory(project.dstProjectDir, abs);
    include = inProject || kvo::path::IsChildOfDirectory(project.destination, abs) ? rel : abs;
    if (inProject) {
        if (link)
            project.removals.push_back(link);
        return;
    }
    if (!link) {
        link = new CNode("Link");
        item.InsertChild(link, false);
    }
    // The name that the project shows.
    link->value = isLocal ? rel : kvo::path::GetFilename(abs);
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

} // namespace

void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper)
{
    ProjectCopy project{location, localProjectFiles, copyWrapper};
    kvo::CXMLFile document;
    if (!document.Load(project.srcProjectFile))
        return;

    const CNode& root = *document.GetCurr();
    for (CNode* group = root.FindChild("PropertyGroup"); group;
         group = group->FindNext("PropertyGroup"))
        rewriteOutputPath(*group, project);
    for (CNode* group = root.FindChild("ItemGroup"); group; group = group->FindNext("ItemGroup"))
        rewriteItems(*group, project);
    if (CNode* target = root.FindChild("Target"))
        rewriteCopySteps(*target, project);

    for (CNode* node : project.removals) {
        document.SetCurr(node);
        document.Remove();
        document.Root();
    }
    static_cast<void>(document.Save(project.dstProjectFile));
}
