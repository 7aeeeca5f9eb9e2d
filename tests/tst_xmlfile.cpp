#include "kvo/xmlfile.h"

#include "tests/table.h"

#include <QStringConverter>

using kvo::CXMLFile;

class TestXmlFile : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_dir;
    const QString m_path = m_dir.filePath(u"ä"_s);

    bool load(CXMLFile& file, const QByteArray& bytes) const
    {
        writeFile(m_path, bytes);
        return file.Load(m_path.toStdString());
    }

    QByteArray saved(const CXMLFile& file) const
    {
        return file.Save(m_path.toStdString()) ? readFile(m_path) : QByteArray("(not saved)");
    }

    static void edit(CXMLFile& file, const QByteArray& line)
    {
        const QByteArrayList words = line.sliced(1).split(' ');
        const std::string text = QByteArray::fromPercentEncoding(words.value(1)).toStdString();
        QByteArrayList way = words[0].split('/');
        const QByteArray name = way.takeLast();
        CXMLFile::CNode* node = file.GetCurr();
        for (const QByteArray& step : way)
            node = node->FindChild(step);
        switch (line[0]) {
        case '@':
            node->attributes[name] = text;
            break;
        case '!':
            node->attributes.Remove(name);
            break;
        case '-':
            file.SetCurr(node->FindChild(name));
            file.Remove();
            break;
        case '~':
            node->FindChild(name)->name = text;
            break;
        case '+':
            node->InsertChild(new CXMLFile::CNode(name.toStdString()), false);
            [[fallthrough]];
        default:
            node->FindChild(name)->value = text;
        }
    }

    QByteArray edited(const QByteArray& bytes, const QByteArray& edits) const
    {
        CXMLFile file;
        if (!load(file, bytes))
            return "(not loaded)";
        for (const QByteArray& line : edits.split('\n'))
            edit(file, line);
        return saved(file);
    }

private slots:
    // Or, cut off anywhere, refuses the document.
    void keepsEveryByte()
    {
        QStringEncoder utf16(QStringEncoder::Utf16LE, QStringEncoder::Flag::WriteBom);
        CXMLFile file;
        for (const QString& name : {u"entities"_s, u"mixed"_s}) {
            const QByteArray utf8 = readFile(QFINDTESTDATA("../fuzz/seeds/xmlfile/") + name);
            for (const QByteArray& bytes :
                 {utf8, "\ufeff" + utf8, QByteArray(utf16(QString::fromUtf8(utf8)))}) {
                for (qsizetype length = 0; length <= bytes.size(); ++length) {
                    const bool loaded = load(file, bytes.first(length));
                    QVERIFY(loaded || length < bytes.size());
                    QCOMPARE(saved(file), loaded ? bytes.first(length) : "(not saved)");
                }
            }
        }
    }

    void walksElements()
    {
        const QByteArray text =
            " \n<!DOCTYPE r [<!ENTITY e '<d/>'>]><r>t&e;<a><c/></a><b/><a/>t</r>";
        CXMLFile file;
        QVERIFY(load(file, text));
        auto* const r = file.GetCurr();
        auto* const a = r->FindChild("a");
        auto* const b = r->FindChild("b");
        QVERIFY(r->value == "tt" && r->Child() == a && a->name == "a");
        QVERIFY(a->Next() == b && b->Next() == a->FindNext("a"));
        QVERIFY(!a->FindNext("c") && !a->FindChild("b") && !b->FindChild("c") &&
                !b->Next()->Next());
        auto* const n = new CXMLFile::CNode("n");
        for (auto* const node : {r, b, b->Child(), n, n})
            r->InsertChild(node, false);
        for (auto* const node : {r, b->Child(), n, n}) {
            file.SetCurr(node);
            file.Remove();
        }
        QCOMPARE(saved(file), text);
    }

    void writesEdits_data()
    {
        addCases(QFINDTESTDATA("data/tst_xmlfile-edits.txt"), {"edits", "document"});
    }

    void writesEdits()
    {
        QFETCH(QByteArray, edits);
        QFETCH(QByteArray, document);
        const auto [before, after] = beforeAndAfter(document);
        QCOMPARE(edited(before, edits), after);
        for (const char* lineEnd : {"\r", "\r\n"})
            QCOMPARE(edited(QByteArray(before).replace("\n", lineEnd), edits),
                     QByteArray(after).replace("\n", lineEnd));
    }

    void writesOtherEdits()
    {
        const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><r b='\xe4' a='";
        QCOMPARE(edited(latin + "'/>", "@a \ufeffé中\U0001F600"),
                 latin + "&#65279;\xe9&#20013;&#128512;'/>");
        QCOMPARE(edited("<r/>", "+a"), "<r>\n  <a />\n</r>");
        QCOMPARE(edited("<r><a><b/>  \n</a><b/> \n</r>", "-a/b\n=a x\n-b"), "<r><a>x</a>\n</r>");
    }

    void refusesWhatIsNoDocument()
    {
        const QByteArray dtd =
            "<!DOCTYPE a [<!ENTITY e '" + QByteArray(4000, 'x') + "'><!ENTITY f '&e;&e;'>";
        QByteArray tag = "<a";
        for (int i = 0; i < 1000; ++i)
            tag += " b" + QByteArray::number(i) + "=''";
        CXMLFile file;
        for (const QByteArray& bytes : QByteArrayList{
                 "<a>\xe4</a>", "\ufeff\ufeff<a/>", "<?xml version='1.0' encoding='no'?><a/>",
                 "<!DOCTYPE a><!DOCTYPE a><a/>", "<a><!DOCTYPE a></a>", dtd + "]><a b='&f;'/>",
                 dtd + "]><a>" + QByteArray("&e;").repeated(100'000) + "</a>",
                 dtd + QByteArray("<!ATTLIST a b ID ''>").repeated(4000) + "]><a/>",
                 tag + " c=''/>", "<a b\x01='1'/>", "<a>]]\x01</a>", "<a><?p \x01?></a>",
                 "<a \xcc\x80='1'/>", "<!DOCTYPE a [<!ENTITY \xcc\x80 '1'>]><a/>",
                 "<!DOCTYPE a [<!NOTATION \xcc\x80 SYSTEM '1'>]><a/>", "<!DOCTYPE @><a/>"})
            QVERIFY2(!load(file, bytes), bytes.left(99));
        const QByteArray quotes = "<b " + QByteArray(3000, '"');
        QVERIFY(load(file, tag + ">" + quotes.sliced(3) + "<!--" + quotes + "--><?p " + quotes +
                               "?><![CDATA[" + quotes + "]]></a>"));
    }

    // And nests to any depth.
    void keepsTheFileWhenAWriteFails()
    {
        const QByteArray nested =
            QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000);
        CXMLFile file;
        QVERIFY(load(file, nested));
        file.GetCurr()->value += "x";
        writeWithLimit([&] { QCOMPARE(saved(file), "(not saved)"); });
        QVERIFY(readFile(m_path) == nested);
    }
};

QTEST_APPLESS_MAIN(TestXmlFile)
#include "tst_xmlfile.moc"
