#pragma once

#include "tests/tree.h"

#include <QTest>

// Fills a test's table from a file: an introduction, then for each case a blank line, `== row name`
// and, for each column in order, `-- column` and the text below it, without its last line end.
inline void addCases(const QString& path, std::initializer_list<const char*> columns)
{
    for (const char* column : columns)
        QTest::addColumn<QByteArray>(column);
    // So that the last case ends like the others.
    QStringList cases = QString::fromUtf8(readFile(path) + "\n== ").split(u"\n\n== "_s);
    QVERIFY2(cases.size() > 2 && cases.takeLast().isEmpty(), qPrintable(path));
    for (const QString& text : cases.sliced(1)) {
        QStringList parts = text.split(u"\n-- "_s);
        QTestData& row = QTest::newRow(qPrintable(parts.takeFirst()));
        for (const char* column : columns) {
            const QString part = parts.isEmpty() ? QString() : parts.takeFirst();
            QVERIFY2(part.startsWith(QLatin1String(column) + u'\n'), qPrintable(text));
            row << part.section(u'\n', 1).toUtf8();
        }
        QVERIFY2(parts.isEmpty(), qPrintable(text));
    }
}

// What a text was before and is after, with "-" and "+" at the beginning of lines of one only.
inline std::pair<QByteArray, QByteArray> beforeAndAfter(const QByteArray& text)
{
    QByteArray before;
    QByteArray after;
    for (const QByteArray& line : text.split('\n')) {
        if (!line.startsWith('+'))
            before += line.mid(1) + '\n';
        if (!line.startsWith('-'))
            after += line.mid(1) + '\n';
    }
    return {before, after};
}
