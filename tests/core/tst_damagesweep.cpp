#include "core/ITunesDBParser.h"
#include "support/TestFiles.h"
#include "core/ParseError.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

using namespace kestrune;
using kestrune::testing::fixtureDatabase;

namespace {

// Parses damaged copies of a real database and keeps score across all of them.
class Sweep {
public:
    // Returns false, with the reason in `failure`, when a case misbehaves.
    bool parse(const QByteArray &bytes)
    {
        ParseWork work;
        const ParseWork limits = ParseBudget::limitsFor(bytes.size());
        try {
            const ParseResult result = ITunesDBParser().parse(bytes, &work);
            if (bytes.size() < 32 || !bytes.startsWith("mhbd"))
                return fail(bytes, "parsed what should have been refused");
            for (const Playlist &playlist : result.playlists) {
                if (playlist.name.isEmpty() || playlist.tracks.size() > playlist.trackIds.size())
                    return fail(bytes, "a playlist broke its invariants");
            }
        } catch (const ParseError &error) {
            const ParseError::Kind expected =
                bytes.size() < 32 ? ParseError::Kind::fileTooSmall : ParseError::Kind::invalidHeader;
            if (error.kind() != expected || (expected == ParseError::Kind::invalidHeader && bytes.startsWith("mhbd")))
                return fail(bytes, "wrong error");
        }
        if (work.iterations > limits.iterations || work.chunks > limits.chunks ||
            work.decodedBytes > limits.decodedBytes)
            return fail(bytes, "spent more than its limits");
        ++cases;
        totalBytes += bytes.size();
        totalWork += work.iterations + work.chunks + work.decodedBytes;
        return true;
    }

    // The parser's time follows its work counters, so the sweep bounds those, not the clock: linear in
    // the bytes parsed, with a small constant per input.
    [[nodiscard]] bool stayedLinear() const { return totalWork <= 7 * totalBytes + 6000 * cases; }

    qint64 cases = 0;
    qint64 totalBytes = 0;
    qint64 totalWork = 0;
    QString failure;

private:
    bool fail(const QByteArray &bytes, const char *why)
    {
        failure = QStringLiteral("%1 (input of %2 bytes)").arg(QLatin1StringView(why)).arg(bytes.size());
        return false;
    }
};

} // namespace

// Real databases (written by iTunes and by another project's library) parsed whole, then cut short and
// with bytes flipped: every parse returns a result or the right error, within its work limits, and the
// whole sweep stays linear in the bytes parsed.
class TestDamageSweep : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeDatabases_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QList<int>>("tracksPerPlaylist"); // resolved, in order
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QList<bool>>("smart"); // a master's type-100 view settings count as a smart marker
        QTest::addRow("old library") << QByteArray("library-5375-tracks.iTunesDB") << QList<int>{5375}
                                     << QStringList{"iPod Library"} << QList<bool>{false};
        QTest::addRow("podcasts") << QByteArray("podcasts-23-tracks.iTunesDB") << QList<int>{23, 15}
                                  << QStringList{"artm", "Podcasts"} << QList<bool>{true, true};
    }

    void wholeDatabases()
    {
        QFETCH(QByteArray, file);
        QFETCH(QList<int>, tracksPerPlaylist);
        QFETCH(QStringList, names);
        QFETCH(QList<bool>, smart);
        ParseWork work;
        const ParseResult result = ITunesDBParser().parse(fixtureDatabase(file.constData()), &work);
        QVERIFY(!work.capped && !result.looksTruncated);
        QCOMPARE(result.tracks.size(), tracksPerPlaylist.first()); // the master lists every track
        for (qsizetype i = 0; i < result.playlists.size(); ++i) {
            const Playlist &playlist = result.playlists.at(i);
            QCOMPARE(playlist.tracks.size(), tracksPerPlaylist.value(i));
            QCOMPARE(playlist.name, names.value(i));
            QCOMPARE(playlist.isSmart, smart.value(i));
            QCOMPARE(playlist.isMaster, i == 0);
        }
        QCOMPARE(result.playlists.size(), names.size());
        for (const Track &track : result.tracks)
            QVERIFY2(!track.title().isEmpty() && track.rockboxPath().startsWith("/iPod_Control/Music/F"), qPrintable(track.rockboxPath()));
    }

    void truncatedAndFlippedBytes()
    {
        Sweep sweep;
        QElapsedTimer timer;
        timer.start();
        QRandomGenerator random(20261121); // the same positions on every run
        const QByteArray small = fixtureDatabase("podcasts-23-tracks.iTunesDB");
        const QByteArray large = fixtureDatabase("library-5375-tracks.iTunesDB");
        for (qsizetype at = 0; at <= qMin<qsizetype>(small.size(), 64 * 1024); ++at) {
            QByteArray flipped = small;
            if (at < small.size())
                flipped[at] = char(flipped[at] ^ char(1 + random.bounded(255)));
            QVERIFY2(sweep.parse(small.left(at)) && (at % 5 != 0 || sweep.parse(flipped)), qPrintable(sweep.failure));
        }
        for (qsizetype cut = 64 * 1024; cut <= large.size(); cut += 16411) {
            QByteArray damaged = large;
            for (int flips = 0; flips < 8; ++flips)
                damaged[random.bounded(int(large.size()))] = char(random.bounded(256));
            QVERIFY2(sweep.parse(large.left(cut)) && sweep.parse(damaged), qPrintable(sweep.failure));
        }
        qInfo("%lld damaged databases, %lld MB, %lld units of work, in %lld ms", sweep.cases,
              sweep.totalBytes / 1000000, sweep.totalWork, timer.elapsed());
        QVERIFY(sweep.stayedLinear());
    }
};

QTEST_APPLESS_MAIN(TestDamageSweep)
#include "tst_damagesweep.moc"
