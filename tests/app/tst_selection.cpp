#include "AppFixture.h"
#include "app/PlaylistFilter.h"

#include <QAbstractItemModelTester>

using namespace kestrune;
using namespace kestrune::testing;
using namespace kestrune::dbwriter;

namespace {

// Playlists A to E (A smart), after a hidden master whose track has the artist "The Beatles".
QByteArray lettersDatabase()
{
    ITunesDBWriter builder;
    builder.addTrack(TrackItem::song(1, "Yesterday", "The Beatles", ":a.mp3"));
    builder.addTrack(TrackItem::song(2, "Beat It", "Sol\u00e9", ":b.mp3"));
    builder.addTrack(TrackItem::song(4, "Fe\u0301te Noir", "Someone", ":d.mp3"));
    TrackItem onlyAlbum = TrackItem::song(3, "Quiet", "Nobody", ":c.mp3");
    onlyAlbum.strings.append(StringObject::utf16(3, "Beat Album"));
    builder.addTrack(onlyAlbum);
    builder.addPlaylist(PlaylistItem{.name = QString("Library"), .isMaster = true, .entries = {{1}, {2}, {3}}});
    PlaylistItem a = PlaylistItem::of("A", {3});
    a.extraObjects = {StringObject::opaque(50)};
    builder.addPlaylist(a);
    builder.addPlaylist(PlaylistItem::of("B", {1, 4})).addPlaylist(PlaylistItem::of("C", {2}));
    builder.addPlaylist(PlaylistItem::of("D", {})).addPlaylist(PlaylistItem::of("E", {3}));
    return builder.build();
}

int rowOf(AppViewModel &model, const QString &name)
{
    for (int row = 0; row < model.filteredPlaylists().size(); ++row) {
        if (model.filteredPlaylists().at(row).name == name)
            return row;
    }
    return -1;
}

QStringList filteredNames(const AppViewModel &model)
{
    QStringList names;
    for (const Playlist &playlist : model.filteredPlaylists())
        names.append(playlist.name);
    return names;
}

} // namespace

