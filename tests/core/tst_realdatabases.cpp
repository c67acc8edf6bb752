#include "core/ITunesDBParser.h"
#include "support/TestFiles.h"

#include <QFile>
#include <QTest>

using namespace kestrune;
using kestrune::testing::fixtureDatabase;

namespace {

} // namespace

// Databases written by iTunes and by another project's library, parsed as they are.
class TestRealDatabases : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oldFormatLibrary()
    {
        ParseWork work;
        const ParseResult result = ITunesDBParser().parse(fixtureDatabase("library-5375-tracks.iTunesDB"), &work);
        QVERIFY(!work.capped);
        QCOMPARE(result.tracks.size(), 5375);
        QCOMPARE(result.trackOrder.size(), 5375);
        QCOMPARE(result.playlists.size(), 1);
        const Playlist &master = result.playlists.first();
        QCOMPARE(master.name, QStringLiteral("iPod Library"));
        QVERIFY(master.isMaster);
        QCOMPARE(master.trackIds.size(), 5375);
        QCOMPARE(master.tracks.size(), 5375);

        int withTitle = 0;
        for (const Track &track : result.tracks) {
            QVERIFY2(track.rockboxPath().startsWith(QStringLiteral("/iPod_Control/Music/F")),
                     qPrintable(track.rockboxPath()));
            withTitle += track.title.isEmpty() ? 0 : 1;
        }
        QCOMPARE(withTitle, 5375);
    }

    void podcastDatabase()
    {
        ParseWork work;
        const ParseResult result = ITunesDBParser().parse(fixtureDatabase("podcasts-23-tracks.iTunesDB"), &work);
        QVERIFY(!work.capped);
        QCOMPARE(result.tracks.size(), 23);
        QCOMPARE(result.playlists.size(), 2);

        const Playlist &master = result.playlists[0];
        QCOMPARE(master.name, QStringLiteral("artm"));
        QVERIFY(master.isMaster);
        QVERIFY(master.isSmart); // its type-100 view settings count as a smart marker
        QCOMPARE(master.tracks.size(), 23);

        const Playlist &podcasts = result.playlists[1];
        QCOMPARE(podcasts.name, QStringLiteral("Podcasts"));
        QVERIFY(!podcasts.isMaster);
        QVERIFY(podcasts.isSmart);
        QCOMPARE(podcasts.trackIds.size(), 15);
        QCOMPARE(podcasts.tracks.size(), 15);
        QVERIFY(master.dbId != 0 && podcasts.dbId != 0 && master.dbId != podcasts.dbId);
    }
};

QTEST_APPLESS_MAIN(TestRealDatabases)
#include "tst_realdatabases.moc"
