#include "kvo/xmlfile.h"

#include <QFile>
#include <QStringConverter>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

#include <csignal>

#include <sys/resource.h>

using CNode = kvo::CXMLFile::CNode;
using EditFunction = std::function<void(kvo::CXMLFile&)>;
Q_DECLARE_METATYPE(EditFunction)

class tst_XmlFile : public QObject
{
    Q_OBJECT

private slots:
    void untouched_data();
    void untouched();
    void read();
    void edited_data();
    void edited();
    void refused_data();
    void refused();
    void deep();
    void unusable();
    void failedSave();

private:
    void store(const QByteArray& bytes);
    QByteArray saved();

    QTemporaryDir m_dir;
    const std::string m_source = m_dir.filePath(QStringLiteral("sörce")).toStdString();
    const std::string m_target = m_dir.filePath(QStringLiteral("target")).toStdString();
};

namespace {

QByteArray In(QStringConverter::Encoding encoding, const QString& text)
{
    return QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(text);
}

// The element that the names lead to from the top element.
CNode& At(kvo::CXMLFile& file, std::initializer_list<const char*> names)
{
    CNode* node = file.GetCurr();
    for (const char* name : names)
        node = node->FindChild(name);
    return *node;
}

void Remove(kvo::CXMLFile& file, CNode* node)
{
    file.SetCurr(node);
    file.Remove();
    file.Root();
}

CNode* Add(CNode& parent, const char* name, const char* value = "")
{
    auto* node = new CNode(name);
    node->value = value;
    parent.InsertChild(node, false);
    return node;
}

} // namespace

