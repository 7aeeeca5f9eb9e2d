#include "kvo/xmlfile.h"

#include "tests/table.h"

#include <QStringConverter>

using CNode = kvo::CXMLFile::CNode;

class TestXmlFile : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_dir;
    const QString m_source = m_dir.filePath(u"sörce"_s);
    const QString m_target = m_dir.filePath(u"target"_s);

    bool load(kvo::CXMLFile& file, const QByteArray& bytes) const
    {
        writeFile(m_source, bytes);
        return file.Load(m_source.toStdString());
    }

    QByteArray saved(const kvo::CXMLFile& file) const
    {
        return file.Save(m_target.toStdString()) ? readFile(m_target) : QByteArray("(not saved)");
    }

    static QByteArray encoded(QStringConverter::Encoding encoding, const QString& text)
    {
        return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(text);
    }

    // `set`, `add` or `remove`, the way to an element or to its "@attribute" from the top element, and a text in which a
    // control picture stands for the control character.
    static void edit(kvo::CXMLFile& file, const QString& line)
    {
        const QString action = line.section(u' ', 0, 0);
        QByteArrayList way = line.section(u' ', 1, 1).toUtf8().split('/');
        QString text = line.section(u' ', 2);
        for (char16_t c = 0; c < u' '; ++c)
            text.replace(QChar(0x2400 + c), QChar(c));

        const QByteArray name = way.takeLast();
        CNode* node = file.GetCurr();
        for (const QByteArray& step : way)
            node = node->FindChild(step);
        if (name.startsWith('@') && action == u"set") {
            node->attributes[name.data() + 1] = text.toStdString();
        } else if (name.startsWith('@')) {
            node->attributes.Remove(name.data() + 1);
        } else if (action == u"set") {
            node->FindChild(name)->value = text.toStdString();
        } else if (action == u"add") {
            auto* child = new CNode(name.toStdString());
            child->value = text.toStdString();
            node->InsertChild(child, false);
        } else {
            file.SetCurr(node->FindChild(name));
            file.Remove();
        }
    }

    QByteArray edited(const QByteArray& bytes, const QByteArray& edits) const
    {
        kvo::CXMLFile file;
        if (!load(file, bytes))
            return "(not loaded)";
        for (const QString& line : QString::fromUtf8(edits).split(u'\n'))
            edit(file, line);
        return saved(file);
    }

