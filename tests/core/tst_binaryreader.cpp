#include "core/BinaryReader.h"

#include <QTest>

using namespace kestrune;

class TestBinaryReader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void failedReadLeavesCursor()
    {
        BinaryReader reader(QByteArray("\x01\x02\x03", 3));
        QCOMPARE(reader.readUInt32LE(), std::nullopt);
        QCOMPARE(reader.offset(), 0);
        QCOMPARE(reader.readUInt16LE(), std::optional<quint16>(0x0201));
        QCOMPARE(reader.offset(), 2);
        QCOMPARE(reader.readUInt16LE(), std::nullopt);
        QCOMPARE(reader.readUInt8(), std::optional<quint8>(3));
        QVERIFY(reader.isEOF());
        QCOMPARE(reader.readUInt8(), std::nullopt);
    }

    void positioningClamps_data()
    {
        QTest::addColumn<qsizetype>("start");
        QTest::addColumn<bool>("useSkip");
        QTest::addColumn<qsizetype>("amount");
        QTest::addColumn<qsizetype>("expected");
        QTest::addRow("seek before start") << qsizetype(10) << false << qsizetype(-5) << qsizetype(0);
        QTest::addRow("skip past end") << qsizetype(30) << true << qsizetype(8) << qsizetype(32);
        QTest::addRow("skip before start") << qsizetype(3) << true << qsizetype(-8) << qsizetype(0);
        QTest::addRow("skip cannot overflow")
            << qsizetype(30) << true << std::numeric_limits<qsizetype>::max() << qsizetype(32);
    }

    void positioningClamps()
    {
        QFETCH(qsizetype, start);
        QFETCH(bool, useSkip);
        QFETCH(qsizetype, amount);
        QFETCH(qsizetype, expected);
        BinaryReader reader(QByteArray(32, 'x'), start);
        if (useSkip)
            reader.skip(amount);
        else
            reader.seek(amount);
        QCOMPARE(reader.offset(), expected);
        QCOMPARE(reader.isEOF(), expected == 32);
        QCOMPARE(reader.remainingBytes(), 32 - expected);
    }

    void readView()
    {
        BinaryReader reader(QByteArray("abcd"));
        QVERIFY(!reader.readView(-1) && !reader.readView(5));
        QCOMPARE(reader.offset(), 0);
        QCOMPARE(reader.readView(4)->toByteArray(), QByteArray("abcd"));
    }

};

QTEST_APPLESS_MAIN(TestBinaryReader)
#include "tst_binaryreader.moc"
