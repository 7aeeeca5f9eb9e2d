#pragma once

#include "tests/tree.h"

#include <QTest>

// Fills a test's table from a file of cases, which a blank line parts. A case is a line `== row
// name` and, for each column, a line `-- column` and the text below it, without its last line end.
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