private slots:
    void keepsEveryByte_data() { addCases(QFINDTESTDATA("data/documents.txt"), {"document"}); }

    // In each encoding; or, cut off anywhere, the document is refused.
    void keepsEveryByte()
    {
        QFETCH(QByteArray, document);
        const QString text = QString::fromUtf8(document.replace("␍", "\r"));
        for (const QByteArray& bytes : {document, encoded(QStringConverter::Utf8, text), encoded(QStringConverter::Utf16LE, text),
                                        encoded(QStringConverter::Utf16BE, text)}) {
            for (int length = bytes == document ? 0 : int(bytes.size()); length <= bytes.size(); ++length) {
                kvo::CXMLFile file;
                const bool loaded = load(file, bytes.first(length));
                QVERIFY(loaded || length < bytes.size());
                QCOMPARE(file.GetCurr() != nullptr, loaded);
                QCOMPARE(saved(file), loaded ? bytes.first(length) : "(not saved)");
            }
        }
    }

    void readsElements()
    {
        kvo::CXMLFile file;
        QVERIFY(
            load(file,
                 "<!DOCTYPE r [<!ENTITY e 'ü'><!ATTLIST a d CDATA 'v'>]><r>t<a x='&lt;&e;\n&#10;'> 1&amp;<!--c--><![CDATA[<2]]>\r\n&e;</a>t"
                 "<b/><a><c/></a>t</r>"));
        CNode* const root = file.GetCurr();
        CNode* const first = root->Child();
        QCOMPARE(root->name, "r");
        QCOMPARE(root->value, "");
        QCOMPARE(first->value, " 1&<2\nü");
        QCOMPARE(first->attributes["x"], "<ü \n");
        QVERIFY(!first->attributes.Exists("X") && !first->attributes.Exists("d") && !first->Child() && !first->FindChild("c"));
        QCOMPARE(first->Next()->name, "b");
        QCOMPARE(first->FindNext("a"), root->FindChild("b")->Next());
        QVERIFY(!first->FindNext("a")->FindNext("a") && !first->FindNext("a")->Next());
    }

    void writesEdits_data() { addCases(QFINDTESTDATA("data/xmledits.txt"), {"edits", "before", "after"}); }

    void writesEdits()
    {
        QFETCH(QByteArray, edits);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QCOMPARE(edited(before, edits), after);
        const auto other = [](QByteArray text) {
            return encoded(QStringConverter::Utf16LE, QString::fromUtf8(text.replace("\n", "\r\n")));
        };
        QCOMPARE(edited(other(before), edits), other(after));
    }

    void escapesWhatTheEncodingLacks()
    {
        const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><r b='\xe4' a='";
        QCOMPARE(edited(latin + "'/>", "set @a é中\U0001F600"), latin + "\xe9&#20013;&#128512;'/>");
    }

    void startsLinesWhereThereAreNone() { QCOMPARE(edited("<r/>", "add a"), "<r>\n  <a />\n</r>"); }

    void ignoresEditsOfNothing()
    {
        kvo::CXMLFile file;
        QVERIFY(load(file, "<r><a/></r>"));
        CNode* const a = file.GetCurr()->Child();
        file.Remove();
        file.SetCurr(nullptr);
        file.Remove();
        file.GetCurr()->InsertChild(nullptr, false);
        file.GetCurr()->InsertChild(a, false);
        auto* const added = new CNode("b");
        a->InsertChild(added, false);
        file.SetCurr(added);
        file.Remove();
        a->InsertChild(added, false);
        QCOMPARE(file.GetCurr()->name, "r");
        QCOMPARE(saved(file), "<r><a/></r>");
    }

    void refusesWhatIsNoDocument_data()
    {
        const auto row = table<QByteArray>("bytes");
        row("bytes that are no UTF-8", "<a>\xe4</a>");
        row("an odd number of UTF-16 bytes", encoded(QStringConverter::Utf16LE, u"<a/>"_s) + 'x');
        row("an unknown encoding", "<?xml version='1.0' encoding='none'?><a/>");
        QByteArray bomb = "<!DOCTYPE a [<!ENTITY e0 'x'>";
        for (int i = 1; i < 10; ++i)
            bomb += "<!ENTITY e" + QByteArray::number(i) + " '" + ("&e" + QByteArray::number(i - 1) + ';').repeated(10) + "'>";
        row("an entity bomb", bomb + "]><a>&e9;</a>");
        row("an entity bomb in an attribute", bomb + "]><a b='&e9;'/>");
        row("many references to a long entity",
            "<!DOCTYPE a [<!ENTITY e '" + QByteArray(4000, 'x') + "'>]><a>" + QByteArray("&e;").repeated(100'000) + "</a>");
    }

    void refusesWhatIsNoDocument()
    {
        QFETCH(QByteArray, bytes);
        kvo::CXMLFile file;
        QVERIFY(load(file, "<a/>"));
        QCOMPARE(saved(file), "<a/>");
        QVERIFY(!load(file, bytes));
        file.Remove();
        QVERIFY(!file.GetCurr());
        QCOMPARE(saved(file), "(not saved)");
        QCOMPARE(readFile(m_target), "<a/>");
    }

    void takesAThousandAttributesInATag()
    {
        for (const int count : {1000, 1001}) {
            QByteArray tag = "<a";
            for (int i = 0; i < count; ++i)
                tag += " b" + QByteArray::number(i) + "=''";
            kvo::CXMLFile file;
            QCOMPARE(load(file, tag + "/>"), count == 1000);
        }
    }

    void readsAndWritesRegularFilesOnly()
    {
        const QString pipe = m_dir.filePath(u"pipe"_s);
        makePipe(pipe);
        kvo::CXMLFile file;
        for (const QString& source : {QString(), m_dir.path(), u"/dev/zero"_s})
            QVERIFY2(!file.Load(source.toStdString()), qPrintable(source));
        QVERIFY(load(file, "<a/>"));
        for (const QString& target : {QString(), m_dir.path(), m_source + u"/x"_s, pipe})
            QVERIFY2(!file.Save(target.toStdString()), qPrintable(target));
    }

    void nestsToAnyDepth()
    {
        const int depth = 100'000;
        const auto nested = [](QByteArray name, int count, const QByteArray& inner) {
            return ('<' + name + '>').repeated(count) + inner + ("</" + name + '>').repeated(count);
        };
        kvo::CXMLFile file;
        QVERIFY(load(file, nested("a", depth, "<b/>")));
        CNode* node = file.GetCurr();
        while (node->Child())
            node = node->Child();
        for (int i = 0; i < depth; ++i, node = node->Child())
            node->InsertChild(new CNode("c"), false);
        QVERIFY(saved(file) == nested("a", depth, "<b>" + nested("c", depth - 1, "<c />") + "</b>"));
    }

    void keepsTheOldFileWhenAWriteFails()
    {
        kvo::CXMLFile file;
        const QByteArray content = "<a>" + QByteArray(1'000'000, 'x') + "</a>";
        QVERIFY(load(file, content) && saved(file) == content);
        file.GetCurr()->value += "xyz";
        writeWithLimit([&] { QCOMPARE(saved(file), "(not saved)"); });
        QVERIFY(readFile(m_target) == content);
    }
};

QTEST_APPLESS_MAIN(TestXmlFile)
#include "tst_xmlfile.moc"
