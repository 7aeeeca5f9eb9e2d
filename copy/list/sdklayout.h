#pragma once

#include <QDir>
#include <QList>
#include <QString>

inline constexpr QLatin1StringView solutionName("dotnet.sln");

// Where an SDK keeps what is copied, or needed to build a copy. Made from the path of its samples
// folder, relative or absolute and without a "/" at its end, as in SdkLayout{u"/sdk/samples"_s}.
struct SdkLayout
{
    QString samples;
    QString solution = samples + u'/' + solutionName;
    QString root = QDir::cleanPath(samples + QStringLiteral("/../"));
    QString bin = QDir::cleanPath(samples + QStringLiteral("/../bin"));
    QString lib = QDir::cleanPath(samples + QStringLiteral("/../lib"));
    QString wrapper = QDir::cleanPath(samples + QStringLiteral("/../dotnet"));
    QString headers = QDir::cleanPath(samples + QStringLiteral("/../include"));

    // All that a copy must not remove.
    QList<QString> folders() const { return {samples, bin, lib, wrapper, headers}; }
};
