#include "app/PlaylistFilter.h"
#include "app/PlaylistSearchIndex.h"

#include <QRandomGenerator>
#include <QTest>

using namespace kestrune;

// The index must answer exactly as the plain filter does, whatever the text.
class TestSearchIndex : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheFilter();
};

void TestSearchIndex::agreesWithTheFilter()
{
    const QStringList words{"Straße", "STRASSE", "İstanbul", "istanbul", "ΣΟΦΙΑ", "σοφία", "Caffè", "CAFFÈ",
                            "ǅemal", "beat", "Beatles", "ﬁre", "FIRE", "東京", "🎵", " ", ""};
    QRandomGenerator random(99);
    const auto text = [&] {
        QString result;
        for (int n = random.bounded(0, 3); n >= 0; --n)
            result += words.at(random.bounded(int(words.size())));
        return result;
    };
    QList<Playlist> playlists;
    QList<Track> pool;
    for (quint32 id = 1; id <= 60; ++id)
        pool.append(Track{.id = id, .title = text(), .artist = text(), .album = text()});
    for (int p = 0; p < 40; ++p) {
        Playlist playlist{.id = QString::number(p), .name = text(), .isMaster = p == 0, .isSmart = p % 3 == 0};
        for (int n = random.bounded(0, 12); n > 0; --n)
            playlist.tracks.append(pool.at(random.bounded(int(pool.size()))));
        playlists.append(playlist);
    }
    const PlaylistSearchIndex index(playlists);
    QVERIFY(index.describes(playlists));
    QStringList searches = words;
    for (const QString &word : words) {
        searches << word.left(2) << word.mid(1) << word.toLower() << word.toUpper();
    }
    for (const QString &search : std::as_const(searches)) {
        for (bool hideMaster : {true, false}) {
            const PlaylistFilter filter{search, hideMaster, false};
            QCOMPARE(filter.apply(playlists, index), filter.apply(playlists));
        }
    }
    QVERIFY(!index.describes(playlists.mid(1)));
}

QTEST_APPLESS_MAIN(TestSearchIndex)
#include "tst_searchindex.moc"
