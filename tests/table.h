#pragma once

#include "tests/tree.h"

#include <QTest>

// Adds the columns of a test's table, and returns what adds a row to it.
template <typename... Types, typename... Columns>
auto table(Columns... columns)
{
    (QTest::addColumn<Types>(columns), ...);
    return [](const char* name, const Types&... values) { (QTest::newRow(name) << ... << values); };
}

// Fills a test's table from a file of cases, which a blank line parts. A case is a line `== row name` and, for each
// column, a line `-- column` and the text below it, without its last line end.
inline void addCases(const QString& path, const std::initializer_list<const char*>& columns)
{
    for (const char* column : columns)
        QTest::addColumn<QByteArray>(column);
    const QStringList cases = QString::fromUtf8(readFile(path)).trimmed().split(u"\n\n== "_s);
    QVERIFY(cases.size() > 1);
    for (const QString& text : cases.sliced(1)) {
        const QStringList parts = text.split(u"\n-- "_s);
        QTestData& row = QTest::newRow(qPrintable(parts.first()));
        for (const QString& part : parts.sliced(1))
            row << part.section(u'\n', 1).toUtf8();
    }
}
