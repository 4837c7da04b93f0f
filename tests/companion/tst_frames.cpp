#include "frames.h"
#include "suite.h"

class tst_frames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lengthStandsInTheMachinesOrder()
    {
        const std::uint32_t length = 2;
        QCOMPARE(writeFrame("{}"), std::string(reinterpret_cast<const char *>(&length), 4) + "{}");
    }

    void comesByteByByte()
    {
        const std::string message("{\"a\":\"\0ж\"}", 12);
        const auto frame = writeFrame(message);
        FrameReader reader(100);
        for (int turn = 0; turn < 3; ++turn) {
            for (std::size_t at = 0; at + 1 < frame.size(); ++at) {
                reader.append(std::string_view(frame).substr(at, 1));
                QVERIFY(!reader.next());
                QCOMPARE(reader.pending(), at + 1);
            }
            reader.append(std::string_view(frame).substr(frame.size() - 1));
            QCOMPARE(reader.next(), message);
            QVERIFY(!reader.next());
            QCOMPARE(reader.pending(), std::size_t(0));
        }
        QVERIFY(!reader.broken());
    }

    void severalComeAtOnce()
    {
        FrameReader reader(100);
        reader.append(writeFrame("one") + writeFrame("2") + writeFrame("three") +
                      writeFrame("four").substr(0, 5));
        QCOMPARE(reader.next(), "one");
        QCOMPARE(reader.next(), "2");
        QCOMPARE(reader.next(), "three");
        QVERIFY(!reader.next());
        QCOMPARE(reader.pending(), std::size_t(5));
        reader.append("our" + writeFrame("five"));
        QCOMPARE(reader.next(), "four");
        QCOMPARE(reader.next(), "five");
        QVERIFY(!reader.next());
    }

    void bounds_data()
    {
        QTest::addColumn<quint32>("longest");
        QTest::newRow("1") << 1U;
        QTest::newRow("to the browser") << longestFrameToBrowser;
        QTest::newRow("from the browser") << longestFrameFromBrowser;
    }

    void bounds()
    {
        QFETCH(quint32, longest);
        const std::string message(longest, 'x');
        FrameReader reader(longest);
        reader.append(writeFrame(message));
        QVERIFY(reader.next() == message);
        QVERIFY(!reader.broken());
        reader.append(writeFrame(message + "x").substr(0, 4)); // known before the first byte of it is there
        QVERIFY(!reader.next());
        QVERIFY(reader.broken());
    }

    void brokenStaysBroken_data()
    {
        QTest::addColumn<quint32>("length");
        QTest::newRow("zero") << 0U;
        QTest::newRow("one too long") << 11U;
        QTest::newRow("most of all") << 0xffffffffU;
    }

    void brokenStaysBroken()
    {
        QFETCH(quint32, length);
        FrameReader reader(10);
        reader.append(writeFrame("good"));
        reader.append({reinterpret_cast<const char *>(&length), 4});
        reader.append(writeFrame("after"));
        QVERIFY(!reader.broken()); // what came before it is still good
        QCOMPARE(reader.next(), "good");
        QVERIFY(!reader.next());
        QVERIFY(reader.broken());
        QCOMPARE(reader.pending(), std::size_t(0));
        reader.append(writeFrame("later"));
        QVERIFY(!reader.next());
        QVERIFY(reader.broken());
        QCOMPARE(reader.pending(), std::size_t(0));
    }
};

QUORVEL_TEST(tst_frames)
#include "tst_frames.moc"