void tst_XmlFile::store(const QByteArray& bytes)
{
    QFile file(QString::fromStdString(m_source));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QByteArray tst_XmlFile::saved()
{
    QFile file(QString::fromStdString(m_target));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

void tst_XmlFile::untouched_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QString project = QStringLiteral("<?xml version=\"1.0\" encoding='utf-8'?>\r\n<!-- a > b -->\r\n<Project  xmlns = "
                                           "'u:ü'\t>\r\n"
                                           "\t<A x='\"' y=\"'&#10;&amp;\"\n z='>'/><A />text \U0001F600 &lt;&#x41;\n\r\n<B></B >\r"
                                           "<![CDATA[<C>&]]]]><!-- c --><?pi <? ?>\r\n</Project\n>\r\n<?end?>\n\n");
    QTest::newRow("mixed line ends") << project.toUtf8();
    QTest::newRow("UTF-8 with a byte order mark") << In(QStringConverter::Utf8, project);
    QTest::newRow("UTF-16 LE") << In(QStringConverter::Utf16LE, project);
    QTest::newRow("UTF-16 BE") << In(QStringConverter::Utf16BE, project);
    QTest::newRow("Latin-1") << QByteArray("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe4</a>");
    QTest::newRow("no declaration, no line end") << QByteArray("<a/>");
    QTest::newRow("DOCTYPE with entities and defaults")
        << QByteArray("<!DOCTYPE a [<!ENTITY t 'x>y'><!ENTITY e '<b>&t;</b>'>\n<!ATTLIST c d CDATA 'v'>]>\n"
                      "<a>&t;<c u='&t;'/>&e;q&e;<c>&e;</c></a>\n");
    QTest::newRow("an entity of a DTD elsewhere") << QByteArray("<!DOCTYPE a SYSTEM 'none.dtd'><a>x&e;<b c='1'>&e;</b></a>");
    QTest::newRow("prefixes that nobody declares") << QByteArray("<a:b c:d='1' xmlns='x'><e:f/></a:b>");
}

void tst_XmlFile::untouched()
{
    QFETCH(QByteArray, bytes);
    for (int length = 0; length <= bytes.size(); ++length) {
        store(bytes.first(length));
        QFile::remove(QString::fromStdString(m_target));
        kvo::CXMLFile file;
        const bool loaded = file.Load(m_source);
        QCOMPARE(file.GetCurr() != nullptr, loaded);
        QCOMPARE(file.Save(m_target), loaded);
        QCOMPARE(saved(), loaded ? bytes.first(length) : QByteArray("missing"));
        QVERIFY(loaded || length < bytes.size());
    }
}

void tst_XmlFile::read()
{
    store("<!DOCTYPE r [<!ENTITY e 'ü'>]><r>t<a x='&lt;&e;\n&#10;'> "
          "1&amp;<!--c--><![CDATA[<2]]>\r\n&e;"
          "</a>t<b/><a><c/></a></r>");
    kvo::CXMLFile file;
    QVERIFY(file.Load(m_source));
    CNode* const root = file.GetCurr();
    CNode* const first = root->Child();
    QCOMPARE(root->name, "r");
    QCOMPARE(root->value, "");
    QCOMPARE(first->value, " 1&<2\nü");
    QCOMPARE(first->attributes["x"], "<ü \n");
    QVERIFY(!first->attributes.Exists("X") && !first->Child() && !first->FindChild("c"));
    QCOMPARE(first->Next()->name, "b");
    QCOMPARE(first->FindNext("a"), root->FindChild("b")->Next());
    QVERIFY(!first->FindNext("a")->FindNext("a") && !first->FindNext("a")->Next());
}

void tst_XmlFile::edited_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<EditFunction>("edit");
    QTest::addColumn<QByteArray>("result");
    const auto row = [](const char* name, const char* source, EditFunction edit, const char* result) {
        QTest::newRow(name) << QByteArray(source) << edit << QByteArray(result);
    };
    using File = kvo::CXMLFile;

    const auto quotes = [](File& f) { At(f, {}).attributes["a"] = At(f, {}).attributes["b"] = "'\"&<>\t\n"; };
    row("an attribute keeps its quotes", "<r a = 'x'  b=\"y\"/>", quotes,
        "<r a = '&#39;\"&amp;&lt;>&#9;&#10;'  b=\"'&#34;&amp;&lt;>&#9;&#10;\"/>");
    const auto ampersands = [](File& f) {
        At(f, {}).attributes["a"] = "&amp;";
        At(f, {}).attributes["b"] = "&&";
    };
    row("an attribute is compared by its meaning", "<r a='&amp;' b='&#x26;&amp;' c='\n'/>", ampersands,
        "<r a='&amp;amp;' b='&#x26;&amp;' c='\n'/>");
    const auto attributes = [](File& f) {
        for (const char* name : {"none", "a", "c", "b"})
            At(f, {}).attributes.Remove(name);
        At(f, {}).attributes["d"] = At(f, {}).attributes["c"] = "50";
    };
    row("attributes removed and added", "<r a='1'\n b='2' c='3' />", attributes, "<r c='50' d=\"50\" />");
    const auto characters = [](File& f) { At(f, {}).attributes["a"] = "é中\U0001F600"; };
    row("characters that Latin-1 lacks", "<?xml version='1.0' encoding='ISO-8859-1'?><r a=''/>", characters,
        "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xE9&#20013;&#128512;'/>");
    row("characters that ASCII lacks", "<?xml version='1.0' encoding='US-ASCII'?><r a=''/>", characters,
        "<?xml version='1.0' encoding='US-ASCII'?><r a='&#233;&#20013;&#128512;'/>");

    const auto value = [](File& f) { At(f, {"a"}).value = "..\\bin &<]]>\"é\x01\n\r"; };
    row("a value", "<r>\n  <a>old</a></r>", value, "<r>\n  <a>..\\bin &amp;&lt;]]&gt;\"é\uFFFD\n&#13;</a></r>");
    row("a value with the line ends of the file", "<r>\r\n<a></a></r>", value,
        "<r>\r\n<a>..\\bin &amp;&lt;]]&gt;\"é\uFFFD\r\n&#13;</a></r>");
    const auto plain = [](File& f) { At(f, {"a"}).value = "new"; };
    row("a value among comments", "<r><a><!--1-->old<!--2--><![CDATA[<!--]]>x<?p?>y</a></r>", plain,
        "<r><a><!--1-->new<!--2--><?p?></a></r>");
    row("a value in an element that closes itself", "<r><a b='/>' /></r>", plain, "<r><a b='/>'>new</a></r>");
    row("a value before children", "<r><a>\n  <b/>\n</a></r>", plain, "<r><a>new\n  <b/>\n</a></r>");

    const auto removal = [](File& f) {
        CNode *const a = &At(f, {"a"}), *const b = &At(f, {"b"});
        Remove(f, a);
        Remove(f, b);
    };
    row("siblings removed", "<r>\r\n  <a>\r\n  </a>\r\n\r\n  <b/> <!-- c -->\r\n  <c/>\r\n</r>", removal,
        "<r> <!-- c -->\r\n  <c/>\r\n</r>");
    row("all children removed", "<r>\n\t<a/>\n\t<b/>\n</r>", removal, "<r>\n</r>");
    row("elements removed from text", "<r>some <a/>text <b/> here</r>", removal, "<r>some text here</r>");
    const auto edited = [](File& f) {
        CNode *const a = &At(f, {"a"}), *const c = a->Child();
        c->value = a->value = a->attributes["x"] = "new";
        Remove(f, a->FindChild("d"));
        Remove(f, a);
        Add(*a, "n");
        Remove(f, c);
    };
    row("a child, then its edited parent removed", "<r>\n <a x='1'>v<c/> <d/></a>\n <b/>\n</r>", edited, "<r>\n <b/>\n</r>");
    const auto nothing = [](File& f) {
        f.Remove();
        Remove(f, nullptr);
        At(f, {}).InsertChild(nullptr, false);
        At(f, {}).InsertChild(f.GetCurr()->Child(), false);
        CNode* const added = Add(At(f, {"a"}), "b");
        Add(*added, "c");
        Remove(f, added);
    };
    row("nothing in effect", "<r>\n  <a/>\n</r>", nothing, "<r>\n  <a/>\n</r>");

    const auto link = [](File& f) { Add(At(f, {"a"}), "Link", "A&B"); };
    row("a child like its siblings", "<r>\r\n\t<a>\r\n\t\t\t<b/>\r\n\t</a>\r\n</r>", link,
        "<r>\r\n\t<a>\r\n\t\t\t<b/>\r\n\t\t\t<Link>A&amp;B</Link>\r\n\t</a>\r\n</r>");
    row("a child after a comment", "<r>\n  <a>\n    <b/> <!-- b -->\n  </a>\n</r>", link,
        "<r>\n  <a>\n    <b/> <!-- b -->\n    <Link>A&amp;B</Link>\n  </a>\n</r>");
    row("a child in an element that closes itself", "<r>\n   <a x='1' />\n</r>", link,
        "<r>\n   <a x='1'>\n      <Link>A&amp;B</Link>\n   </a>\n</r>");
    row("a child after a byte order mark", "\xEF\xBB\xBF<r>\n  <a></a>\n</r>", link,
        "\xEF\xBB\xBF<r>\n  <a>\n    <Link>A&amp;B</Link>\n  </a>\n</r>");
    row("a child in a blank element", "<r>\n  <a>\n  </a>\n</r>", link, "<r>\n  <a>\n    <Link>A&amp;B</Link>\n  </a>\n</r>");
    row("a child where all is on one line", "<r><a/></r>", link, "<r><a><Link>A&amp;B</Link></a></r>");
    const auto both = [](File& f) {
        for (CNode* a = At(f, {}).Child(); a; a = a->Next()) {
            a->value = "new";
            Add(*a, "b");
        }
    };
    row("a child and a value", "<r>\n  <a>\n  </a>\n  <a/>\n</r>", both, "<r>\n  <a>new<b /></a>\n  <a>new<b /></a>\n</r>");
    const auto exchange = [](File& f) {
        Remove(f, &At(f, {"a", "b"}));
        Add(At(f, {"a"}), "c");
    };
    row("a child in place of the only one", "<r>\n  <a>\n    <b/>\n  </a>\n</r>", exchange, "<r>\n  <a>\n    <c />\n  </a>\n</r>");
    const auto subtree = [](File& f) {
        CNode* const a = Add(At(f, {}), "a");
        Add(*Add(*a, "b"), "c", "1")->attributes["x"] = "\"&";
        Add(*a, "d");
        Add(At(f, {}), "e");
    };
    row("children in the top element", "<r/>", subtree,
        "<r>\n  <a>\n    <b>\n      <c x=\"&#34;&amp;\">1</c>\n    </b>\n    <d />\n  </a>\n  <e "
        "/>\n</r>");
}

