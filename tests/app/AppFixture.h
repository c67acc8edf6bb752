#pragma once

#include "app/AppViewModel.h"
#include "dbwriter/ArtworkDBWriter.h"
#include "dbwriter/ITunesDBWriter.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

namespace kestrune::testing {
using namespace kestrune::dbwriter;

// Answers folder pickers with whatever the test queued, and remembers what was asked.
class ScriptedFolderPicker : public FolderPicker {
public:
    std::optional<QUrl> pickFolder(const FolderPickerRequest &request) override
    {
        requests.append(request);
        return answers.isEmpty() ? std::nullopt : answers.takeFirst();
    }

    QList<std::optional<QUrl>> answers;
    QList<FolderPickerRequest> requests;
};

// Three playlists after the master: "Road Trip", smart "Chill" and "Empty".
inline QByteArray sampleDatabase()
{
    PlaylistItem master{.name = QStringLiteral("Library"), .isMaster = true};
    master.entries = {{1}, {2}, {3}};
    PlaylistItem chill = PlaylistItem::of(QStringLiteral("Chill"), {3});
    chill.extraObjects = {StringObject::opaque(51)};
    return ITunesDBWriter()
        .addTrack(TrackItem::song(1, QStringLiteral("Northbound"), QStringLiteral("The Beatles"), QStringLiteral(":iPod_Control:Music:F00:A.mp3")))
        .addTrack(TrackItem::song(2, QStringLiteral("Desert Lights"), QStringLiteral("Lanterns"), QStringLiteral(":iPod_Control:Music:F01:B.mp3")))
        .addTrack(TrackItem::song(3, QStringLiteral("Slow Rain"), QStringLiteral("Marla"), QStringLiteral(":iPod_Control:Music:F02:C.mp3")))
        .addPlaylist(master)
        .addPlaylist(PlaylistItem::of(QStringLiteral("Road Trip"), {1, 2}))
        .addPlaylist(chill)
        .addPlaylist(PlaylistItem::of(QStringLiteral("Empty"), {}))
        .build();
}

// A folder standing in for /Volumes, a language store of its own, and the model over them.
struct AppFixture {
    QTemporaryDir dir;
    QString volumes = dir.filePath(QStringLiteral("Volumes"));
    std::shared_ptr<ScriptedFolderPicker> picker = std::make_shared<ScriptedFolderPicker>();
    std::unique_ptr<LocalizationManager> language;
    std::unique_ptr<AppViewModel> model;
    QByteArray mountLine; // the mount table the model sees: this one line of mountinfo

    AppFixture() { QDir().mkpath(volumes); }

    QString addIPod(const QString &name, const QByteArray &database = sampleDatabase())
    {
        const QString root = volumes + u'/' + name;
        writeFile(root + QStringLiteral("/iPod_Control/iTunes/iTunesDB"), database);
        QDir().mkpath(root + QStringLiteral("/Playlists"));
        return root;
    }

    AppViewModel &start()
    {
        const QString settings = dir.filePath(QStringLiteral("settings.ini"));
        language = std::make_unique<LocalizationManager>(LocalizationManager::Environment{
            .openSettings = [settings] { return std::make_unique<QSettings>(settings, QSettings::IniFormat); },
            .preferredLanguages = [] { return QStringList{QStringLiteral("en-US")}; },
            .localeName = [] { return QStringLiteral("en_US"); }});
        model = std::make_unique<AppViewModel>(AppViewModel::Services{
            .detector = {entriesOfFolder(volumes), [](const QString &) { return VolumeInfo{}; }, nullptr},
            .languageManager = language.get(),
            .folderPicker = picker,
            .generator = RockboxGenerator(DotFileCleaner(QString())),
            .mountTable = [this] { return parseMountInfo(mountLine); }});
        model->setSuccessFeedbackDuration(50);
        return *model;
    }

    // Starts the model and waits until the selected iPod's database is shown.
    AppViewModel &startLoaded(qsizetype playlists = 4)
    {
        start();
        if (!QTest::qWaitFor([&] { return !model->isLoading() && model->playlists().size() == playlists; }, 5000))
            qFatal("the database did not load");
        return *model;
    }

    // Lets every background task finish and hand its result back.
    void settle()
    {
        for (int round = 0; round < 3; ++round) {
            QThreadPool::globalInstance()->waitForDone();
            QCoreApplication::processEvents();
        }
    }

    [[nodiscard]] const Playlist &playlist(const QString &name) const
    {
        for (const Playlist &playlist : model->playlists()) {
            if (playlist.name == name)
                return playlist;
        }
        qFatal("no playlist %s", qPrintable(name));
    }

    [[nodiscard]] QStringList selectedNames() const
    {
        QStringList names;
        for (const Playlist &playlist : model->playlists()) {
            if (model->selectedPlaylistIds().contains(playlist.id))
                names.append(playlist.name);
        }
        return names;
    }
};

} // namespace kestrune::testing
