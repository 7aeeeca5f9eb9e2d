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

    // See data/tst_xmlfile-edits.txt.
    static void edit(CXMLFile& file, const QByteArray& line)
    {
        const QByteArrayList words = line.split(' ');
        const QByteArrayList place = words[1].split('@');
        const std::string text = QByteArray::fromPercentEncoding(words.value(2)).toStdString();
        QByteArrayList names = place[0].split('/');
        const QByteArray last = names.takeLast();
        CXMLFile::CNode* parent = file.GetCurr();
        for (const QByteArray& name : names)
            parent = parent->FindChild(name);
        if (words[0] == "insert")
            parent->InsertChild(new CXMLFile::CNode(last.toStdString()), false);
        CXMLFile::CNode* const node = parent->FindChild(last);
        if (place.size() > 1) {
            if (words[0] == "remove")
                node->attributes.Remove(place[1]);
            else
                node->attributes[place[1]] = text;
        } else if (words[0] == "remove") {
            file.SetCurr(node);
            file.Remove();
        } else {
            (words[0] == "rename" ? node->name : node->value) = text;
        }
    }

    QByteArray edited(const QByteArray& bytes, const QByteArrayList& edits) const
    {
        CXMLFile file;
        if (!load(file, bytes))
            return "(not loaded)";
        for (const QByteArray& line : edits)
            edit(file, line);
        return saved(file);
    }

private slots:
    void keepsEveryByte()
    {
        QStringEncoder utf16(QStringEncoder::Utf16LE, QStringEncoder::Flag::WriteBom);
        CXMLFile file;
        for (const QString& name : {u"entities"_s, u"mixed"_s}) {
            const QByteArray utf8 = readFile(QFINDTESTDATA("../fuzz/seeds/xmlfile/") + name);
            for (const QByteArray& bytes :
                 {utf8, "\ufeff" + utf8, QByteArray(utf16(QString::fromUtf8(utf8)))}) {
                QVERIFY(load(file, bytes));
                QCOMPARE(saved(file), bytes);
            }
        }
    }

    void findsChildrenAndSiblingsByName()
    {
        CXMLFile file;
        QVERIFY(load(file, "<r>t<!----><a><c/></a><b/><a/>t</r>"));
        auto* const r = file.GetCurr();
        auto* const a = r->Child();
        auto* const b = a->Next();
        QVERIFY(r->value == "tt" && a->name == "a" && b->name == "b");
        QVERIFY(r->FindChild("b") == b && b->Next() == a->FindNext("a"));
        QVERIFY(!a->FindNext("c") && !a->FindChild("b") && !b->FindChild("c"));
    }

    void passesOverElementsOfAnEntity()
    {
        CXMLFile file;
        QVERIFY(load(file, "<!DOCTYPE r [<!ENTITY e '<d/>'>]><r>&e;<a/></r>"));
        QCOMPARE(file.GetCurr()->Child()->name, "a");
    }

    void changesOnlyWhatIsEdited_data() { addCases(QFINDTESTDATA("data/tst_xmlfile-edits.txt")); }

    void changesOnlyWhatIsEdited()
    {
        QFETCH(const Case, change);
        QCOMPARE(edited(change.before, change.actions), change.after);
        for (const char* lineEnd : {"\r", "\r\n"})
            QCOMPARE(edited(QByteArray(change.before).replace("\n", lineEnd), change.actions),
                     QByteArray(change.after).replace("\n", lineEnd));
    }

    void writesWhatAnEncodingLacksAsReferences()
    {
        const QByteArray latin = "<?xml version='1.0' encoding='ISO-8859-1'?><r><a b='";
        QCOMPARE(edited(latin + "'/></r>", {"set a@b \ufeffé中\U0001F600"}),
                 latin + "&#65279;\xe9&#20013;&#128512;'/></r>");
    }

    void refusesWhatIsNoDocument()
    {
        const QByteArray dtd =
            "<!DOCTYPE a [<!ENTITY e '" + QByteArray(4000, 'x') + "'><!ENTITY f '&e;&e;'>";
        QByteArray tag = "<a";
        for (int i = 0; i < 1000; ++i)
            tag += " b" + QByteArray::number(i) + "=''";
        CXMLFile file;
        QVERIFY(load(file, tag + "/>"));
        for (const QByteArray& bytes : QByteArrayList{
                 "<a>\xe4</a>", QByteArray("\xff\xfe<\0a\0>\0\0\xd8<\0/\0a\0>\0", 18),
                 "\ufeff\ufeff<a/>", "<?xml version='1.0' encoding='no'?><a/>",
                 "<!DOCTYPE a><!DOCTYPE a><a/>", "<a><!DOCTYPE a></a>", dtd + "]><a b='&f;'/>",
                 dtd + "]><a>" + QByteArray("&e;").repeated(100'000) + "</a>",
                 dtd + QByteArray("<!ATTLIST a b ID ''>").repeated(4000) + "]><a/>",
                 "<!DOCTYPE a [<!ENTITY e '<!--'>]>" + tag + " c=''/>", "<a b\x01='1'/>",
                 "<a>]]\x01</a>", "<a><?p \x01?></a>", "<a \xcc\x80='1'/>",
                 "<!DOCTYPE a [<!ENTITY \xcc\x80 '1'>]><a/>",
                 "<!DOCTYPE a [<!NOTATION \xcc\x80 SYSTEM '1'>]><a/>", "<!DOCTYPE @><a/>"})
            QVERIFY2(!load(file, bytes), bytes.left(99));
        QCOMPARE(saved(file), "(not saved)");
    }

    void loadsManyQuotesOutsideOfTags()
    {
        const QByteArray text = "<b " + QByteArray(3000, '"');
        CXMLFile file;
        QVERIFY(load(file, "<a><!--" + text + "--><?p " + text + "?><![CDATA[" + text + "]]></a>"));
    }

    void loadsAnyDepth()
    {
        const qsizetype depth = 100'000;
        CXMLFile file;
        QVERIFY(load(file, QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth)));
    }
};

QTEST_APPLESS_MAIN(TestXmlFile)
#include "tst_xmlfile.moc"