void tst_XmlFile::edited()
{
    QFETCH(QByteArray, source);
    QFETCH(EditFunction, edit);
    store(source);
    kvo::CXMLFile file;
    QVERIFY(file.Load(m_source));
    edit(file);
    QVERIFY(file.Save(m_target));
    QTEST(saved(), "result");
    QVERIFY(kvo::CXMLFile().Load(m_target));
}

void tst_XmlFile::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no XML") << QByteArray("Microsoft Visual Studio Solution File");
    QTest::newRow("an end tag too few") << QByteArray("<a><b></a>");
    QTest::newRow("two top elements") << QByteArray("<a/><b/>");
    QTest::newRow("an attribute twice") << QByteArray("<a b='1' b='2'/>");
    QTest::newRow("attributes without a blank between") << QByteArray("<a b='1'c='2'/>");
    QTest::newRow("bytes that are no UTF-8") << QByteArray("<a>\xe4</a>");
    QTest::newRow("an odd number of UTF-16 bytes") << In(QStringConverter::Utf16LE, QStringLiteral("<a/>")) + 'x';
    QTest::newRow("an unknown encoding") << QByteArray("<?xml version='1.0' encoding='none'?><a/>");
    QByteArray bomb = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (int i = 1; i < 10; ++i)
        bomb += "<!ENTITY e" + QByteArray::number(i) + " '" + ("&e" + QByteArray::number(i - 1) + ';').repeated(10) + "'>";
    QTest::newRow("an entity bomb") << bomb + "]><a>&e9;</a>";
    QTest::newRow("an entity bomb in an attribute") << bomb + "]><a b='&e9;'/>";
    QTest::newRow("many references to a long entity")
        << "<!DOCTYPE a [<!ENTITY e '" + QByteArray(4000, 'x') + "'>]><a>" + QByteArray("&e;").repeated(100'000) + "</a>";
}