class TestSelection : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fixture = std::make_unique<AppFixture>();
        m_fixture->addIPod("IPOD", lettersDatabase());
        for (const char *name : {"one.m3u8", "two.m3u8", "three.m3u8"})
            writeFile(m_fixture->volumes + "/IPOD/Playlists/" + name, "x");
        m_model = &m_fixture->startLoaded(6);
        new QAbstractItemModelTester(m_model->filteredPlaylistsModel(), QAbstractItemModelTester::FailureReportingMode::QtTest, m_model);
        new QAbstractItemModelTester(m_model->currentDirectoryItemsModel(), QAbstractItemModelTester::FailureReportingMode::QtTest, m_model);
    }

    void cleanup()
    {
        m_fixture.reset();
    }

    void playlistClicks_data()
    {
        QTest::addColumn<QStringList>("clicks"); // "B", "cmd B", "shift B", "cmdshift B"
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("active");
        QTest::addRow("plain click selects one") << QStringList{"B"} << "B" << "B";
        QTest::addRow("shift adds the range") << QStringList{"B", "shift D"} << "B,C,D" << "D";
        QTest::addRow("anchor stays for the next shift") << QStringList{"B", "shift D", "shift A"} << "A,B,C,D" << "A";
        QTest::addRow("plain on the only selected deselects") << QStringList{"B", "B"} << "" << "B";
        QTest::addRow("command removes one and moves the anchor")
            << QStringList{"B", "cmd C", "cmd B", "shift D"} << "B,C,D" << "D";
        QTest::addRow("shift without anchor is a plain click") << QStringList{"shift C"} << "C" << "C";
        QTest::addRow("command and shift without anchor toggle") << QStringList{"cmdshift C"} << "A,B,D,E" << "C";
    }

    void playlistClicks()
    {
        QFETCH(QStringList, clicks);
        for (const QString &click : clicks) {
            const QStringList parts = click.split(' ');
            Qt::KeyboardModifiers modifiers;
            if (parts.size() == 2 && parts[0].contains("cmd"))
                modifiers |= Qt::ControlModifier;
            if (parts.size() == 2 && parts[0].contains("shift"))
                modifiers |= Qt::ShiftModifier;
            m_model->clickPlaylistRow(rowOf(*m_model, parts.last()), modifiers);
        }
        QTEST(m_fixture->selectedNames().join(','), "selected");
        QTEST(m_model->activeDetailPlaylist()->name, "active");
    }

    void filters_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<bool>("hideMaster");
        QTest::addColumn<bool>("onlySmart");
        QTest::addColumn<QStringList>("shown");
        QTest::addRow("defaults hide the master") << "" << true << false << QStringList{"A", "B", "C", "D", "E"};
        QTest::addRow("only smart") << "" << true << true << QStringList{"A"};
        QTest::addRow("artist and title, not album") << "beat" << true << false << QStringList{"B", "C"};
        QTest::addRow("playlist name, case-blind") << "c" << true << false << QStringList{"C"};
        QTest::addRow("names and tracks alike") << "d" << true << false << QStringList{"A", "B", "D", "E"};
        QTest::addRow("search is not trimmed") << " d" << true << false << QStringList{};
        QTest::addRow("composed finds decomposed") << "F\u00e9te" << true << false << QStringList{"B"};
        QTest::addRow("decomposed finds composed") << "Sole\u0301" << true << false << QStringList{"C"};
        QTest::addRow("no match runs from one text into the next") << "t" + QString(QChar(0xFFFF)) << true << false << QStringList{};
    }

    void filters()
    {
        QFETCH(QString, search);
        QFETCH(bool, hideMaster);
        QFETCH(bool, onlySmart);
        QFETCH(QStringList, shown);
        m_model->setSearchText(search);
        m_model->setHideMasterPlaylist(hideMaster);
        m_model->setOnlySmartPlaylists(onlySmart);
        QCOMPARE(filteredNames(*m_model), shown);
        QCOMPARE(m_model->filteredPlaylistsModel()->rowCount(), shown.size());
        // The index built after the load gives the same answers as the plain filter.
        const PlaylistFilter filter{search, hideMaster, onlySmart};
        QCOMPARE(filter.apply(m_model->playlists(), PlaylistSearchIndex(m_model->playlists())), filter.apply(m_model->playlists()));
        QVERIFY(!PlaylistSearchIndex(m_model->playlists()).describes({m_model->playlists().crbegin(), m_model->playlists().crend()}));
    }

    void selectAllCoversOnlyVisiblePlaylists()
    {
        m_model->deselectAllPlaylists();
        QCOMPARE(m_fixture->selectedNames(), QStringList{});
        m_model->togglePlaylistSelection(m_fixture->playlist("E").id);
        m_model->setSearchText("beat");
        m_model->selectAllPlaylists();
        QCOMPARE(m_fixture->selectedNames().join(','), "B,C,E"); // E stays ticked though hidden
        m_model->setSearchText("");
        m_model->selectAllPlaylists();
        QVERIFY(!m_model->selectedPlaylistIds().contains(m_fixture->playlist("Library").id));
        m_model->setSearchText("beat");
        m_model->deselectAllPlaylists();
        QCOMPARE(m_fixture->selectedNames().join(','), "A,D,E");
    }

    void listChangesAreAnnouncedRowByRow()
    {
        QAbstractItemModel *rows = m_model->filteredPlaylistsModel();
        QSignalSpy reset(rows, &QAbstractItemModel::modelReset);
        QSignalSpy changed(rows, &QAbstractItemModel::dataChanged);
        m_model->togglePlaylistSelection(m_fixture->playlist("C").id);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 2);
        QCOMPARE(rows->index(2, 0).data(PlaylistListModel::IsTickedRole).toBool(), false);
        m_model->setSearchText("beat");
        m_model->setHideMasterPlaylist(false);
        m_model->setSearchText("");
        QCOMPARE(reset.count(), 0);
        QCOMPARE(rows->index(0, 0).data(PlaylistListModel::NameRole).toString(), "Library");
    }

    void fileTickStates()
    {
        m_model->clickFileRow(0, {});
        QVERIFY(m_model->isPartiallyPlaylistFilesSelected() && !m_model->isAllPlaylistFilesSelected());
        m_model->selectAllPlaylistFiles();
        QVERIFY(!m_model->isPartiallyPlaylistFilesSelected() && m_model->isAllPlaylistFilesSelected());
    }

private:
    std::unique_ptr<AppFixture> m_fixture;
    AppViewModel *m_model = nullptr;
};

QTEST_GUILESS_MAIN(TestSelection)
#include "tst_selection.moc"
