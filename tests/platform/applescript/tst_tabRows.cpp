#include "suite.h"
#include "tabRows.h"

using namespace Qt::StringLiterals;

namespace {

/// "window-tab url" for each tab that was read.
QStringList read(const QString &output)
{
    QStringList lines;
    for (const auto &tab : readTabRows(output, u"Safari"_s))
        lines.append(u"%1-%2 %3"_s.arg(tab.windowIndex).arg(tab.tabIndex).arg(tab.url));
    return lines;
}

} // namespace

class TestTabRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsOrderAndBrowser()
    {
        const std::vector<BrowserTab> expected{{u"Arc"_s, 2, 7, u"https://b.example/"_s},
                                               {u"Arc"_s, 1, 1, u"https://a.example/"_s},
                                               {u"Arc"_s, 2, 7, u"https://b.example/"_s}};
        QVERIFY(
            readTabRows(u"2\t7\thttps://b.example/\n1\t1\thttps://a.example/\n2\t7\thttps://b.example/\n"_s,
                        u"Arc"_s) == expected);
    }

    void lineBreaks_data()
    {
        QTest::addColumn<QString>("lineBreak");
        QTest::newRow("LF") << u"\n"_s;
        QTest::newRow("VT") << u"\v"_s;
        QTest::newRow("FF") << u"\f"_s;
        QTest::newRow("CR") << u"\r"_s;
        QTest::newRow("CR LF") << u"\r\n"_s;
        QTest::newRow("next line") << u"\u0085"_s;
        QTest::newRow("line separator") << u"\u2028"_s;
        QTest::newRow("paragraph separator") << u"\u2029"_s;
    }
    void lineBreaks()
    {
        QFETCH(QString, lineBreak);
        QCOMPARE(read(u"1\t1\thttps://a.example/"_s + lineBreak + u"1\t2\thttps://b.example/"_s + lineBreak),
                 QStringList({u"1-1 https://a.example/"_s, u"1-2 https://b.example/"_s}));
    }

    void rows_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("tab"); // empty where the line is passed over
        const auto row = [](const char *name, const QString &line, const QString &tab = {}) {
            QTest::newRow(name) << line << tab;
        };
        row("nothing", u""_s);
        row("two fields", u"1\thttps://a.example/"_s);
        row("four fields", u"1\t2\thttps://a.example/\t"_s);
        row("blanks for tabs", u"1 2 https://a.example/"_s);
        row("plus", u"+1\t+2\thttps://a.example/"_s, u"1-2 https://a.example/"_s);
        row("minus", u"-1\t-0\thttps://a.example/"_s, u"-1-0 https://a.example/"_s);
        row("leading zeros", u"007\t0002\thttps://a.example/"_s, u"7-2 https://a.example/"_s);
        row("greatest", u"9223372036854775807\t1\thttps://a.example/"_s,
            u"9223372036854775807-1 https://a.example/"_s);
        row("least", u"-9223372036854775808\t1\thttps://a.example/"_s,
            u"-9223372036854775808-1 https://a.example/"_s);
        row("too great", u"9223372036854775808\t1\thttps://a.example/"_s);
        row("too small", u"1\t-9223372036854775809\thttps://a.example/"_s);
        row("no window", u"\t1\thttps://a.example/"_s);
        row("no tab", u"1\t\thttps://a.example/"_s);
        row("sign alone", u"+\t1\thttps://a.example/"_s);
        row("two signs", u"+-1\t1\thttps://a.example/"_s);
        row("blank before", u" 1\t1\thttps://a.example/"_s);
        row("blank after", u"1\t1 \thttps://a.example/"_s);
        row("fraction", u"1.0\t1\thttps://a.example/"_s);
        row("exponent", u"1e0\t1\thttps://a.example/"_s);
        row("hexadecimal", u"0x1\t1\thttps://a.example/"_s);
        row("thousands", u"1,000\t1\thttps://a.example/"_s);
        row("other digits", u"١\t1\thttps://a.example/"_s);
        row("no address", u"1\t1\t"_s);
        row("white space in it", u"1\t1\thttps://a.example/ b"_s);
        row("blank before it", u"1\t1\t https://a.example/"_s);
        row("no-break space in it", u"1\t1\thttps://a.example/\u00a0b"_s);
        row("control character in it", u"1\t1\thttps://a.example/\u0001"_s);
        row("delete character in it", u"1\t1\thttps://a.example/\u007f"_s);
        row("not a URL", u"1\t1\thttps://[1/"_s);
        row("port that is none", u"1\t1\thttps://a.example:port/"_s);
        row("browsers' loose ways", u"1\t1\thttps://a.example/?q=%zz|{}"_s,
            u"1-1 https://a.example/?q=%zz|{}"_s);
        row("blank page", u"1\t1\tabout:blank"_s, u"1-1 about:blank"_s);
        row("other scheme", u"1\t1\tfile:///tmp/a.html"_s, u"1-1 file:///tmp/a.html"_s);
        row("letters beyond Latin", u"1\t1\thttps://пример.example/ё"_s, u"1-1 https://пример.example/ё"_s);
    }
    void rows()
    {
        QFETCH(QString, line);
        QFETCH(QString, tab);
        QCOMPARE(read(line), tab.isEmpty() ? QStringList() : QStringList(tab));
        // The rows around it are read whatever it is.
        QCOMPARE(read(u"1\t1\tabout:a\n"_s + line + u"\n9\t9\tabout:b"_s).size(), tab.isEmpty() ? 2 : 3);
    }
};

QUORVEL_TEST(TestTabRows, QCoreApplication)
#include "tst_tabRows.moc"
