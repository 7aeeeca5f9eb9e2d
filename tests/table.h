#pragma once

#include "tests/tree.h"

#include <QTest>

// What a test does to a file, in lines that the test interprets, and the file before and after.
struct Case
{
    QByteArrayList actions;
    QByteArray before;
    QByteArray after;
};

// Fills the column "change" with the cases of a file. After its head, each is a blank line, `== row
// name`, and lines that begin with "-" before the change, "+" after it, " " in both, or an action.
inline void addCases(const QString& path)
{
    QTest::addColumn<Case>("change");
    const QStringList cases = QString::fromUtf8(readFile(path)).trimmed().split(u"\n\n== "_s);
    for (const QString& text : cases.sliced(1)) {
        Case change;
        QByteArrayList lines = text.toUtf8().split('\n');
        const QByteArray name = lines.takeFirst();
        for (const QByteArray& line : std::as_const(lines)) {
            const bool isOfBoth = line.startsWith(' ');
            if (isOfBoth || line.startsWith('-'))
                change.before += line.sliced(1) + '\n';
            if (isOfBoth || line.startsWith('+'))
                change.after += line.sliced(1) + '\n';
            if (!line.isEmpty() && line[0] >= 'a')
                change.actions += line;
        }
        QTest::newRow(name) << change;
    }
}
