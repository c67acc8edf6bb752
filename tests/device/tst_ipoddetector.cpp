#include "device/IPodDetector.h"
#include "device/RockboxPlayer.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace kestrune;
using namespace kestrune::testing;

Q_DECLARE_METATYPE(kestrune::RockboxPlayer)

namespace {

// A stand-in for the system's mount notifications.
class FakeWatcher : public VolumeWatcher {
public:
    void mountHappened() { Q_EMIT volumesChanged(); }
};

// A folder that plays /Volumes: each entry is a volume, an iPod when it holds a database.
struct Volumes {
    QTemporaryDir dir;
    std::optional<QString> label;
    bool listable = true;
    FakeWatcher *watcher = new FakeWatcher;

    QString addIPod(const QString &name, const char *database = "iTunesDB")
    {
        writeFile(dir.filePath(name + "/iPod_Control/iTunes/" + QLatin1StringView(database)), "db");
        return dir.filePath(name);
    }
    void remove(const QString &name) { QDir(dir.filePath(name)).removeRecursively(); }

    std::unique_ptr<IPodDetector> detector()
    {
        const CandidateSource entries = entriesOfFolder(dir.path());
        return std::make_unique<IPodDetector>(IPodDetector::Services{
            [this, entries] { return listable ? entries() : std::nullopt; },
            [this](const QString &) { return VolumeInfo{label, 16'000'000'000, 1'234'567'890}; },
            std::unique_ptr<VolumeWatcher>(watcher)});
    }
};

QStringList namesOf(const QList<IPodDevice> &devices)
{
    QStringList names;
    for (const IPodDevice &device : devices)
        names.append(device.name);
    return names;
}

} // namespace