void tst_XmlFile::refused()
{
    QFETCH(QByteArray, bytes);
    store("<a/>");
    kvo::CXMLFile file;
    QVERIFY(file.Load(m_source) && file.Save(m_target));
    store(bytes);
    QVERIFY(!file.Load(m_source));
    file.Remove();
    file.Root();
    QVERIFY(!file.GetCurr() && !file.Save(m_target));
    QCOMPARE(saved(), "<a/>");
}

void tst_XmlFile::deep()
{
    const int depth = 100'000;
    store(QByteArray("<a>").repeated(depth) + "<b/>" + QByteArray("</a>").repeated(depth));
    kvo::CXMLFile file;
    QVERIFY(file.Load(m_source));
    CNode* node = file.GetCurr();
    while (node->Child())
        node = node->Child();
    for (int i = 0; i < depth; ++i)
        node = Add(*node, "c");
    QVERIFY(file.Save(m_target));
    QVERIFY(saved() == QByteArray("<a>").repeated(depth) + "<b>" + QByteArray("<c>").repeated(depth - 1) + "<c />" +
                           QByteArray("</c>").repeated(depth - 1) + "</b>" + QByteArray("</a>").repeated(depth));
}

void tst_XmlFile::unusable()
{
    kvo::CXMLFile file;
    QVERIFY(!file.Load("") && !file.Load(m_dir.path().toStdString()) && !file.Load("/dev/zero"));
    store("<a/>");
    QVERIFY(file.Load(m_source));
    for (const std::string& target : {std::string(), m_dir.path().toStdString(), m_source + "/x", std::string("/dev/null")})
        QVERIFY(!file.Save(target));
}

void tst_XmlFile::failedSave()
{
    store("<a>" + QByteArray(1'000'000, 'x') + "</a>");
    kvo::CXMLFile file;
    QVERIFY(file.Load(m_source) && file.Save(m_target));
    file.GetCurr()->value += "xyz";
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{100'000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const bool done = file.Save(m_target);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    QVERIFY(!done);
    QVERIFY(saved().size() == 1'000'007);
}

QTEST_APPLESS_MAIN(tst_XmlFile)
#include "tst_xmlfile.moc"
