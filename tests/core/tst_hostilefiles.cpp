#include "core/ITunesDBParser.h"
#include "dbwriter/ByteWriter.h"
#include "dbwriter/ITunesDBWriter.h"

#include <QTest>

using namespace kestrune;
using namespace kestrune::dbwriter;

namespace {

constexpr qsizetype hostileSize = 3 * 1024 * 1024;

QByteArray header(quint32 sectionCount)
{
    ByteWriter writer;
    writer.bytes("mhbd").u32(32).u32(0).u32(1).u32(0).u32(sectionCount).u64(0);
    return writer.data();
}

// Playlist items of 24 bytes each whose entries all start at one shared run of entries.
QByteArray playlistsSharingOneEntryRun()
{
    ByteWriter writer;
    writer.bytes(header(2));
    writer.bytes(mhsd(1, mhlt({mhit(TrackItem::song(1, QStringLiteral("t"), {}, {}))})));
    const qsizetype itemCount = hostileSize / 2 / 24;
    const qsizetype sectionStart = writer.size();
    writer.bytes("mhsd").u32(16).u32(quint32(hostileSize)).u32(2);
    writer.bytes("mhlp").u32(12).u32(quint32(itemCount));
    const qsizetype entriesAt = writer.size() + itemCount * 24;
    for (qsizetype i = 0; i < itemCount; ++i) {
        const qsizetype at = writer.size();
        writer.bytes("mhyp").u32(quint32(entriesAt - at)).u32(24).u32(0).u32(0xFFFFFFFF).u32(0);
    }
    while (writer.size() < sectionStart + hostileSize / 2 + hostileSize / 4)
        writer.bytes(mhip(PlaylistEntry{.trackId = 1, .headerLength = 28, .withPositionObject = false}));
    return writer.data();
}

// Track items of 36 bytes each whose one string object points into one shared 1 MB text.
QByteArray stringsSharingOneText()
{
    ByteWriter writer;
    writer.bytes(header(1));
    const qsizetype textSize = 1024 * 1024;
    const qsizetype itemCount = (hostileSize - textSize) / 36;
    writer.bytes("mhsd").u32(16).u32(quint32(hostileSize)).u32(1);
    writer.bytes("mhlt").u32(12).u32(quint32(itemCount));
    const qsizetype textAt = writer.size() + itemCount * 36;
    for (qsizetype i = 0; i < itemCount; ++i) {
        const qsizetype at = writer.size();
        writer.bytes("mhit").u32(20).u32(36).u32(1).u32(quint32(i + 1));
        const qsizetype mhodAt = writer.size();
        const auto headerLen = quint32(textAt - mhodAt);
        writer.bytes("mhod").u32(headerLen).u32(headerLen + 16 + quint32(textSize)).u32(1);
        Q_ASSERT(writer.size() == at + 36);
    }
    writer.u32(1).u32(0).u32(0).u32(0);
    writer.bytes(QByteArray(textSize, 'a'));
    return writer.data();
}

} // namespace

// Crafted files that would make the walks quadratic stop at the work limits instead.
class TestHostileFiles : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void workIsBounded_data()
    {
        QTest::addColumn<QByteArray>("db");
        QTest::addRow("playlists sharing one entry run") << playlistsSharingOneEntryRun();
        QTest::addRow("strings sharing one text") << stringsSharingOneText();
    }

    void workIsBounded()
    {
        QFETCH(QByteArray, db);
        ParseWork work;
        (void)ITunesDBParser().parse(db, &work);
        const ParseWork limits = ParseBudget::limitsFor(db.size());
        QVERIFY(work.capped);
        QVERIFY(work.iterations <= limits.iterations && work.chunks <= limits.chunks && work.decodedBytes <= limits.decodedBytes);
    }

};

QTEST_APPLESS_MAIN(TestHostileFiles)
#include "tst_hostilefiles.moc"
