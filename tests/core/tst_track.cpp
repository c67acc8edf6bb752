#include "core/Playlist.h"

#include <QTest>

using namespace kestrune;

class TestTrack : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void displayTitle_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("ipodPath");
        QTest::addColumn<quint32>("id");
        QTest::addColumn<QString>("expected");

        QTest::addRow("title trimmed") << "\t Hey Jude \n" << "" << 1u << "Hey Jude";
        QTest::addRow("blank title shows whole colon path")
            << "  \n" << ":iPod_Control:Music:F00:ABCD.mp3" << 1u << ":iPod_Control:Music:F00:ABCD.mp3";
        QTest::addRow("slash path shows last component") << "" << "/Music/F01/X.mp3//" << 1u << "X.mp3";
        QTest::addRow("nothing at all") << "" << "" << 42u << "Track 42";
    }

    void displayTitle()
    {
        QFETCH(QString, title);
        QFETCH(QString, ipodPath);
        QFETCH(quint32, id);
        QTEST((Track({.id = id, .title = title, .ipodPath = ipodPath}).displayTitle()), "expected");
    }

    void formattedDuration_data()
    {
        QTest::addColumn<quint32>("ms");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("seconds");
        QTest::addRow("four minutes") << 240000u << "4:00" << 240;
        QTest::addRow("truncates, never rounds") << 59999u << "0:59" << 59;
        QTest::addRow("no hours field") << 3725000u << "62:05" << 3725;
    }

    void formattedDuration()
    {
        QFETCH(quint32, ms);
        QTEST(Track({.totalTimeMs = ms}).formattedDuration(), "expected");
        QTEST(Track({.totalTimeMs = ms}).durationSeconds(), "seconds");
    }

    void playlistDuration_data()
    {
        QTest::addColumn<QList<quint32>>("durationsMs");
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("expected");
        QTest::addRow("each track truncated before adding") << QList<quint32>{1999, 1999} << qint64(2) << "0m 02s";
        QTest::addRow("exactly an hour") << QList<quint32>{3600000} << qint64(3600) << "1h 00m 00s";
    }

    void playlistDuration()
    {
        QFETCH(QList<quint32>, durationsMs);
        Playlist playlist;
        for (quint32 ms : durationsMs)
            playlist.tracks.append(Track({.totalTimeMs = ms}));
        QTEST(playlist.totalDurationSeconds(), "seconds");
        QTEST(playlist.formattedTotalDuration(), "expected");
    }

};

QTEST_APPLESS_MAIN(TestTrack)
#include "tst_track.moc"
