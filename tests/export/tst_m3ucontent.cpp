#include "export/RockboxGenerator.h"
#include "export/M3UContent.h"

#include <QTest>

using namespace kestrune;

namespace {

Track song(const QString &title, const QString &artist, quint32 ms, const QString &path)
{
    return Track({.id = 1, .title = title, .artist = artist, .ipodPath = path, .totalTimeMs = ms});
}

const Track queen = song(QStringLiteral("Bohemian Rhapsody"), QStringLiteral("Queen"), 354000,
                         QStringLiteral(":iPod_Control:Music:F02:ABCD.mp3"));
const Track eagles = song(QStringLiteral("Hotel California"), QStringLiteral("Eagles"), 391000,
                          QStringLiteral("iPod_Control:Music:F15:WXYZ.m4a"));

} // namespace

Q_DECLARE_METATYPE(kestrune::Track)

class TestM3UContent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeFile_data()
    {
        QTest::addColumn<QList<Track>>("tracks");
        QTest::addColumn<bool>("extended");
        QTest::addColumn<QString>("expected");
        QTest::addRow("extended") << QList<Track>{queen, eagles} << true
                                  << "#EXTM3U\n#EXTINF:354,Queen - Bohemian Rhapsody\n/iPod_Control/Music/F02/ABCD.mp3\n"
                                     "#EXTINF:391,Eagles - Hotel California\n/iPod_Control/Music/F15/WXYZ.m4a\n";
        QTest::addRow("plain") << QList<Track>{queen, eagles} << false
                               << "/iPod_Control/Music/F02/ABCD.mp3\n/iPod_Control/Music/F15/WXYZ.m4a\n";
        QTest::addRow("no tracks, extended") << QList<Track>{} << true << "#EXTM3U\n";
        QTest::addRow("no tracks, plain") << QList<Track>{} << false << "\n";
    }

    void wholeFile()
    {
        QFETCH(QList<Track>, tracks);
        QFETCH(bool, extended);
        const Playlist playlist{.name = QStringLiteral("Classic Rock"), .tracks = tracks};
        const ConversionOptions options{.extendedM3U = extended};
        QTEST(RockboxGenerator().generateM3UContent(playlist, options), "expected");
    }

    void infoLine_data()
    {
        QTest::addColumn<Track>("track");
        QTest::addColumn<QString>("expected");
        QTest::addRow("artist trimmed") << song(QStringLiteral("T"), QStringLiteral(" Queen "), 1000, {})
                                        << "#EXTINF:1,Queen - T";
        QTest::addRow("blank artist") << song(QStringLiteral("T"), QStringLiteral(" \n"), 1000, {}) << "#EXTINF:1,T";
        QTest::addRow("Unknown Artist") << song(QStringLiteral("T"), QStringLiteral("Unknown Artist"), 1000, {})
                                        << "#EXTINF:1,T";
        QTest::addRow("unknown artist in other case is an artist")
            << song(QStringLiteral("T"), QStringLiteral("unknown artist"), 1000, {}) << "#EXTINF:1,unknown artist - T";
        QTest::addRow("seconds truncated") << song(QStringLiteral("T"), {}, 354999, {}) << "#EXTINF:354,T";
    }

    void infoLine()
    {
        QFETCH(Track, track);
        const Playlist playlist{.tracks = {track}};
        const QStringList lines = RockboxGenerator().generateM3UContent(playlist, {}).split(u'\n');
        QTEST(lines.value(1), "expected");
    }

    void pathLine_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("ipodPath");
        QTest::addColumn<QString>("expected");
        const QString path = QStringLiteral(":iPod_Control:Music:F02:ABCD.mp3");
        QTest::addRow("no prefix") << "" << path << "/iPod_Control/Music/F02/ABCD.mp3";
        QTest::addRow("stored with slashes already") << "" << "/iPod_Control/Music/F02/ABCD.mp3"
                                                     << "/iPod_Control/Music/F02/ABCD.mp3";
        QTest::addRow("prefix with trailing slash") << "/Volumes/IPOD/" << path
                                                    << "/Volumes/IPOD/iPod_Control/Music/F02/ABCD.mp3";
        QTest::addRow("prefix outside iPod_Control") << "/mnt" << ":Music:X.mp3" << "/mnt/Music/X.mp3";
        QTest::addRow("only one slash dropped") << "/Music//" << path << "/Music//iPod_Control/Music/F02/ABCD.mp3";
        QTest::addRow("empty path") << "" << "" << "/";
        QTest::addRow("trailing slashes stripped outside iPod_Control") << "/mnt" << ":Music:Dir:" << "/mnt/Music/Dir";
        QTest::addRow("two-, three- and four-byte characters") << "" << ":Music:Café 音😀.mp3" << "/Music/Café 音😀.mp3";
        const QString lone = QStringLiteral(":x") + QChar(0xD800) + QStringLiteral("y");
        QTest::addRow("unpaired surrogate") << "" << lone << QString(lone).replace(u':', u'/');
    }

    void pathLine()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, ipodPath);
        QFETCH(QString, expected);
        const Track track({.ipodPath = ipodPath});
        const ConversionOptions options{.extendedM3U = false, .customPathPrefix = prefix};
        QCOMPARE(RockboxGenerator().generateM3UContent(Playlist{.tracks = {track}}, options), expected + u'\n');
        if (prefix.isEmpty())
            QCOMPARE(expected, track.rockboxPath()); // the file carries exactly the device path
        QCOMPARE(m3uPathLineUtf8Size(track, prefix), expected.toUtf8().size());
    }
};

QTEST_APPLESS_MAIN(TestM3UContent)
#include "tst_m3ucontent.moc"