class TestIPodDetector : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void inspectsLocations_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("database"); // empty: not an iPod
        QTest::addRow("iTunesDB") << QStringList{"iTunesDB"} << "iTunesDB";
        QTest::addRow("only iTunesSD") << QStringList{"iTunesSD"} << "iTunesSD";
        QTest::addRow("both prefer iTunesDB") << QStringList{"iTunesSD", "iTunesDB"} << "iTunesDB";
        QTest::addRow("no database") << QStringList{"iTunesPrefs"} << "";
        QTest::addRow("a linked iPod_Control") << QStringList{"iTunesDB", "link"} << "";
    }

    void inspectsLocations()
    {
        QFETCH(QStringList, files);
        QFETCH(QString, database);
        Volumes volumes;
        QString root;
        for (const QString &file : files) {
            if (file == "link") { // the real folder moves aside, and a link takes its name
                QVERIFY(QDir(root).rename("iPod_Control", "elsewhere"));
                QVERIFY(QFile::link(root + "/elsewhere", root + "/iPod_Control"));
            } else {
                root = volumes.addIPod("IPOD", file.toLatin1().constData());
            }
        }
        const auto detector = volumes.detector();
        const std::optional<IPodDevice> device = detector->inspectLocation(QUrl::fromLocalFile(root));
        QCOMPARE(device.has_value(), !database.isEmpty());
        QCOMPARE(detector->refusedLocations().size(), int(files.contains("link")));
        if (device)
            QCOMPARE(device->itunesDBURL.toLocalFile(), root + "/iPod_Control/iTunes/" + database);
    }

    void describesDevice()
    {
        Volumes volumes;
        const QString root = volumes.addIPod("Backup");
        const auto detector = volumes.detector();
        const IPodDevice unnamed = *detector->inspectLocation(QUrl::fromLocalFile(root));
        QCOMPARE(unnamed.name, "Backup"); // no volume name: the folder's own
        QCOMPARE(unnamed.playlistsURL.toLocalFile(), root + "/Playlists");
        QCOMPARE(unnamed.formattedTotalSpace(), std::optional<QString>("16.00 GB"));

        volumes.label = "JOHN'S IPOD";
        const IPodDevice labelled = *detector->inspectLocation(QUrl::fromLocalFile(root));
        QCOMPARE(labelled.name, "JOHN'S IPOD");
        QVERIFY(labelled.id != unnamed.id); // every inspection makes a new id
    }

    void selectionFollowsMounts()
    {
        Volumes volumes;
        volumes.addIPod("A");
        const auto detector = volumes.detector();
        QCOMPARE(detector->selectedDevice()->name, "A");
        const IPodDevice selectedA = *detector->selectedDevice();
        QSignalSpy selectionChanged(detector.get(), &IPodDetector::selectedDeviceChanged);

        volumes.addIPod("B");
        volumes.watcher->mountHappened();
        QCOMPARE(detector->detectedDevices().size(), 2);
        QCOMPARE(detector->selectedDevice(), std::optional(selectedA)); // the old value, old id and all
        QCOMPARE(selectionChanged.count(), 0);                           // not even assigned

        volumes.remove("A");
        volumes.watcher->mountHappened();
        QCOMPARE(namesOf(detector->detectedDevices()), QStringList{"B"});
        QCOMPARE(detector->selectedDevice()->name, "B");

        volumes.remove("B");
        volumes.watcher->mountHappened();
        QCOMPARE(detector->selectedDevice(), std::nullopt);
        volumes.watcher->mountHappened(); // none again: assigned, and so announced, again
        QCOMPARE(selectionChanged.count(), 3);
    }

    void customLocations()
    {
        Volumes volumes;
        volumes.addIPod("A");
        QTemporaryDir elsewhere;
        const QString backup = elsewhere.filePath("Backup");
        writeFile(backup + "/iPod_Control/iTunes/iTunesDB", "db");
        const auto detector = volumes.detector();

        const std::optional<IPodDevice> first = detector->addCustomLocation(QUrl::fromLocalFile(backup));
        QVERIFY(first);
        QCOMPARE(namesOf(detector->detectedDevices()), (QStringList{"A", "Backup"}));
        QCOMPARE(detector->selectedDevice(), first);

        const std::optional<IPodDevice> second = detector->addCustomLocation(QUrl::fromLocalFile(backup));
        QCOMPARE(detector->detectedDevices().size(), 2); // listed once
        QCOMPARE(detector->detectedDevices().last(), *first);
        QCOMPARE(detector->selectedDevice(), second); // but the latest inspection is selected

        volumes.watcher->mountHappened(); // a scan forgets the picked folder, and its selection
        QCOMPARE(namesOf(detector->detectedDevices()), QStringList{"A"});
        QCOMPARE(detector->selectedDevice()->name, "A");
    }

    void rockboxPlayer_data()
    {
        QTest::addColumn<QByteArray>("info");   // .rockbox/rockbox-info.txt, none when empty
        QTest::addColumn<QByteArray>("config"); // .rockbox/config.cfg, none when empty
        QTest::addColumn<RockboxPlayer>("expected");
        using Source = RockboxPlayer::LimitSource;
        QTest::addRow("no .rockbox") << QByteArray() << QByteArray() << RockboxPlayer{};
        QTest::addRow("video") << QByteArray("Version: 4.0\nTarget: ipodvideo\n") << QByteArray()
                               << RockboxPlayer{"ipodvideo", 2000, Source::targetDefault};
        QTest::addRow("classic") << QByteArray("target:IPOD6G") << QByteArray() << RockboxPlayer{"ipod6g", 10000, Source::targetDefault};
        QTest::addRow("unknown target") << QByteArray("Target: sansae200\n") << QByteArray()
                                        << RockboxPlayer{"sansae200", 2000, Source::assumed};
        QTest::addRow("the user's setting") << QByteArray("Target: ipodvideo\n")
                                            << QByteArray("volume: -25\nmax files in playlist: 5000\n")
                                            << RockboxPlayer{"ipodvideo", 5000, Source::userSetting};
        QTest::addRow("a setting out of range") << QByteArray() << QByteArray("max files in playlist: 500\n") << RockboxPlayer{};
    }

    void rockboxPlayer()
    {
        QFETCH(QByteArray, info);
        QFETCH(QByteArray, config);
        QTemporaryDir dir;
        if (!info.isEmpty())
            writeFile(dir.filePath(".rockbox/rockbox-info.txt"), info);
        if (!config.isEmpty())
            writeFile(dir.filePath(".rockbox/config.cfg"), config);
        QTEST(readRockboxPlayer(dir.path()), "expected");
    }
};

QTEST_GUILESS_MAIN(TestIPodDetector)
#include "tst_ipoddetector.moc"
