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

    static QByteArray tag(int attributes)
    {
        QByteArray tag = "<a";
        for (int i = 0; i < attributes; ++i)
            tag += " b" + QByteArray::number(i) + "=''";
        return tag + "/>";
    }

    // `set`, `add` or `remove`, the way to an element or to its "@attribute" from the top element,
    // and a text in which a control picture stands for the control character.
    static void edit(kvo::CXMLFile& file, const QString& line)
    {
        const QString action = line.section(u' ', 0, 0);
        QByteArrayList way = line.section(u' ', 1, 1).toUtf8().split('/');
        QString text = line.section(u' ', 2);
        for (char16_t c = 0; c < u' '; ++c)
            text.replace(QChar(0x2400 + c), QChar(c));

        const QByteArray name = way.takeLast();
        const char* const attribute = name.startsWith('@') ? name.data() + 1 : nullptr;
        CNode* node = file.GetCurr();
        for (const QByteArray& step : way)
            node = node->FindChild(step);
        if (action == u"add")
            node->InsertChild(new CNode(name.toStdString()), false);
        if (action != u"remove") {
            (attribute ? node->attributes[attribute] : node->FindChild(name)->value) =
                text.toStdString();
        } else if (attribute) {
            node->attributes.Remove(attribute);
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
        kvo::CXMLFile file;
        for (const QByteArray& bytes :
             {document, encoded(QStringConverter::Utf8, text),
              encoded(QStringConverter::Utf16LE, text), encoded(QStringConverter::Utf16BE, text)}) {
            for (qsizetype length = 0; length <= bytes.size(); ++length) {
                const bool loaded = load(file, bytes.first(length));
                QVERIFY(loaded || length < bytes.size());
                QCOMPARE(file.GetCurr() != nullptr, loaded);
                QCOMPARE(saved(file), loaded ? bytes.first(length) : "(not saved)");
            }
        }
    }

    void readsElements()
    {
        const QByteArray dtd = "<!DOCTYPE r [<!ENTITY e 'ü'><!ATTLIST a d CDATA 'v'>]>";
        kvo::CXMLFile file;
        QVERIFY(load(file, dtd + "<r>t<a x='&lt;&e;\n&#10;'> "
                                 "1&amp;<!--c--><![CDATA[<2]]>\r\n&e;</a>t<b/><a><c/></a>t</r>"));
        CNode* const root = file.GetCurr();
        CNode* const first = root->Child();
        CNode* const last = first->FindNext("a");
        QVERIFY(root->name == "r" && root->value.empty());
        QCOMPARE(first->value, " 1&<2\nü");
        QCOMPARE(first->attributes["x"], "<ü \n");
        QVERIFY(!first->attributes.Exists("X") && !first->attributes.Exists("d"));
        QVERIFY(first->Next() == root->FindChild("b") && first->Next()->Next() == last &&
                last->FindChild("c") == last->Child());
        QVERIFY(!first->Child() && !first->FindChild("c") && !last->FindNext("a") && !last->Next());
    }

    void writesEdits_data()
    {
        addCases(QFINDTESTDATA("data/xmledits.txt"), {"edits", "before", "after"});
    }

    void writesEdits()
    {
        QFETCH(QByteArray, edits);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QCOMPARE(edited(before, edits), after);
        const auto other = [](QByteArray text) {
            return encoded(QStringConverter::Utf16LE,
                           QString::fromUtf8(text.replace("\n", "\r\n")));
        };
        QCOMPARE(edited(other(before), edits), other(after));
    }

    void escapesWhatTheEncodingLacks()
    {
        const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><r b='\xe4' a='";
        QCOMPARE(edited(latin + "'/>", "set @a é中\U0001F600"), latin + "\xe9&#20013;&#128512;'/>");
    }

    void startsLinesWhereThereAreNone() { QCOMPARE(edited("<r/>", "add a"), "<r>\n  <a />\n</r>"); }

    void ignoresMisuse()
    {
        kvo::CXMLFile file;
        QVERIFY(load(file, "<r><a/></r>"));
        CNode* const root = file.GetCurr();
        for (CNode* node : {root, static_cast<CNode*>(nullptr)}) {
            root->InsertChild(node, false);
            file.SetCurr(node);
            file.Remove();
        }
        root->InsertChild(root->Child(), false);
        QCOMPARE(saved(file), "<r><a/></r>");
    }

    void refusesWhatIsNoDocument_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray entities =
            "<!DOCTYPE a [<!ENTITY e '" + QByteArray(4000, 'x') + "'><!ENTITY f '&e;&e;'>]>";
        QTest::newRow("bytes that are no UTF-8") << QByteArray("<a>\xe4</a>");
        QTest::newRow("an unknown encoding")
            << QByteArray("<?xml version='1.0' encoding='none'?><a/>");
        QTest::newRow("an entity that grows") << entities + "<a b='&f;'/>";
        QTest::newRow("many references to a long entity")
            << entities + "<a>" + QByteArray("&e;").repeated(100'000) + "</a>";
        QTest::newRow("a document type within an element") << QByteArray("<a><!DOCTYPE a>x</a>");
        QTest::newRow("two document types") << QByteArray("<!DOCTYPE a><!DOCTYPE a><a/>");
        QTest::newRow("more than 1,000 attributes") << tag(1001);
    }

    void refusesWhatIsNoDocument()
    {
        QFETCH(QByteArray, bytes);
        kvo::CXMLFile file;
        // A quote counts in a tag only.
        const QByteArray quotes(3000, '"');
        QVERIFY(load(file, tag(1000)) && load(file, "<a>" + quotes + "<!--" + quotes + "--></a>"));
        QVERIFY(!load(file, bytes));
    }

    // And nests to any depth.
    void keepsTheOldFileWhenAWriteFails()
    {
        const int depth = 100'000;
        const QByteArray content =
            QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
        kvo::CXMLFile file;
        QVERIFY(load(file, content) && saved(file) == content);
        file.GetCurr()->value += "x";
        writeWithLimit([&] { QCOMPARE(saved(file), "(not saved)"); });
        QVERIFY(readFile(m_target) == content);
    }
};

QTEST_APPLESS_MAIN(TestXmlFile)
#include "tst_xmlfile.moc"
